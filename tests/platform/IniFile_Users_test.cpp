// Profiles and their locks where several users write.
#include "tests/platform/IniTest.h"
#include "tests/support/SystemCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using qfc::test::IniWrite;
namespace fs = std::filesystem;

constexpr uid_t kOwner = 65533;
constexpr uid_t kOther = 65534;
constexpr gid_t kShared = 65532;

bool Become(uid_t user, const std::vector<gid_t>& groups) {
    return setgroups(groups.size(), groups.data()) == 0 && setegid(user) == 0 && seteuid(user) == 0;
}

// What `call` answers as another user, whom the permissions bind; only root can become one.
template <class Call>
int AsAnotherUser(const Call& call, uid_t user = kOther, const std::vector<gid_t>& groups = {}) {
    const pid_t pid = fork();
    if (pid == 0) _exit(Become(user, groups) ? call() : 100);
    int status = -1;
    EXPECT_EQ(waitpid(pid, &status, 0), pid);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct IniWriteOfAnotherUser : IniWrite {
    IniWriteOfAnotherUser() {
        File("[S]\na=1\n");
        fs::permissions(folder.Path(), fs::perms::all);
    }
    void SetUp() override {
        if (geteuid() != 0 || AsAnotherUser([] { return 1; }) != 1) GTEST_SKIP() << "only root can be another user";
    }
    // The profile belongs to the owner and the shared group.
    void Share(unsigned permissions) const {
        ASSERT_EQ(chown(path.c_str(), kOwner, kShared), 0);
        ASSERT_EQ(chmod(path.c_str(), permissions), 0);
    }
    int WriteAs(uid_t user, const std::vector<gid_t>& groups, const char* value, mode_t mask = 022) const {
        return AsAnotherUser(
            [&] {
                umask(mask);
                return Write("S", "a", value);
            },
            user, groups);
    }
    void ExpectShared(unsigned permissions) const {
        struct stat status;
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_gid, kShared);
        EXPECT_EQ(status.st_mode & 0777, permissions);
    }
};

TEST_F(IniWriteOfAnotherUser, GroupOfTheFileStays_SoItsMembersTakeTurns) {
    Share(0660);
    EXPECT_EQ(WriteAs(kOther, {kShared}, "2"), 1);
    ExpectShared(0660);
    EXPECT_EQ(WriteAs(kOwner, {kShared}, "3"), 1);
    EXPECT_EQ(File(), "[S]\na=3\n");
    ExpectShared(0660);
}

TEST_F(IniWriteOfAnotherUser, LockOfTheOwnerCanBeHeldByTheGroup) {
    Share(0660);
    EXPECT_EQ(WriteAs(kOwner, {kShared}, "2", 077), 1);
    EXPECT_EQ(WriteAs(kOther, {kShared}, "3"), 1);
    EXPECT_EQ(File(), "[S]\na=3\n");
}

TEST_F(IniWriteOfAnotherUser, LockOfBeforeTheFileWasSharedCanBeHeldByTheGroup) {
    ASSERT_EQ(chown(path.c_str(), kOwner, kOwner), 0);
    EXPECT_EQ(WriteAs(kOwner, {kShared}, "2", 077), 1);
    Share(0660);
    EXPECT_EQ(WriteAs(kOwner, {kShared}, "3", 077), 1);
    EXPECT_EQ(WriteAs(kOther, {kShared}, "4"), 1);
    EXPECT_EQ(File(), "[S]\na=4\n");
}

TEST_F(IniWriteOfAnotherUser, WhereTheGroupCannotStay_ItsRightsAreNotTakenFromIt) {
    Share(0660);
    EXPECT_EQ(WriteAs(kOwner, {}, "2", 077), 0);
    EXPECT_EQ(File(), "[S]\na=1\n");
    ExpectShared(0660);
    EXPECT_EQ(WriteAs(kOther, {kShared}, "3"), 1) << "nor does the lock that is left keep them out";
    EXPECT_EQ(File(), "[S]\na=3\n");
}

TEST_F(IniWriteOfAnotherUser, GroupThatHasNoRightsOfItsOwnMayChange) {
    Share(0600);
    EXPECT_EQ(WriteAs(kOwner, {}, "2"), 1);
    Share(0666);
    EXPECT_EQ(WriteAs(kOther, {}, "3"), 1);
    EXPECT_EQ(File(), "[S]\na=3\n");
}

TEST_F(IniWriteOfAnotherUser, FileThatRootWritesStaysItsOwners) {
    Share(0600);
    const mode_t before = umask(077);
    EXPECT_EQ(Write("S", "a", "2"), 1);
    umask(before);
    EXPECT_EQ(WriteAs(kOwner, {}, "3"), 1);
    EXPECT_EQ(File(), "[S]\na=3\n");
}

TEST_F(IniWriteOfAnotherUser, FileThatHeMayNotWriteIsNotReplaced) {
    fs::permissions(path, fs::perms(0644));
    EXPECT_EQ(AsAnotherUser([&] { return Write("S", "a", "2"); }), 0);
    EXPECT_EQ(File(), "[S]\na=1\n");
    EXPECT_EQ(AsAnotherUser([&] { return Write("S", "a", "1"); }), 1);
}

TEST_F(IniWriteOfAnotherUser, LockThatSomebodyElseMadeIsNoObstacle) {
    fs::permissions(path, fs::perms(0666));
    folder.Write("file.ini.lock", "");
    fs::permissions(path + ".lock", fs::perms(0644));
    EXPECT_EQ(AsAnotherUser([&] { return Write("S", "a", "2"); }), 1);
    EXPECT_EQ(File(), "[S]\na=2\n");
}

TEST_F(IniWriteOfAnotherUser, LockMadeUnderANarrowMaskIsNoObstacle) {
    fs::permissions(path, fs::perms(0666));
    const mode_t before = umask(077);
    EXPECT_EQ(Write("S", "a", "2"), 1);
    umask(before);
    EXPECT_EQ(AsAnotherUser([&] { return Write("S", "a", "3"); }), 1);
    EXPECT_EQ(File(), "[S]\na=3\n");
}

TEST_F(IniWrite, LinkInPlaceOfTheLockWidensNoOtherFile) {
    File("[S]\na=1\n");
    fs::permissions(path, fs::perms(0666));
    const std::string secret = folder.Write("secret", "x");
    fs::permissions(secret, fs::perms(0600));
    fs::create_symlink(secret, path + ".lock");
    EXPECT_EQ(Write("S", "a", "2"), 0);
    fs::remove(path + ".lock");
    fs::create_hard_link(secret, path + ".lock");
    EXPECT_EQ(Write("S", "a", "2"), 1);
    EXPECT_EQ(fs::status(secret).permissions(), fs::perms(0600));
}

TEST_F(IniWriteOfAnotherUser, FileOfOursUnderTheNameOfTheLockStaysOurs) {
    Share(0664);
    const std::string filled = folder.Write("file.ini.lock", "x");
    ASSERT_EQ(filled, path + ".lock");
    fs::permissions(filled, fs::perms(0600));
    EXPECT_EQ(Write("S", "a", "2"), 1);
    struct stat status;
    ASSERT_EQ(stat(filled.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0u);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(IniWrite, NewProfileIsTheWritersAloneUntilItHasTheRightsOfTheOld) {
    File("[S]\na=1\n");
    fs::permissions(path, fs::perms(0640));
    int asked = 0;
    qfc::test::SystemCalls calls;
    calls.fchmod = [&](int file, mode_t mode) {
        struct stat status;
        EXPECT_EQ(fstat(file, &status), 0);
        if ((mode & 0777) == 0640) {
            ++asked;
            EXPECT_EQ(status.st_size, 0);
            EXPECT_EQ(status.st_mode & 077, 0u);
        }
        return qfc::test::SystemCalls::RealFchmod(file, mode);
    };
    EXPECT_EQ(Write("S", "a", "2"), 1);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
}

// A network file system locks exclusively only what is open for writing.
TEST_F(IniWrite, LockIsOpenForWriting) {
    qfc::test::SystemCalls calls;
    calls.flock = [](int file, int operation) {
        const bool writes = (fcntl(file, F_GETFL) & O_ACCMODE) == O_RDWR;
        return writes ? qfc::test::SystemCalls::RealFlock(file, operation) : qfc::test::SystemCalls::Refuse(EBADF);
    };
    EXPECT_EQ(Write("S", "a", "1"), 1);
    EXPECT_EQ(Write("S", "a", "2"), 1);
    EXPECT_EQ(File(), "[S]\r\na=2\r\n");
}

TEST_F(IniWrite, PipeInPlaceOfTheLockIsNotWaitedFor) {
    File("[S]\na=1\n");
    ASSERT_EQ(mkfifo((path + ".lock").c_str(), 0666), 0);
    EXPECT_EQ(Write("S", "a", "2"), 1);
    EXPECT_EQ(File(), "[S]\na=2\n");
}

TEST_F(IniWriteOfAnotherUser, WhatChangesNothingSucceedsWhereNothingMayBeMade) {
    fs::permissions(folder.Path(), fs::perms(0755));
    EXPECT_EQ(AsAnotherUser([&] { return Write("S", "k", nullptr); }), 1);
    EXPECT_EQ(AsAnotherUser([&] { return Write("S", "a", "1"); }), 1);
    EXPECT_EQ(AsAnotherUser([&] { return Write("S", "a", nullptr); }), 0);
    EXPECT_EQ(File(), "[S]\na=1\n");
}

}  // namespace
