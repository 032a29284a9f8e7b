// Reads values of the platform and prints them: "returned=value" for each argument, on a line of its own.
//
//   read_platform bool:KEY | int:KEY | value:NUMBER | module | rights:PATH ...
//
// Rights are six lines, in the order of the library's table; a value that was not written is "untouched".
#include <array>
#include <ca_service.h>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <system_info.h>
#include <utility>
#include <vector>

namespace {

using CA_API::CAService;

constexpr int untouched = -12345;

std::string text_of(int value) { return value == untouched ? "untouched" : std::to_string(value); }

/// Both values are tried, since an untouched one must be told from one that was read.
template <typename Read>
std::string boolean(Read read)
{
    bool first = false;
    bool second = true;
    const int returned = read(&first);
    read(&second);
    return std::to_string(returned) + '=' + (first != second ? "untouched" : first ? "true" : "false");
}

template <typename Read>
std::string number(Read read)
{
    int value = untouched;
    const int returned = read(&value);
    return std::to_string(returned) + '=' + text_of(value);
}

std::string content_info(CAService &service, std::string &path)
{
    int type = untouched;
    std::array<unsigned char, 2> plays{1, 2};
    const int returned = service.GetContentInfo(path, &type, &plays[0]);
    service.GetContentInfo(path, &type, &plays[1]);
    return std::to_string(returned) + '=' + text_of(type) + ' ' +
           (plays[0] != plays[1] ? "untouched" : std::to_string(plays[0]));
}

std::string expired_sections(CAService &service, std::string &path)
{
    std::vector<std::pair<int, int>> sections;
    std::string text = std::to_string(service.GetExpiredContentSections(path, sections)) + '=';
    for (const auto &[start, end] : sections)
        text += std::to_string(start) + '-' + std::to_string(end) + ';';
    return text;
}

using Question = std::string (*)(CAService &, std::string &path);

constexpr Question questions[] = {
    [](CAService &service, std::string &path) {
        return boolean([&](bool *out) { return service.IsFileExceededRetentionLimit(path, out); });
    },
    [](CAService &service, std::string &path) {
        return number([&](int *out) { return service.GetCIThumbType(path, out); });
    },
    content_info,
    expired_sections,
    [](CAService &service, std::string &path) {
        return boolean([&](bool *out) { return service.IsBlockedByParentalControl(path, out); });
    },
    [](CAService &service, std::string &path) {
        int position = 0;
        return boolean([&](bool *out) { return service.CheckThumbnailValidation(path, &position, out); });
    },
};

void print_rights(std::string path)
{
    CAService *const service = CAService::CAPVRInstance();
    if (service == nullptr)
        return;
    for (const Question ask : questions) {
        try {
            std::printf("%s\n", ask(*service, path).c_str());
        } catch (const std::exception &error) {
            std::printf("threw=%s\n", error.what());
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    for (int index = 1; index < argc; ++index) {
        const std::string_view question = argv[index];
        const std::string key(question.substr(question.find(':') + 1));
        if (question.starts_with("bool:")) {
            std::printf("%s\n",
                        boolean([&](bool *out) { return system_info_get_custom_bool(key.c_str(), out); }).c_str());
        } else if (question.starts_with("int:")) {
            std::printf("%s\n", number([&](int *out) { return system_info_get_custom_int(key.c_str(), out); }).c_str());
        } else if (question.starts_with("value:")) {
            std::printf("%s\n",
                        number([&](int *out) { return system_info_get_value_int(std::stoi(key), out); }).c_str());
        } else if (question == "module") {
            std::printf("%s\n", CAService::CAPVRInstance() == nullptr ? "null" : "an object");
        } else if (question.starts_with("rights:")) {
            print_rights(key);
        } else {
            std::fprintf(stderr, "read_platform: unknown question '%s'\n", argv[index]);
            return 2;
        }
    }
    return 0;
}
