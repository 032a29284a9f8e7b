// Reading the info file step by step, with each step made to fail. What files of all kinds say is tested with the
// golden ones.
#include "files/info_reader.h"

#include "client/identity.h"
#include "files/locked_file.h"
#include "files/older_generations.h"
#include "pvr_service_api.h"
#include "support/files.h"
#include "support/little_endian.h"
#include "support/log_capture.h"
#include "support/platform.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <glib.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace pvr;
using namespace support;
using namespace std::chrono_literals;

namespace {

const std::string golden = PVR_GOLDEN_FILES "/";

class InfoReader : public testing::Test {
protected:
    void SetUp() override { _get_pid_name(); }
    void TearDown() override { lock_patience = 25s; }

    int read(const std::string &name)
    {
        std::memset(&info, 0xa5, sizeof info);
        logged();
        return svc_pvr_get_pvr_file_info(name.c_str(), &info);
    }

    bool is_zero() const
    {
        const auto *bytes = reinterpret_cast<const unsigned char *>(&info);
        return std::all_of(bytes, bytes + sizeof info, [](unsigned char byte) { return byte == 0; });
    }

    /// What comes before the file is looked at.
    Lines beginning(const std::string &size) const
    {
        return {entry(" [file_path:" + recording + "]"), detail(support_line(1)),
                plain_info("file path [" + recording + "]"), plain_info("the path of inf file is [" + inf + "]"),
                plain_info("inf file size is [" + size + "]. srf_file_path[" + recording + "]")};
    }

    /// The lines but for the two with which a missing or empty file is measured.
    static Lines without_measuring(Lines lines)
    {
        std::erase_if(lines, [](const std::string &line) {
            return line.find("stat failed") != line.npos || line.find("open file[") != line.npos;
        });
        return lines;
    }

    static Lines joined(Lines one, const Lines &other)
    {
        one.insert(one.end(), other.begin(), other.end());
        return one;
    }

    TemporaryFolder folder;
    const std::string recording = folder / "a.srf";
    const std::string inf = folder / "a.inf";
    pvr_file_info_s info;
};

/// Where other threads of this process, and other processes, hold the file.
LockedFile held(const std::string &path)
{
    LockedFile file = LockedFile::to_read(path.c_str());
    EXPECT_TRUE(file.lock());
    return file;
}

std::string unfinished(char fill)
{
    std::string content(sizeof(pvr_file_info_s), fill);
    content[10627] = 1; // record_complete
    content[10628] = 0;
    return content;
}

} // namespace

TEST_F(InfoReader, LogsWhatACurrentFileSays)
{
    std::filesystem::copy(golden + "vexan-television.inf", inf);
    ASSERT_EQ(read(recording), 0);
    const Lines lines = logged_lines();
    const Lines before = joined(beginning("10905"), {plain_info("this is Vexan inf file!"),
                                                     plain_info("fread file return [result:1], file size [10905]")});
    ASSERT_EQ(lines.size(), before.size() + 9);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), lines.begin())) << testing::PrintToString(lines);
    const auto number = [](auto value) { return std::to_string(as_little_endian(value)); };
    EXPECT_EQ(lines[before.size()],
              plain_info("inf file info 01: channel_num[" + std::string(info.channel_num) + "] channel_name[" +
                         info.channel_name + "] channel_type[" + number(info.channel_type) + "], major[" +
                         number(info.major) + "] minor[" + number(info.minor) + "] program_num[" +
                         number(info.program_num) + "] programe_title[" + info.programe_title + "], duration[" +
                         number(info.duration) + "] resume_play_pos[" + number(info.resume_play_pos) + "] start_time[" +
                         number(info.start_time) + "]"));
    EXPECT_EQ(lines[before.size() + 1],
              plain_info("inf file info 02: video_pid[" + number(info.video_pid) + "] audio_pid[" +
                         number(info.audio_pid) + "] PCR_pid[" + number(info.PCR_pid) + "] video_type[" +
                         number(info.video_type) + "] audio_type[" + number(info.audio_type) + "], flag_HD[" +
                         number(info.flag_HD) + "] rating[" + number(info.rating) + "] flag_TTX[" +
                         number(info.flag_TTX) + "] repeat_type[" + number(info.repeat_type) + "] record_complete[" +
                         number(info.record_complete) + "] incomplete_reason[" + number(info.incomplete_reason) + "]"));
    char title[100];
    const auto *bytes = reinterpret_cast<const unsigned char *>(info.programe_title) + 36;
    std::snprintf(title, sizeof title, "pvr_info->programe_title_buf [%x][%x][%x] [%x][%x][%x]", bytes[0], bytes[1],
                  bytes[2], bytes[3], bytes[4], bytes[5]);
    EXPECT_EQ(lines.back(), plain_info(title));
}

TEST_F(InfoReader, LogsOnlyTheLowHalfOfTheFlagsAndNoByteBeyondAText)
{
    std::string content(sizeof(pvr_file_info_s), 'x');
    write_file(inf, content);
    ASSERT_EQ(read(recording), 0);
    for (const std::string &line : logged_lines()) {
        if (line.find("inf file info 01") != line.npos) {
            EXPECT_NE(line.find("channel_num[" + std::string(256, 'x') + "] channel_name[" + std::string(256, 'x') +
                                "] channel_type["),
                      line.npos);
        }
        if (line.find("inf file info 02") != line.npos) {
            EXPECT_NE(line.find("flag_HD[30840] rating"), line.npos) << line;
            EXPECT_NE(line.find("flag_TTX[30840] repeat"), line.npos) << line;
        }
    }
}

TEST_F(InfoReader, LogsHowAnOlderFileIsConverted)
{
    struct Row {
        const char *file;
        const char *name;
        const char *lower_case_name;
        const char *size;
    };
    const Row rows[] = {{"ardel-television.inf", "Ardel", "ardel", "12048"},
                        {"ardel-12052.inf", "Ardel", "ardel", "12052"},
                        {"selk-television.inf", "Selk", "selk", "12044"}};
    for (const Row &row : rows) {
        std::filesystem::copy_file(golden + row.file, inf, std::filesystem::copy_options::overwrite_existing);
        ASSERT_EQ(read(recording), 0);
        const std::vector<LoggedLine> lines = logged();
        Lines texts, converters;
        for (const LoggedLine &line : lines) {
            texts.push_back(std::to_string(line.priority) + " " + line.text);
            if (line.function.starts_with("_field_converter"))
                converters.push_back(line.function);
        }
        const std::string variable = std::string("pvr_info_") + row.lower_case_name + "->";
        glong units = 0;
        const auto length_of = [&units](const char *text) {
            g_free(g_utf8_to_utf16(text, -1, nullptr, &units, nullptr));
            return std::to_string(units);
        };
        EXPECT_EQ(
            texts,
            joined(beginning(row.size),
                   {plain_info(std::string("this is ") + row.name + " inf file!"),
                    plain_info(std::string("fread file return [result:1], file size [") + row.size + "]"),
                    plain_info("VERSION = 20"), plain_info("channelname_len is [" + length_of(info.channel_name) + "]"),
                    plain_info("utf8_channelname = " + std::string(info.channel_name)),
                    plain_info("channel_num = " + std::string(info.channel_num)),
                    plain_info("programe_title_len is [" + length_of(info.programe_title) + "]"),
                    plain_info("utf8_programtitle = " + std::string(info.programe_title)),
                    plain_info(variable + "ulDuration is " + std::to_string(as_little_endian(info.duration) / 1000)),
                    plain_info(variable + "ulResumePlayTime is " +
                               std::to_string(as_little_endian(info.resume_play_pos) / 1000)),
                    plain_info(variable + "nThumbnailType is " + std::to_string(as_little_endian(info.nThumbnailType))),
                    plain_info("pvr_info->record_complete = 1")}))
            << row.file;
        EXPECT_EQ(converters, Lines(10, std::string("_field_converter_") + row.lower_case_name)) << row.file;
    }
}

TEST_F(InfoReader, LogsATitleThatDoesNotEnd)
{
    std::filesystem::copy(PVR_BROKEN_FILES "/selk-title-without-terminator.inf", inf);
    ASSERT_EQ(read(recording), 0);
    const Lines lines = logged_lines();
    EXPECT_NE(std::find(lines.begin(), lines.end(), plain_entry("programe_title_len=[256] > 256 or < 0")), lines.end());
    EXPECT_STREQ(info.programe_title, "");
}

TEST_F(InfoReader, RefusesWhatIsNoRecordingAndTouchesNothing)
{
    EXPECT_EQ(read(folder / "a.ts"), PS_CALL_METHOD_FAILED);
    const Lines lines = logged_lines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines.back(), plain_entry("invalid file[" + (folder / "a.ts") + "]"));
    EXPECT_EQ(int{info.version}, 0xa5a5);
    EXPECT_EQ(svc_pvr_get_pvr_file_info(nullptr, &info), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(svc_pvr_get_pvr_file_info(recording.c_str(), nullptr), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(int{info.version}, 0xa5a5);
}

TEST_F(InfoReader, RefusesAProductThatDoesNotRecord)
{
    std::filesystem::copy(golden + "vexan-television.inf", inf);
    set_product(Product::does_not_record);
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(int{info.version}, 0xa5a5);
    int is_audio_only = -7;
    EXPECT_EQ(svc_pvr_is_audio_only(recording.c_str(), &is_audio_only), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(is_audio_only, -7);
}

TEST_F(InfoReader, FailsWhereThereIsNoRegularFile)
{
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(without_measuring(logged_lines()),
              joined(beginning("-1"), {plain_info("this is Vexan inf file!"),
                                       plain_entry("can't open the file[" + inf + "], errno [2]")}));
    EXPECT_TRUE(is_zero());

    ASSERT_EQ(mkdir(inf.c_str(), 0700), 0);
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), plain_entry("can't open the file[" + inf + "], errno [21]"));
    ASSERT_EQ(rmdir(inf.c_str()), 0);

    ASSERT_EQ(mkfifo(inf.c_str(), 0600), 0);
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), plain_entry("can't open the file[" + inf + "], errno [22]"));
    ASSERT_EQ(unlink(inf.c_str()), 0);

    ASSERT_EQ(symlink("nowhere", inf.c_str()), 0);
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), plain_entry("can't open the file[" + inf + "], errno [2]"));
}

TEST_F(InfoReader, ReadsWhatALinkLeadsTo)
{
    ASSERT_EQ(symlink((golden + "vexan-television.inf").c_str(), inf.c_str()), 0);
    EXPECT_EQ(read(recording), 0);
}

TEST_F(InfoReader, FailsWithAnEmptyFileAlthoughThereIsABackup)
{
    write_file(inf, "");
    std::filesystem::copy(golden + "vexan-television.inf", inf + ".bak");
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(without_measuring(logged_lines()),
              joined(beginning("0"), {plain_entry("file size[0] of bak inf file is still not valid"),
                                      plain_entry("failed to get file size from inf file and bak inf file")}));
    EXPECT_TRUE(is_zero());
}

TEST_F(InfoReader, ReadsTheBackupOfAFileThatIsFilledMeanwhile)
{
    write_file(inf, "");
    std::filesystem::copy(golden + "selk-television.inf", inf + ".bak");
    // the size is that of the file, the content is the backup's
    when_logged("inf file size is [0]", [this] { write_file(inf, "another process has begun to write"); });
    EXPECT_EQ(read(recording), 0);
    EXPECT_STRNE(info.programe_title, "");
    const Lines lines = logged_lines();
    EXPECT_NE(std::find(lines.begin(), lines.end(),
                        plain_info("file size[34] of bak inf file is valid, so try to read data from bak inf file[" +
                                   inf + ".bak]")),
              lines.end());
}

TEST_F(InfoReader, FailsWithoutTheBackupOfAFileThatIsFilledMeanwhile)
{
    write_file(inf, "");
    when_logged("inf file size is [0]", [this] { std::filesystem::resize_file(inf, 12044); });
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), plain_entry("can't open the file[" + inf + ".bak]"));
}

TEST_F(InfoReader, TakesTheSizeThatTheFileHasUnderItsLock)
{
    std::filesystem::copy(golden + "vexan-television.inf", inf);
    when_logged("inf file size is [10905]", [this] {
        std::filesystem::copy_file(golden + "selk-television.inf", folder / "other");
        write_file(inf, content_of(folder / "other"));
    });
    EXPECT_EQ(read(recording), 0);
    EXPECT_STRNE(info.programe_title, "");
    EXPECT_EQ(int{as_little_endian(info.record_complete)}, 1);
    const Lines lines = logged_lines();
    EXPECT_NE(std::find(lines.begin(), lines.end(), plain_info("this is Selk inf file!")), lines.end());
}

TEST_F(InfoReader, FailsWithAFileThatIsCutMeanwhile)
{
    std::filesystem::copy(golden + "vexan-pattern.inf", inf);
    when_logged("inf file size is [10905]", [this] { std::filesystem::resize_file(inf, 8000); });
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines().back(), plain_entry("error file or old info file"));
}

TEST_F(InfoReader, ReadsAFileThatIsRemovedMeanwhile)
{
    std::filesystem::copy(golden + "vexan-television.inf", inf);
    when_logged("inf file size is [10905]", [this] { std::filesystem::remove(inf); });
    EXPECT_EQ(read(recording), 0);
}

TEST_F(InfoReader, FailsWithACurrentFileThatStaysLocked)
{
    lock_patience = 20ms;
    std::filesystem::copy(golden + "vexan-television.inf", inf);
    const LockedFile file = held(inf);
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(logged_lines(),
              joined(beginning("10905"), {plain_info("this is Vexan inf file!"), plain_entry("flock fail")}));
    EXPECT_TRUE(is_zero());
}

TEST_F(InfoReader, ReadsAnOlderFileThatStaysLockedAllTheSame)
{
    lock_patience = 20ms;
    std::filesystem::copy(golden + "ardel-television.inf", inf);
    const LockedFile file = held(inf);
    EXPECT_EQ(read(recording), 0);
    EXPECT_STRNE(info.programe_title, "");
}

TEST_F(InfoReader, GivesUpTheLockInEveryCase)
{
    lock_patience = 0ms;
    for (const char *name : {"vexan-television.inf", "selk-television.inf"}) {
        std::filesystem::copy_file(golden + name, inf, std::filesystem::copy_options::overwrite_existing);
        EXPECT_EQ(read(recording), 0);
        held(inf);
    }
    write_file(inf, "short");
    EXPECT_EQ(read(recording), PS_CALL_METHOD_FAILED);
    held(inf);
}

TEST_F(InfoReader, CutsALongPathBeforeTheNameIsMade)
{
    // The info file of a path of more than 255 bytes is one that ends within its name.
    const std::string folder_of_cut = folder / std::string(200, 'd');
    ASSERT_EQ(mkdir(folder_of_cut.c_str(), 0700), 0);
    const std::string path = folder_of_cut + "/" + std::string(100, 'n') + ".srf";
    std::filesystem::copy(golden + "vexan-television.inf", path.substr(0, 252) + "inf");
    EXPECT_EQ(read(path), 0);
}

TEST_F(InfoReader, LeansOnNothingButTheFile)
{
    write_file(inf, unfinished('x'));
    lock_patience = 0ms;
    const LockedFile file = held(inf);
    logged();
    EXPECT_EQ(_svc_pvr_get_pvr_file_info_vexan(recording.c_str(), &info), 0);
    EXPECT_EQ(logged_lines(),
              (Lines{plain_entry("file_path:" + recording), plain_info("file path [" + recording + "]"),
                     plain_info("the path of inf file is [" + inf + "]"),
                     plain_info("fread file return [result:1], file size [10905]"),
                     plain_info("duration [2021161080], rating [30840], start time [2021161080], program title [" +
                                std::string(256, 'x') + "], major [30840], minor [30840] content_version[120]")}));
}

TEST_F(InfoReader, LeanRefusesWhatItCannotRead)
{
    EXPECT_EQ(_svc_pvr_get_pvr_file_info_vexan(nullptr, &info), -2);
    EXPECT_EQ(logged_lines().back(), plain_entry("invalid file[(null)]"));
    EXPECT_EQ(_svc_pvr_get_pvr_file_info_vexan("a.ts", &info), -2);
    EXPECT_EQ(logged_lines().back(), plain_entry("invalid file[a.ts]"));
    EXPECT_EQ(_svc_pvr_get_pvr_file_info_vexan(recording.c_str(), nullptr), -2);
    EXPECT_EQ(_svc_pvr_get_pvr_file_info_vexan(recording.c_str(), &info), -2);
    EXPECT_EQ(logged_lines().back(), plain_entry("can't open the file[" + inf + "], errno [2]"));
    write_file(inf, "short");
    EXPECT_EQ(_svc_pvr_get_pvr_file_info_vexan(recording.c_str(), &info), -2);
    EXPECT_EQ(logged_lines().back(), plain_entry("error file or old info file"));
}

TEST_F(InfoReader, CallsNoFileRecordedHere)
{
    logged();
    for (const auto ask : {IsFileRecordedLocal, IsFileRecordedLocalVexan}) {
        int result = -7;
        EXPECT_EQ(ask("/m/a.srf", &result), 7);
        EXPECT_EQ(result, 0);
        EXPECT_EQ(ask(nullptr, nullptr), 7);
    }
    EXPECT_EQ(logged_lines(), Lines());
    set_product(Product::does_not_record); // which nobody asks
    int result = -7;
    EXPECT_EQ(svc_pvr_is_file_recorded_local("/m/a.srf", &result), 0);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(logged_lines(), (Lines{entry(" [file_path:/m/a.srf] PROJECT_MODEL[emulator]"),
                                     plain_info("svc_pvr_is_file_recorded_local return result[0], retn[7]")}));
}

TEST_F(InfoReader, TellsTheSizeOfTheRecord) { EXPECT_EQ(get_size_of_pvr_file_info(), sizeof(pvr_file_info_s)); }

TEST_F(InfoReader, TellsWhetherThereIsSoundAloneWithTwoLines)
{
    std::filesystem::copy(golden + "vexan-audio-only.inf", inf);
    logged();
    int is_audio_only = -7;
    EXPECT_EQ(svc_pvr_is_audio_only(recording.c_str(), &is_audio_only), 0);
    EXPECT_EQ(is_audio_only, 1);
    const Lines lines = logged_lines();
    EXPECT_EQ(lines.front(), entry(" [file_path:" + recording + "]"));
    EXPECT_EQ(lines.back(), support::info(" [ret:0][info.thumbnail_type:1]"));
    EXPECT_EQ(svc_pvr_is_audio_only(recording.c_str(), nullptr), PS_CALL_METHOD_FAILED);
}

TEST(OlderGenerations, SwapNoMoreThan256Units)
{
    std::vector<unsigned char> endless(512, 'a');
    std::vector<unsigned short> units(256, 0);
    _trans_string(units.data(), endless.data());
    EXPECT_EQ(units, std::vector<unsigned short>(256, 0x6161));
    const unsigned char text[] = {0x12, 0x34, 0, 0, 9, 9};
    _trans_string(units.data(), text);
    EXPECT_EQ(units[0], 0x1234);
    EXPECT_EQ(units[1], 0);
    EXPECT_EQ(units[2], 0x6161) << "behind the end nothing is written";
}
