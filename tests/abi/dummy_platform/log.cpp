// Stands for a device's log when the library is linked for one. Never run.
#include <dlog.h>

int __dlog_print(int, int, const char *, const char *, ...) noexcept { return 0; }
