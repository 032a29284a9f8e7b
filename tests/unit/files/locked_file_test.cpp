#include "files/locked_file.h"

#include "support/file_size_limit.h"
#include "support/files.h"
#include "support/temporary_folder.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace pvr;
using namespace support;
using namespace std::chrono_literals;

namespace {

class LockedFileTest : public testing::Test {
protected:
    void TearDown() override { lock_patience = 25s; }

    TemporaryFolder folder;
    const std::string path = folder / "a.inf";
};

} // namespace

TEST_F(LockedFileTest, OpensNothingButRegularFiles)
{
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    ASSERT_EQ(symlink("nowhere", (folder / "dangling").c_str()), 0);
    const std::pair<std::string, int> rows[] = {{folder.path(), EISDIR},
                                                {folder / "pipe", EINVAL},
                                                {"/dev/null", EINVAL},
                                                {folder / "dangling", ENOENT},
                                                {path, ENOENT}};
    for (const auto &[name, error] : rows) {
        errno = 0;
        EXPECT_FALSE(LockedFile::to_read(name.c_str())) << name;
        EXPECT_EQ(errno, error) << name;
        EXPECT_FALSE(LockedFile::to_update(name.c_str())) << name;
        EXPECT_EQ(errno, error) << name;
    }
}

TEST_F(LockedFileTest, CreatesAFileThatWasNotThere)
{
    EXPECT_TRUE(LockedFile::to_create(path.c_str()));
    EXPECT_FALSE(LockedFile::to_create(path.c_str()));
    EXPECT_EQ(errno, EEXIST);
    write_file(path, "12345");
    EXPECT_EQ(LockedFile::to_update_or_create(path.c_str()).size(), 5) << "nothing is lost";
    EXPECT_EQ(LockedFile::to_update_or_create((folder / "b.inf").c_str()).size(), 0);
}

TEST_F(LockedFileTest, ProbesNoSymbolicLink)
{
    ASSERT_EQ(symlink(path.c_str(), (folder / "link").c_str()), 0);
    EXPECT_FALSE(LockedFile::to_probe((folder / "link").c_str()));
    EXPECT_EQ(errno, ELOOP);
    EXPECT_EQ(access(path.c_str(), F_OK), -1);
}

TEST_F(LockedFileTest, IsHandedOnToNoProgram)
{
    write_file(path, "");
    const int next = dup(0); // the descriptor that the file will have
    close(next);
    const LockedFile file = LockedFile::to_read(path.c_str());
    EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
}

TEST_F(LockedFileTest, KeepsOthersOutUntilItIsUnlockedOrClosed)
{
    lock_patience = 0ms;
    write_file(path, "");
    LockedFile first = LockedFile::to_read(path.c_str());
    LockedFile second = LockedFile::to_read(path.c_str());
    ASSERT_TRUE(first.lock());
    EXPECT_FALSE(second.lock());
    first.unlock();
    EXPECT_TRUE(second.lock());
    EXPECT_FALSE(first.lock());
    second = LockedFile();
    EXPECT_TRUE(first.lock());
}

TEST_F(LockedFileTest, DoesNotLeaveItsLockToAChild)
{
    lock_patience = 0ms;
    write_file(path, "");
    LockedFile first = LockedFile::to_read(path.c_str());
    ASSERT_TRUE(first.lock());
    const pid_t child = fork();
    if (child == 0) {
        pause(); // with a copy of the descriptor
        _exit(0);
    }
    first.close();
    EXPECT_TRUE(LockedFile::to_read(path.c_str()).lock());
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

TEST_F(LockedFileTest, WaitsForALockThatIsGivenUpInTime)
{
    write_file(path, "");
    LockedFile first = LockedFile::to_read(path.c_str());
    ASSERT_TRUE(first.lock());
    std::thread owner([&first] {
        std::this_thread::sleep_for(20ms);
        first.unlock();
    });
    EXPECT_TRUE(LockedFile::to_read(path.c_str()).lock());
    owner.join();
}

TEST_F(LockedFileTest, ReadsWhatThereIs)
{
    write_file(path, "0123456789");
    const LockedFile file = LockedFile::to_read(path.c_str());
    char room[8] = "-------";
    EXPECT_EQ(file.read(room, 4, 8), 2U);
    EXPECT_STREQ(room, "89-----");
    EXPECT_EQ(file.read(room, 4, 10), 0U);
    EXPECT_EQ(file.read(room, 4, 0), 4U);
    EXPECT_STREQ(room, "0123---");
}

TEST_F(LockedFileTest, WritesTwoPiecesAsOne)
{
    write_file(path, "0123456789");
    const LockedFile file = LockedFile::to_update(path.c_str());
    EXPECT_EQ(file.write("ab", 2, "cde", 3), 5U);
    EXPECT_EQ(content_of(path), "abcde56789");
    EXPECT_EQ(file.seek_to_end(), 0);
    EXPECT_EQ(file.write("", 0, "f", 1), 1U);
    EXPECT_EQ(file.seek_to_begin(), 0);
    EXPECT_EQ(file.write("A", 1), 1U);
    EXPECT_EQ(content_of(path), "Abcde56789f");
    EXPECT_TRUE(file.resize(3));
    EXPECT_EQ(content_of(path), "Abc");
}

TEST_F(LockedFileTest, TellsHowMuchAFullDeviceTook)
{
    const FileSizeLimit limit(4);
    const LockedFile file = LockedFile::to_update_or_create(path.c_str());
    EXPECT_EQ(file.write("ab", 2, "cde", 3), 4U);
    EXPECT_EQ(file.write("f", 1), 0U);
    EXPECT_EQ(content_of(path), "abcd");
    EXPECT_FALSE(file.resize(5));
}

TEST_F(LockedFileTest, CannotWriteWhatIsOpenToBeRead)
{
    write_file(path, "01");
    const LockedFile file = LockedFile::to_read(path.c_str());
    EXPECT_EQ(file.write("a", 1), 0U);
    EXPECT_FALSE(file.resize(0));
    EXPECT_EQ(content_of(path), "01");
}
