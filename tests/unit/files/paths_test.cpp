#include "files/paths.h"

#include "support/log_capture.h"

#include <gtest/gtest.h>

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
