// The key file that describes the product to the stand-ins: the one that PVR_PLATFORM_CONFIG names.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <glib.h>
#include <memory>
#include <utility>

namespace platform {

struct FreeKeyFile {
    void operator()(GKeyFile *file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, FreeKeyFile>;

/// Reads the file; it is empty when there is none, or, after a complaint, when it cannot be read.
inline KeyFile read_key_file()
{
    KeyFile file(g_key_file_new());
    const char *path = std::getenv("PVR_PLATFORM_CONFIG");
    if (path == nullptr || *path == '\0')
        return file;
    GError *error = nullptr;
    if (g_key_file_load_from_file(file.get(), path, G_KEY_FILE_NONE, &error) == FALSE) {
        std::fprintf(stderr, "PVR_PLATFORM_CONFIG: %s: %s\n", path, error->message);
        g_error_free(error);
        file.reset(g_key_file_new());
    }
    return file;
}

/// The file as it was at the first question, so that nothing is complained of twice.
inline GKeyFile *key_file()
{
    static GKeyFile *const file = read_key_file().release(); // threads may outlive static destructors
    return file;
}

} // namespace platform
