/**
 * @file pvr_events.h
 * The codes of the service's news, and the callbacks through which it reaches an application. Results of
 * callbacks are ignored.
 *
 * Callbacks run one after another on the thread that dispatches the session's main context, without
 * any lock of the library held: a callback may call any function of the library.
 */
#ifndef PVR_EVENTS_H
#define PVR_EVENTS_H

#include "pvr_records.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What a pvr_service_signal tells. Types 15 and 19 have no name and are delivered all the same. */
typedef enum ps_signal_type_e {
    PS_SIGNAL_TYPE_NONE = 0,
    PS_SIGNAL_TYPE_RECORD_STATE_CHANGE = 1,
    PS_SIGNAL_TYPE_RECORD_ERROR = 2,
    PS_SIGNAL_TYPE_PLAY_STATE_CHANGE = 3,
    PS_SIGNAL_TYPE_PLAY_ERROR = 4,
    PS_SIGNAL_TYPE_RECORD_TYPE_CHANGE = 5,
    PS_SIGNAL_TYPE_SAS_DATA_CHANGE = 6,
    PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_START = 7,
    PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_FINISH = 8,
    PS_SIGNAL_TYPE_NOTIFY_PRE_RECORD_START_CA = 9,
    PS_SIGNAL_TYPE_NOTIFY_RECORD_DONE = 10,
    PS_SIGNAL_TYPE_NOTIFY_PRE_PLAY_START = 11,
    PS_SIGNAL_TYPE_NOTIFY_PLAY_DONE = 12,
    PS_SIGNAL_TYPE_NOTIFY_PRE_THUMB_START = 13,
    PS_SIGNAL_TYPE_THUMB_DONE = 14,
    PS_SIGNAL_TYPE_NOTIFY_TRICKMODE_START = 16,
    PS_SIGNAL_TYPE_NOTIFY_SKIP_START = 17,
    PS_SIGNAL_TYPE_NOTIFY_DEMUX_READY_FOR_RECORD_START = 18,
    PS_SIGNAL_TYPE_MAX = 20
} ps_signal_type_e;

/** State of a playback. FF and REW 1 to 7 wind forward and back, the fastest last; 1_2, 1_4 and 1_8 are
 *  slow motion at a half, a quarter and an eighth. */
typedef enum ps_play_state_e {
    PLAY_STATE_NONE = 0,
    PLAY_STATE_PLAY = 1,
    PLAY_STATE_PAUSE = 2,
    PLAY_STATE_FRAME_STEP = 3,
    PLAY_STATE_FF_1 = 4,
    PLAY_STATE_FF_2 = 5,
    PLAY_STATE_FF_3 = 6,
    PLAY_STATE_FF_4 = 7,
    PLAY_STATE_FF_5 = 8,
    PLAY_STATE_FF_6 = 9,
    PLAY_STATE_FF_7 = 10,
    PLAY_STATE_FF_1_2 = 11,
    PLAY_STATE_FF_1_4 = 12,
    PLAY_STATE_FF_1_8 = 13,
    PLAY_STATE_REW_1 = 14,
    PLAY_STATE_REW_2 = 15,
    PLAY_STATE_REW_3 = 16,
    PLAY_STATE_REW_4 = 17,
    PLAY_STATE_REW_5 = 18,
    PLAY_STATE_REW_6 = 19,
    PLAY_STATE_REW_7 = 20,
    PLAY_STATE_REW_1_2 = 21,
    PLAY_STATE_REW_1_4 = 22,
    PLAY_STATE_REW_1_8 = 23,
    PLAY_STATE_STOP = 24,
    PLAY_STATE_MAX = 25
} ps_play_state_e;

/** State of a recording. */
typedef enum ps_record_state_e {
    PS_RECORD_STATE_STOP = 0,
    PS_RECORD_STATE_PREPARING = 1,
    PS_RECORD_STATE_REC = 2,
    PS_RECORD_STATE_PENDING = 3,
    PS_RECORD_STATE_PAUSE = 4,
    PS_RECORD_STATE_MAX = 5
} ps_record_state_e;

/** Kind of a recording. */
typedef enum ps_record_type_e {
    PS_RECORD_TYPE_NONE = -1,
    PS_RECORD_TYPE_NORMAL = 0,
    PS_RECORD_TYPE_TIMESHIFT_PLAY = 1,
    PS_RECORD_TYPE_TIMESHIFT_PAUSE = 2,
    PS_RECORD_TYPE_TIMER = 3,
    PS_RECORD_TYPE_SEGMENT = 4,
    PS_RECORD_TYPE_COMPOSITE = 5
} ps_record_type_e;

/** What an event told to other applications is about. */
typedef enum ps_third_part_method_e {
    PS_METHOD_TYPE_NONE = 0,
    PS_METHOD_TYPE_RECORD = 1,
    PS_METHOD_TYPE_TIMER_RECORD = 2,
    PS_METHOD_TYPE_TIMESHIFT = 3,
    PS_METHOD_TYPE_PLAY = 4,
    PS_METHOD_TYPE_SWITCH_TO_RECORD = 5,
    PS_METHOD_TYPE_DURATION_ALREADY = 6,
    PS_METHOD_TYPE_MAX = 7
} ps_third_part_method_e;

/** What happened to it. */
typedef enum ps_third_part_command_e {
    PS_COMMAND_START = 0,
    PS_COMMAND_STOP = 1,
    PS_COMMAND_PRE_START = 2
} ps_third_part_command_e;

/** The operation that a result answers, or the event that it reports: up to 17 answers to calls of the same
 *  name, from 100 reports that the service sends on its own, from 200 events of state, rating, channel and
 *  conditional access. */
typedef enum ps_method_e {
    PS_PLAY_START = 0,
    PS_PLAY_PAUSE = 1,
    PS_STEP_FRAME = 2,
    PS_PLAY_RESUME = 3,
    PS_PLAY_FORWARD = 4,
    PS_PLAY_REWIND = 5,
    PS_PLAY_SKIP = 6,
    PS_PLAY_STOP = 7,
    PS_RECORD_START = 8,
    PS_RECORD_PAUSE = 9,
    PS_RECORD_RESUME = 10,
    PS_RECORD_STOP = 11,
    PS_SWITCH_TO_RECORD = 12,
    PS_STOP_PVR = 13,
    PS_FORMAT = 14,
    PS_PERFORMANCE_TEST = 15,
    PS_PRECHECK_RECORDING_AVAILABLE = 16,
    PS_PRE_PLAY_START = 17,
    PS_PLAY_BEGIN = 100,
    PS_PLAY_END = 101,
    PS_REMOVE_DEV = 102,
    PS_SEND_SIGNAL_STATE = 103,
    PS_SEND_THUMBNAIL_RESULT = 104,
    PS_SEND_SYS_PLAY_ERROR = 105,
    PS_SEND_SYS_RECORD_ERROR = 106,
    PS_SEND_CHANNEL_CHANGE = 107,
    PS_UPLOAD_RECORD_DURATION = 108,
    PS_RECORD_EXCEPTION = 109,
    PS_RECORD_NO_SIGNAL_STOP = 110,
    PS_RECORD_DISK_LESS_FIFTY = 111,
    PS_RECORD_DISK_LESS_ALERT = 112,
    PS_RECORD_LAUNCH_FAILED = 113,
    PS_RECORD_STOP_MLS = 114,
    PS_PVR_STATE_CHANGE = 200,
    PS_RATING_CHANGE = 201,
    PS_ONE_RECORDING_CHANGE_CHANNEL = 202,
    PS_TWO_RECORDING_CHANGE_CHANNEL = 203,
    PS_STOP_PLAYBACK_BY_CIP = 204,
    PS_STOP_RECORD_BY_CIP = 205,
    PS_ALL_RECORDING_CHANGE_CHANNEL = 206,
    PS_SET_DURATION_ALREADY = 207,
    PS_STOP_TIMESHIFT_BY_CIP = 208,
    PS_NONE_RECORDING_CHANGE_CHANNEL = 209,
    PS_STOP_TIMESHIFT_BY_CIP_FOR_ZIGGO = 210,
    PS_SEND_SYS_RECORD_ERROR_DISK_NEED_REPAIR = 211,
    PS_SEND_SYS_PLAY_ERROR_DISK_NEED_REPAIR = 212,
    PS_RECORD_NOT_ALLOWED_BY_CA = 213,
    PS_RECORD_NO_CA_DEVICE = 214,
    PS_PLAYBACK_NO_CA_DEVICE = 215,
    PS_PLAYBACK_NOT_ALLOWED_BY_CA = 216,
    PS_PLAYBACK_DESCRAMBLE_DENIED = 217
} ps_method_e;

/** Operating-system errors as the service and the log name them; each is the errno of the same meaning. */
typedef enum ps_os_error_e {
    PS_OPERATION_NOT_PERMITTED = 1,
    PS_NO_SUCH_FILE_OR_DIRECTORY = 2,
    PS_NO_SUCH_PROCESS = 3,
    PS_INTERRUPTED_SYSTEM_CALL = 4,
    PS_IO_ERROR = 5,
    PS_NO_SUCH_DEVICE_OR_ADDRESS = 6,
    PS_ARGUMENT_LIST_TOO_LONG = 7,
    PS_EXEC_FORMAT_ERROR = 8,
    PS_BAD_FILE_NUMBER = 9,
    PS_NO_CHILD_PROCESSES = 10,
    PS_TRY_AGAIN = 11,
    PS_OUT_OF_MEMORY = 12,
    PS_PERMISSION_DENIED = 13,
    PS_BAD_ADDRESS = 14,
    PS_BLOCK_DEVICE_REQUIRED = 15,
    PS_DEVICE_OR_RESOURCE_BUSY = 16,
    PS_FILE_EXISTS = 17,
    PS_CROSS_DEVICE_LINK = 18,
    PS_NO_SUCH_DEVICE = 19,
    PS_NOT_A_DIRECTORY = 20,
    PS_IS_A_DIRECTORY = 21,
    PS_INVALID_ARGUMENT = 22,
    PS_FILE_TABLE_OVERFLOW = 23,
    PS_TOO_MANY_OPEN_FILES = 24,
    PS_NOT_A_TYPEWRITER = 25,
    PS_TEXT_FILE_BUSY = 26,
    PS_FILE_TOO_LARGE = 27,
    PS_NO_SPACE_LEFT_ON_DEVICE = 28,
    PS_ILLEGAL_SEEK = 29,
    PS_READ_ONLY_FILE_SYSTEM = 30,
    PS_TOO_MANY_LINKS = 31,
    PS_BROKEN_PIPE = 32,
    PS_MATH_ARGUMENT_OUT_OF_DOMAIN_OF_FUNC = 33,
    PS_MATH_RESULT_NOT_REPRESENTABLE = 34
} ps_os_error_e;

/** Takes a highlight of a programme. */
typedef void (*autohighlight_cb)(int event, int iIndex, long lStartTime, long lEndTime, unsigned char *pThumbnail,
                                 int nThumbnailSize);

/** Takes a state change or notification by value, with the user data it was registered with. */
typedef void (*pvr_signal_cb)(pvr_service_signal signal, void *user_data);

/** Takes a state change or notification that is valid during the call only, with the user data it was registered with.
 */
typedef void (*pvr_signal_point_cb)(pvr_service_signal *signal, void *user_data);

/** Takes the result of an operation by value, with the user data it was registered with. */
typedef void (*pvr_result_cb)(pvr_service_result result, void *user_data);

/** Takes the result of an operation that is valid during the call only, with the user data it was registered with. */
typedef void (*pvr_result_point_cb)(pvr_service_result *result, void *user_data);

/** Takes what other applications learn of a result, by value, with the user data it was registered with. */
typedef void (*pvr_result_third_cb)(pvr_result_third result, void *user_data);

/** Takes the state of the service, a code of its own, with the user data it was registered with. The development
    service gives 1 while it plays, 2 while it records, their sum, or 0. */
typedef void (*pvr_state_cb)(int state, void *user_data);

#ifdef __cplusplus
}
#endif

#endif
