/**
 * @file pvr_callbacks.h
 * Callbacks: how an application learns of the service's news.
 * The conventions at the head of pvr_service_api.h hold here and are not repeated.
 *
 * Each registration holds one callback with its user data, always as a pair, for the whole process. Events arrive
 * from the first registration on that is made while there is a session: make one first (svc_pvr_service_init).
 * Callbacks of one event are called one after another, in the thread that runs the session's main context, without
 * any lock held: they may call any function of the library, take themselves or others back, and give up the session.
 * One that was taken back may still be running in that thread, so its user data must outlive it.
 *
 * Events that do not have the form of their kind are logged and dropped.
 */
#ifndef PVR_CALLBACKS_H
#define PVR_CALLBACKS_H

#include "pvr_base.h"
#include "pvr_events.h"
#include "pvr_records.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Sizes of records */
/** @{ */

/** @return sizeof(pvr_service_signal) as the library sees it, 291. */
PVR_API int get_size_of_pvr_service_signal(void) PVR_NOEXCEPT;

/** @return sizeof(pvr_service_result) as the library sees it, 287. */
PVR_API int get_size_of_pvr_service_result(void) PVR_NOEXCEPT;

/** @return sizeof(pvr_result_third) as the library sees it, 28. */
PVR_API int get_size_of_pvr_result_third(void) PVR_NOEXCEPT;

/** @} */

/** @name Results of operations, and reports of the service */
/** @{ */

/**
 * Registers the callback for results, in place of the one registered before.
 *
 * @param func       the callback; null leaves the registered one
 * @param user_data  handed to every call of func
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing registered, when the product does not record.
 */
PVR_API int svc_pvr_register_result_pvr_cb(pvr_result_cb func, void *user_data) PVR_NOEXCEPT;

/**
 * Registers the callback that gets a pointer to a result, in place of the one registered before. It is called behind
 * the one that gets the result itself.
 *
 * @param func       the callback; null leaves the registered one
 * @param user_data  handed to every call of func
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing registered, when the product does not record.
 */
PVR_API int svc_pvr_register_result_pvr_point_cb(pvr_result_point_cb func, void *user_data) PVR_NOEXCEPT;

/**
 * Registers the callback of an application that is not the recorder, in place of the one registered before. It learns
 * of playback, of recordings and of what other applications report (pvr_result_third).
 *
 * @param func       the callback; null leaves the registered one
 * @param user_data  handed to every call of func
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing registered, when the product does not record.
 */
PVR_API int svc_pvr_register_to_other_apps_cb(pvr_result_third_cb func, void *user_data) PVR_NOEXCEPT;

/**
 * Registers the callback for the state of the service, in place of the one registered before.
 *
 * @param func       the callback; null leaves the registered one
 * @param user_data  handed to every call of func
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing registered, when the product does not record.
 */
PVR_API int svc_pvr_register_get_pvr_state_cb(pvr_state_cb func, void *user_data) PVR_NOEXCEPT;

/**
 * Takes the callback for results back, if it is this one. Once none of the three callbacks for results is registered,
 * no event arrives any more for any callback, until the next registration.
 *
 * @param func  the callback; null changes nothing
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing changed, when the product does not record.
 */
PVR_API int svc_pvr_unregister_result_pvr_cb(pvr_result_cb func) PVR_NOEXCEPT;

/**
 * Takes the callback that gets a pointer to a result back, if it is this one. Otherwise as
 * svc_pvr_unregister_result_pvr_cb.
 *
 * @param func  the callback; null changes nothing
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing changed, when the product does not record.
 */
PVR_API int svc_pvr_unregister_result_pvr_point_cb(pvr_result_point_cb func) PVR_NOEXCEPT;

/**
 * Takes the callback of an application that is not the recorder back, if it is this one. Otherwise as
 * svc_pvr_unregister_result_pvr_cb.
 *
 * @param func  the callback; null changes nothing
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing changed, when the product does not record.
 */
PVR_API int svc_pvr_unregister_to_other_apps_cb(pvr_result_third_cb func) PVR_NOEXCEPT;

/**
 * Takes the callback for the state of the service back, if it is this one. Whatever else is registered, no event
 * arrives any more, until the next registration.
 *
 * @param func  the callback; null changes nothing
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing changed, when the product does not record.
 */
PVR_API int svc_pvr_unregister_get_pvr_state_cb(pvr_state_cb func) PVR_NOEXCEPT;

/** @} */

/** @name State changes and notifications */
/** @{ */

/**
 * Registers the callback for state changes and notifications, in place of the one registered before.
 *
 * @param func       the callback; null leaves the registered one
 * @param user_data  handed to every call of func
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing registered, when the product does not record.
 */
PVR_API int svc_pvr_register_signal_cb(pvr_signal_cb func, void *user_data) PVR_NOEXCEPT;

/**
 * Registers the callback that gets a pointer to a state change or notification, in place of the one registered before.
 * It is called behind the one that gets the record itself.
 *
 * @param func       the callback; null leaves the registered one
 * @param user_data  handed to every call of func
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing registered, when the product does not record.
 */
PVR_API int svc_pvr_register_signal_pointer_cb(pvr_signal_point_cb func, void *user_data) PVR_NOEXCEPT;

/**
 * Adds a callback for state changes and notifications to a list of five, which is called behind the two others in the
 * order of its places. A callback that is in the list already is not added again, unless a place before it has become
 * free: then it is called twice.
 *
 * @param func       the callback; null changes nothing
 * @param user_data  handed to every call of func
 * @return PS_SUCCESS, also when the list is full and the callback was not added, which only the log tells;
 *         PS_CALL_METHOD_FAILED, with nothing added, when the product does not record.
 */
PVR_API int svc_pvr_register_signal_cb_in_list(pvr_signal_cb func, void *user_data) PVR_NOEXCEPT;

/**
 * Takes the callback for state changes and notifications back, whichever function is given.
 *
 * @param func  the callback; null changes nothing
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing changed, when the product does not record.
 */
PVR_API int svc_pvr_unregister_signal_cb(pvr_signal_cb func) PVR_NOEXCEPT;

/**
 * Takes the callback that gets a pointer to a state change or notification back, whichever function is given.
 *
 * @param func  the callback; null changes nothing
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing changed, when the product does not record.
 */
PVR_API int svc_pvr_unregister_signal_pointer_cb(pvr_signal_point_cb func) PVR_NOEXCEPT;

/**
 * Takes a callback out of the list, from the first place that holds it.
 *
 * @param func  the callback; null changes nothing
 * @return PS_SUCCESS; PS_CALL_METHOD_FAILED, with nothing changed, when the product does not record.
 */
PVR_API int svc_pvr_unregister_signal_cb_in_list(pvr_signal_cb func) PVR_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
