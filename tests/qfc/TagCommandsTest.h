#pragma once

#include "CommandsTest.h"

#include <cstdlib>

namespace qfc::test {

// A library with items, and a folder that stands for the program's own, where its data files lie. Every command is a
// process of its own, so each look is one of a fresh start.
class TagCommandsTest : public CommandsTest {
protected:
    void SetUp() override { setenv("QFCLIB_HOST_DIR", m_host.Path().c_str(), 1); }
    void TearDown() override { unsetenv("QFCLIB_HOST_DIR"); }

    void WriteHost(const std::string& name, const std::string& content) const {
        m_host.MakeFolder("Orvel.dat");
        m_host.Write("Orvel.dat/" + name, content);
    }
    std::string HostFile(const std::string& name) const { return m_host / ("Orvel.dat/" + name); }

    void ImportAbc() const {
        Done({"import", Image("a.ppm", 1), Image("b.ppm", 2), Image("c.ppm", 3), "--folder", "F"});
    }
    std::string Sql(const std::string& sql) const { return RawDb(Database()).Cell(sql); }
    void Exec(const std::string& sql) const { RawDb(Database()).Exec(sql); }
    Names TagsOf(const std::string& item, const Args& more = {}) const {
        const Json shown = Done(Joined({"show", item}, more));
        return NamesIn(shown["tags"]);
    }
    static Names NamesIn(const Json& items) {
        Names names;
        for (const Json& item : items) names.push_back(item["name"].is_null() ? "?" : item["name"]);
        return names;
    }

    TempFolder m_host;
};

}  // namespace qfc::test
