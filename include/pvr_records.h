/**
 * @file pvr_records.h
 * The packed records of the recording service: the same bytes in memory, on the wire and on disk.
 * Numbers are little-endian. Members named opaque_N (N: the offset) are the service's own; they
 * are carried unchanged and never read.
 *
 * Members are unaligned: read and write them by value, never through a pointer or a reference to one.
 */
#ifndef PVR_RECORDS_H
#define PVR_RECORDS_H

#include <stdint.h>

#define PVR_PACKED __attribute__((packed))

/** A storage device, 789 bytes. Check get_size_of_device_info() against sizeof. */
typedef struct PVR_PACKED device_info {
    int32_t device_type;    /**< kind of device, a code of the service; the development service uses 1 for USB */
    int32_t file_format;    /**< file system, a code of the service; the development service uses 0 for unknown */
    char device_name[255];  /**< UTF-8, at most 254 bytes and a NUL; a cut may split a character */
    char product_name[255]; /**< UTF-8, at most 254 bytes and a NUL; a cut may split a character */
    char mnt_path[255];     /**< where the device is mounted, at most 254 bytes and a NUL */
    int64_t total_size;     /**< in the service's unit; the development service uses MiB (2^20 bytes) */
    int64_t avail_size;     /**< free space, in the same unit */
} device_info;

/**
 * A broadcast channel and the programme on it, 526 bytes. Pass a zeroed record: the two texts are
 * copied without a terminator, and a field that the service did not send is left as it was.
 */
typedef struct PVR_PACKED channel_info {
    int32_t major;           /**< major channel number */
    int32_t minor;           /**< minor channel number */
    uint32_t start_time;     /**< start of the programme, in the service's unit; the development service uses seconds
                                  since 1970 UTC */
    uint32_t end_time;       /**< end of the programme, in the same unit */
    char channel_name[255];  /**< UTF-8, at most 254 bytes, no NUL added; a cut may split a character */
    char program_title[255]; /**< UTF-8, at most 254 bytes, no NUL added; a cut may split a character */
} channel_info;

/** A state change or notification, 291 bytes. Check get_size_of_pvr_service_signal() against sizeof. */
typedef struct PVR_PACKED pvr_service_signal {
    int32_t opaque_0;
    int32_t result; /**< result code of the service */
    int32_t handle; /**< handle of the recording or playback concerned */
    uint8_t opaque_12[8];
    int32_t profile_type;  /**< a code of the service */
    int32_t screen_id;     /**< a code of the service */
    char uri[255];         /**< location of the recording, NUL-terminated by the service */
    int32_t current_state; /**< the new state; which enumeration it belongs to depends on the signal's type */
    int32_t opaque_287;
} pvr_service_signal;

/**
 * The result of an operation, or a report of the service, 287 bytes. Fields that the method does not
 * carry are zero. Check get_size_of_pvr_service_result() against sizeof.
 */
typedef struct PVR_PACKED pvr_service_result {
    int32_t method;        /**< the operation answered, or the event reported */
    int32_t result;        /**< result code of the service */
    int32_t handle;        /**< handle of the recording or playback concerned */
    char mnt_path[255];    /**< mount path of a device, or a recording's path; at most 254 bytes and a NUL */
    int32_t detail_result; /**< detailed result of a recording operation, or a bit rate */
    int32_t duration;      /**< length of a recording, in the service's unit; the development service uses seconds */
    uint64_t service_id;   /**< the broadcast service concerned */
    int32_t current_state; /**< third value of a playback result */
} pvr_service_result;

#endif
