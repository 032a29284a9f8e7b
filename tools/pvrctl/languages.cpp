#include "languages.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <libintl.h>
#include <system_error>

#include "failure.h"

namespace pvrctl {
namespace {

constexpr char catalogue_domain[] = "org.vexan.pvr-service-api"; ///< the library's

std::string variable_or_empty(const char *name)
{
    const char *value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

Language::Language(const std::string &name)
{
    const char *before = std::getenv(variable);
    if (before != nullptr)
        before_ = before;
    setenv(variable, name.c_str(), 1); // before setlocale(), which has gettext forget what it found
    for (const int category : categories)
        if (std::setlocale(category, "C.UTF-8") == nullptr)
            throw Failure(ExitCode::failed, "the system has no locale C.UTF-8, in which texts are translated");
}

Language::~Language()
{
    before_ ? setenv(variable, before_->c_str(), 1) : unsetenv(variable);
    for (const int category : categories)
        std::setlocale(category, "C");
}

bool is_language_name(std::string_view text)
{
    constexpr std::string_view others = "_.@-";
    const auto is_letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return !text.empty() && is_letter(text.front()) && std::ranges::all_of(text, [&](char c) {
        return is_letter(c) || (c >= '0' && c <= '9') || others.find(c) != std::string_view::npos;
    });
}

std::vector<std::string> users_languages()
{
    std::string locale;
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (locale.empty())
            locale = variable_or_empty(name);
    if (locale.empty() || locale == "C" || locale == "POSIX")
        return {fallback_language};
    std::string names = variable_or_empty("LANGUAGE");
    if (names.empty())
        names = locale;
    std::vector<std::string> languages;
    for (std::size_t begin = 0; begin <= names.size();) {
        const std::size_t end = std::min(names.find(':', begin), names.size());
        if (const std::string name = names.substr(begin, end - begin); is_language_name(name))
            languages.push_back(name);
        begin = end + 1;
    }
    languages.emplace_back(fallback_language);
    return languages;
}

std::filesystem::path catalogue_directory()
{
    const char *directory = bindtextdomain(catalogue_domain, nullptr);
    return directory != nullptr ? directory : "";
}

std::vector<std::string> catalogues_in(const std::filesystem::path &directory)
{
    std::vector<std::string> languages;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(directory, error))
        if (std::filesystem::exists(entry.path() / "LC_MESSAGES" / (std::string(catalogue_domain) + ".mo"), error))
            languages.push_back(entry.path().filename());
    std::ranges::sort(languages);
    return languages;
}

} // namespace pvrctl
