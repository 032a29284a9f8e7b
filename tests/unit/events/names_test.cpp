#include "events/names.h"

#include "pvr_events.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

using namespace pvr;

namespace {

using Rows = std::vector<std::pair<int, std::string>>;

Rows rows_of(const NamedCode *table)
{
    Rows rows;
    for (; table->name != nullptr; ++table)
        rows.emplace_back(table->value, table->name);
    EXPECT_EQ(table->value, -1); // the end
    return rows;
}

/// Rows whose codes count up from first.
Rows counted(int first, const std::vector<std::string> &names)
{
    Rows rows;
    for (const std::string &name : names)
        rows.emplace_back(first++, name);
    return rows;
}

} // namespace

// What follows is typed by hand: the codes are on the wire and in programs that were built long ago.

TEST(SignalTypes, HaveTheirNamesInTheirOrder)
{
    const Rows rows = rows_of(ps_signal_type_e_str);
    ASSERT_EQ(rows.size(), 19U);
    EXPECT_EQ(Rows(rows.begin(), rows.begin() + 15),
              counted(0, {"PS_SIGNAL_TYPE_NONE", "PS_SIGNAL_TYPE_RECORD_STATE_CHANGE", "PS_SIGNAL_TYPE_RECORD_ERROR",
                          "PS_SIGNAL_TYPE_PLAY_STATE_CHANGE", "PS_SIGNAL_TYPE_PLAY_ERROR",
                          "PS_SIGNAL_TYPE_RECORD_TYPE_CHANGE", "PS_SIGNAL_TYPE_SAS_DATA_CHANGE",
                          "PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_START", "PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_FINISH",
                          "PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_START_CA", "PS_SIGNAL_TYPE_NOTIFY_RECORD_DONE",
                          "PS_SIGNAL_TYPE_NOTIFY_PRE_PLAY_START", "PS_SIGNAL_TYPE_NOTIFY_PLAY_DONE",
                          "PS_SIGNAL_TYPE_NOTIFY_PRE_THUMB_START", "PS_SIGNAL_TYPE_THUMB_DONE"}));
    EXPECT_EQ(Rows(rows.begin() + 15, rows.end()), (Rows{{18, "PS_SIGNAL_TYPE_NOTIFY_DEMUX_READY_FOR_RECORD_START"},
                                                         {17, "PS_SIGNAL_TYPE_NOTIFY_SKIP_START"},
                                                         {16, "PS_SIGNAL_TYPE_NOTIFY_TRICKMODE_START"},
                                                         {20, "PS_SIGNAL_TYPE_MAX"}}));
}

TEST(PlayStates, HaveTheirNamesInTheirOrder)
{
    EXPECT_EQ(rows_of(ps_play_state_e_str),
              counted(0, {"PLAY_STATE_NONE",   "PLAY_STATE_PLAY",    "PLAY_STATE_PAUSE",   "PLAY_STATE_FRAME_STEP",
                          "PLAY_STATE_FF_1",   "PLAY_STATE_FF_2",    "PLAY_STATE_FF_3",    "PLAY_STATE_FF_4",
                          "PLAY_STATE_FF_5",   "PLAY_STATE_FF_6",    "PLAY_STATE_FF_7",    "PLAY_STATE_FF_1_2",
                          "PLAY_STATE_FF_1_4", "PLAY_STATE_FF_1_8",  "PLAY_STATE_REW_1",   "PLAY_STATE_REW_2",
                          "PLAY_STATE_REW_3",  "PLAY_STATE_REW_4",   "PLAY_STATE_REW_5",   "PLAY_STATE_REW_6",
                          "PLAY_STATE_REW_7",  "PLAY_STATE_REW_1_2", "PLAY_STATE_REW_1_4", "PLAY_STATE_REW_1_8",
                          "PLAY_STATE_STOP",   "PLAY_STATE_MAX"}));
}

TEST(RecordStates, HaveTheirNamesInTheirOrder)
{
    EXPECT_EQ(rows_of(ps_record_state_e_str),
              counted(0, {"PS_RECORD_STATE_STOP", "PS_RECORD_STATE_PREPARING", "PS_RECORD_STATE_REC",
                          "PS_RECORD_STATE_PENDING", "PS_RECORD_STATE_PAUSE", "PS_RECORD_STATE_MAX"}));
}

TEST(RecordTypes, HaveTheirNamesInTheirOrder)
{
    EXPECT_EQ(rows_of(ps_record_type_e_str),
              counted(-1, {"PS_RECORD_TYPE_NONE", "PS_RECORD_TYPE_NORMAL", "PS_RECORD_TYPE_TIMESHIFT_PLAY",
                           "PS_RECORD_TYPE_TIMESHIFT_PAUSE", "PS_RECORD_TYPE_TIMER", "PS_RECORD_TYPE_SEGMENT",
                           "PS_RECORD_TYPE_COMPOSITE"}));
}

TEST(CodesForOtherApplications, HaveTheirNamesInTheirOrder)
{
    EXPECT_EQ(rows_of(ps_third_part_method_e_str),
              counted(0, {"PS_METHOD_TYPE_NONE", "PS_METHOD_TYPE_RECORD", "PS_METHOD_TYPE_TIMER_RECORD",
                          "PS_METHOD_TYPE_TIMESHIFT", "PS_METHOD_TYPE_PLAY", "PS_METHOD_TYPE_SWITCH_TO_RECORD",
                          "PS_METHOD_TYPE_DURATION_ALREADY", "PS_METHOD_TYPE_MAX"}));
    EXPECT_EQ(rows_of(ps_third_part_command_e_str),
              counted(0, {"PS_COMMAND_START", "PS_COMMAND_STOP", "PS_COMMAND_PRE_START"}));
}

TEST(Methods, HaveTheirNamesInTheirOrder)
{
    const Rows rows = rows_of(ps_method_e_str);
    ASSERT_EQ(rows.size(), 51U);
    EXPECT_EQ(Rows(rows.begin(), rows.begin() + 18),
              counted(0, {"PS_PLAY_START", "PS_PLAY_PAUSE", "PS_STEP_FRAME", "PS_PLAY_RESUME", "PS_PLAY_FORWARD",
                          "PS_PLAY_REWIND", "PS_PLAY_SKIP", "PS_PLAY_STOP", "PS_RECORD_START", "PS_RECORD_PAUSE",
                          "PS_RECORD_RESUME", "PS_RECORD_STOP", "PS_SWITCH_TO_RECORD", "PS_STOP_PVR", "PS_FORMAT",
                          "PS_PERFORMANCE_TEST", "PS_PRECHECK_RECORDING_AVAILABLE", "PS_PRE_PLAY_START"}));
    EXPECT_EQ(Rows(rows.begin() + 18, rows.begin() + 33),
              counted(100, {"PS_PLAY_BEGIN", "PS_PLAY_END", "PS_REMOVE_DEV", "PS_SEND_SIGNAL_STATE",
                            "PS_SEND_THUMBNAIL_RESULT", "PS_SEND_SYS_PLAY_ERROR", "PS_SEND_SYS_RECORD_ERROR",
                            "PS_SEND_CHANNEL_CHANGE", "PS_UPLOAD_RECORD_DURATION", "PS_RECORD_EXCEPTION",
                            "PS_RECORD_NO_SIGNAL_STOP", "PS_RECORD_DISK_LESS_FIFTY", "PS_RECORD_DISK_LESS_ALERT",
                            "PS_RECORD_LAUNCH_FAILED", "PS_RECORD_STOP_MLS"}));
    EXPECT_EQ(Rows(rows.begin() + 33, rows.end()),
              counted(200, {"PS_PVR_STATE_CHANGE", "PS_RATING_CHANGE", "PS_ONE_RECORDING_CHANGE_CHANNEL",
                            "PS_TWO_RECORDING_CHANGE_CHANNEL", "PS_STOP_PLAYBACK_BY_CIP", "PS_STOP_RECORD_BY_CIP",
                            "PS_ALL_RECORDING_CHANGE_CHANNEL", "PS_SET_DURATION_ALREADY", "PS_STOP_TIMESHIFT_BY_CIP",
                            "PS_NONE_RECORDING_CHANGE_CHANNEL", "PS_STOP_TIMESHIFT_BY_CIP_FOR_ZIGGO",
                            "PS_SEND_SYS_RECORD_ERROR_DISK_NEED_REPAIR", "PS_SEND_SYS_PLAY_ERROR_DISK_NEED_REPAIR",
                            "PS_RECORD_NOT_ALLOWED_BY_CA", "PS_RECORD_NO_CA_DEVICE", "PS_PLAYBACK_NO_CA_DEVICE",
                            "PS_PLAYBACK_NOT_ALLOWED_BY_CA", "PS_PLAYBACK_DESCRAMBLE_DENIED"}));
}

TEST(OperatingSystemErrors, AreTheErrnoOfTheirMeaning)
{
    const Rows rows = rows_of(ps_os_error_e_str);
    ASSERT_EQ(rows.size(), 34U);
    for (int i = 0; i < 34; ++i)
        EXPECT_EQ(rows[static_cast<std::size_t>(i)].first, i + 1);
    const std::map<int, std::string> expected{{EPERM, "PS_OPERATION_NOT_PERMITTED"},
                                              {ENOENT, "PS_NO_SUCH_FILE_OR_DIRECTORY"},
                                              {ESRCH, "PS_NO_SUCH_PROCESS"},
                                              {EINTR, "PS_INTERRUPTED_SYSTEM_CALL"},
                                              {EIO, "PS_IO_ERROR"},
                                              {ENXIO, "PS_NO_SUCH_DEVICE_OR_ADDRESS"},
                                              {E2BIG, "PS_ARGUMENT_LIST_TOO_LONG"},
                                              {ENOEXEC, "PS_EXEC_FORMAT_ERROR"},
                                              {EBADF, "PS_BAD_FILE_NUMBER"},
                                              {ECHILD, "PS_NO_CHILD_PROCESSES"},
                                              {EAGAIN, "PS_TRY_AGAIN"},
                                              {ENOMEM, "PS_OUT_OF_MEMORY"},
                                              {EACCES, "PS_PERMISSION_DENIED"},
                                              {EFAULT, "PS_BAD_ADDRESS"},
                                              {ENOTBLK, "PS_BLOCK_DEVICE_REQUIRED"},
                                              {EBUSY, "PS_DEVICE_OR_RESOURCE_BUSY"},
                                              {EEXIST, "PS_FILE_EXISTS"},
                                              {EXDEV, "PS_CROSS_DEVICE_LINK"},
                                              {ENODEV, "PS_NO_SUCH_DEVICE"},
                                              {ENOTDIR, "PS_NOT_A_DIRECTORY"},
                                              {EISDIR, "PS_IS_A_DIRECTORY"},
                                              {EINVAL, "PS_INVALID_ARGUMENT"},
                                              {ENFILE, "PS_FILE_TABLE_OVERFLOW"},
                                              {EMFILE, "PS_TOO_MANY_OPEN_FILES"},
                                              {ENOTTY, "PS_NOT_A_TYPEWRITER"},
                                              {ETXTBSY, "PS_TEXT_FILE_BUSY"},
                                              {EFBIG, "PS_FILE_TOO_LARGE"},
                                              {ENOSPC, "PS_NO_SPACE_LEFT_ON_DEVICE"},
                                              {ESPIPE, "PS_ILLEGAL_SEEK"},
                                              {EROFS, "PS_READ_ONLY_FILE_SYSTEM"},
                                              {EMLINK, "PS_TOO_MANY_LINKS"},
                                              {EPIPE, "PS_BROKEN_PIPE"},
                                              {EDOM, "PS_MATH_ARGUMENT_OUT_OF_DOMAIN_OF_FUNC"},
                                              {ERANGE, "PS_MATH_RESULT_NOT_REPRESENTABLE"}};
    EXPECT_EQ(expected, (std::map<int, std::string>(rows.begin(), rows.end())));
}

TEST(MacroName, IsThatOfTheFirstRowOrEmpty)
{
    EXPECT_STREQ(_get_pvr_macro_name(ps_record_type_e_str, -1), "PS_RECORD_TYPE_NONE");
    EXPECT_STREQ(_get_pvr_macro_name(ps_record_state_e_str, -1), "");
    EXPECT_STREQ(_get_pvr_macro_name(ps_signal_type_e_str, 15), "");
    EXPECT_STREQ(_get_pvr_macro_name(ps_signal_type_e_str, 19), "");
    EXPECT_STREQ(_get_pvr_macro_name(ps_signal_type_e_str, 17), "PS_SIGNAL_TYPE_NOTIFY_SKIP_START");
    for (const int value : {18, 99, 115, 199, 218, -9, -2147483647})
        EXPECT_STREQ(_get_pvr_macro_name(ps_method_e_str, value), "") << value;

    const NamedCode twice[] = {{5, "first"}, {5, "second"}, {-1, nullptr}};
    EXPECT_STREQ(_get_pvr_macro_name(twice, 5), "first");
    const NamedCode ended[] = {{-9, "never"}, {5, "never"}, {-1, nullptr}};
    EXPECT_STREQ(_get_pvr_macro_name(ended, 5), "");
    EXPECT_STREQ(_get_pvr_macro_name(ended, -9), "");
}
