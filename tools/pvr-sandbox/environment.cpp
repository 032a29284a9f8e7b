#include "environment.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <unistd.h>

#include "messages.h"

namespace sandbox {

Environment::Environment()
{
    for (char **entry = environ; *entry != nullptr; ++entry)
        entries_.emplace_back(*entry);
}

const std::string *Environment::find(const std::string &name) const
{
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const std::string &entry) { return entry.starts_with(name + "="); });
    return found != entries_.end() ? &*found : nullptr;
}

bool Environment::has(const std::string &name) const { return find(name) != nullptr; }

void Environment::set(const std::string &name, const std::string &value)
{
    std::erase_if(entries_, [&](const std::string &entry) { return entry.starts_with(name + "="); });
    entries_.push_back(name + "=" + value);
}

void Environment::add_to_path(const std::string &folder)
{
    const std::string *path = find("PATH");
    set("PATH", folder + ":" + (path != nullptr ? path->substr(sizeof "PATH=" - 1) : "/usr/local/bin:/usr/bin:/bin"));
}

std::string program_folder()
{
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        throw system_failure("/proc/self/exe cannot be read", error.value());
    return program.parent_path();
}

std::string platform_configuration()
{
    return "[custom-bool]\n"
           "com.brimmel/featureconf/pvr.pvr_support=true\n"
           "[custom-int]\n"
           "com.brimmel/featureconf/product.num_of_ci=0\n"
           "[value-int]\n"
           "333=1\n";
}

} // namespace sandbox
