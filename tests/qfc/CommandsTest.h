#pragma once

#include "QfcProcess.h"
#include "tests/support/RawDb.h"
#include "tests/support/TempFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace qfc::test {

using Json = nlohmann::json;
using Args = std::vector<std::string>;

// A library of its own, media to put into it, and the program to do it with.
class CommandsTest : public ::testing::Test {
protected:
    static Args Joined(Args left, const Args& right) {
        left.insert(left.end(), right.begin(), right.end());
        return left;
    }
    Args WithLibrary(const Args& arguments) const { return Joined({"--data-dir", m_library}, arguments); }

    QfcResult Qfc(const Args& arguments, const QfcWorld& world = {}) const {
        return QfcProcess(WithLibrary(arguments), world).Wait();
    }
    // As somebody who sits before a terminal sees it: what the program prints is in the errors.
    QfcResult QfcOnATerminal(const Args& arguments) const {
        return Qfc(arguments, {.terminal = true, .outToTerminal = true});
    }
    // Ctrl-C and its like in the middle of a change: another writer holds the program up until the signal has come.
    QfcResult QfcInterrupted(const Args& arguments, int nSignal) const {
        RawDb writer(Database());
        writer.Exec("begin immediate");
        QfcProcess process(WithLibrary(arguments), {});
        EXPECT_TRUE(process.WaitUntilCaught(nSignal));
        process.Signal(nSignal);
        writer.Exec("rollback");  // Unlike a commit it waits for no reader.
        return process.Wait();
    }
    // Fails the test unless the command succeeds; its document.
    Json Done(const Args& arguments) const { return Document(arguments, 0); }
    Json Document(const Args& arguments, int exit) const {
        const QfcResult result = Qfc(Joined({"--json"}, arguments));
        EXPECT_EQ(result.exit, exit) << arguments.front() << ": " << result.err;
        const Json json = Json::parse(result.out, nullptr, false);
        EXPECT_FALSE(json.is_discarded()) << result.out;
        return json;
    }
    // Fails the test unless the command exits with that code and one line on the error stream; the line.
    std::string Refused(const Args& arguments, int exit = 1) const {
        const QfcResult result = Qfc(arguments);
        EXPECT_EQ(result.exit, exit) << arguments.front() << ": " << result.out << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(result.err.substr(0, 5), "qfc: ");
        return result.err;
    }

    // --- Media. The same shade gives the same bytes. ---------------------------------------------------------------
    std::string Image(const std::string& name, int shade = 0, int side = 8) const {
        std::string content = "P6\n" + std::to_string(side) + " " + std::to_string(side) + "\n255\n";
        for (int i = 0; i < side * side; ++i) content += {static_cast<char>(shade), static_cast<char>(i), '\x40'};
        return m_media.Write(name, content);
    }
    std::string Sound(const std::string& name) const {
        const auto le32 = [](unsigned v) {
            return std::string{static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16),
                               static_cast<char>(v >> 24)};
        };
        std::string samples;
        for (int i = 0; i < 8000; ++i) samples += {static_cast<char>(i * 7), static_cast<char>((i * 7) >> 8)};
        const auto bytes = static_cast<unsigned>(samples.size());
        const std::string format = std::string("WAVEfmt ") + le32(16) + std::string("\1\0\1\0", 4) + le32(8000) +
                                   le32(16000) + std::string("\2\0\20\0", 4);
        return m_media.Write(name, "RIFF" + le32(36 + bytes) + format + "data" + le32(bytes) + samples);
    }
    std::string Video(const std::string& name) const {
        const std::string path = m_media / name;
        const std::string command =
            "ffmpeg -v error -nostdin -f lavfi -i testsrc2=s=64x48:r=10:d=2 -c:v mpeg4 '" + path + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return path;
    }
    std::string Media(const std::string& name) const { return m_media / name; }

    // --- Looking ---------------------------------------------------------------------------------------------------
    // In that order.
    static void ExpectSteps(const QfcResult& result, const Args& steps) {
        EXPECT_EQ(result.exit, 0);
        std::size_t at = 0;
        for (const std::string& step : steps) {
            at = std::min(result.err.find(step, at), result.err.size());
            EXPECT_LT(at, result.err.size()) << step << " in " << result.err;
        }
    }
    std::string Database() const { return m_library + "/CinelumeDatabase.db"; }
    // Names of the items of a folder, in their order.
    std::vector<std::string> ItemsOf(const std::string& folder, const Args& more = {}) const {
        std::vector<std::string> names;
        const Json listed = Done(Joined({"ls", folder}, more));
        for (const Json& item : listed["items"]) names.push_back(item["name"]);
        return names;
    }
    std::vector<std::string> FoldersOf(const std::string& folder) const {
        std::vector<std::string> names;
        const Json listed = Done({"ls", folder});
        for (const Json& child : listed["folders"]) names.push_back(child["name"]);
        return names;
    }
    std::string GuidOf(const std::string& item) const { return Done({"show", item})["guid"]; }
    // Nothing is wrong with what is stored.
    void ExpectSound() const {
        const QfcResult result = Qfc({"check"});
        EXPECT_EQ(result.exit, 0) << result.out;
    }

    TempFolder m_folder;
    TempFolder m_media;
    std::string m_library = m_folder / "library";
};

using Names = std::vector<std::string>;

}  // namespace qfc::test
