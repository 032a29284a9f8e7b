// An unfinished recording is complete or not by what the service says about it.
#include "pvr_service_api.h"
#include "support/files.h"
#include "support/little_endian.h"
#include "support/log_capture.h"
#include "support/scripted_service.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

using namespace support;

namespace {

const std::string golden = PVR_GOLDEN_FILES "/";
constexpr int as_in_the_file = 2;

class InfoRepair : public testing::Test {
protected:
    void SetUp() override { std::filesystem::copy(golden + "vexan-unfinished.inf", inf); }

    void expect(int record_complete, int incomplete_reason)
    {
        service.requests();
        logged();
        const std::string before = content_of(inf);
        ASSERT_EQ(svc_pvr_get_pvr_file_info(recording.c_str(), &info), 0);
        EXPECT_EQ(int{as_little_endian(info.record_complete)}, record_complete);
        EXPECT_EQ(int{as_little_endian(info.incomplete_reason)}, incomplete_reason);
        EXPECT_TRUE(content_of(inf) == before) << "the file stays as it is";
        const Lines lines = logged_lines();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), plain_entry("the recorded file has some exception!!!")),
                  record_complete);
        const auto shown = std::find_if(lines.begin(), lines.end(), [](const std::string &line) {
            return line.find("inf file info 02") != line.npos;
        });
        ASSERT_NE(shown, lines.end());
        EXPECT_TRUE(shown->ends_with("record_complete[" + std::to_string(record_complete) + "] incomplete_reason[" +
                                     std::to_string(incomplete_reason) + "]"))
            << *shown;
    }

    TemporaryFolder folder;
    const std::string recording = folder / "a.srf";
    const std::string inf = folder / "a.inf";
    pvr_file_info_s info;
    ScriptedService service;
};

} // namespace

TEST_F(InfoRepair, LeavesARecordingThatRuns)
{
    service.script("is_recording_file", answers("(1,)"));
    expect(0, as_in_the_file);
    EXPECT_EQ(service.requests(), std::vector{request("is_recording_file", "s", "('" + recording + "',)")});
}

TEST_F(InfoRepair, CompletesARecordingThatWasCutOff)
{
    service.script("is_recording_file", answers("(0,)"));
    expect(1, 5);
}

TEST_F(InfoRepair, LeavesARecordingThatTheServiceDoesNotSpeakAbout)
{
    service.script("is_recording_file", fails("org.example.Error.Bad", "bad"));
    expect(0, as_in_the_file);
    service.script("is_recording_file", answers("('text',)"));
    expect(0, as_in_the_file);
    service.script("is_recording_file", vanishes());
    expect(0, as_in_the_file);
    expect(0, as_in_the_file); // there is no service any more
}

TEST_F(InfoRepair, DoesNotAskAboutAFinishedRecording)
{
    std::filesystem::copy_file(golden + "vexan-television.inf", inf, std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(svc_pvr_get_pvr_file_info(recording.c_str(), &info), 0);
    EXPECT_EQ(int{as_little_endian(info.record_complete)}, 1);
    std::filesystem::copy_file(golden + "selk-television.inf", inf, std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(svc_pvr_get_pvr_file_info(recording.c_str(), &info), 0);
    EXPECT_EQ(service.requests(), std::vector<Request>());
}

TEST_F(InfoRepair, AsksAboutTheRecordingBesideTheFile)
{
    service.script("is_recording_file", answers("(1,)"));
    std::filesystem::rename(inf, folder / "timeshift.inf");
    const std::string before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    const std::pair<std::string, std::string> rows[] = {
        {"timeshift.tmp", "timeshift.tmp"}, // the live timeshift alone goes by its own name
        {"./timeshift.tmp", "./timeshift.srf"}, {folder / "timeshift.tmp", folder / "timeshift.srf"},
        {"timeshift.inf", "timeshift.srf"},     {"timeshift.srf", "timeshift.srf"},
    };
    for (const auto &[path, asked] : rows) {
        EXPECT_EQ(svc_pvr_get_pvr_file_info(path.c_str(), &info), 0) << path;
        EXPECT_EQ(service.requests(), std::vector{request("is_recording_file", "s", "('" + asked + "',)")});
    }
    std::filesystem::current_path(before);
}

TEST_F(InfoRepair, HoldsUpNobodyElseWhileItAsks)
{
    service.script("is_recording_file", stays_silent());
    std::thread asker([this] {
        EXPECT_EQ(svc_pvr_get_pvr_file_info(recording.c_str(), &info), 0);
        EXPECT_EQ(int{as_little_endian(info.incomplete_reason)}, 5);
    });
    service.wait_for_request();
    std::filesystem::copy(golden + "vexan-television.inf", folder / "b.inf");
    pvr_file_info_s other;
    EXPECT_EQ(svc_pvr_get_pvr_file_info((folder / "b.srf").c_str(), &other), 0);
    EXPECT_EQ(service.answer_late([](const std::string &) { return "(0,)"; }), 1U);
    asker.join();
}
