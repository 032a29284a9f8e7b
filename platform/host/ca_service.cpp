// Host stand-in of the conditional-access library: none, unless the key file named by PVR_PLATFORM_CONFIG
// describes one:
//
//   [conditional-access]
//   module=answers                     answers, refuses (every question), throws, or missing
//
//   [rights *.srf]                     of the recordings whose path matches, * and ? standing for any characters;
//   parental-blocked=true              the first group that matches counts, and what it leaves out is as it is here
//   retention-exceeded=false           in the second column:
//   expired-sections=60-120;300-360    none
//   thumbnail-type=1                   0
//   thumbnail-valid=false              true
//   info-type=2                        0
//   play-count=3                       0, up to 255
//
// The file is read once, at the first question. Parental block and retention limit are false where they are left out,
// and so they are for a recording that no group matches.
#include <ca_service.h>

#include "key_file.h"

#include <algorithm>
#include <cstdio>
#include <fnmatch.h>
#include <stdexcept>
#include <string>
#include <string_view>
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

    bool flag(const char *key, bool otherwise) const
    {
        return read(key, otherwise, [](auto... of) { return g_key_file_get_boolean(of...) != FALSE; });
    }
    int number(const char *key, int least, int most) const
    {
        const int value = read(key, 0, [](auto... of) { return g_key_file_get_integer(of...); });
        if (value >= least && value <= most)
            return value;
        complain(key, "is out of range");
        return 0;
    }
    Sections sections(const char *key) const
    {
        Sections found;
        gsize count = 0;
        gchar **texts = g_key_file_get_string_list(file_, name_, key, &count, nullptr);
        for (gsize i = 0; i < count; ++i) {
            int start = 0;
            int end = 0;
            char rest = '\0';
            if (std::sscanf(texts[i], "%d-%d%c", &start, &end, &rest) == 2)
                found.emplace_back(start, end);
            else
                complain(key, "takes START-END;START-END");
        }
        g_strfreev(texts);
        return found;
    }

private:
    template <typename T, typename Read>
    T read(const char *key, T otherwise, Read read_key) const
    {
        GError *error = nullptr;
        const T value = read_key(file_, name_, key, &error);
        if (error == nullptr)
            return value;
        if (!g_error_matches(error, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_KEY_NOT_FOUND))
            complain(key, error->message);
        g_error_free(error);
        return otherwise;
    }
    void complain(const char *key, const char *why) const
    {
        std::fprintf(stderr, "PVR_PLATFORM_CONFIG: [%s] %s: %s\n", name_, key, why);
    }

    GKeyFile *file_;
    const char *name_;
};

Rights rights_of(const Group &group, std::string pattern)
{
    Rights rights;
    rights.pattern = std::move(pattern);
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

/// What the key file describes.
struct Description {
    Module module = Module::missing;
    std::vector<Rights> groups;
};

Module module_named(const std::string &name)
{
    constexpr std::pair<const char *, Module> names[] = {{"missing", Module::missing},
                                                         {"answers", Module::answers},
                                                         {"refuses", Module::refuses},
                                                         {"throws", Module::throws}};
    for (const auto &[known, module] : names)
        if (name == known)
            return module;
    std::fprintf(stderr, "PVR_PLATFORM_CONFIG: module is missing, answers, refuses or throws, not '%s'\n", name.c_str());
    return Module::missing;
}

Description load()
{
    constexpr std::string_view of_rights = "rights ";
    Description description;
    const platform::KeyFile file = platform::key_file();
    if (gchar *name = g_key_file_get_string(file.get(), "conditional-access", "module", nullptr)) {
        description.module = module_named(name);
        g_free(name);
    }
    gchar **names = g_key_file_get_groups(file.get(), nullptr);
    for (gchar **name = names; *name != nullptr; ++name)
        if (const std::string_view text = *name; text.starts_with(of_rights))
            description.groups.push_back(
                rights_of(Group(file.get(), *name), std::string(text.substr(of_rights.size()))));
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
            return fnmatch(one.pattern.c_str(), path.c_str(), 0) == 0;
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
