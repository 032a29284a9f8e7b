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
 *     svc_pvr_start_recording             record it
 *     svc_pvr_stop_recording              and stop
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

#include "pvr_base.h"
#include "pvr_callbacks.h"
#include "pvr_events.h"
#include "pvr_legacy.h"
#include "pvr_playback.h"
#include "pvr_recording.h"
#include "pvr_records.h"
#include "pvr_rights.h"
#include "pvr_side_files.h"
#include "pvr_status.h"
#include "pvr_storage.h"

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif
