#include "files/paths.h"

#include "support/log_capture.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace pvr;
using namespace support;

TEST(RecordingPath, EndsInOneOfThreeExtensions)
{
    for (const char *path : {"/m/a.srf", "/m/a.inf", "timeshift.tmp", ".srf", "a.srf.inf", "/m/ä b%s.srf"}) {
        EXPECT_EQ(_is_valid_pvr_srf_inf_file(path), 1) << path;
        EXPECT_EQ(logged_lines(), Lines()) << path;
    }
}

TEST(RecordingPath, IsRefusedWithTheReason)
{
    struct Row {
        const char *path;
        std::string line;
    };
    const std::string extensions = ", file extension is not .srf or .inf or .tmp";
    const Row rows[] = {
        {nullptr, "file_path is null, pls check"},
        {"", "invalid pvr file[], wrong extension length[0]"},
        {"abc", "invalid pvr file[abc], wrong extension length[3]"},
        {"srf", "invalid pvr file[srf], wrong extension length[3]"},
        {"a.SRF", "invalid pvr file[a.SRF]" + extensions},
        {"a.srf ", "invalid pvr file[a.srf ]" + extensions},
        {"a.srf.bak", "invalid pvr file[a.srf.bak]" + extensions},
        {"asrf", "invalid pvr file[asrf]" + extensions},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(_is_valid_pvr_srf_inf_file(row.path), 0) << row.line;
        EXPECT_EQ(logged_lines(), Lines{plain_entry(row.line)});
    }
}

TEST(SidePath, OverwritesTheLastThreeCharactersWhateverTheyAre)
{
    const std::pair<std::string, std::string> rows[] = {
        {"/m/a.srf", "/m/a.inf"},
        {"/m/a.tmp", "/m/a.inf"},
        {"/m/a.inf", "/m/a.inf"},
        {"srf", "inf"},
        {"abcd", "ainf"},
        {"ab", ""},
        {"", ""},
    };
    for (const auto &[path, expected] : rows) {
        const SidePath side = SidePath::with_extension(path.c_str(), "inf");
        EXPECT_EQ(side.c_str(), expected);
        EXPECT_EQ(static_cast<bool>(side), !expected.empty());
    }
}

TEST(SidePath, IsCutAt255BytesBeforeTheNameIsMadeOfIt)
{
    const std::string path = std::string(296, 'x') + ".srf";
    EXPECT_EQ(SidePath::with_extension(path.c_str(), "inf").c_str(), std::string(252, 'x') + "inf");
    EXPECT_EQ(SidePath::with_suffix(path.c_str(), ".bak").c_str(), std::string(255, 'x'));
    EXPECT_EQ(SidePath::with_suffix(std::string(253, 'x').c_str(), ".bak").c_str(), std::string(253, 'x') + ".b");
}

TEST(SidePath, AppendsASuffix) { EXPECT_STREQ(SidePath::with_suffix("/m/a.inf", ".bak").c_str(), "/m/a.inf.bak"); }

namespace {

/// A folder of the test's own.
class FileSize : public testing::Test {
protected:
    void SetUp() override
    {
        // no random letters: log lines are compared with what looks like an address taken out
        folder = std::filesystem::temp_directory_path() / ("pvr-file-size-" + std::to_string(getpid()));
        std::filesystem::create_directory(folder);
        path = folder / "a.inf";
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    static std::string stat_line(int result, const std::string &error, const std::string &path)
    {
        return plain_entry("stat failed iStatRet[" + std::to_string(result) + "], errno [" + error + "], path_temp[" +
                           path + "], st_size[0], try to use fseek() to get file size");
    }

    std::filesystem::path folder;
    std::filesystem::path path;
};

} // namespace

TEST_F(FileSize, IsThatOfTheFileWithoutALine)
{
    std::ofstream(path) << "12345";
    EXPECT_EQ(_get_file_size(path.c_str()), 5);
    std::filesystem::resize_file(path, 5'000'000'000);
    EXPECT_EQ(_get_file_size(path.c_str()), std::min<std::int64_t>(5'000'000'000, std::numeric_limits<long>::max()));
    EXPECT_EQ(logged_lines(), Lines());
}

TEST_F(FileSize, IsZeroForAnEmptyFileAfterTwoLines)
{
    std::ofstream{path};
    errno = EINTR; // of whatever came before
    EXPECT_EQ(_get_file_size(path.c_str()), 0);
    EXPECT_EQ(logged_lines(), (Lines{stat_line(0, "0][", path), plain_entry("it seems that open file[" + path.string() +
                                                                            "] failed, errno[0][]")}));
}

TEST_F(FileSize, IsMinusOneForAFileThatCannotBeOpened)
{
    EXPECT_EQ(_get_file_size(path.c_str()), -1);
    EXPECT_EQ(logged_lines(),
              (Lines{stat_line(-1, "2][PS_NO_SUCH_FILE_OR_DIRECTORY", path),
                     plain_entry("open file[" + path.string() + "] failed, errno[2][PS_NO_SUCH_FILE_OR_DIRECTORY]")}));
    const std::string below_a_file = path.string() + "/x";
    std::ofstream(path) << "1";
    EXPECT_EQ(_get_file_size(below_a_file.c_str()), -1);
    EXPECT_EQ(logged_lines().front(), stat_line(-1, "20][PS_NOT_A_DIRECTORY", below_a_file));
    const std::string too_long(5000, 'x'); // an errno that the table does not name
    EXPECT_EQ(_get_file_size(too_long.c_str()), -1);
    EXPECT_EQ(logged_lines().front(), stat_line(-1, "36][", too_long));
}

TEST_F(FileSize, OfAPipeIsNotWaitedFor)
{
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(_get_file_size(path.c_str()), -1);
    EXPECT_EQ(logged_lines(), Lines{stat_line(0, "0][", path)});
}
