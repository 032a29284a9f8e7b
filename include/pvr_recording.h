/**
 * @file pvr_recording.h
 * Recording and timeshift.
 * The conventions at the head of pvr_service_api.h hold here and are not repeated.
 */
#ifndef PVR_RECORDING_H
#define PVR_RECORDING_H

#include "pvr_base.h"
#include "pvr_records.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name Recording and timeshift */
/** @{ */

/**
 * Starts to record a channel.
 *
 * @param service_id  the channel
 * @param show        whether the service shows the user what it does, a code of the service
 * @param extra       a text for the service
 * @return PS_SUCCESS once the service has taken the request: what became of it arrives as a result
 *         (PS_RECORD_START).
 */
PVR_API int svc_pvr_start_recording(uint64_t service_id, int show, const char *extra) PVR_NOEXCEPT;

/**
 * Starts to record a channel, on behalf of a reminder.
 *
 * @param service_id  the channel
 * @param show        whether the service shows the user what it does, a code of the service
 * @param extra       a text for the service
 * @param reminder    the reminder; its lower 32 bits are sent
 * @return as svc_pvr_start_recording.
 */
PVR_API int svc_pvr_start_recording_ex(uint64_t service_id, int show, const char *extra, long reminder) PVR_NOEXCEPT;

/**
 * Starts timeshift on a channel.
 *
 * @param service_id  the channel
 * @param show        whether the service shows the user what it does, a code of the service
 * @param extra       a text for the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_start_timeshift(uint64_t service_id, int show, const char *extra) PVR_NOEXCEPT;

/**
 * Stops recording a channel.
 *
 * @param service_id  the channel
 * @param show        only logged: the service is sent 0
 * @param extra       a text for the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_stop_recording(uint64_t service_id, int show, const char *extra) PVR_NOEXCEPT;

/**
 * Stops timeshift on a channel.
 *
 * @param service_id  the channel
 * @param show        only logged: the service is sent 0
 * @param extra       a text for the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_stop_timeshift(uint64_t service_id, int show, const char *extra) PVR_NOEXCEPT;

/**
 * Stops timeshift, whatever the channel.
 *
 * @param show   only logged: the service is sent 0
 * @param extra  a text for the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_stop_timeshift_without_service_id(int show, const char *extra) PVR_NOEXCEPT;

/**
 * Sets how long a channel's recording lasts.
 *
 * @param service_id  the channel
 * @param duration    from its start, in the service's unit; the development service uses seconds
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_set_record_duration(uint64_t service_id, int duration) PVR_NOEXCEPT;

/**
 * Starts to record a channel with a handle.
 *
 * @param handle       a recording handle issued by the service
 * @param service_id   the channel
 * @param record_type  kind of recording (ps_record_type_e)
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_record_start(int handle, uint64_t service_id, int record_type) PVR_NOEXCEPT;

/**
 * Stops a recording.
 *
 * @param handle  a recording handle issued by the service
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_record_stop(int handle) PVR_NOEXCEPT;

/**
 * Does nothing: recordings are not paused. The service is not asked, whatever the product is.
 *
 * @param handle  only logged
 * @return PS_SUCCESS.
 */
PVR_API int svc_pvr_record_pause(int handle) PVR_NOEXCEPT;

/**
 * Does nothing: recordings are not paused. The service is not asked, whatever the product is.
 *
 * @param handle  only logged
 * @return PS_SUCCESS.
 */
PVR_API int svc_pvr_record_resume(int handle) PVR_NOEXCEPT;

/**
 * Turns a timeshift into a recording.
 *
 * @param handle       a recording handle issued by the service
 * @param switch_type  a code of the service
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_switch_to_record(int handle, int switch_type) PVR_NOEXCEPT;

/**
 * Stops whatever a handle stands for: a recording, a timeshift or a playback.
 *
 * @param handle  a handle issued by the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_stop_pvr(int handle) PVR_NOEXCEPT;

/**
 * Asks the service to stop recording and timeshift of a channel, and waits for nothing.
 *
 * A process that ends at once may take the request with it, and a service that was restarted since
 * this process last waited for an answer may miss it.
 *
 * @param service_id  the channel
 * @param called_app  name of the application that asks
 * @return PS_SUCCESS once the request has been handed to the bus.
 */
PVR_API int svc_pvr_stop_pvr_sync(uint64_t service_id, const char *called_app) PVR_NOEXCEPT;

/**
 * Stops recording a channel, and waits until the service has stopped it. The name is spelled so.
 *
 * @param service_id  the channel
 * @param called_app  name of the application that asks
 * @return PS_SUCCESS when the service answered 0; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_stop_reocrding_sync(uint64_t service_id, const char *called_app) PVR_NOEXCEPT;

/**
 * Lets a recording go on until it is stopped.
 *
 * @param handle  a recording handle issued by the service
 * @return PS_SUCCESS when the service answered 0; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_change_recording_duration_unlimited(int handle) PVR_NOEXCEPT;

/**
 * Sets how long a recording lasts.
 *
 * @param handle    a recording handle issued by the service
 * @param duration  from its start, in the service's unit; the development service uses seconds
 * @return PS_SUCCESS when the service answered 0; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_set_recording_duration(int handle, int duration) PVR_NOEXCEPT;

/**
 * Tells how long a recording will last.
 *
 * @param handle    a recording handle issued by the service
 * @param duration  receives the duration from its start, in the service's unit; the development service uses
 *                  seconds
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_recording_duration(int handle, int *duration) PVR_NOEXCEPT;

/**
 * Sets how long a channel's recording lasts.
 *
 * @param service_id  the channel
 * @param duration    from its start, in the service's unit; the development service uses seconds
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_set_recording_duration_by_service_id(uint64_t service_id, int duration) PVR_NOEXCEPT;

/**
 * Tells how long a channel's recording will last.
 *
 * @param service_id  the channel
 * @param duration    receives the duration from its start, in the service's unit; the development service uses
 *                    seconds
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_recording_duration_by_service_id(uint64_t service_id, int *duration) PVR_NOEXCEPT;

/**
 * Tells how long a recording could last at most.
 *
 * @param time  receives the time, in the service's unit; the development service uses seconds
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_max_recordable_time(int *time) PVR_NOEXCEPT;

/**
 * Estimates how long the default recording device has room for, from its free space in MiB at 1310720 bytes per
 * second for type 1 and 2621440 for any other.
 *
 * @param type       kind of broadcast
 * @param remaining  receives seconds; 0 when there is no device or the service cannot be asked
 * @return PS_SUCCESS, also when the service cannot be asked; PS_CALL_METHOD_FAILED, with remaining untouched,
 *         when the product does not record.
 */
PVR_API int svc_pvr_get_remaining_time(int type, int *remaining) PVR_NOEXCEPT;

/** @} */

/** @name What is being recorded, and what may be */
/** @{ */

/**
 * Counts the recordings that are running.
 *
 * @param count  receives the count
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_current_recording_count(int *count) PVR_NOEXCEPT;

/**
 * Lists the channels that are being recorded, timeshift included.
 *
 * @param list    receives at most length channels, in the service's order; null to ask for the count
 * @param length  how many elements the list has room for; nothing is stored when it is not above 0
 * @param count   receives the service's count, which may exceed length
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_recording_service_id_list(uint64_t *list, int length, int *count) PVR_NOEXCEPT;

/**
 * Lists the channels that are being recorded, up to the first that is only timeshifted. The service is asked
 * once more for each channel looked at; each of these calls may take up to 25 s, and a channel about which it
 * cannot be asked counts as timeshifted.
 *
 * @param list    receives at most length channels; null to ask for the count
 * @param length  how many elements the list has room for; nothing is stored when it is not above 0
 * @param count   receives how many there are, length at most
 * @return PS_SUCCESS once the service has answered with its list.
 */
PVR_API int svc_pvr_get_recording_no_ts_service_id_list(uint64_t *list, int length, int *count) PVR_NOEXCEPT;

/**
 * Describes a running recording.
 *
 * @param dev_handle  a recording handle issued by the service
 * @param info        receives the whole record; null is refused once the service has answered
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED when info is null.
 */
PVR_API int svc_pvr_get_recording_info(int dev_handle, pvr_recording_info *info) PVR_NOEXCEPT;

/**
 * Tells of which kind a channel's recording is.
 *
 * @param service_id  the channel
 * @param type        receives the kind (ps_record_type_e)
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_recording_type_by_service_id(uint64_t service_id, int *type) PVR_NOEXCEPT;

/**
 * Asks whether a channel could be recorded now.
 *
 * @param service_id   the channel
 * @param record_type  kind of recording (ps_record_type_e)
 * @return the service's answer as it is, 0 when it could in the development service; PS_CALL_METHOD_FAILED when
 *         it could not be asked.
 */
PVR_API int svc_pvr_precheck_recording_available(uint64_t service_id, int record_type) PVR_NOEXCEPT;

/**
 * Asks whether the channel may be changed while recordings run.
 *
 * @param service_id  the channel to change to
 * @param result      receives the service's answer; 1 when it may, in the development service
 * @param iHandle     receives the handle of a recording that would have to end
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_pre_channel_change_on_recording(uint64_t service_id, int *result, int *iHandle) PVR_NOEXCEPT;

/**
 * Asks whether the channel may be changed while recordings run.
 *
 * @param service_id  the channel to change to
 * @return the service's answer as it is, 1 when it may in the development service; PS_CALL_METHOD_FAILED when
 *         it could not be asked.
 */
PVR_API int svc_pvr_is_ch_change_available_on_recording(uint64_t service_id) PVR_NOEXCEPT;

/**
 * Asks whether the source may be changed while recordings run.
 *
 * @param source_type  the source to change to, a code of the service
 * @return the service's answer as it is, 1 when it may in the development service; PS_CALL_METHOD_FAILED when
 *         it could not be asked.
 */
PVR_API int svc_pvr_is_source_change_available_on_recording(int source_type) PVR_NOEXCEPT;

/**
 * Tells the service what the user decided about a change of channel.
 *
 * @param result  a code of the service
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_set_change_channel_result(int result) PVR_NOEXCEPT;

/**
 * Tells the service what another application made of its request.
 *
 * @param service_id   the channel
 * @param command      a code of the service
 * @param error_type   a code of the service
 * @param record_type  kind of recording (ps_record_type_e)
 * @param uid          identifier of the recording
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_inform_third_part_result(uint64_t service_id, int command, int error_type, int record_type,
                                             int uid) PVR_NOEXCEPT;

/**
 * Sets whether the service keeps its state over a restart of the set.
 *
 * @param flag  1 or 0
 * @return PS_SUCCESS when the service answered 1; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_set_keep_state_flag(int flag) PVR_NOEXCEPT;

/**
 * Tells whether timeshift starts by itself.
 *
 * @param flag  receives 1 when it does, else 0, as the service gives it
 * @return PS_SUCCESS when the service answered 0; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_get_ts_auto_start_flag(int *flag) PVR_NOEXCEPT;

/**
 * Sets whether timeshift starts by itself.
 *
 * @param ts_auto_start_flag  1 or 0
 * @return PS_SUCCESS when the service answered 0; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_set_ts_auto_start_flag(int ts_auto_start_flag) PVR_NOEXCEPT;

/**
 * The text to show for a recording that failed, in the language that the application has set with setlocale()
 * (LC_MESSAGES). Where the library's catalogue has no such language the text is the message's identifier.
 *
 * @param error_num  the service's code, as results and signals carry it; a code without a text of its own gives that of
 * an unknown error, and 0 the empty text
 * @param flag       only logged
 * @param text       a buffer of 255 bytes: 254 bytes of text and a NUL
 * @return PS_SUCCESS, or PS_CALL_METHOD_FAILED when the product does not record or text is null.
 */
PVR_API int svc_pvr_get_err_text(int error_num, int flag, char *text) PVR_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
