#include "support/settings.h"

#include "support/check.h"
#include "support/complaints.h"
#include "toml_file.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <glib.h>
#include <sstream>
#include <string>
#include <string_view>

namespace fuzz {
namespace {

Bytes file;

void check_mistake(const std::string &line)
{
    const std::string head = std::string(settings_path) + ":";
    check(line.starts_with(head), "a mistake is told of with the file's path");
    std::size_t number = 0;
    const char *const end = line.data() + line.size();
    const auto [behind, error] = std::from_chars(line.data() + head.size(), end, number);
    check(error == std::errc() && std::string_view(behind, end).starts_with(": "), "and with its line");
    const auto lines = static_cast<std::size_t>(std::count(file.begin(), file.end(), '\n')) + 1;
    check(number >= 1 && number <= lines, "which the file has");
    check(std::none_of(line.begin(), line.end(),
                       [](char character) { return static_cast<unsigned char>(character) < ' ' || character == 0x7f; }),
          "and without control characters of the file");
}

} // namespace

bool is_accepted(Bytes content, const std::function<void()> &read)
{
    file = content;
    try {
        read();
        return true;
    } catch (const simulator::WrongFile &wrong) {
        std::istringstream mistakes(wrong.what());
        int count = 0;
        for (std::string line; std::getline(mistakes, line); ++count)
            check_mistake(line);
        check(count > 0, "a file that is refused has a mistake");
    }
    return false;
}

} // namespace fuzz

using namespace fuzz;

extern "C" {

int LLVMFuzzerInitialize(int *, char ***)
{
    make_complaints_findings();
    return 0;
}

/// Memory that was freed is kept from use for a while; in less of it the caches serve better.
const char *__asan_default_options() { return "quarantine_size_mb=16"; }

// Shared libraries call it, too, as the linker sees it.
[[gnu::visibility("default")]] gboolean __wrap_g_file_get_contents(const char *, char **content, gsize *size, GError **)
{
    // A byte more than there is, NUL, as GLib has it.
    *content = static_cast<char *>(g_malloc(file.size() + 1));
    std::copy(file.begin(), file.end(), *content);
    (*content)[file.size()] = '\0';
    *size = file.size();
    return TRUE;
}

} // extern "C"
