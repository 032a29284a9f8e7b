/**
 * @file pvr_service_api.h
 * Client library of the Recording service: recordings, timeshift and playback on a television.
 *
 * Start here. Most applications need no more than these:
 *
 *     svc_pvr_service_init                make the session, before anything is registered
 *     svc_pvr_is_support_pvr              does the service record at all?
 *     svc_pvr_get_default_rec_device      which storage device do recordings go to?
 *     svc_pvr_get_device_info             how full is it?
 *     svc_pvr_get_channel_info            what is on a channel?
 *     svc_pvr_get_handle_for_record       which recordings are running?
 *     svc_pvr_get_handle_for_playback     get a handle to play with
 *     svc_pvr_play_start                  play a recording
 *     svc_pvr_play_pause, _resume, _skip  steer it
 *     svc_pvr_get_progress                how far is it?
 *     svc_pvr_stop_playing_sync           stop whatever plays
 *     svc_pvr_register_signal_cb          learn of state changes
 *     svc_pvr_register_result_pvr_cb      learn what became of a request
 *
 * Conventions, which no function repeats:
 *
 *  1. Session. A process has one connection to the service. The first call that needs it makes it;
 *     svc_pvr_service_init makes it ahead of time and svc_pvr_service_destroy gives it up. A service
 *     or a bus that was restarted is found again by the library: the call that meets the loss fails,
 *     a later one succeeds, and nothing has to be initialised or registered anew.
 *  2. Results. Functions return a pvr_result_code unless they say otherwise. PS_CALL_METHOD_FAILED
 *     stands for every failure: a product without recording, no session, a call that the bus could
 *     not deliver, a reply of the wrong type, a text that is not UTF-8 or is longer than 16 MiB; and,
 *     where a function says so, for a service that refused. The log tells which.
 *  3. Outputs are untouched when the call fails on its way. They are written once the service has
 *     answered, even when its answer then makes the function return PS_CALL_METHOD_FAILED. A null
 *     output pointer is skipped.
 *  4. Texts given to a function are UTF-8 and end in NUL; null stands for the empty text. Texts handed
 *     out are cut at the buffer's size, which may split a UTF-8 character, and end in NUL unless a
 *     function says otherwise. The library never keeps a pointer to a caller's text or record, and
 *     never hands out memory that the caller would have to free.
 *  5. Threads. Every function may be called from any thread at any time. A call holds its thread until
 *     the service answers: up to 25 s when the service is silent, up to 25 s more for the call that
 *     makes the session. There is no bound when a bus accepts the connection and never authenticates.
 *  6. Events arrive in the main context that was the thread's default when the session was made: the
 *     global default context unless g_main_context_push_thread_default was used. The application has to
 *     run that context. One that nobody runs delivers nothing, and what arrives queues up in memory
 *     (about 2.4 kB per event). When the session has to be replaced, its successor is made in the same
 *     context: while another thread owns that context and does not run it, calls fail.
 *  7. A callback that is running on another thread while it is being replaced or unregistered may
 *     finish after that call has returned: its user data must outlive it.
 *  8. Processes. A child made by fork without exec cannot use a session of its parent: every call
 *     that would need it returns PS_CALL_METHOD_FAILED at once. The library sets exit-on-close to FALSE
 *     on the process's shared system bus connection, so that the end of the bus does not end the
 *     process. Once loaded, the library stays until the process ends.
 *  9. Numbers whose meaning is the service's are handed through as they are; where their documentation
 *     adds what the development service uses, that is not a promise about a television.
 */
#ifndef PVR_SERVICE_API_H
#define PVR_SERVICE_API_H

#include "pvr_events.h"
#include "pvr_records.h"

#include <stdint.h>

#define PVR_API __attribute__((visibility("default")))
#define PVR_RETIRED __attribute__((deprecated("retired: does nothing")))

#ifdef __cplusplus
#define PVR_NOEXCEPT noexcept
extern "C" {
#else
#define PVR_NOEXCEPT
#endif

/** What functions return. */
enum pvr_result_code {
    PS_SUCCESS = 0,
    PS_SESSION_READY = 1,       /**< svc_pvr_service_init only: there is a session */
    PS_CALL_METHOD_FAILED = -2, /**< failure of any kind */
    PS_NO_PROXY = -3,           /**< svc_pvr_service_init only: the bus could not be reached */
    PS_FACTORY_ERROR = -4       /**< svc_pvr_is_support_pvr only: the service does not record */
};

/** What the conditional-access queries return. */
enum pvr_ca_result_code {
    PVR_CA_SUCCESS = 0,
    PVR_CA_BAD_ARGUMENT = 4, /**< a null or empty path, or a null output */
    PVR_CA_NO_ANSWER = 7     /**< there is no conditional-access library, or it did not answer */
};

/** Broadcast standards of a product. */
enum pvr_dtv_type { PVR_DTV_ATSC = 0, PVR_DTV_DVB = 1, PVR_DTV_DVB_ISDB = 2 };

/** @name Session */
/** @{ */

/**
 * Makes the session with the Recording service, or finds the one there is. Optional: the first call
 * that needs a session makes it.
 *
 * @return PS_SESSION_READY; PS_CALL_METHOD_FAILED when the product does not record; PS_NO_PROXY when
 *         the bus cannot be reached, or when the session is to be replaced and its main context is
 *         another thread's, which has not run it yet. A service that is not running is no failure here.
 */
PVR_API int svc_pvr_service_init(void) PVR_NOEXCEPT;

/**
 * Gives up the session, if there is one. Registered callbacks stay registered but receive nothing until
 * a registration is made in a new session. Calls that are under way end normally.
 *
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with the session untouched, when the product does not record.
 */
PVR_API int svc_pvr_service_destroy(void) PVR_NOEXCEPT;

/** @} */
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
/** @name Recording and timeshift */
/** @{ */

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

/** @} */
/** @name Storage devices */
/** @{ */

/** @return sizeof(device_info) as the library sees it, 789. */
PVR_API unsigned get_size_of_device_info(void) PVR_NOEXCEPT;

/**
 * Describes a storage device.
 *
 * @param dev_handle  a device handle issued by the service
 * @param info        receives the whole record; null is refused once the service has answered
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with info untouched, when it is null.
 */
PVR_API int svc_pvr_get_device_info(int dev_handle, device_info *info) PVR_NOEXCEPT;

/**
 * Tells which storage device recordings go to.
 *
 * @param dev_handle  receives the device's handle, as the service gives it when there is no such device
 * @return PS_SUCCESS once the service has answered.
 */
PVR_API int svc_pvr_get_default_rec_device(int *dev_handle) PVR_NOEXCEPT;

/**
 * Removes a recording's info file.
 *
 * @param file_path  the recording or its info file; must end in .srf, .inf or .tmp, in lower case
 * @param mode       a code of the service
 * @return PS_SUCCESS once the service has answered; PS_CALL_METHOD_FAILED, without asking it, for any
 *         other path and for null.
 */
PVR_API int svc_pvr_remove_inf(const char *file_path, int mode) PVR_NOEXCEPT;

/** @} */
/** @name Status, channels and services */
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
/** @name Answered by the library
 *  Calls that older applications make. The service is not asked. */
/** @{ */

/**
 * Does nothing with its argument.
 *
 * @param flag  only logged
 * @return PS_SUCCESS when the last call of this process that asked the service for a result got 1, else
 *         PS_CALL_METHOD_FAILED.
 */
PVR_API int svc_pvr_set_highlight_player_flag(int flag) PVR_NOEXCEPT;

/** @} */
/** @name Callbacks */
/** @{ */

/** @return sizeof(pvr_service_signal) as the library sees it, 291. */
PVR_API int get_size_of_pvr_service_signal(void) PVR_NOEXCEPT;

/** @return sizeof(pvr_service_result) as the library sees it, 287. */
PVR_API int get_size_of_pvr_service_result(void) PVR_NOEXCEPT;

/**
 * Registers the callback for the results of operations, in place of the one registered before. Events
 * arrive from the first registration on that is made while there is a session: make one first
 * (svc_pvr_service_init).
 *
 * @param func       the callback; null leaves the registered one
 * @param user_data  handed to every call of func
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing registered, when the product does not record.
 */
PVR_API int svc_pvr_register_result_pvr_cb(pvr_result_cb func, void *user_data) PVR_NOEXCEPT;

/**
 * Registers the callback for state changes and notifications, in place of the one registered before.
 * Otherwise as svc_pvr_register_result_pvr_cb.
 *
 * @param func       the callback; null leaves the registered one
 * @param user_data  handed to every call of func
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing registered, when the product does not record.
 */
PVR_API int svc_pvr_register_signal_cb(pvr_signal_cb func, void *user_data) PVR_NOEXCEPT;

/** @} */
/** @name Conditional access
 *  What the platform says about viewing rights. Thread safety is that of its conditional-access library. */
/** @{ */

/** @return the product's broadcast standard (pvr_dtv_type); PVR_DTV_DVB when the platform cannot tell. */
PVR_API int GetDtvType(void) PVR_NOEXCEPT;

/** @return the same as GetDtvType, and logs it. */
PVR_API int GetTVStandard(void) PVR_NOEXCEPT;

/** @return 1 when the product has a CI slot, else 0. Read anew on every call. */
PVR_API int IsSupportCI(void) PVR_NOEXCEPT;

/**
 * Asks whether a recording is blocked by its parental rating. An exception of the conditional-access
 * library passes through.
 *
 * @param path     the recording
 * @param blocked  receives 0 when the conditional-access library says that it is not blocked, else 1,
 *                 also when nothing could be asked
 * @return PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER.
 */
PVR_API int IsBlockedByParentalControl(const char *path, int *blocked);

/** @} */
/** @name Retired
 *  Kept so that old applications load. Each logs that it is gone, writes nothing and returns PS_SUCCESS. */
/** @{ */

/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_is_recording_available(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_recording_time(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_recording_channel(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_is_pvr_operating(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_is_recording_pause(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_rec_default_dev_index(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_rec_device_key_by_index(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_get_recording_file_info(void *out) PVR_NOEXCEPT;
/** Does nothing. @param out ignored @return PS_SUCCESS */
PVR_API PVR_RETIRED int svc_pvr_remove_recording_info(void *out) PVR_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
