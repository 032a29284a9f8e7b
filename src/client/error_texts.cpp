// What to tell the user about a recording that failed, in his language.
#include "client/catalogue.h"
#include "client/log.h"
#include "client/outputs.h"
#include "client/support.h"
#include "pvr_service_api.h"

#include <algorithm>
#include <iterator>

using namespace pvr;

namespace {

/// Codes that have one text.
struct Row {
    int first;
    int last;
    const char *id;
};

// clang-format off
constexpr char failed[]     = "TV_SID_FAIL_TO_RECORD";
constexpr char locked[]     = "SID_CANNOT_START_RECORDING_BECAUSE_CURRENT_CHANNEL_IS_LOCKED";
constexpr char problem[]    = "SID_STORAGE_DEVICE_HAS_PROBLEM_MSG";
constexpr char no_device[]  = "SID_NO_STORAGE_DEVICE_FOR_RECORDING";
constexpr char managing[]   = "TV_SID_FAIL_TIMER_RECORDING_DEVICE_MANAGING_MSG";
constexpr char deleting[]   = "SID_DELETING_FILES_ON_THE_STORAGE_DEVICE";
constexpr char no_service[] = "SID_CANNOT_START_RECORDING_BECAUSE_THE_SERVICE_IS_NOT_AVAILABLE";
constexpr char unknown[]    = "SID_AN_UNKNOWN_ERROR_HAS_OCCURRED_WHILE_RECORDING";

constexpr Row rows[] = {
//  codes     message id; all others, deliberately 1 and 201 among them, are unknown
  {  2,   9,  failed},
  { 10,  10,  locked},
  { 11,  18,  failed},
  {100, 100,  problem},
  {101, 101,  no_device},
  {102, 102,  "SID_THERE_IS_NO_SIGNAL_OR_A_WEAK_SIGNAL_ON_THE_RECORDING_CHANNEL"},
  {103, 103,  failed},
  {104, 104,  "SID_NO_TIME_INFORMATION"},
  {150, 151,  managing},
  {152, 152,  "SID_UPGRADING_SW_NOW"},
  {153, 153,  deleting},
  {154, 154,  managing},
  {155, 156,  problem},
  {157, 157,  "TV_SID_FORMATTING_DEVICE_REQUIRED"},
  {158, 158,  "SID_THE_DEVICE_FAILED_PERFORMANCE_TEST"},
  {159, 159,  no_device},
  {160, 160,  "SID_INSUFFICIENT_SPACE_ON_STORAGE_DEVICE"},
  {161, 161,  deleting},
  {200, 200,  "SID_THE_CURRENT_BROADCAST_IS_NOT_RECORDABLE"},
  {202, 202,  no_service},
  {250, 250,  "TV_SID_TIMER_RECORDING_FAIL_DEMO_ON_MSG"},
  {251, 251,  "SID_SET_THE_CURRENT_TIME_AND_DATE_FIRST"},
  {252, 252,  "TV_SMART_DUAL_VIEW"},
  {253, 253,  locked},
  {254, 254,  "SID_TIMER_RECORDING_FAILED_BECAUSE_CURRENT_PROGRAM_HAS_PARENTAL_LOCK_ON"},
  {255, 255,  "SID_CANNOT_START_RECORDING_AS_IT_IS_A_DATA_SERVICE_CHANNEL"},
  {256, 256,  "SID_CANNOT_START_RECORDING_DUE_TO_A_SCRAMBLED_SIGNAL"},
  {257, 257,  "SID_NOT_RECORD_COPYRIGHT_BROADCASTING_MSG"},
  {258, 259,  failed},
  {260, 260,  no_service},
};
// clang-format on

/// Rows ascend, and no code is in two.
consteval bool sound()
{
    int last = 0;
    for (const Row &row : rows) {
        if (row.first <= last || row.last < row.first)
            return false;
        last = row.last;
    }
    return true;
}
static_assert(sound());

constexpr const char *message_id(int code) noexcept
{
    const auto *const row = std::lower_bound(std::begin(rows), std::end(rows), code,
                                             [](const Row &one, int wanted) { return one.last < wanted; });
    return row != std::end(rows) && row->first <= code ? row->id : unknown;
}

} // namespace

int svc_pvr_get_err_text(int error_num, int flag, char *text) noexcept
{
    const Here here = ENTRY("|error_num:%d flag:%d\n", error_num, flag);
    if (const int refusal = check_support(here); refusal != PS_SUCCESS)
        return refusal;
    bind_catalogue(here);
    if (text == nullptr) {
        PLAIN_FAILURE("The param text is null.\n");
        return PS_CALL_METHOD_FAILED;
    }
    // No error has no text.
    const char *const translation = error_num != 0 ? translated(message_id(error_num)) : "";
    text[copy_bytes(text, translation, 254)] = '\0';
    PLAIN_INFO("|text:%s\n", text);
    return PS_SUCCESS;
}
