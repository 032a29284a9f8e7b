/**
 * @file pvr_side_files.h
 * The small files beside a recording, which the library reads and writes by itself.
 * The conventions at the head of pvr_service_api.h hold here and are not repeated.
 *
 * They lie beside the recording and bear its name with another extension: the info file (.inf), which says what was
 * recorded; the fingerprint file (.sas), which holds blocks of bytes by time; the colour-format file (.cft), which says
 * how the thumbnail is coded. Every function takes the recording's path and overwrites the end of the name, whatever
 * it is. Paths are cut at 255 bytes before that. Only regular files are read and written: anything else in
 * their place counts as a file that cannot be opened.
 *
 * Other processes use these files as well. They are kept out by an exclusive flock() while a file is read or written,
 * except from the colour-format file. A lock that somebody else holds is waited for, for up to 25 s.
 */
#ifndef PVR_SIDE_FILES_H
#define PVR_SIDE_FILES_H

#include "pvr_base.h"
#include "pvr_records.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @name Info file */
/** @{ */

/**
 * Reads what the info file beside a recording says. Older generations of the file are converted.
 *
 * A recording that is not finished according to its file, and that the service does not record now, was cut off: it
 * is handed out as complete, with incomplete_reason 5. The file stays as it is. While the service cannot be asked such
 * a recording counts as being recorded.
 *
 * @param file_path  path of the recording (.srf), of its info file (.inf) or of a timeshift (.tmp); case matters
 * @param info       where the record goes, 10905 bytes. Its texts need not end within their fields.
 * @return PS_SUCCESS, or PS_CALL_METHOD_FAILED when the path is none of these, info is null, or there is no
 *         such file or no whole record in it. The record is zero, or holds what could be read, when reading has
 *         failed; it is untouched when the path was refused or the product does not record.
 */
PVR_API int svc_pvr_get_pvr_file_info(const char *file_path, pvr_file_info_s *info) PVR_NOEXCEPT;

/**
 * Writes the info file beside a recording, after telling the service (whose answer changes nothing).
 *
 * The generation of the file stays. A file of the current generation is replaced by the record. A file of an
 * older one keeps all it has but the position at which playback was left, which is set to resume_play_pos in whole
 * seconds.
 *
 * Before a file of the current generation is written, a file with the recording's name and the extension "tmp" is
 * made beside it and removed, to see whether the device takes files. One that is there already is lost, unless it is
 * named timeshift.tmp or is file_path itself.
 *
 * @param file_path  path of the recording, as for svc_pvr_get_pvr_file_info. It must have an info file already.
 * @param info       the record, 10905 bytes. Its version is set to 20 when a file of the current generation is
 *                   written.
 * @return PS_SUCCESS, also when the device takes no files and nothing was written; PS_CALL_METHOD_FAILED when there is
 *         no session, the path is none of these, info is null, there is no such file or an empty one, or writing has
 *         failed. A file that could not be written to its end is cut so short that it is never read as whole; one of
 *         which nothing was written is as it was.
 */
PVR_API int svc_pvr_set_pvr_file_info_ex(const char *file_path, pvr_file_info_s *info) PVR_NOEXCEPT;

/** @return sizeof(pvr_file_info_s) as the library sees it, 10905. */
PVR_API unsigned get_size_of_pvr_file_info(void) PVR_NOEXCEPT;

/**
 * Tells whether a recording has sound alone, according to its info file.
 *
 * @param file_path      path of the recording, as for svc_pvr_get_pvr_file_info
 * @param is_audio_only  1 or 0
 * @return PS_SUCCESS, or PS_CALL_METHOD_FAILED with the output untouched when the file cannot be read, says neither,
 *         or is_audio_only is null.
 */
PVR_API int svc_pvr_is_audio_only(const char *file_path, int *is_audio_only) PVR_NOEXCEPT;

/**
 * Tells whether a file was recorded by this product: no file counts as such, and no file is looked at.
 *
 * @param file_path  only logged
 * @param result     0
 * @return PS_SUCCESS always
 */
PVR_API int svc_pvr_is_file_recorded_local(const char *file_path, int *result) PVR_NOEXCEPT;

/**
 * The same under a name that older programs use.
 *
 * @param file_path  ignored
 * @param result     0
 * @return 7 always
 */
PVR_API int IsFileRecordedLocal(const char *file_path, int *result) PVR_NOEXCEPT;

/**
 * The same under another such name.
 *
 * @param file_path  ignored
 * @param result     0
 * @return 7 always
 */
PVR_API int IsFileRecordedLocalVexan(const char *file_path, int *result) PVR_NOEXCEPT;

/** @} */
/** @name Fingerprint file */
/** @{ */

/**
 * Adds a block of bytes to the fingerprint file beside a recording, and tells the service its time. Makes the file if
 * there is none. A file holds 300 blocks, and ends before 4 GiB.
 *
 * @param file_path  path of the recording, of three characters or more
 * @param recTime    the time under which the block is filed, in whatever unit. The service is told the lower 32 bits.
 *                   Nothing keeps two blocks from having the same time; only the first of them can be read.
 * @param bufSize    size of the block in bytes, from 0
 * @param buf        the block; may be null when the size is 0
 * @return PS_SUCCESS; -1 when an argument is bad, the file is full, is no fingerprint file or could not be written: it
 *         is as it was up to what could not be written; PS_CALL_METHOD_FAILED when the block is in the file
 *         but the service could not be told.
 */
PVR_API int svc_pvr_write_sas_file(const char *file_path, long long recTime, int bufSize, const void *buf) PVR_NOEXCEPT;

/**
 * Reads a block of bytes from the fingerprint file beside a recording.
 *
 * The size of a block is not known beforehand: ask with a null buf first, then read with a buffer of that size. Blocks
 * are never changed and never removed, so it still fits.
 *
 * @param file_path  path of the recording, of three characters or more
 * @param recTime    the time under which the block was filed, exactly
 * @param bufSize    the size of the block in bytes. Set as soon as the block was found, also when it cannot be read.
 * @param buf        where the block goes: as many bytes as it has. Null asks for the size alone.
 * @return PS_SUCCESS, or -1 when an argument is bad, there is no such file or no such block, or the file is damaged.
 */
PVR_API int svc_pvr_read_sas_file(const char *file_path, long long recTime, int *bufSize, void *buf) PVR_NOEXCEPT;

/** @} */
/** @name Colour-format file */
/** @{ */

/**
 * Reads how a recording's thumbnail is coded. Asks neither the service nor whether the product records.
 *
 * @param uri       path of the recording, of five characters or more: the last four give way to ".cft"
 * @param yuv_info  where the record goes, 52 bytes
 * @return PS_SUCCESS, or PS_CALL_METHOD_FAILED when an argument is null, the path is too short, or there is no such
 *         file or no whole record in it; the record may then be partly filled.
 */
PVR_API int svc_pvr_get_yuv_info(const char *uri, yuv_info *yuv_info) PVR_NOEXCEPT;

/** @} */

#ifdef __cplusplus
}
#endif

#endif
