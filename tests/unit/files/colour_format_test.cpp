// What is refused of a colour-format file. What is read of one is compared with the golden files.
#include "pvr_service_api.h"
#include "support/files.h"
#include "support/log_capture.h"
#include "support/temporary_folder.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

using namespace support;

namespace {

/// The last line without the identity, which nobody has asked for.
std::string refusal(const char *uri, yuv_info *info)
{
    EXPECT_EQ(svc_pvr_get_yuv_info(uri, info), PS_CALL_METHOD_FAILED);
    return logged_lines().back();
}

std::string complaint(const std::string &text) { return plain_entry("My master:[0][]" + text); }

} // namespace

TEST(ColourFormat, TellsWhyItIsRefused)
{
    const TemporaryFolder folder;
    const std::string recording = folder / "a.srf";
    yuv_info info;
    std::memset(&info, 0xa5, sizeof info);
    const yuv_info before = info;

    const std::string no_place = complaint(", the parameter uri or yuv_info is null, pls the caller module check it");
    EXPECT_EQ(refusal(nullptr, &info), no_place);
    EXPECT_EQ(refusal(recording.c_str(), nullptr), no_place);
    EXPECT_EQ(refusal("", &info), complaint(", uri[] length is too short"));
    EXPECT_EQ(refusal(".srf", &info), complaint(", uri[.srf] length is too short"));
    EXPECT_EQ(refusal(recording.c_str(), &info),
              complaint(", open cft file[" + (folder / "a.cft") + "] failed with error:" + std::to_string(ENOENT)));
    EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0);

    write_file(folder / "a.cft", "short");
    EXPECT_EQ(refusal(recording.c_str(), &info), complaint(", fread cft file[" + (folder / "a.cft") + "] failed"));
}
