#pragma once

#include "platform/os/IniFile.h"
#include "platform/text/CodePages.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace qfc::test {

// One profile file in a folder of its own, and the UTF-8 code page again afterwards.
struct IniTest : testing::Test {
    ~IniTest() override { SetAnsiCodePage("UTF-8"); }

    void File(std::string_view content) { folder.Write("file.ini", content); }
    std::string File() const { return ReadFile(path); }

    std::string Value(const char* section, const char* key, const char* fallback = "none", DWORD size = 1000) const {
        std::vector<char> buffer(size + 1, '#');
        const DWORD length = GetPrivateProfileStringA(section, key, fallback, buffer.data(), size, path.c_str());
        EXPECT_EQ(buffer[size], '#');
        EXPECT_EQ(buffer[length], '\0');
        return {buffer.data(), length};
    }

    TempFolder folder;
    const std::string path = folder / "file.ini";
};

struct IniWrite : IniTest {
    int Write(const char* section, const char* key, const char* value) const {
        return WritePrivateProfileStringA(section, key, value, path.c_str());
    }
    // The file after one write over `before`.
    std::string Over(std::string_view before, const char* section, const char* key, const char* value) {
        File(before);
        EXPECT_EQ(Write(section, key, value), 1);
        return File();
    }
};

// What a function wrote to a buffer of '#': bytes with every NUL shown as '0', up to the first '#'.
inline std::string Shown(const std::vector<char>& buffer) {
    std::string shown;
    for (const char c : buffer) {
        if (c == '#') break;
        shown += c != '\0' ? c : '0';
    }
    return shown;
}

}  // namespace qfc::test
