#pragma once

#include "db/EffectRecords.h"
#include "tests/db/DbTestSupport.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

// Filter files and transitions for the tests of their tables.
namespace qfc::test {

using Block = std::vector<BYTE>;
using Filters = std::vector<DS_Filter_File_Record>;
using Transitions = std::vector<DS_Transition_Record>;

inline Block Filled(std::size_t count, int value) { return Block(count, static_cast<BYTE>(value)); }

inline FilterEntry MakeFilter(int number, std::size_t descriptor = 8, std::size_t table = 456) {
    return {Filled(descriptor, number), Filled(table, number + 100), MakeGuid(number)};
}

inline DS_Filter_File_Record MakeFile(const char* name, std::initializer_list<int> numbers) {
    DS_Filter_File_Record file;
    file.strFileName = name;
    file.nFilterCount = static_cast<int>(numbers.size());
    for (const int number : numbers) file.filters.push_back(MakeFilter(number));
    return file;
}

inline DS_Transition_Record MakeTransition(const char* name, int number, std::size_t length = 77) {
    DS_Transition_Record transition;
    transition.strFileName = name;
    transition.descriptor = Filled(length, number);
    transition.guidItem = MakeGuid(number);
    return transition;
}

// As a literal of SQL.
inline std::string Hex(const Block& block) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "X'";
    for (const BYTE byte : block) text += {kDigits[byte >> 4], kDigits[byte & 15]};
    return text + "'";
}

// Beginning and length.
inline std::string Brief(const Block& block) {
    return Hex(Block(block.begin(), block.begin() + std::min<std::ptrdiff_t>(std::ssize(block), 6))) + "#" +
           std::to_string(block.size());
}

// The records as texts that can be compared.
inline std::string TextOf(const Filters& files) {
    std::string text;
    for (const auto& file : files) {
        text += std::string(file.strFileName.GetString()) + "|" + std::to_string(file.nFilterCount) + ":";
        for (const FilterEntry& filter : file.filters) {
            text += Brief(filter.descriptor) + Brief(filter.table) + Literal(filter.guidItem) + " ";
        }
        text += "\n";
    }
    return text;
}

// A library whose effects are looked at.
class EffectLibraryTest : public LibraryTest {
protected:
    Filters Files() {
        Filters files;
        EXPECT_TRUE(m_tools->LoadFilterFiles(files));
        return files;
    }
    Transitions AllTransitions() {
        Transitions transitions;
        EXPECT_TRUE(m_tools->LoadTransitions(transitions));
        return transitions;
    }
    void RefuseDeletes(const std::string& table) {
        Exec("create trigger REFUSE_" + table + " before delete on " + table +
             " begin select raise(fail, 'refused'); end");
    }
    // New libraries hold their texts as UTF-16; this one, made from a template, as UTF-8.
    void OpenInUtf8() {
        m_tools.reset();
        std::filesystem::remove(m_path);
        RawDb(m_path).Exec("create table T(N); drop table T");
        Open();
        ASSERT_EQ(Cell("pragma encoding"), "'UTF-8'");
    }
};

}  // namespace qfc::test
