/**
 * @file pvr_events.h
 * The callbacks through which the service's news reaches an application. Their results are ignored.
 * Callbacks run one after another on the thread that dispatches the session's main context, without
 * any lock of the library held: a callback may call any function of the library.
 */
#ifndef PVR_EVENTS_H
#define PVR_EVENTS_H

#include "pvr_records.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Takes a state change or notification by value, with the user data it was registered with. */
typedef void (*pvr_signal_cb)(pvr_service_signal signal, void *user_data);

/** Takes the result of an operation by value, with the user data it was registered with. */
typedef void (*pvr_result_cb)(pvr_service_result result, void *user_data);

#ifdef __cplusplus
}
#endif

#endif
