// The environment of the command and of the service.
#pragma once

#include <string>
#include <vector>

namespace sandbox {

/// NAME=value, as processes are given it.
class Environment {
public:
    /// This process's own.
    Environment();

    bool has(const std::string &name) const;
    void set(const std::string &name, const std::string &value);
    /// A folder that programs are looked up in before all others.
    void add_to_path(const std::string &folder);

    const std::vector<std::string> &entries() const { return entries_; }

private:
    const std::string *find(const std::string &name) const;

    std::vector<std::string> entries_;
};

/// Where this program lies, and others beside it.
std::string program_folder();

/// A product that records: what the stand-ins of the platform's libraries read.
std::string platform_configuration();

} // namespace sandbox
