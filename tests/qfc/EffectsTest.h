#pragma once

#include "CommandsTest.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace qfc::test {

// A library, a folder of effect files, and a table of folders for their effects.
class EffectsTest : public CommandsTest {
protected:
    void SetUp() override {
        m_host.MakeFolder("Orvel.dat");
        m_host.Write("Orvel.dat/EffectFolders.ini",
                     "[FILTERS_BY_NAME]\nglow=Light\nWarm=Colour\\Warm colours\n[FILTERS_BY_KEYWORD]\nblur=Blur\n"
                     "[TRANSITIONS_BY_NAME]\nwipe=Wipes\n[TRANSITIONS_BY_KEYWORD]\nfade=Fades\n");
        setenv("QFCLIB_HOST_DIR", m_host.Path().c_str(), 1);
    }
    void TearDown() override { unsetenv("QFCLIB_HOST_DIR"); }

    // An effect file with these effects (plugins/Scripted.cpp); another one under the same name is replaced.
    std::string Plugin(const std::string& name, const std::string& script) const {
        const std::string path = m_plugins / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::remove(path);
        std::ofstream(path, std::ios::binary) << ReadFile(QFC_SCRIPTED_EFFECTS) << "\nEFFECTS:\n" << script;
        return path;
    }
    std::string Junk(const std::string& name, const std::string& text = "no plugin") const {
        return m_plugins.Write(name, text);
    }
    Json Scan(const Args& more = {}, int exit = 0) const {
        return Document(Joined({"effects", "scan", m_plugins.Path()}, more), exit);
    }
    static std::vector<std::string> Values(const Json& list, const char* key) {
        std::vector<std::string> values;
        for (const Json& one : list) values.push_back(one[key]);
        std::ranges::sort(values);
        return values;
    }
    // Folder and name of each effect that is listed.
    std::vector<std::string> Listed() const {
        std::vector<std::string> paths;
        for (const Json& effect : Done({"effects", "list"})) {
            for (const Json& path : effect["paths"]) paths.push_back(path);
        }
        std::ranges::sort(paths);
        return paths;
    }
    // A tag on an effect is what a scan cannot bring back.
    void Tag(const std::string& path, const std::string& gallery = "Filters") const {
        Done({"tag", "create", "Best", "--gallery", gallery});
        Done({"tag", "add", "Best", path, "--gallery", gallery});
    }
    std::string Links() const { return Cell("select count(*) from TAG_ITEM_RELATION_TABLE"); }
    Json Effect(const std::string& name) const { return Done({"effects", "show", name}).at(0); }

    // --- What is stored. ---
    std::vector<RawDb::Row> Rows(const std::string& sql) const { return RawDb(Database()).Rows(sql); }
    std::string Cell(const std::string& sql) const { return RawDb(Database()).Cell(sql); }
    // Items, and records with their files; equal when nothing is without the other.
    std::set<std::string> ItemIds() const {
        return Ids("select hex(ITEM_ID) from ITEM_TABLE where ITEM_TYPE in (64, 128)");
    }
    std::set<std::string> RecordIds() const {
        return Ids("select hex(ITEM_ID) from FLT_TABLE union select hex(ITEM_ID) from TRANSITION_TABLE");
    }
    std::set<std::string> Ids(const std::string& sql) const {
        std::set<std::string> ids;
        for (const RawDb::Row& row : Rows(sql)) ids.insert(row.at(0));
        return ids;
    }
    // From now on the table cannot be read while the condition holds. What is in it is in KEPT_ROWS now, and nothing is
    // written any more.
    void RefuseReads(const std::string& table, const std::string& whileTrue) const {
        std::string columns;
        const std::vector<RawDb::Row> rows = Rows("select name from pragma_table_info('" + table + "')");
        for (const RawDb::Row& row : rows) {
            const std::string name = row.at(0).substr(1, row.at(0).size() - 2);
            columns += (columns.empty() ? "abs(LEAST) as " : ", null as ") + name;
        }
        RawDb(Database())
            .Exec("alter table " + table + " rename to KEPT_ROWS; create view " + table +
                  " as select * from KEPT_ROWS union all select " + columns +
                  " from (select -9223372036854775807 - 1 as LEAST from sqlite_master where " + whileTrue +
                  " limit 1); create trigger REFUSE instead of delete on " + table + " begin select 1; end");
    }
    // Every item has its record, its place and its payloads, and nothing is left of others.
    void ExpectWhole() const {
        EXPECT_EQ(ItemIds(), RecordIds());
        EXPECT_EQ(Ids("select hex(ITEM_ID) from RELATION_TABLE"), ItemIds());
        EXPECT_EQ(Ids("select hex(ITEM_ID) from CACHE_DATA_TABLE"), ItemIds());
        ExpectSound();
    }

    TempFolder m_host;
    TempFolder m_plugins;
};

}  // namespace qfc::test
