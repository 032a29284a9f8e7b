/**
 * @file pvr_base.h
 * What every function of the library is declared with, and what functions return.
 */
#ifndef PVR_BASE_H
#define PVR_BASE_H

/** Functions that the library exports. */
#define PVR_API __attribute__((visibility("default")))
/** Functions that are kept for older programs alone. */
#define PVR_RETIRED __attribute__((deprecated("retired: does nothing")))

/** Functions that throw nothing. */
#ifdef __cplusplus
#define PVR_NOEXCEPT noexcept
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

#endif
