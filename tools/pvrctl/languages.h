// The languages in which the library has texts looked up.
#pragma once

#include <array>
#include <clocale>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pvrctl {

/// The language of the texts for a user in whose languages there are none.
inline constexpr char fallback_language[] = "en";

/// What the library looks texts up in, for as long as it lives: gettext heeds LANGUAGE in no locale but those that are
/// not "C". Everything else goes on in "C", so neither numbers nor the system's messages change.
class Language {
public:
    explicit Language(const std::string &name);
    ~Language();
    Language(const Language &) = delete;
    Language &operator=(const Language &) = delete;

private:
    static constexpr char variable[] = "LANGUAGE";
    static constexpr std::array categories{LC_CTYPE, LC_MESSAGES};
    std::optional<std::string> before_;
};

/// A name for a language as catalogues have them: neither a list nor a path.
bool is_language_name(std::string_view text);

/// The user's languages as gettext takes them from the environment, the best one first, and then the fallback.
std::vector<std::string> users_languages();

/// Where the library looks for its catalogues, once it has looked anything up.
std::filesystem::path catalogue_directory();
/// The languages of which there is one.
std::vector<std::string> catalogues_in(const std::filesystem::path &directory);

} // namespace pvrctl
