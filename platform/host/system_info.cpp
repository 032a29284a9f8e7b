// Host stand-in of the platform's system information: a product that records, has no CI slot and
// receives DVB, unless the key file named by PVR_PLATFORM_CONFIG says otherwise:
//
//   [custom-bool]
//   com.brimmel/featureconf/pvr.pvr_support=true
//   [custom-int]
//   com.brimmel/featureconf/product.num_of_ci=0
//   [value-int]
//   333=1
//
// The file is read once, at the first question. A value that is no boolean or number cannot be read,
// and neither can a key that is in neither the file nor the defaults.
#include <system_info.h>

#include <cstdio>
#include <cstdlib>
#include <glib.h>
#include <string>

namespace {

constexpr char defaults[] = "[custom-bool]\n"
                            "com.brimmel/featureconf/pvr.pvr_support=true\n"
                            "[custom-int]\n"
                            "com.brimmel/featureconf/product.num_of_ci=0\n"
                            "[value-int]\n"
                            "333=1\n";

constexpr int not_read = -1;

GKeyFile *load_defaults()
{
    GKeyFile *file = g_key_file_new();
    g_key_file_load_from_data(file, defaults, sizeof defaults - 1, G_KEY_FILE_NONE, nullptr);
    return file;
}

/// Null when there is no file.
GKeyFile *load_configured()
{
    const char *path = std::getenv("PVR_PLATFORM_CONFIG");
    if (path == nullptr || *path == '\0')
        return nullptr;
    GKeyFile *file = g_key_file_new();
    GError *error = nullptr;
    if (g_key_file_load_from_file(file, path, G_KEY_FILE_NONE, &error) == FALSE) {
        std::fprintf(stderr, "PVR_PLATFORM_CONFIG: %s: %s\n", path, error->message);
        g_error_free(error);
    }
    return file;
}

/// The file that answers for a key: what is configured goes before the defaults.
GKeyFile *source_of(const char *group, const char *key)
{
    static GKeyFile *const configured = load_configured(); // both live as long as the process
    static GKeyFile *const fallback = load_defaults();
    if (configured != nullptr && g_key_file_has_key(configured, group, key, nullptr) != FALSE)
        return configured;
    return fallback;
}

template <auto Read, typename T>
int read(const char *group, const char *key, T *value)
{
    GError *error = nullptr;
    const auto found = Read(source_of(group, key), group, key, &error);
    if (error != nullptr) {
        g_error_free(error);
        return not_read;
    }
    *value = static_cast<T>(found);
    return 0;
}

} // namespace

int system_info_get_custom_bool(const char *key, bool *value)
{
    return read<g_key_file_get_boolean>("custom-bool", key, value);
}

int system_info_get_custom_int(const char *key, int *value)
{
    return read<g_key_file_get_integer>("custom-int", key, value);
}

int system_info_get_value_int(int key, int *value)
{
    return read<g_key_file_get_integer>("value-int", std::to_string(key).c_str(), value);
}
