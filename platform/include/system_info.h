/* The platform's system information, as far as the library uses it. */
#ifndef PVR_PLATFORM_SYSTEM_INFO_H
#define PVR_PLATFORM_SYSTEM_INFO_H

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Each reads one value of the product. Returns 0 when *value was read; anything else means
 *  failure and leaves *value as it was. */
int system_info_get_custom_bool(const char *key, bool *value);
int system_info_get_custom_int(const char *key, int *value);
int system_info_get_value_int(int key, int *value);

#ifdef __cplusplus
}
#endif

#endif
