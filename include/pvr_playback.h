/**
 * @file pvr_playback.h
 * Handles and playback.
 * The conventions at the head of pvr_service_api.h hold here and are not repeated.
 */
#ifndef PVR_PLAYBACK_H
#define PVR_PLAYBACK_H

#include "pvr_base.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @name Playback */
/** @{ */

/**
 * Has the service issue a handle, for a recording or a playback. Give it back with svc_pvr_release_handle.
 *
 * @param handle  receives the handle, as the service gives it when it has none to issue
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_handle(int *handle) PVR_NOEXCEPT;

/**
 * Has the service issue a handle for a playback. Give it back with svc_pvr_release_handle.
 *
 * @param handle  receives the handle, as the service gives it when it has none to issue
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_handle_for_playback(int *handle) PVR_NOEXCEPT;

/**
 * Lists the handles of the recordings that are running.
 *
 * @param handle_list  receives at most length handles, in the service's order; null to ask for the count
 * @param length       how many handles handle_list has room for; nothing is stored when it is not above 0
 * @param num_of_list  receives the service's count, which may exceed length
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_handle_for_record(int *handle_list, int length, int *num_of_list) PVR_NOEXCEPT;

/**
 * Issues nothing: sports mode is gone. The service is not asked, whatever the product is.
 *
 * @param first   only logged
 * @param second  only logged
 * @param handle  not written; what it holds is logged
 * @return PS_SUCCESS.
 */
PVR_API int svc_pvr_get_handle_for_sportsmode(int first, int second, int *handle) PVR_NOEXCEPT;

/**
 * Gives a handle back. The development service stops its playback first.
 *
 * @param handle  a handle issued by the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_release_handle(int handle) PVR_NOEXCEPT;

/**
 * Starts to play a recording.
 *
 * @param handle     a playback handle issued by the service
 * @param uri        the recording
 * @param start_pos  where to start, in the service's unit; the development service uses seconds
 * @return PS_SUCCESS once the service has answered, whatever it answered: what became of the playback
 *         arrives as a result and as state changes. This holds for all controls below.
 */
PVR_API int svc_pvr_play_start(int handle, const char *uri, int start_pos) PVR_NOEXCEPT;

/**
 * Stops playback. The handle stays issued.
 *
 * @param handle  a playback handle issued by the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_stop(int handle) PVR_NOEXCEPT;

/**
 * Pauses playback.
 *
 * @param handle  a playback handle issued by the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_pause(int handle) PVR_NOEXCEPT;

/**
 * Plays on at normal speed from where playback is paused, winds or steps.
 *
 * @param handle  a playback handle issued by the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_resume(int handle) PVR_NOEXCEPT;

/**
 * Winds forward, or plays in slow motion.
 *
 * @param handle        a playback handle issued by the service
 * @param forward_type  the speed, a code of the service; the development service uses 1 to 7 for 2, 4, 8, 16, 32, 64
 *                      and 128 times, and 8, 9 and 10 for a half, a quarter and an eighth
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_forward(int handle, int forward_type) PVR_NOEXCEPT;

/**
 * Winds back, or plays backwards in slow motion.
 *
 * @param handle       a playback handle issued by the service
 * @param rewind_type  the speed, a code of the service; the development service uses the codes of
 *                     svc_pvr_play_forward
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_rewind(int handle, int rewind_type) PVR_NOEXCEPT;

/**
 * Goes to another place of the recording.
 *
 * @param handle     a playback handle issued by the service
 * @param skip_type  how far, a code of the service; the development service uses 0 for to skip_pos, 1 for forward by
 *                   skip_pos, 2 for back by skip_pos, and 3 for to rate percent of the recording
 * @param skip_pos   in the service's unit; the development service uses seconds
 * @param rate       a number of the service; the development service uses percent
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_skip(int handle, int skip_type, int skip_pos, int rate) PVR_NOEXCEPT;

/**
 * Pauses playback and shows the next frame.
 *
 * @param handle  a playback handle issued by the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_step_frame(int handle) PVR_NOEXCEPT;

/**
 * Pauses the playback of a channel, that is of its timeshift.
 *
 * @param service_id  the channel
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_pause_by_service_id(uint64_t service_id) PVR_NOEXCEPT;

/**
 * Resumes the playback of a channel, that is of its timeshift.
 *
 * @param service_id  the channel
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_resume_by_service_id(uint64_t service_id) PVR_NOEXCEPT;

/**
 * Stops playback and returns to the live broadcast.
 *
 * @param handle  a playback handle issued by the service
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_stop_to_dtv(int handle) PVR_NOEXCEPT;

/**
 * Stops the playback of a recording.
 *
 * @param uri  the recording, as playback was started with it
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_play_stop_by_uri(const char *uri) PVR_NOEXCEPT;

/**
 * Stops nothing, in spite of its name: the service is not asked, whatever the product is. Use
 * svc_pvr_stop_playing_sync.
 *
 * @return PS_SUCCESS.
 */
PVR_API int svc_pvr_play_stop_all(void) PVR_NOEXCEPT;

/**
 * Tells which recording a handle plays.
 *
 * @param handle  a playback handle issued by the service
 * @param uri     receives the recording's uri; 255 bytes, at most 254 of them text
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_playback_uri_by_handle(int handle, char *uri) PVR_NOEXCEPT;

/**
 * Stops whatever plays and sets the source back to the broadcast.
 *
 * @param called_app  name of the application that asks
 * @return the service's own result as it is, or PS_CALL_METHOD_FAILED when it could not be asked.
 */
PVR_API int svc_pvr_stop_playing_sync(const char *called_app) PVR_NOEXCEPT;

/**
 * Stops whatever plays.
 *
 * @param called_app  name of the application that asks
 * @param set_source  a code of the service; 1, as svc_pvr_stop_playing_sync sends it, sets the source back to
 *                    the broadcast
 * @return the service's own result as it is, or PS_CALL_METHOD_FAILED when it could not be asked.
 */
PVR_API int svc_pvr_stop_playing_sync_ex(const char *called_app, int set_source) PVR_NOEXCEPT;

/**
 * Stops a playback together with the recording that it plays.
 *
 * @param handle      a playback handle issued by the service
 * @param set_source  a code of the service, as for svc_pvr_stop_playing_sync_ex
 * @return PS_SUCCESS once the service has answered, whatever it answered.
 */
PVR_API int svc_pvr_stop_playing_and_recording(int handle, int set_source) PVR_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
