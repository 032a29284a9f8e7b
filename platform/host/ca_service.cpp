// Host stand-in of the conditional-access library: none, unless the key file named by PVR_PLATFORM_CONFIG
// describes one:
//
//   [conditional-access]
//   module=answers
//
//   [rights *.srf]
//   parental-blocked=true
//   retention-exceeded=true
//   expired-sections=60-120;300-360
//   thumbnail-type=1
//   thumbnail-valid=false
//   info-type=2
//   play-count=3
//
// The README tells what they mean. The file is read once, at the first question.
#include <ca_service.h>

#include "key_file.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <fnmatch.h>
#include <optional>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace {

using Sections = std::vector<std::pair<int, int>>;

struct Rights {
    std::string pattern;
    bool parental_blocked = false;
    bool retention_exceeded = false;
    Sections expired;
    int thumbnail_type = 0;
    bool thumbnail_valid = true;
    int info_type = 0;
    unsigned char play_count = 0;
};

/// A group's values; a complaint about each that is none.
class Group {
public:
    Group(GKeyFile *file, const char *name) : file_(file), name_(name) {}

    /// Complains of keys that nobody reads: one that is misspelt would leave a recording unrestricted unnoticed.
    void expect(std::span<const std::string_view> known) const
    {
        gchar **keys = g_key_file_get_keys(file_, name_, nullptr, nullptr);
        for (gchar **key = keys; key != nullptr && *key != nullptr; ++key)
            if (std::ranges::find(known, *key) == known.end())
                complain(*key, "is unknown");
        g_strfreev(keys);
    }
    /// What is written there, without space at its end; nothing when the key is left out.
    std::optional<std::string> text(const char *key) const
    {
        gchar *value = g_key_file_get_value(file_, name_, key, nullptr);
        if (value == nullptr)
            return std::nullopt;
        std::string text = g_strchomp(value);
        g_free(value);
        return text;
    }
    bool flag(const char *key, bool otherwise) const
    {
        const std::optional<std::string> value = text(key);
        if (value && *value != "true" && *value != "false")
            complain(key, "takes true or false, not '" + *value + "'");
        return value == "true" || (value != "false" && otherwise);
    }
    int number(const char *key, int least, int most) const
    {
        const std::optional<std::string> value = text(key);
        if (!value)
            return 0;
        if (const std::optional<int> number = number_in(*value); number && *number >= least && *number <= most)
            return *number;
        complain(key, "takes a whole number from " + std::to_string(least) + " to " + std::to_string(most) + ", not '" +
                          *value + "'");
        return 0;
    }
    Sections sections(const char *key) const
    {
        Sections found;
        std::istringstream list(text(key).value_or(""));
        for (std::string section; std::getline(list, section, ';');) {
            const std::size_t dash = std::min(section.find('-'), section.size());
            const std::optional<int> start = number_in(section.substr(0, dash));
            const std::optional<int> end = number_in(section.substr(std::min(dash + 1, section.size())));
            if (start && end && *start >= 0 && *start <= *end)
                found.emplace_back(*start, *end);
            else
                complain(key, "takes START-END;START-END in whole seconds, not '" + section + "'");
        }
        return found;
    }
    void complain(const char *key, const std::string &why) const
    {
        std::fprintf(stderr, "PVR_PLATFORM_CONFIG: [%s] %s: %s\n", name_, key, why.c_str());
    }

private:
    static std::optional<int> number_in(const std::string &text)
    {
        int number = 0;
        const char *const end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, number);
        return rest == end && error == std::errc() ? std::optional(number) : std::nullopt;
    }

    GKeyFile *file_;
    const char *name_;
};

constexpr std::string_view rights_keys[] = {"parental-blocked", "retention-exceeded", "expired-sections",
                                            "thumbnail-type",   "thumbnail-valid",    "info-type",
                                            "play-count"};

Rights rights_of(const Group &group, const std::string &pattern)
{
    group.expect(rights_keys);
    Rights rights;
    rights.pattern = pattern;
    rights.parental_blocked = group.flag("parental-blocked", rights.parental_blocked);
    rights.retention_exceeded = group.flag("retention-exceeded", rights.retention_exceeded);
    rights.expired = group.sections("expired-sections");
    rights.thumbnail_type = group.number("thumbnail-type", G_MININT, G_MAXINT);
    rights.thumbnail_valid = group.flag("thumbnail-valid", rights.thumbnail_valid);
    rights.info_type = group.number("info-type", G_MININT, G_MAXINT);
    rights.play_count = static_cast<unsigned char>(group.number("play-count", 0, 255));
    return rights;
}

enum class Module { missing, answers, refuses, throws };

constexpr std::string_view module_keys[] = {"module"};

/// What the key file describes.
struct Description {
    Module module = Module::missing;
    std::vector<Rights> groups;
};

Module module_of(const Group &group)
{
    constexpr std::pair<const char *, Module> names[] = {{"missing", Module::missing},
                                                         {"answers", Module::answers},
                                                         {"refuses", Module::refuses},
                                                         {"throws", Module::throws}};
    group.expect(module_keys);
    const std::optional<std::string> name = group.text("module");
    if (!name)
        return Module::missing;
    for (const auto &[known, module] : names)
        if (*name == known)
            return module;
    group.complain("module", "is missing, answers, refuses or throws, not '" + *name + "'");
    return Module::missing;
}

/// The pattern of a group "rights PATTERN"; nothing for any other group.
std::optional<std::string> pattern_of(std::string_view group)
{
    constexpr std::string_view of_rights = "rights ";
    if (!group.starts_with(of_rights))
        return std::nullopt;
    const std::size_t first = group.find_first_not_of(' ', of_rights.size());
    if (first == std::string_view::npos)
        return std::nullopt;
    return std::string(group.substr(first, group.find_last_not_of(' ') + 1 - first));
}

Description load()
{
    Description description;
    GKeyFile *const file = platform::key_file();
    description.module = module_of(Group(file, "conditional-access"));
    gchar **names = g_key_file_get_groups(file, nullptr);
    for (gchar **name = names; *name != nullptr; ++name)
        if (const std::optional<std::string> pattern = pattern_of(*name))
            description.groups.push_back(rights_of(Group(file, *name), *pattern));
        else if (std::string_view(*name).starts_with("rights"))
            std::fprintf(stderr, "PVR_PLATFORM_CONFIG: [%s]: rights are of a pattern, as in [rights *.srf]\n", *name);
    g_strfreev(names);
    return description;
}

class HostService final : public CA_API::CAService {
public:
    explicit HostService(Description description) : description_(std::move(description)) {}

    bool is_missing() const { return description_.module == Module::missing; }

    void Unused0() override {}
    void Unused1() override {}
    bool IsFileExceededRetentionLimit(std::string &path, bool *exceeded) override
    {
        return answer([&] { *exceeded = of(path).retention_exceeded; });
    }
    bool GetCIThumbType(std::string &path, int *type) override
    {
        return answer([&] { *type = of(path).thumbnail_type; });
    }
    bool GetContentInfo(std::string &path, int *info_type, unsigned char *play_count) override
    {
        return answer([&] {
            *info_type = of(path).info_type;
            *play_count = of(path).play_count;
        });
    }
    bool GetExpiredContentSections(std::string &path, Sections &sections) override
    {
        return answer([&] { sections = of(path).expired; });
    }
    bool IsBlockedByParentalControl(std::string &path, bool *blocked) override
    {
        return answer([&] { *blocked = of(path).parental_blocked; });
    }
    bool CheckThumbnailValidation(std::string &path, int *, bool *valid) override
    {
        return answer([&] { *valid = of(path).thumbnail_valid; });
    }

private:
    template <typename Action>
    bool answer(Action action) const
    {
        if (description_.module == Module::throws)
            throw std::runtime_error("the conditional-access module was pulled");
        if (description_.module == Module::refuses)
            return false;
        action();
        return true;
    }

    const Rights &of(const std::string &path) const
    {
        static const Rights unrestricted;
        const auto found = std::find_if(description_.groups.begin(), description_.groups.end(), [&](const Rights &one) {
            return fnmatch(one.pattern.c_str(), path.c_str(), FNM_NOESCAPE) == 0;
        });
        return found != description_.groups.end() ? *found : unrestricted;
    }

    Description description_;
};

} // namespace

CA_API::CAService *CA_API::CAService::CAPVRInstance()
{
    static HostService &service = *new HostService(load()); // threads may outlive static destructors
    return service.is_missing() ? nullptr : &service;
}
