// Reads values of the platform and prints them: "returned=value" for each argument, on a line of its own.
//
//   read_platform bool:KEY | int:KEY | value:NUMBER | rights ...
#include <ca_service.h>
#include <cstdio>
#include <string>
#include <string_view>
#include <system_info.h>

int main(int argc, char **argv)
{
    for (int index = 1; index < argc; ++index) {
        const std::string_view question = argv[index];
        const std::string key(question.substr(question.find(':') + 1));
        if (question.starts_with("bool:")) {
            // Both values are tried, since an untouched one must be told from one that was read.
            bool first = false;
            bool second = true;
            const int returned = system_info_get_custom_bool(key.c_str(), &first);
            system_info_get_custom_bool(key.c_str(), &second);
            std::printf("%d=%s\n", returned, first != second ? "untouched" : first ? "true" : "false");
        } else if (question.starts_with("int:") || question.starts_with("value:")) {
            int value = -12345;
            const int returned = question.starts_with("int:") ? system_info_get_custom_int(key.c_str(), &value)
                                                              : system_info_get_value_int(std::stoi(key), &value);
            std::printf("%d=%s\n", returned, value == -12345 ? "untouched" : std::to_string(value).c_str());
        } else if (question == "rights") {
            std::printf("%s\n", CA_API::CAService::CAPVRInstance() == nullptr ? "null" : "an object");
        } else {
            std::fprintf(stderr, "read_platform: unknown question '%s'\n", argv[index]);
            return 2;
        }
    }
    return 0;
}
