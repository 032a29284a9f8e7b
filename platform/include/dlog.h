/* The platform's logging service, as far as the library uses it. */
#ifndef PVR_PLATFORM_DLOG_H
#define PVR_PLATFORM_DLOG_H

#ifdef __cplusplus
#define PLATFORM_NOEXCEPT noexcept
extern "C" {
#else
#define PLATFORM_NOEXCEPT
#endif

/**
 * Hands one line to the platform's log.
 *
 * @param log_id    log buffer; 0 is the main one
 * @param priority  3 debug, 4 info, 5 warning, 6 error
 * @param tag       name under which the line is filed
 * @param format    printf format, formatted only when the line is kept
 * @return the number of bytes written, 0 for a line that was dropped, negative on an error
 */
int __dlog_print(int log_id, int priority, const char *tag, const char *format, ...) PLATFORM_NOEXCEPT
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif

#endif
