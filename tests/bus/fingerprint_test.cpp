// The fingerprint file written and read step by step, with each step made to fail.
#include "files/fingerprint.h"

#include "files/locked_file.h"
#include "pvr_service_api.h"
#include "support/file_size_limit.h"
#include "support/files.h"
#include "support/log_capture.h"
#include "support/platform.h"
#include "support/scripted_service.h"
#include "support/temporary_folder.h"

#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace pvr;
using namespace support;
using namespace std::chrono_literals;

namespace {

constexpr std::size_t header_size = sizeof(FingerprintHeader);

class Fingerprint : public testing::Test {
protected:
    void SetUp() override
    {
        service.script("set_fp_rec_time", answers("(0,)"));
        ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
        logged();
    }

    int write(long long time, const std::string &block)
    {
        return svc_pvr_write_sas_file(recording.c_str(), time, static_cast<int>(block.size()), block.data());
    }
    /// The block, or a text about why there is none.
    std::string read(long long time)
    {
        int size = -7;
        if (const int result = svc_pvr_read_sas_file(recording.c_str(), time, &size, nullptr); result != 0)
            return "size: " + std::to_string(result);
        std::string block(static_cast<std::size_t>(size), '?');
        const int result = svc_pvr_read_sas_file(recording.c_str(), time, &size, block.data());
        return result == 0 ? block : "block: " + std::to_string(result);
    }
    FingerprintHeader header() const
    {
        FingerprintHeader header;
        std::memcpy(&header, content_of(sas).data(), sizeof header);
        turn_little_endian(header);
        return header;
    }

    TemporaryFolder folder;
    const std::string recording = folder / "a.srf";
    const std::string sas = folder / "a.sas";
    ScriptedService service;
};

} // namespace

TEST_F(Fingerprint, OfAFirstBlockMakesTheFile)
{
    const long long time = 0x1234567890abcdef;
    EXPECT_EQ(write(time, "block"), 0);
    EXPECT_EQ(logged_lines(),
              (Lines{entry(" recTime[1311768467294899695] 2016-01-06"), plain_info("file path: " + sas),
                     plain_info("the file does not exists, Create it firstly."), plain_info("Finish write..."),
                     info(" someione"), detail(support_line(1)),
                     plain_info("org_vexan_tv_pvr_call_set_fp_rec_time_sync is called, nRecTime[-1867788817]")}));
    // the service is told the lower half of the time
    EXPECT_EQ(service.requests(), std::vector{request("set_fp_rec_time", "si", "('" + recording + "', -1867788817)")});
    FingerprintHeader expected{};
    expected.version = 20150825;
    expected.count = 1;
    expected.recTime[0] = time;
    expected.bufSize[0] = 5;
    expected.offset[0] = header_size;
    turn_little_endian(expected);
    EXPECT_TRUE(content_of(sas) == std::string(reinterpret_cast<const char *>(&expected), header_size) + "block");
    EXPECT_EQ(read(time), "block");
}

TEST_F(Fingerprint, OfAnotherBlockIsAddedBehind)
{
    EXPECT_EQ(write(1, "block"), 0);
    logged();
    EXPECT_EQ(write(-2, "another"), 0);
    const Lines lines = logged_lines();
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(lines[2], plain_info("the sas file exist."));
    EXPECT_EQ(lines[3], plain_info("recTime: -2, bufSize: 7, offset: 4813"));
    EXPECT_EQ(lines[4], plain_info("Finish write..."));
    EXPECT_EQ(header().count, 2);
    EXPECT_EQ(header().recTime[1], -2);
    EXPECT_EQ(content_of(sas).substr(header_size), "blockanother");
    EXPECT_EQ(read(-2), "another");
    EXPECT_EQ(read(1), "block");
}

TEST_F(Fingerprint, LogsWhatItReads)
{
    write(7, "block");
    logged();
    int size = -7;
    char block[5];
    EXPECT_EQ(svc_pvr_read_sas_file(recording.c_str(), 7, &size, block), 0);
    EXPECT_EQ(logged_lines(), (Lines{entry(" recTime[7]"), plain_info("file path: " + sas),
                                     plain_info("bufSize: 5, offset: 4808"), plain_info("Finish Read...")}));
}

TEST_F(Fingerprint, TakesItsFirstBlockOfATime)
{
    write(1, "first");
    write(1, "second");
    EXPECT_EQ(read(1), "first");
}

TEST_F(Fingerprint, TakesBlocksOfNothing)
{
    EXPECT_EQ(svc_pvr_write_sas_file(recording.c_str(), 1, 0, nullptr), 0);
    EXPECT_EQ(svc_pvr_write_sas_file(recording.c_str(), 2, 0, "ignored"), 0);
    EXPECT_EQ(content_of(sas).size(), header_size);
    EXPECT_EQ(read(2), "");
}

TEST_F(Fingerprint, TakesThreeHundredBlocks)
{
    for (int time = 0; time < 300; ++time)
        ASSERT_EQ(write(time, std::to_string(time)), 0) << time;
    EXPECT_EQ(read(299), "299");
    const std::string before = content_of(sas);
    logged();
    EXPECT_EQ(write(300, "one too many"), -1);
    EXPECT_EQ(logged_lines().back(), plain_entry("Invalid finger print count: 300"));
    EXPECT_TRUE(content_of(sas) == before);
}

TEST_F(Fingerprint, IsKeptWhateverTheServiceSays)
{
    service.script("set_fp_rec_time", answers("(-2,)"));
    EXPECT_EQ(write(1, "block"), 0);
    service.script("set_fp_rec_time", fails("org.example.Error.Bad", "bad"));
    EXPECT_EQ(write(2, "block"), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), failure(" GDBus error: GDBus.Error:org.example.Error.Bad: bad!!"));
    set_product(Product::does_not_record);
    EXPECT_EQ(write(3, "block"), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(read(3), "block") << "reading asks neither the product nor the service";
    EXPECT_EQ(header().count, 3);
}

TEST_F(Fingerprint, RefusesBadArgumentsBeforeTheFileIsTouched)
{
    EXPECT_EQ(svc_pvr_write_sas_file(nullptr, 1, 1, "x"), -1);
    EXPECT_EQ(svc_pvr_write_sas_file(recording.c_str(), 1, -1, "x"), -1);
    EXPECT_EQ(svc_pvr_write_sas_file(recording.c_str(), 1, 1, nullptr), -1);
    EXPECT_EQ(svc_pvr_write_sas_file("ab", 1, 1, "x"), -1);
    EXPECT_EQ(folder.names(), Lines());
    int size = -7;
    char block[1];
    EXPECT_EQ(svc_pvr_read_sas_file(nullptr, 1, &size, block), -1);
    EXPECT_EQ(svc_pvr_read_sas_file("ab", 1, &size, block), -1);
    write(1, "x");
    EXPECT_EQ(svc_pvr_read_sas_file(recording.c_str(), 1, nullptr, block), -1);
    EXPECT_EQ(size, -7);
}

TEST_F(Fingerprint, TellsWhatItDoesNotFind)
{
    EXPECT_EQ(read(1), "size: -1");
    EXPECT_EQ(logged_lines().back(), plain_entry("No such sas file."));
    write(1, "x");
    EXPECT_EQ(read(0x100000001), "size: -1") << "times are compared whole";
    EXPECT_EQ(logged_lines().back(), plain_entry("No matched time."));
}

TEST_F(Fingerprint, IsNoFileOfAnotherKind)
{
    ASSERT_EQ(mkdir(sas.c_str(), 0700), 0);
    EXPECT_EQ(write(1, "x"), -1);
    EXPECT_EQ(read(1), "size: -1");
    ASSERT_EQ(rmdir(sas.c_str()), 0);
    ASSERT_EQ(mkfifo(sas.c_str(), 0600), 0);
    EXPECT_EQ(write(1, "x"), -1);
    EXPECT_EQ(read(1), "size: -1");
    ASSERT_EQ(unlink(sas.c_str()), 0);
    ASSERT_EQ(symlink("nowhere", sas.c_str()), 0);
    EXPECT_EQ(write(1, "x"), -1);
    EXPECT_EQ(read(1), "size: -1");
    EXPECT_EQ(logged_lines().back(), plain_entry("No such sas file."));
    EXPECT_EQ(write(1, "x"), -1);
    EXPECT_EQ(folder.names(), Lines{"a.sas"}) << "the link leads nowhere still";
    EXPECT_EQ(svc_pvr_write_sas_file((folder / "missing/a.srf").c_str(), 1, 1, "x"), -1);
}

TEST_F(Fingerprint, OfBrokenFilesIsAddedOrTheFileIsLeftAlone)
{
    const auto list = nlohmann::json::parse(content_of(PVR_BROKEN_FILES "/broken.json"));
    int seen = 0;
    for (const auto &file : list["files"]) {
        if (!file.contains("write"))
            continue;
        SCOPED_TRACE(file.dump());
        const std::string before = content_of(PVR_BROKEN_FILES "/" + file["file"].get<std::string>());
        write_file(sas, before);
        EXPECT_EQ(write(0x7777, "new"), file["write"]);
        const std::string after = content_of(sas);
        EXPECT_TRUE(file["write"] == 0 ? after.size() == before.size() + 3 : after == before);
        ++seen;
    }
    EXPECT_GE(seen, 20);
}

TEST_F(Fingerprint, WaitsForTheHeaderOfAFileThatIsBeingMade)
{
    write(1, "block");
    const std::string whole = content_of(sas);
    write_file(sas, "");
    std::thread maker([&] {
        std::this_thread::sleep_for(50ms);
        LockedFile file = LockedFile::to_update(sas.c_str());
        EXPECT_TRUE(file.lock());
        EXPECT_EQ(file.write(whole.data(), whole.size()), whole.size());
    });
    EXPECT_EQ(write(2, "another"), 0);
    maker.join();
    EXPECT_EQ(read(1), "block");
    EXPECT_EQ(read(2), "another");
}

TEST_F(Fingerprint, IsAddedToAFileThatSomebodyElseMakesFirst)
{
    const std::string other = folder / "b.srf";
    svc_pvr_write_sas_file(other.c_str(), 1, 5, "block");
    when_logged("the file does not exists", [&] { std::filesystem::rename(folder / "b.sas", sas); });
    EXPECT_EQ(write(2, "another"), 0);
    EXPECT_EQ(read(1), "block");
    EXPECT_EQ(read(2), "another");
}

TEST_F(Fingerprint, SaysWhatADeviceCouldNotTake)
{
    const auto complaint_of_writing = [this](long long time, const std::string &block) {
        logged();
        EXPECT_EQ(write(time, block), -1);
        for (const std::string &line : logged_lines())
            if (line.find("error") != line.npos)
                return line;
        return std::string();
    };
    FileSizeLimit limit(header_size + 2);
    EXPECT_EQ(complaint_of_writing(1, "block"), plain_entry("write first sas data error"));
    EXPECT_EQ(read(1), "size: -1") << "what is not there is not promised";

    std::filesystem::remove(sas);
    EXPECT_EQ(write(1, "bl"), 0);
    EXPECT_EQ(complaint_of_writing(2, "another"), plain_entry("write new sas data error"));
    EXPECT_EQ(header().count, 2) << "the header was written before";
    EXPECT_EQ(read(1), "bl");
    EXPECT_EQ(read(2), "size: -1");

    limit.set(100);
    EXPECT_EQ(complaint_of_writing(3, "third"), plain_entry("write header data error"));
    EXPECT_EQ(read(1), "bl");

    std::filesystem::remove(sas);
    EXPECT_EQ(complaint_of_writing(1, "block"), plain_entry("write header data error"));
    EXPECT_EQ(complaint_of_writing(1, "block"), plain_entry("read header data error"));
}

TEST_F(Fingerprint, IsNeitherReadNorWrittenWhileItStaysLocked)
{
    write(1, "block");
    const std::string before = content_of(sas);
    lock_patience = 20ms;
    LockedFile other = LockedFile::to_read(sas.c_str());
    ASSERT_TRUE(other.lock());
    EXPECT_EQ(read(1), "size: -1");
    EXPECT_EQ(write(2, "another"), -1);
    lock_patience = 25s;
    EXPECT_TRUE(content_of(sas) == before);
}
