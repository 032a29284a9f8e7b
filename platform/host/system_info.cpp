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

#include "key_file.h"

#include <functional>
#include <glib.h>
#include <map>
#include <string>
#include <string_view>

namespace {

constexpr char defaults[] = "[custom-bool]\n"
                            "com.brimmel/featureconf/pvr.pvr_support=true\n"
                            "[custom-int]\n"
                            "com.brimmel/featureconf/product.num_of_ci=0\n"
                            "[value-int]\n"
                            "333=1\n";

constexpr int not_read = -1;

template <typename T>
using Values = std::map<std::string, T, std::less<>>;

struct Product {
    Values<bool> custom_bools;
    Values<int> custom_ints;
    Values<int> value_ints;
};

/// Takes a group's values in place of those known before; a value that cannot be read is forgotten.
template <auto Read, typename T>
void take(Values<T> &values, GKeyFile *file, const char *group)
{
    char **keys = g_key_file_get_keys(file, group, nullptr, nullptr);
    for (char **key = keys; key != nullptr && *key != nullptr; ++key) {
        GError *error = nullptr;
        const auto value = Read(file, group, *key, &error);
        if (error == nullptr) {
            values[*key] = static_cast<T>(value);
        } else {
            values.erase(*key);
            g_error_free(error);
        }
    }
    g_strfreev(keys);
}

void take_all(Product &product, GKeyFile *file)
{
    take<g_key_file_get_boolean>(product.custom_bools, file, "custom-bool");
    take<g_key_file_get_integer>(product.custom_ints, file, "custom-int");
    take<g_key_file_get_integer>(product.value_ints, file, "value-int");
}

Product load()
{
    Product product;
    const platform::KeyFile usual(g_key_file_new());
    g_key_file_load_from_data(usual.get(), defaults, sizeof defaults - 1, G_KEY_FILE_NONE, nullptr);
    take_all(product, usual.get());
    take_all(product, platform::key_file());
    return product;
}

const Product &product()
{
    static const Product &loaded = *new Product(load()); // threads may outlive static destructors
    return loaded;
}

template <typename T>
int read(const Values<T> &values, std::string_view key, T *value)
{
    const auto found = values.find(key);
    if (found == values.end())
        return not_read;
    *value = found->second;
    return 0;
}

} // namespace

int system_info_get_custom_bool(const char *key, bool *value) { return read(product().custom_bools, key, value); }

int system_info_get_custom_int(const char *key, int *value) { return read(product().custom_ints, key, value); }

int system_info_get_value_int(int key, int *value) { return read(product().value_ints, std::to_string(key), value); }
