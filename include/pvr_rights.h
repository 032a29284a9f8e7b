/**
 * @file pvr_rights.h
 * What a recording's viewing rights allow.
 * The conventions at the head of pvr_service_api.h hold here, with these of its own:
 *
 *  - The answers come from the platform's conditional-access library, and the service is not asked. The thread safety
 * of all calls that take a recording is that of this library: make one at a time unless the platform promises more.
 *  - The functions that begin with svc_pvr_ are for applications, and do not throw. The others are what they rest on:
 * an exception of the conditional-access library passes through them, and a null output is a bad argument to them.
 *  - Three of the questions (thumbnail valid, kind of thumbnail, retention limit) are answered without asking on a
 *    product that receives ATSC or has no CI slot, whatever the path and the outputs are.
 *  - Flags start from 1 and are cleared by the conditional-access library alone: where nobody answers, a recording is
 *    blocked and over its limit, and its thumbnail valid.
 */
#ifndef PVR_RIGHTS_H
#define PVR_RIGHTS_H

#include "pvr_base.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What the questions return. */
enum pvr_ca_result_code {
    PVR_CA_SUCCESS = 0,
    PVR_CA_BAD_ARGUMENT = 4, /**< a null or empty path, or a null output */
    PVR_CA_NO_ANSWER = 7     /**< there is no conditional-access library, it did not answer, or it threw */
};

/** Broadcast standards of a product. */
enum pvr_dtv_type { PVR_DTV_ATSC = 0, PVR_DTV_DVB = 1, PVR_DTV_DVB_ISDB = 2 };

/** A part of a recording that may not be watched any more, 8 bytes. */
typedef struct expired_content_section {
    int32_t start_time; /**< seconds */
    int32_t end_time;   /**< seconds */
} expired_content_section;

/** @name For applications */
/** @{ */

/**
 * Asks whether a recording is blocked by its parental rating.
 *
 * @param file_name  path of the recording
 * @param blocked    1, or 0 when the conditional-access library says that it is not blocked
 * @return PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER. The output is set in each case.
 */
PVR_API int svc_pvr_is_blocked_by_parental_control(const char *file_name, int *blocked) PVR_NOEXCEPT;

/**
 * Asks whether the whole of a recording is past the time for which it may be kept.
 *
 * @param file_name  path of the recording
 * @param exceeded   1, or 0 when the conditional-access library says that it is not, or need not be asked
 * @return PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER. The output is set in each case.
 */
PVR_API int svc_pvr_is_this_whole_file_exceeded_retention_limit(const char *file_name, int *exceeded) PVR_NOEXCEPT;

/**
 * Asks which parts of a recording may not be watched any more. The conditional-access library is asked, but what it
 * lists is not handed out: the count is always 0.
 *
 * @param file_name  path of the recording
 * @param sections   where the parts go, as many as count says; 100 at most
 * @param count      0. Untouched unless success is 1.
 * @param success    1 when the question was answered, else 0
 * @return PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER; PS_CALL_METHOD_FAILED with the outputs untouched
 * when one of them is null, or the product does not record.
 */
PVR_API int svc_pvr_get_expired_content_sections(const char *file_name, expired_content_section *sections, int *count,
                                                 int *success) PVR_NOEXCEPT;

/** @return sizeof(expired_content_section) as the library sees it, 8. */
PVR_API unsigned get_size_of_expired_content_section(void) PVR_NOEXCEPT;

/**
 * Asks whether a recording's thumbnail may be shown.
 *
 * @param file_name  path of the recording
 * @param position   the place in the recording, in the conditional-access library's unit
 * @param valid      1, or 0 when the conditional-access library says that it may not
 * @return PS_SUCCESS always
 */
PVR_API int svc_pvr_is_thumbnail_valid(const char *file_name, int position, int *valid) PVR_NOEXCEPT;

/**
 * Asks which kind of thumbnail a recording may have.
 *
 * @param file_name   path of the recording
 * @param thumb_type  a code of the conditional-access library; 0 when it need not be asked
 * @param success     1 when the question was answered, or need not be asked, else 0
 * @return PS_SUCCESS always. The outputs are set in each case.
 */
PVR_API int svc_pvr_get_ci_thumb_type(const char *file_name, int *thumb_type, int *success) PVR_NOEXCEPT;

/**
 * Asks what a recording is, and how often it was played.
 *
 * @param file_name   path of the recording
 * @param info_type   a code of the conditional-access library
 * @param play_count  0 to 255
 * @param success     1 when the question was answered, else 0
 * @return PS_SUCCESS always. The outputs are set in each case.
 */
PVR_API int svc_pvr_get_content_info(const char *file_name, int *info_type, int *play_count, int *success) PVR_NOEXCEPT;

/** @} */
/** @name What these rest on */
/** @{ */

/** @return the product's broadcast standard (pvr_dtv_type); PVR_DTV_DVB when the platform cannot tell. */
PVR_API int GetDtvType(void) PVR_NOEXCEPT;

/** @return the same as GetDtvType, and logs it. */
PVR_API int GetTVStandard(void) PVR_NOEXCEPT;

/** @return 1 when the product has a CI slot, else 0. Read anew on every call. */
PVR_API int IsSupportCI(void) PVR_NOEXCEPT;

/**
 * As svc_pvr_is_blocked_by_parental_control.
 *
 * @param path     path of the recording
 * @param blocked  1, or 0 when the conditional-access library says that it is not blocked
 * @return PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER
 */
PVR_API int IsBlockedByParentalControl(const char *path, int *blocked);

/**
 * As svc_pvr_is_this_whole_file_exceeded_retention_limit.
 *
 * @param path      path of the recording
 * @param exceeded  1, or 0 when the conditional-access library says that it is not, or need not be asked
 * @return PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER
 */
PVR_API int IsThisWholeFileExceededRetentionLimit(const char *path, int *exceeded);

/**
 * As svc_pvr_is_thumbnail_valid, and returns what that does not.
 *
 * @param path      path of the recording
 * @param position  the place in the recording, in the conditional-access library's unit
 * @param valid     1, or 0 when the conditional-access library says that it may not be shown
 * @return PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER
 */
PVR_API int IsThumbnailValid(const char *path, int position, int *valid);

/**
 * As svc_pvr_get_ci_thumb_type.
 *
 * @param path        path of the recording
 * @param thumb_type  a code of the conditional-access library; 0 when it need not be asked
 * @return what stands in place of success: PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER
 */
PVR_API int GetCIThumbType(const char *path, int *thumb_type);

/**
 * As svc_pvr_get_content_info.
 *
 * @param path        path of the recording
 * @param info_type   a code of the conditional-access library
 * @param play_count  0 to 255
 * @return what stands in place of success: PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER
 */
PVR_API int GetContentInfo(const char *path, int *info_type, unsigned char *play_count);

/**
 * As svc_pvr_get_expired_content_sections, for the first part alone.
 *
 * @param path         path of the recording
 * @param count        0
 * @param first_start  start of the first part in seconds; untouched when there is none
 * @param first_end    its end; untouched when there is none
 * @return PVR_CA_SUCCESS, PVR_CA_BAD_ARGUMENT or PVR_CA_NO_ANSWER.
 */
PVR_API int GetExpiredContentSections(const char *path, int *count, int *first_start, int *first_end);

/** @} */

#ifdef __cplusplus
}

/**
 * Tells whether a recording is of an ATSC 3.0 broadcast, according to its info file. For C++ alone: its symbol is a C++
 * one.
 *
 * @param path  path of the recording (.srf), of its info file (.inf) or of a timeshift (.tmp)
 * @return 1 when it is, else 0, also when its file cannot be read or is of an older generation.
 */
PVR_API int IsATSC3Url(const char *path) noexcept;
#endif

#endif
