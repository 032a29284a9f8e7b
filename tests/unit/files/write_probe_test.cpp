#include "files/write_probe.h"

#include "support/files.h"
#include "support/log_capture.h"
#include "support/temporary_folder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace pvr;
using namespace support;

namespace {

const std::string created = plain_info("We can create file");
const std::string refused = plain_entry("We can't create file in recording device path");
const std::string removed = plain_info("Remove temp file success!");

class WriteProbe : public testing::Test {
protected:
    TemporaryFolder folder;
    const std::string path = folder / "rec1.inf";
    const std::string probe = folder / "rec1.tmp";
};

} // namespace

TEST_F(WriteProbe, MakesAFileAndRemovesIt)
{
    EXPECT_EQ(_is_usb_disconnect(path.c_str()), 0);
    EXPECT_EQ(logged_lines(), (Lines{created, removed}));
    EXPECT_EQ(folder.names(), Lines());
}

TEST_F(WriteProbe, RemovesAFileOfItsName)
{
    write_file(probe, "precious");
    EXPECT_EQ(_is_usb_disconnect(path.c_str(), (folder / "rec1.srf").c_str()), 0);
    EXPECT_EQ(logged_lines(), (Lines{created, removed}));
    EXPECT_EQ(folder.names(), Lines());
}

TEST_F(WriteProbe, EmptiesAFileOfItsNameBeforeItRemovesIt)
{
    write_file(probe, "precious");
    ASSERT_EQ(link(probe.c_str(), (folder / "other").c_str()), 0);
    EXPECT_EQ(_is_usb_disconnect(path.c_str()), 0);
    EXPECT_EQ(content_of(folder / "other"), "");
}

TEST_F(WriteProbe, SparesWhatASymbolicLinkLeadsTo)
{
    write_file(folder / "other", "precious");
    ASSERT_EQ(symlink("other", probe.c_str()), 0);
    EXPECT_EQ(_is_usb_disconnect(path.c_str()), 0);
    EXPECT_EQ(logged_lines(), (Lines{created, removed}));
    EXPECT_EQ(folder.names(), Lines{"other"});
    EXPECT_EQ(content_of(folder / "other"), "precious");
}

TEST_F(WriteProbe, TakesTheLiveTimeshiftForItsProbe)
{
    write_file(folder / "timeshift.tmp", "live");
    EXPECT_EQ(_is_usb_disconnect((folder / "timeshift.inf").c_str()), 0);
    EXPECT_EQ(logged_lines(), Lines{created});
    EXPECT_EQ(content_of(folder / "timeshift.tmp"), "live");
}

TEST_F(WriteProbe, TakesALinkToTheLiveTimeshiftForItsProbe)
{
    write_file(folder / "other", "live");
    ASSERT_EQ(symlink("other", (folder / "timeshift.tmp").c_str()), 0);
    EXPECT_EQ(_is_usb_disconnect((folder / "timeshift.inf").c_str()), 0);
    EXPECT_EQ(folder.names(), (Lines{"other", "timeshift.tmp"}));
    EXPECT_EQ(content_of(folder / "other"), "live");
}

TEST_F(WriteProbe, SparesTheFileThatTheCallerNamed)
{
    write_file(probe, "precious");
    ASSERT_EQ(symlink(probe.c_str(), (folder / "another name.srf").c_str()), 0);
    for (const std::string &named : {probe, folder / "another name.srf", folder / "../" + probe.substr(5)}) {
        EXPECT_EQ(_is_usb_disconnect(path.c_str(), named.c_str()), 0) << named;
        EXPECT_EQ(logged_lines(), Lines{created}) << named;
        ASSERT_EQ(content_of(probe), "precious") << named;
    }
}

TEST_F(WriteProbe, SaysWhenNoFileCanBeMade)
{
    EXPECT_EQ(_is_usb_disconnect((folder / "missing/rec1.inf").c_str()), 1);
    EXPECT_EQ(logged_lines(), Lines{refused});
    ASSERT_EQ(mkdir(probe.c_str(), 0700), 0);
    EXPECT_EQ(_is_usb_disconnect(path.c_str()), 1);
    EXPECT_EQ(logged_lines(), Lines{refused});
    ASSERT_EQ(rmdir(probe.c_str()), 0);
    ASSERT_EQ(mkfifo(probe.c_str(), 0600), 0);
    EXPECT_EQ(_is_usb_disconnect(path.c_str()), 1);
    EXPECT_EQ(folder.names(), Lines{"rec1.tmp"}) << "what is no file is left alone";
}

TEST_F(WriteProbe, SaysWhenItsFileCannotBeRemoved)
{
    when_logged("We can create file", [this] { unlink(probe.c_str()); });
    EXPECT_EQ(_is_usb_disconnect(path.c_str()), 0);
    EXPECT_EQ(logged_lines(), (Lines{created, plain_entry("Remove temp file failed!")}));
}
