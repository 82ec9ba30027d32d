#include "tests/platform/IniTest.h"

#include <map>
#include <random>

namespace {

// Files made of what the grammar is made of, in any order.
struct IniRandom : qfc::test::IniTest {
    std::string Content() {
        static const std::string marks[] = {"", "", "", "\xFF\xFE", "\xEF\xBB\xBF", "\xFE\xFF"};
        static const std::string pieces[] = {
            "[S]", "[s]", "[T]", "[", "]", "\n", "\n",   "\r", "\r\n", "=",    "k=1",  "K",    "k",
            "v",   ";",   "\"",  "'", " ", "\t", "\x0B", "ä",  "É",    "\xFF", "\x83", "\xD8", std::string(1, '\0')};
        std::string content = marks[random() % std::size(marks)];
        const bool wide = content == "\xFF\xFE";
        for (auto count = random() % 30; count > 0; --count) {
            for (const char c : pieces[random() % std::size(pieces)]) {
                content += c;
                if (wide) content += static_cast<char>(random() % 40 == 0 ? random() : 0);
            }
        }
        if (wide && random() % 3 == 0) content += 'x';
        return content;
    }

    // What every section says, the key "k" of "S" left out.
    std::map<std::string, std::vector<std::string>> Others() const {
        std::map<std::string, std::vector<std::string>> sections;
        for (const std::string& name : qfc::ReadProfileSectionNames(path)) {
            bool first = name == "S" || name == "s";
            for (const std::string& line : qfc::ReadProfileSection(name, path)) {
                const bool mine = first && (line.starts_with("k=") || line.starts_with("K="));
                if (mine) first = false;
                if (!mine) sections[name].push_back(line);
            }
        }
        return sections;
    }

    // Whether that much of the buffer, all but its last byte, holds whole or cut names with two NULs behind them.
    static bool IsList(const std::vector<char>& buffer, DWORD length) {
        const std::size_t size = buffer.size() - 1;
        if (buffer[size] != '#') return false;
        if (size < 2 || length == 0) return length == 0 && (size == 0 || buffer[0] == '\0');
        const bool cut = length == size - 2 && buffer[length + 1] == '\0';
        return buffer[length] == '\0' && (cut || buffer[length - 1] == '\0');
    }

    std::mt19937 random{42};
};

TEST_F(IniRandom, NoBufferIsOverrun_AndListsEndWithTwoNuls) {
    for (const char* page : {"UTF-8", "CP932"}) {
        ASSERT_TRUE(qfc::SetAnsiCodePage(page));
        for (int i = 0; i < 500; ++i) {
            File(Content());
            const DWORD size = random() % 24;
            Value("S", "k", " none ", size != 0 ? size : 1);
            std::vector<char> buffer(size + 1, '#');
            const DWORD names = GetPrivateProfileSectionNamesA(buffer.data(), size, path.c_str());
            EXPECT_TRUE(IsList(buffer, names));
            buffer.assign(size + 1, '#');
            const DWORD lines = GetPrivateProfileSectionA("S", buffer.data(), size, path.c_str());
            EXPECT_TRUE(IsList(buffer, lines));
        }
    }
}

TEST_F(IniRandom, WrittenValueIsRead_AndNothingElseChanges) {
    for (const char* page : {"UTF-8", "CP932"}) {
        ASSERT_TRUE(qfc::SetAnsiCodePage(page));
        for (int i = 0; i < 40; ++i) {
            const std::string before = Content();
            File(before);
            auto others = Others();
            ASSERT_EQ(WritePrivateProfileStringA("S", "k", "new", path.c_str()), 1);
            EXPECT_EQ(Value("S", "k"), "new") << before;
            EXPECT_EQ(Others(), others) << before;
            ASSERT_EQ(WritePrivateProfileStringA("S", "k", "old", path.c_str()), 1);
            ASSERT_EQ(WritePrivateProfileStringA("S", "k", "new", path.c_str()), 1);
            const std::string after = File();
            ASSERT_EQ(WritePrivateProfileStringA("S", "k", "old", path.c_str()), 1);
            ASSERT_EQ(WritePrivateProfileStringA("S", "k", "new", path.c_str()), 1);
            EXPECT_EQ(File(), after) << before;
        }
    }
}

}  // namespace
