// Stands for a device's system information when the library is linked for one. Never run.
#include <system_info.h>

int system_info_get_custom_bool(const char *, bool *) { return -1; }
int system_info_get_custom_int(const char *, int *) { return -1; }
int system_info_get_value_int(int, int *) { return -1; }
