#include "platform/os/FileStamp.h"
#include "platform/os/IniDocument.h"
#include "platform/os/IniStore.h"
#include "tests/platform/IniTest.h"
#include "tests/support/MemoryFaults.h"

#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using qfc::OpenProfile;
using qfc::ProfileTexts;

TEST(FileStamps, TellDeviceInodeSizeAndBothTimes) {
    struct stat status {};
    const qfc::FileStamp stamp = qfc::StampOf(status);
    EXPECT_EQ(qfc::StampOf(status), stamp);
    const auto expectOther = [&](auto& field) {
        ++field;
        EXPECT_NE(qfc::StampOf(status), stamp);
        --field;
    };
    expectOther(status.st_dev);
    expectOther(status.st_ino);
    expectOther(status.st_size);
    expectOther(status.st_mtim.tv_sec);
    expectOther(status.st_mtim.tv_nsec);
    expectOther(status.st_ctim.tv_sec);
    expectOther(status.st_ctim.tv_nsec);
    EXPECT_EQ(qfc::StampOf(status), stamp);
}

// A file whose bytes can be changed with nothing to show for it: only the first write through a mapping is stamped.
struct IniKept : qfc::test::IniTest {
    IniKept() {
        File("[S]\na=1\n");
        const int file = open(path.c_str(), O_RDWR);
        m_bytes = static_cast<char*>(mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
        close(file);
        if (m_bytes == MAP_FAILED) throw std::runtime_error("no mapping");
        SetDigit('1');
    }
    ~IniKept() override { munmap(m_bytes, kSize); }

    void SetDigit(char digit) { m_bytes[kDigit] = digit; }
    // As it reads `seconds` from now.
    std::string ValueAfter(std::time_t seconds, ProfileTexts texts = ProfileTexts::Ansi) const {
        const auto document = OpenProfile(path, texts, std::time(nullptr) + seconds);
        const auto* section = document->FindSection("S");
        return section != nullptr ? std::string(document->FindEntry(*section, "a")->value) : "none";
    }
    bool StampIsStill(const struct stat& was) const {
        struct stat status;
        return stat(path.c_str(), &status) == 0 && qfc::StampOf(status) == qfc::StampOf(was);
    }

private:
    static constexpr std::size_t kSize = 8;
    static constexpr std::size_t kDigit = 6;
    char* m_bytes;
};

TEST_F(IniKept, SettledFileIsNotReadAgain) {
    EXPECT_EQ(ValueAfter(3600), "1");
    struct stat before;
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    SetDigit('2');
    ASSERT_TRUE(StampIsStill(before));
    EXPECT_EQ(ValueAfter(3600), "1");
}

TEST_F(IniKept, FileThatChangedAMomentAgoIsReadAgain) {
    EXPECT_EQ(ValueAfter(0), "1");
    SetDigit('2');
    EXPECT_EQ(ValueAfter(3600), "2");
    SetDigit('3');
    EXPECT_EQ(ValueAfter(3600), "2");
}

TEST_F(IniKept, SettledFileWithAnotherStampIsReadAgain) {
    EXPECT_EQ(ValueAfter(3600), "1");
    SetDigit('2');
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    EXPECT_EQ(ValueAfter(3600), "2");
}

TEST_F(IniKept, EachEncodingIsKeptForItself) {
    const auto ansi = OpenProfile(path, ProfileTexts::Ansi, std::time(nullptr) + 3600);
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_NE(OpenProfile(path, ProfileTexts::Ansi, std::time(nullptr) + 3600), ansi);
}

TEST_F(IniKept, WhatWasReadInAUtf8CodePageDoesNotServeReadersOfUtf8InAnother) {
    File("[S]\nÄ=1\n");
    EXPECT_EQ(qfc::ReadProfileText("S", "ä", "", path), "1");
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(qfc::ReadProfileText("S", "ä", "", path, ProfileTexts::Utf8), "1");
}

TEST_F(IniKept, SameBytesGiveTheSameDocument) {
    const auto document = OpenProfile(path, ProfileTexts::Ansi);
    File("[S]\na=1\n");
    EXPECT_EQ(OpenProfile(path, ProfileTexts::Ansi), document);
    File("[S]\na=2\n");
    EXPECT_NE(OpenProfile(path, ProfileTexts::Ansi), document);
}

TEST_F(IniKept, Utf8NamesMatchInAnyCaseWhateverTheCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    File("[S]\nÄ=ä\n");
    EXPECT_EQ(qfc::ReadProfileText("S", "ä", "", path, ProfileTexts::Utf8), "ä");
}

// What runs out of memory is thrown, and what was there is read the next time.
TEST_F(IniKept, WithoutMemoryReadersThrow_AndReadTheNextTime) {
    const std::string section = "S";
    const std::string key = "a";
    const std::string fallback = "none";
    int thrown = 0;
    for (int n = 1;; ++n) {
        File(n % 2 == 0 ? "[S]\na=12\n" : "[S]\na=21\n");
        const qfc::test::MemoryFaults faults(n);
        try {
            const int number = qfc::ReadProfileNumber(section, key, 0, path);
            EXPECT_EQ(number, n % 2 == 0 ? 12 : 21);
        } catch (const std::bad_alloc&) {
            ++thrown;
        }
        if (!faults.HasFailed()) break;
        EXPECT_EQ(qfc::ReadProfileText(section, key, fallback, path), n % 2 == 0 ? "12" : "21");
        EXPECT_EQ(qfc::ReadProfileSection(section, path).size(), 1u);
    }
    EXPECT_GE(thrown, 3);
}

}  // namespace
