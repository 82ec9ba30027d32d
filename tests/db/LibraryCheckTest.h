#pragma once

#include "db/LibraryCheck.h"
#include "tests/db/DbTestSupport.h"

#include <string>
#include <utility>
#include <vector>

namespace qfc::test {

class LibraryCheckTest : public LibraryTest {
protected:
    // A sound library: two galleries, folders in folders, a shared item, payloads of all kinds.
    void SetUp() override {
        LibraryTest::SetUp();
        m_root = AddGallery(1);
        m_deep = AddFolder("b", AddFolder("a", m_root));
        ASSERT_TRUE(AddItem(1, m_deep, 0, Repeated(3000, 1)));
        ASSERT_TRUE(AddItem(1, m_root));
        ASSERT_TRUE(AddItem(2, AddGallery(2), 0, Noise(300)));
        m_tools.reset();
    }

    std::vector<LibraryFinding> Check() {
        std::vector<LibraryFinding> findings;
        EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 1);
        return findings;
    }

    // The damage leads to exactly these findings.
    void ExpectFindings(const std::string& damage,
                        const std::vector<std::pair<LibraryFindingKind, std::string>>& expected) {
        Exec(damage);
        std::vector<std::pair<LibraryFindingKind, std::string>> found;
        for (const LibraryFinding& finding : Check()) {
            found.emplace_back(finding.kind, finding.row);
            EXPECT_FALSE(finding.sentence.empty());
        }
        EXPECT_EQ(found, expected) << damage;
    }

    void ExpectOnly(LibraryFindingKind kind) {
        const auto findings = Check();
        ASSERT_EQ(findings.size(), 1U);
        EXPECT_EQ(findings[0].kind, kind);
        EXPECT_EQ(findings[0].row, "");
    }

    int m_root = 0;
    int m_deep = 0;
};

}  // namespace qfc::test
