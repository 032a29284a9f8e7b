/**
 * @file pvr_status.h
 * What the service is doing, and what is on the channels.
 * The conventions at the head of pvr_service_api.h hold here and are not repeated.
 */
#ifndef PVR_STATUS_H
#define PVR_STATUS_H

#include "pvr_base.h"
#include "pvr_records.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name Status */
/** @{ */

/**
 * Tells whether a channel is being recorded.
 *
 * @param service_id  the channel
 * @param result      receives 1 when it is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_recording(uint64_t service_id, int *result) PVR_NOEXCEPT;

/**
 * Tells whether a timer records a channel.
 *
 * @param service_id  the channel
 * @param result      receives 1 when it does, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_timer_recording(uint64_t service_id, int *result) PVR_NOEXCEPT;

/**
 * Tells whether a channel is timeshifted.
 *
 * @param service_id  the channel
 * @param result      receives 1 when it is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_timeshifting(uint64_t service_id, int *result) PVR_NOEXCEPT;

/**
 * Tells whether anything is being recorded.
 *
 * @param result  receives 1 when something is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_recording_now(int *result) PVR_NOEXCEPT;

/**
 * Tells whether anything is timeshifted.
 *
 * @param result  receives 1 when something is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_timeshifting_now(int *result) PVR_NOEXCEPT;

/**
 * Tells whether a recording is played.
 *
 * @param result  receives 1 when one is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_playing_multimedia(int *result) PVR_NOEXCEPT;

/**
 * Tells whether a channel's recording uses the tuner of the picture.
 *
 * @param service_id  the channel
 * @param result      receives 1 when it does, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_recording_with_main_tuner(uint64_t service_id, int *result) PVR_NOEXCEPT;

/**
 * Tells whether a channel's last recording was completed.
 *
 * @param service_id  the channel
 * @param result      receives 1 when it was, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_past_record_complete(uint64_t service_id, int *result) PVR_NOEXCEPT;

/**
 * Tells what the service plays and records.
 *
 * @param play_state    receives a state of playback; the development service gives that of the current playback
 *                      (ps_play_state_e)
 * @param record_state  receives a state of recording; the development service gives that of the current recording
 *                      (ps_record_state_e)
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_pvr_state(int *play_state, int *record_state) PVR_NOEXCEPT;

/**
 * Tells the state of a channel's playback, that is of its timeshift.
 *
 * @param service_id  the channel
 * @param state       receives the state (ps_play_state_e)
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_play_state_by_service_id(uint64_t service_id, int *state) PVR_NOEXCEPT;

/**
 * Tells the state of a channel's recording.
 *
 * @param service_id    the channel
 * @param state         receives the state (ps_record_state_e)
 * @param is_timeshift  receives 1 when it is a timeshift, else 0, as the service gives it
 * @return PS_SUCCESS when the service answered 0; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_get_record_state_by_service_id(uint64_t service_id, int *state, int *is_timeshift) PVR_NOEXCEPT;

/**
 * Tells how far a playback is.
 *
 * @param handle           a handle issued by the service
 * @param out_result       receives a code of the service; the development service gives the state (ps_play_state_e)
 * @param relative_second  receives the position in the recording, in the service's unit; the development service
 *                         gives seconds from its start
 * @param absolute_second  receives the position as a time, in the service's unit; the development service gives
 *                         seconds since 1970 UTC of the moment that was recorded
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_get_progress(int handle, int *out_result, int64_t *relative_second,
                                 int64_t *absolute_second) PVR_NOEXCEPT;

/**
 * Tells how far a channel's timeshift or recording is.
 *
 * @param service_id       the channel
 * @param out_result       as svc_pvr_get_progress
 * @param relative_second  as svc_pvr_get_progress
 * @param absolute_second  as svc_pvr_get_progress
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_get_progress_by_service_id(uint64_t service_id, int *out_result, int64_t *relative_second,
                                               int64_t *absolute_second) PVR_NOEXCEPT;

/**
 * Reads a value that an application has stored in the service.
 *
 * @param share_data_type  which value, a code of the service
 * @param value            receives the value, also when the service then answers that there is none
 * @return PS_SUCCESS when the service answered 1; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_get_share_data(int share_data_type, int64_t *value) PVR_NOEXCEPT;

/**
 * Stores a value in the service for other applications to read.
 *
 * @param share_data_type   which value, a code of the service
 * @param share_data_value  the value; all 64 bits are kept
 * @return PS_SUCCESS when the service answered 1; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_set_share_data(int share_data_type, int64_t share_data_value) PVR_NOEXCEPT;

/**
 * Asks the service whether it supports recording. An answer other than 0 is kept for the life of the
 * process and never asked for again. This call makes no session: without one it fails.
 *
 * @param supported  receives 1 when the service answered 1, else 0
 * @return PS_SUCCESS; PS_FACTORY_ERROR, with 0 in supported, when the service answered 0;
 *         PS_CALL_METHOD_FAILED, with supported untouched, without a session.
 */
PVR_API int svc_pvr_is_support_pvr(int *supported) PVR_NOEXCEPT;

/** @} */

/** @name Channels */
/** @{ */

/**
 * Describes a channel and the programme on it.
 *
 * @param service_id  the channel
 * @param info        a zeroed record; receives the fields that the service sent, up to the first that
 *                    cannot be read. Null is refused once the service has answered.
 * @return PS_SUCCESS, also when only some fields could be read; PS_CALL_METHOD_FAILED when info is null.
 */
PVR_API int svc_pvr_get_channel_info(uint64_t service_id, channel_info *info) PVR_NOEXCEPT;

/**
 * Tells whether a channel has no signal.
 *
 * @param service_id  the channel
 * @param result      receives 1 when it has none, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_no_signal_channel(uint64_t service_id, int *result) PVR_NOEXCEPT;

/**
 * Tells whether a channel has sound and no picture.
 *
 * @param service_id  the channel
 * @param result      receives 1 when it has, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_audio_only_channel(uint64_t service_id, int *result) PVR_NOEXCEPT;

/**
 * Tells whether a channel is locked.
 *
 * @param service_id  the channel
 * @param result      receives 1 when it is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_child_lock_channel(uint64_t service_id, int *result) PVR_NOEXCEPT;

/**
 * Tells whether a channel is analogue, and so cannot be recorded.
 *
 * @param service_id  the channel
 * @param result      receives 1 when it is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_analog_channel(uint64_t service_id, int *result) PVR_NOEXCEPT;

/**
 * Tells whether everything that is being recorded is descrambled.
 *
 * @param result  receives 1 when it is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_all_descrambled(int *result) PVR_NOEXCEPT;

/**
 * Tells what of a channel can be seen and heard.
 *
 * @param service_id  the channel
 * @param av_status   receives a code of the service; the development service adds 1 for sound and 2 for a
 *                    picture
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_av_status(uint64_t service_id, int *av_status) PVR_NOEXCEPT;

/**
 * Tells whether the set's clock is set.
 *
 * @param result  receives 1 when it is, else 0, as the service gives it
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_is_date_set(int *result) PVR_NOEXCEPT;

/**
 * Tells which channel is current.
 *
 * @param service_id  receives the channel
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_current_service_id(uint64_t *service_id) PVR_NOEXCEPT;

/**
 * Tells which channel is watched live.
 *
 * @param service_id  receives the channel
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_current_livetv_service_id(uint64_t *service_id) PVR_NOEXCEPT;

/**
 * Tells the service the channel's name in several languages.
 *
 * @param data    the names, in a form of the service
 * @param length  sent as it is given
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_set_channel_multilanguage_string(const char *data, int length) PVR_NOEXCEPT;

/**
 * Tells the service a recording's channel number as text.
 *
 * @param handle               a recording handle issued by the service
 * @param channel_number_name  the number
 * @return PS_SUCCESS when the service answered 0; PS_CALL_METHOD_FAILED when it answered anything else.
 */
PVR_API int svc_pvr_set_channel_number_string(int handle, const char *channel_number_name) PVR_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
