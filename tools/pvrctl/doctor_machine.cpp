// pvrctl doctor: what stands on this machine, whatever runs there.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <pvr_service_api.h>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "doctor.h"
#include "languages.h"

namespace pvrctl {
namespace {

// ---- library

struct RecordSize {
    const char *name;
    std::size_t in_headers;
    std::size_t (*in_library)();
};

constexpr std::array record_sizes{
    RecordSize{"device_info", sizeof(device_info), [] { return std::size_t{get_size_of_device_info()}; }},
    RecordSize{"pvr_file_info_s", sizeof(pvr_file_info_s), [] { return std::size_t{get_size_of_pvr_file_info()}; }},
    RecordSize{"expired_content_section", sizeof(expired_content_section),
               [] { return std::size_t{get_size_of_expired_content_section()}; }},
    RecordSize{"pvr_service_signal", sizeof(pvr_service_signal),
               [] { return static_cast<std::size_t>(get_size_of_pvr_service_signal()); }},
    RecordSize{"pvr_service_result", sizeof(pvr_service_result),
               [] { return static_cast<std::size_t>(get_size_of_pvr_service_result()); }},
    RecordSize{"pvr_result_third", sizeof(pvr_result_third),
               [] { return static_cast<std::size_t>(get_size_of_pvr_result_third()); }},
};

/// The file that the loader took, without symbolic links.
std::filesystem::path library_file()
{
    Dl_info found{};
    if (dladdr(dlsym(RTLD_DEFAULT, "svc_pvr_service_init"), &found) == 0 || found.dli_fname == nullptr)
        return {};
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(found.dli_fname, error);
    return error ? std::filesystem::path(found.dli_fname) : file;
}

/// The file is named after the ABI and then the version: ".so.1.10.8.1".
std::string version_in_name(const std::filesystem::path &file)
{
    constexpr std::string_view before = ".so.1.";
    const std::string name = file.filename();
    const std::size_t place = name.find(before);
    return place == std::string::npos ? "" : name.substr(place + before.size());
}

constexpr char reinstall[] = "Install the library anew together with the programs, and look at LD_LIBRARY_PATH";

} // namespace

Finding examine_library(Examination &)
{
    const std::filesystem::path file = library_file();
    for (const RecordSize &record : record_sizes)
        if (const std::size_t size = record.in_library(); size != record.in_headers)
            return wrong(ExitCode::failed,
                         std::string("a ") + record.name + " has " + std::to_string(size) + " bytes in " +
                             file.string() + " and " + std::to_string(record.in_headers) + " in the headers",
                         reinstall);
    const std::string version = version_in_name(file);
    if (version.empty())
        return warning(file.string() + " does not tell its version by its name; pvrctl was built for " PVRCTL_VERSION,
                       "");
    if (version != PVRCTL_VERSION)
        return wrong(ExitCode::failed,
                     file.string() + " is version " + version + ", and pvrctl was built for " PVRCTL_VERSION,
                     reinstall);
    return sound(file.string() + ", version " + version);
}

// ---- product

namespace {

constexpr char product_variable[] = "PVR_PLATFORM_CONFIG";
constexpr char support_override[] = "/tmp/PVR_SERVICE_API_IS_SUPPORT_PVR";
constexpr char support_setting[] = "com.brimmel/featureconf/pvr.pvr_support";

std::string product_file()
{
    const char *file = std::getenv(product_variable);
    return file != nullptr ? file : "";
}

} // namespace

Finding examine_product(Examination &examined)
{
    const std::string file = product_file();
    const std::string named = file.empty() ? "" : std::string(", as ") + product_variable + " names " + file;
    try {
        examined.service.check_product();
    } catch (const Failure &failure) {
        return wrong(
            failure.code(), failure.what() + named,
            std::string("The product's setting ") + support_setting +
                " has to be true. A library built for a host reads it from the group [custom-bool] of the file "
                "that " +
                product_variable + " names");
    }
    if (access(support_override, F_OK) == 0)
        return warning(std::string("it counts as one that records because ") + support_override +
                           " is there, whatever its setting says",
                       "Remove the file to have the setting count");
    if (!file.empty() && access(file.c_str(), R_OK) != 0)
        return warning("it records, but " + std::string(product_variable) + " names " + file +
                           ", which cannot be read: " + std::strerror(errno),
                       "The usual description counts in its place; correct the name or remove the variable");
    return sound("this product records" + named);
}

// ---- catalogues

namespace {

constexpr int code_with_a_text = 257;

std::string library_text()
{
    std::array<char, 255> text{};
    if (svc_pvr_get_err_text(code_with_a_text, 0, text.data()) != PS_SUCCESS)
        throw Failure(ExitCode::failed, "the library gives no text. PVR_LOG=stderr tells why");
    return text.data();
}

/// Whether the library has texts in a language.
bool has_texts(const std::string &language, const std::string &message_id)
{
    const Language looked_up_in(language);
    return library_text() != message_id;
}

std::string listed_with_commas(const std::vector<std::string> &words)
{
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

} // namespace

Finding examine_catalogues(Examination &)
{
    const std::string message_id = library_text(); // in no language; the library has bound its domain by now
    const std::filesystem::path directory = catalogue_directory();
    std::vector<std::string> languages = catalogues_in(directory);
    std::erase_if(languages, [&](const std::string &language) { return !has_texts(language, message_id); });
    if (languages.empty())
        return wrong(ExitCode::not_found,
                     "there is no message catalogue in " + directory.string() + ": users read ids such as " +
                         message_id,
                     "Install the catalogues there: CMake does so with -DPVR_INSTALL_CATALOGUE=ON");
    const std::string found = listed_with_commas(languages) + " in " + directory.string();
    std::vector<std::string> wanted = users_languages();
    std::erase_if(wanted, [](const std::string &name) { return name.starts_with("C."); }); // a locale of no language
    if (wanted.size() > 1)
        wanted.pop_back(); // English stands in for pvrctl alone
    if (std::ranges::none_of(wanted, [&](const std::string &name) { return has_texts(name, message_id); }))
        return warning("there are texts in " + found + ", but not in " + wanted.front() +
                           ", the user's language: applications show ids such as " + message_id,
                       "Set LANGUAGE to one of those");
    return sound(found);
}

} // namespace pvrctl
