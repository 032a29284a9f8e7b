/**
 * @file pvr_records.h
 * The packed records of the recording service: the same bytes in memory, on the wire and on disk.
 * Numbers are little-endian on every machine: a program of a big-endian one turns them, with le32toh() and htole32()
 * for instance. Members named opaque_N (N: the offset) are the service's own; they
 * are carried unchanged and never read.
 *
 * Members are unaligned: read and write them by value, never through a pointer or a reference to one.
 */
#ifndef PVR_RECORDS_H
#define PVR_RECORDS_H

#include <stdint.h>

/** Lays a record out without any padding. */
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

/** What a storage device holds, 16 bytes. */
typedef struct PVR_PACKED rec_dev_capacity {
    int64_t available_size; /**< free space, in the service's unit; the development service uses MiB (2^20 bytes) */
    int64_t total_size;     /**< in the same unit */
} rec_dev_capacity;

/** A running recording, 20 bytes. */
typedef struct PVR_PACKED pvr_recording_info {
    uint32_t low_word;  /**< lower half of a 64-bit value; the development service gives the service id */
    uint32_t high_word; /**< upper half of that value */
    int32_t opaque_8;   /**< the development service gives the kind of recording (ps_record_type_e) */
    int32_t opaque_12;  /**< the development service gives its state (ps_record_state_e) */
    int32_t opaque_16;  /**< the development service gives the seconds recorded so far */
} pvr_recording_info;

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

/**
 * What the info file beside a recording says, 10905 bytes, byte for byte the current generation of that file.
 * Check get_size_of_pvr_file_info() against sizeof.
 */
typedef struct PVR_PACKED pvr_file_info_s {
    uint16_t version;         /**< of the layout; 20 as the writer stamps it */
    char channel_name[256];   /**< UTF-8, NUL-terminated */
    char programe_title[256]; /**< UTF-8, NUL-terminated */
    char channel_num[256];    /**< the channel number as text */
    int32_t reserved_770;     /**< 0 in a record that was converted */
    int32_t reserved_774;     /**< 0 in a record that was converted */
    uint32_t
        start_time; /**< of the recording, in the service's unit; the development service uses seconds since 1970 UTC */
    uint32_t duration;          /**< milliseconds */
    uint32_t resume_play_pos;   /**< where playback was left, milliseconds */
    uint32_t opaque_790;        /**< carried unchanged */
    uint32_t nThumbnailType;    /**< 0 video, 1 audio only */
    uint32_t video_pid;         /**< PID of the pictures */
    uint32_t PCR_pid;           /**< PID of the clock references */
    uint32_t audio_pid;         /**< PID of the sound */
    uint32_t opaque_810;        /**< carried unchanged */
    uint16_t program_num;       /**< number of the programme in the stream */
    uint16_t opaque_816;        /**< carried unchanged */
    uint16_t major;             /**< major channel number */
    uint16_t minor;             /**< minor channel number */
    uint16_t opaque_822;        /**< carried unchanged */
    uint16_t channel_type;      /**< a code of the service */
    uint8_t opaque_826[256];    /**< carried unchanged */
    uint32_t opaque_1082[4];    /**< carried unchanged */
    uint8_t opaque_1098[150];   /**< carried unchanged */
    uint8_t opaque_1248[4096];  /**< carried unchanged */
    uint8_t opaque_5344[256];   /**< carried unchanged */
    uint32_t opaque_5600[4];    /**< carried unchanged */
    uint32_t flag_HD;           /**< only the low 16 bits count */
    uint32_t flag_TTX;          /**< teletext; only the low 16 bits count */
    uint32_t opaque_5624;       /**< carried unchanged */
    uint8_t opaque_5628[510];   /**< carried unchanged */
    uint32_t opaque_6138;       /**< carried unchanged */
    uint16_t rating;            /**< a code of the service */
    uint8_t opaque_6144[14];    /**< carried unchanged */
    uint16_t repeat_type;       /**< a code of the service */
    uint16_t opaque_6160;       /**< carried unchanged */
    uint32_t video_type;        /**< a code of the service */
    uint32_t audio_type;        /**< a code of the service */
    uint32_t opaque_6170[2];    /**< carried unchanged */
    uint8_t opaque_6178[80];    /**< carried unchanged */
    uint16_t opaque_6258;       /**< carried unchanged */
    uint8_t content_version;    /**< 1 for an ATSC 3.0 recording */
    uint8_t opaque_6261[256];   /**< carried unchanged */
    uint32_t opaque_6517[3];    /**< carried unchanged */
    uint16_t opaque_6529;       /**< carried unchanged */
    uint8_t opaque_6531[4096];  /**< carried unchanged */
    uint16_t record_complete;   /**< 0 while it is being recorded or was cut off, 1 when it is complete */
    uint8_t opaque_10629[16];   /**< carried unchanged */
    uint16_t incomplete_reason; /**< 5: it was cut off and nobody records it any more; other codes are the service's */
    uint8_t opaque_10647[258];  /**< carried unchanged */
} pvr_file_info_s;

/** How a recording's thumbnail is coded, 52 bytes: the whole of the colour-format file beside a recording. */
typedef struct PVR_PACKED yuv_info {
    int32_t color_format; /**< a code of the service; the development service uses 1 for planar 4:2:0 */
    int32_t width;        /**< pixels */
    int32_t height;       /**< pixels */
    uint8_t reserved[40]; /**< carried unchanged */
} yuv_info;

/** A state change or notification, 291 bytes. Check get_size_of_pvr_service_signal() against sizeof. */
typedef struct PVR_PACKED pvr_service_signal {
    int32_t opaque_0;      /**< carried unchanged */
    int32_t result;        /**< result code of the service */
    int32_t handle;        /**< handle of the recording or playback concerned */
    uint8_t opaque_12[8];  /**< carried unchanged */
    int32_t profile_type;  /**< a code of the service */
    int32_t screen_id;     /**< a code of the service */
    char uri[255];         /**< location of the recording, NUL-terminated by the service */
    int32_t current_state; /**< the new state; which enumeration it belongs to depends on the signal's type */
    int32_t opaque_287;    /**< carried unchanged */
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

/** What applications other than the recorder learn of a result, 28 bytes. Check get_size_of_pvr_result_third(). */
typedef struct PVR_PACKED pvr_result_third {
    int32_t third_part_method;  /**< what it is about (ps_third_part_method_e) */
    int32_t third_part_command; /**< what happened to it (ps_third_part_command_e) */
    int32_t result;             /**< 1 when it counts as done, else 0; always 0 for playback */
    int32_t service_result;     /**< the service's own result code; 113 for a launch that failed */
    uint64_t service_id;        /**< the broadcast service concerned; 0 when there is none */
    int32_t UID;                /**< identifier of the recording; -1 when there is none */
} pvr_result_third;

#endif
