// Writing the info file step by step, with each step made to fail, and what is in the file afterwards.
#include "files/locked_file.h"
#include "pvr_service_api.h"
#include "support/file_size_limit.h"
#include "support/files.h"
#include "support/little_endian.h"
#include "support/log_capture.h"
#include "support/platform.h"
#include "support/scripted_service.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/file.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace pvr;
using namespace support;
using namespace std::chrono_literals;

namespace {

const std::string golden = PVR_GOLDEN_FILES "/";
constexpr std::size_t record_size = sizeof(pvr_file_info_s);

class InfoWriter : public testing::Test {
protected:
    void SetUp() override
    {
        service.script("set_pvr_file_info", answers("(0,)"));
        ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
        auto *bytes = reinterpret_cast<unsigned char *>(&info);
        for (std::size_t i = 0; i < sizeof info; ++i)
            bytes[i] = static_cast<unsigned char>(i % 251);
    }
    void TearDown() override
    {
        setfsuid(geteuid());
        lock_patience = 25s;
    }

    /// Only what the owner of a file may do works from now on, even for root.
    void be_nobody()
    {
        constexpr uid_t nobody = 65534;
        ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
        ASSERT_EQ(chmod(inf.c_str(), 0444), 0);
        setfsuid(nobody);
    }

    int write(const std::string &path)
    {
        logged();
        return svc_pvr_set_pvr_file_info_ex(path.c_str(), &info);
    }

    /// The record as it has to be on disk.
    std::string record() const
    {
        std::string bytes(reinterpret_cast<const char *>(&info), sizeof info);
        bytes[0] = 20;
        bytes[1] = 0;
        return bytes;
    }

    /// The lines up to the service's being told.
    Lines beginning(const std::string &size) const
    {
        return {entry(" [file_path:" + recording + "]"),
                detail(support_line(1)),
                plain_info("the path of inf file is [" + inf + "]"),
                plain_info("inf file size is [" + size + "]"),
                plain_info("after build buf, buf_len is [1], buf is [], sizeof(pvr_file_info_s) is [10905]"),
                plain_info("write_inf_file, path [" + inf + "]")};
    }
    static Lines joined(Lines one, const Lines &other)
    {
        one.insert(one.end(), other.begin(), other.end());
        return one;
    }
    Lines probed() const
    {
        return {plain_info("write to Vexan info file!"), plain_info("We can create file"),
                plain_info("Remove temp file success!")};
    }

    TemporaryFolder folder;
    const std::string recording = folder / "a.srf";
    const std::string inf = folder / "a.inf";
    const std::string written = plain_info("write inf file success, the path is [" + inf + "]");
    const std::string not_written = plain_entry("write inf file failed, the path is [" + inf + "]");
    const std::string opened = plain_info("success to open file,the path is [" + inf + "]");
    pvr_file_info_s info;
    ScriptedService service;
};

/// Holds a file's lock as another process does.
class Lock {
public:
    explicit Lock(const std::string &path) : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        EXPECT_EQ(flock(descriptor_, LOCK_EX | LOCK_NB), 0);
    }
    ~Lock() { close(descriptor_); }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;

private:
    int descriptor_;
};

} // namespace

TEST_F(InfoWriter, ReplacesACurrentFile)
{
    for (const std::size_t size : {record_size, std::size_t{1}, std::size_t{20000}}) {
        write_file(inf, std::string(size, 'x'));
        info.version = as_little_endian(std::uint16_t{7});
        service.requests();
        EXPECT_EQ(write(recording), 0);
        EXPECT_EQ(logged_lines(), joined(joined(beginning(std::to_string(size)), probed()), {opened, written}));
        EXPECT_EQ(service.requests(), std::vector{request("set_pvr_file_info", "ssi", "('" + inf + "', '', 1)")});
        EXPECT_EQ(int{as_little_endian(info.version)}, 20);
        EXPECT_TRUE(content_of(inf) == record()) << size;
        EXPECT_EQ(folder.names(), Lines{"a.inf"});
    }
}

TEST_F(InfoWriter, SetsNothingButTheResumePositionOfAnOlderFile)
{
    struct Row {
        const char *file;
        const char *name;
        std::size_t size;
    };
    for (const Row &row : {Row{"ardel-pattern.inf", "Ardel", 12048}, Row{"ardel-12052.inf", "Ardel", 12048},
                           Row{"selk-pattern.inf", "Selk", 12044}}) {
        const std::string before = content_of(golden + row.file);
        write_file(inf, before);
        info.version = as_little_endian(std::uint16_t{7});
        info.resume_play_pos = as_little_endian(1999U);
        EXPECT_EQ(write(recording), 0);
        const std::string size = std::to_string(before.size());
        EXPECT_EQ(logged_lines(),
                  joined(beginning(size), {plain_info(std::string("write to ") + row.name + " inf file!"),
                                           plain_info("fread file return [result:1], file size [" + size + "]"),
                                           plain_info("set ulResumePlayTime is 1"), written}));
        std::string expected = before.substr(0, row.size);
        expected.replace(788, 4, std::string("\1\0\0\0", 4));
        EXPECT_TRUE(content_of(inf) == expected) << row.file;
        EXPECT_EQ(int{as_little_endian(info.version)}, 7) << "the caller's record is not changed";
    }
}

TEST_F(InfoWriter, WritesWhateverTheServiceSays)
{
    const Reply replies[] = {answers("(-2,)"), fails("org.example.Error.Bad", "bad"), answers("('text',)"), vanishes()};
    for (const Reply &reply : replies) {
        write_file(inf, "x");
        service.script("set_pvr_file_info", reply);
        EXPECT_EQ(write(recording), 0);
        EXPECT_TRUE(content_of(inf) == record());
    }
}

TEST_F(InfoWriter, RefusesWhatItCannotWrite)
{
    write_file(inf, "x");
    EXPECT_EQ(svc_pvr_set_pvr_file_info_ex(nullptr, &info), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), plain_entry("the file path of srf is null"));
    EXPECT_EQ(write(folder / "a.ts"), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), plain_entry("invalid file[" + (folder / "a.ts") + "]"));
    EXPECT_EQ(svc_pvr_set_pvr_file_info_ex(recording.c_str(), nullptr), PS_CALL_METHOD_FAILED);
    set_product(Product::does_not_record);
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), support::info(" did not support PVR!!"));
    EXPECT_EQ(content_of(inf), "x");
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

TEST_F(InfoWriter, MakesNoFileWhereThereIsNone)
{
    const std::string refused = plain_entry("failed to get file size for inf file[" + inf + "]");
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), refused);
    EXPECT_EQ(folder.names(), Lines());
    write_file(inf, "");
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), refused);
    EXPECT_EQ(content_of(inf), "");
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

TEST_F(InfoWriter, SucceedsWhereNoFileCanBeMade)
{
    write_file(inf, "x");
    ASSERT_EQ(mkdir((folder / "a.tmp").c_str(), 0700), 0);
    info.version = as_little_endian(std::uint16_t{7});
    EXPECT_EQ(write(recording), 0);
    EXPECT_EQ(logged_lines(), joined(beginning("1"), {plain_info("write to Vexan info file!"),
                                                      plain_entry("We can't create file in recording device path")}));
    EXPECT_EQ(content_of(inf), "x");
    EXPECT_EQ(int{as_little_endian(info.version)}, 7);
}

TEST_F(InfoWriter, SparesTheTimeshiftThatItWritesAbout)
{
    write_file(folder / "timeshift.inf", "x");
    write_file(folder / "timeshift.tmp", "live");
    EXPECT_EQ(write(folder / "timeshift.tmp"), 0);
    EXPECT_EQ(content_of(folder / "timeshift.tmp"), "live");
    EXPECT_TRUE(content_of(folder / "timeshift.inf") == record());
}

TEST_F(InfoWriter, SparesTheFileThatItIsNamedAfter)
{
    write_file(inf, "x");
    write_file(folder / "a.tmp", "precious");
    EXPECT_EQ(write(folder / "a.tmp"), 0);
    EXPECT_EQ(content_of(folder / "a.tmp"), "precious");
    EXPECT_TRUE(content_of(inf) == record());
}

TEST_F(InfoWriter, WritesWhereALinkLeads)
{
    write_file(folder / "other", "x");
    ASSERT_EQ(symlink("other", inf.c_str()), 0);
    EXPECT_EQ(write(recording), 0);
    EXPECT_TRUE(content_of(folder / "other") == record());
    EXPECT_TRUE(std::filesystem::is_symlink(inf));
}

TEST_F(InfoWriter, FailsWithACurrentFileThatItMayNotWrite)
{
    write_file(inf, "x");
    be_nobody();
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines(), joined(joined(beginning("1"), probed()),
                                     {plain_entry("failed to open file,fd == NULL,the path is [" + inf + "]")}));
    EXPECT_EQ(content_of(inf), "x");
}

TEST_F(InfoWriter, FailsWithAnOlderFileThatItMayNotWriteOnceItHasReadIt)
{
    const std::string before = content_of(golden + "selk-pattern.inf");
    write_file(inf, before);
    be_nobody();
    info.resume_play_pos = as_little_endian(5000U);
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines(), joined(beginning("12044"), {plain_info("write to Selk inf file!"),
                                                          plain_info("fread file return [result:1], file size [12044]"),
                                                          plain_info("set ulResumePlayTime is 5"),
                                                          plain_entry("can't open the file[" + inf + "]")}));
    EXPECT_TRUE(content_of(inf) == before);
}

TEST_F(InfoWriter, FailsWithAnOlderFileThatIsGone)
{
    std::filesystem::copy(golden + "selk-pattern.inf", inf);
    when_logged("write_inf_file", [this] { std::filesystem::remove(inf); });
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines(), joined(beginning("12044"), {plain_info("write to Selk inf file!"),
                                                          plain_entry("can't open the file[" + inf + "]")}));
    EXPECT_EQ(folder.names(), Lines());
}

TEST_F(InfoWriter, MakesACurrentFileAnewThatIsGone)
{
    write_file(inf, "x");
    when_logged("write_inf_file", [this] { std::filesystem::remove(inf); });
    EXPECT_EQ(write(recording), 0);
    EXPECT_TRUE(content_of(inf) == record());
}

TEST_F(InfoWriter, FailsWhenAFolderTakesTheFilesPlace)
{
    write_file(inf, "x");
    when_logged("write_inf_file", [this] {
        std::filesystem::remove(inf);
        std::filesystem::create_directory(inf);
    });
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), plain_entry("failed to open file,fd == NULL,the path is [" + inf + "]"));
    EXPECT_TRUE(std::filesystem::is_directory(inf));
}

TEST_F(InfoWriter, KeepsTheGenerationThatTheFileHasUnderItsLock)
{
    write_file(inf, "x");
    const std::string older = content_of(golden + "ardel-pattern.inf");
    when_logged("write_inf_file", [&] { write_file(inf, older); });
    info.resume_play_pos = as_little_endian(3000U);
    EXPECT_EQ(write(recording), 0);
    std::string expected = older;
    expected.replace(788, 4, std::string("\3\0\0\0", 4));
    EXPECT_TRUE(content_of(inf) == expected);
}

TEST_F(InfoWriter, CutsACurrentFileThatTheDeviceCannotHold)
{
    write_file(inf, std::string(record_size, 'x'));
    const FileSizeLimit limit(5000);
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), not_written);
    EXPECT_TRUE(content_of(inf) == record().substr(0, 5000));
    pvr_file_info_s read;
    EXPECT_EQ(svc_pvr_get_pvr_file_info(recording.c_str(), &read), PS_CALL_METHOD_FAILED);
}

TEST_F(InfoWriter, CutsAnOlderFileSoThatItDoesNotReadAsCurrent)
{
    std::filesystem::copy(golden + "ardel-pattern.inf", inf);
    const FileSizeLimit limit(11500);
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), not_written);
    EXPECT_LT(std::filesystem::file_size(inf), record_size);
    pvr_file_info_s read;
    EXPECT_EQ(svc_pvr_get_pvr_file_info(recording.c_str(), &read), PS_CALL_METHOD_FAILED);
}

TEST_F(InfoWriter, LeavesAFileOfWhichNothingCouldBeWritten)
{
    write_file(inf, "precious");
    const FileSizeLimit limit(0);
    EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), not_written);
    EXPECT_EQ(content_of(inf), "precious");
}

TEST_F(InfoWriter, WritesNothingThatStaysLocked)
{
    lock_patience = 20ms;
    for (const std::string &before : {std::string("precious"), content_of(golden + "selk-pattern.inf")}) {
        write_file(inf, before);
        const Lock lock(inf);
        EXPECT_EQ(write(recording), PS_CALL_METHOD_FAILED);
        EXPECT_EQ(logged_lines().back(), not_written);
        EXPECT_TRUE(content_of(inf) == before);
    }
}

TEST_F(InfoWriter, WaitsForALockThatIsGivenUp)
{
    write_file(inf, "x");
    auto lock = std::make_unique<Lock>(inf);
    std::thread owner([&lock] {
        std::this_thread::sleep_for(30ms);
        lock.reset();
    });
    EXPECT_EQ(write(recording), 0);
    owner.join();
    EXPECT_TRUE(content_of(inf) == record());
}

TEST_F(InfoWriter, GivesUpTheLockInEveryCase)
{
    write_file(inf, "x");
    EXPECT_EQ(write(recording), 0);
    Lock{inf};
    ASSERT_EQ(mkdir((folder / "a.tmp").c_str(), 0700), 0);
    EXPECT_EQ(write(recording), 0) << "no file can be made";
    Lock{inf};
    std::filesystem::copy_file(golden + "selk-pattern.inf", inf, std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(write(recording), 0);
    Lock{inf};
}
