// A program that brings its own platform: what it exports goes before the platform's libraries, as the
// library's imports are resolved when the program is loaded. Deliberately without the platform's headers
// of this tree: typed from the other side, this notices when they change.
#include "pvr_service_api.h"

#include <cstdarg>
#include <cstdio>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#define EXPORTED __attribute__((visibility("default")))

extern "C" {
EXPORTED int __dlog_print(int log_id, int priority, const char *tag, const char *format, ...)
    __attribute__((format(printf, 4, 5)));
EXPORTED int system_info_get_custom_bool(const char *key, bool *value);
EXPORTED int system_info_get_custom_int(const char *key, int *value);
EXPORTED int system_info_get_value_int(int key, int *value);
}

namespace CA_API {

class CAService {
public:
    EXPORTED static CAService *CAPVRInstance();
    virtual void FirstUnused() = 0;
    virtual void SecondUnused() = 0;
    virtual bool IsFileExceededRetentionLimit(std::string &, bool *) = 0;
    virtual bool GetCIThumbType(std::string &, int *) = 0;
    virtual bool GetContentInfo(std::string &, int *, unsigned char *) = 0;
    virtual bool GetExpiredContentSections(std::string &, std::vector<std::pair<int, int>> &) = 0;
    virtual bool IsBlockedByParentalControl(std::string &, bool *) = 0;
    virtual bool CheckThumbnailValidation(std::string &, int *, bool *) = 0;

protected:
    ~CAService() = default;
};

} // namespace CA_API

namespace {

int failures = 0;

void check(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "failed: %s\n", what);
        ++failures;
    }
}

int last_priority = 0;
std::string last_line;
std::string last_key;

/// Knows one recording, which is blocked. No test here leads to the other questions.
class OwnRights final : public CA_API::CAService {
public:
    void FirstUnused() override { unexpected("FirstUnused"); }
    void SecondUnused() override { unexpected("SecondUnused"); }
    bool IsFileExceededRetentionLimit(std::string &, bool *) override { return unexpected("retention limit"); }
    bool GetCIThumbType(std::string &, int *) override { return unexpected("type of thumbnail"); }
    bool GetContentInfo(std::string &, int *, unsigned char *) override { return unexpected("content info"); }
    bool GetExpiredContentSections(std::string &, std::vector<std::pair<int, int>> &) override
    {
        return unexpected("expired sections");
    }
    bool IsBlockedByParentalControl(std::string &path, bool *blocked) override
    {
        *blocked = path == "/recordings/blocked.srf";
        return true;
    }
    bool CheckThumbnailValidation(std::string &, int *, bool *) override { return unexpected("thumbnail"); }

private:
    static bool unexpected(const char *question)
    {
        check(false, question);
        return false;
    }
};

void own_log_takes_the_lines()
{
    check(svc_pvr_is_recording_available(nullptr) == PS_SUCCESS, "a retired call succeeds");
    check(last_priority == 4, "a retired call logs at priority 4");
    check(last_line.starts_with("PVR_SVC_API|pvr_service_api.cpp: svc_pvr_is_recording_available("),
          "the line names its source and function");
    check(last_line.ends_with("[DELETED_API please call other replace api]\n"), "the line comes whole");
}

void own_system_information_answers()
{
    check(GetDtvType() == PVR_DTV_DVB_ISDB, "the own broadcast standard is returned");
    check(last_key == "333", "it was asked for by its key");
    check(IsSupportCI() == 1, "the own number of slots is used");
    check(last_key == "com.brimmel/featureconf/product.num_of_ci", "it was asked for by its key");
    check(access("/tmp/PVR_SERVICE_API_IS_SUPPORT_PVR", F_OK) != 0, "no file overrides the product's support");
    check(svc_pvr_service_init() == PS_CALL_METHOD_FAILED, "the own product does not record");
    check(last_key == "com.brimmel/featureconf/pvr.pvr_support", "support was asked for by its key");
}

void own_rights_answer()
{
    int blocked = 5;
    check(IsBlockedByParentalControl("/recordings/blocked.srf", &blocked) == PVR_CA_SUCCESS && blocked == 1,
          "the own rights block one recording");
    check(IsBlockedByParentalControl("/recordings/other.srf", &blocked) == PVR_CA_SUCCESS && blocked == 0,
          "and no other");
}

} // namespace

int __dlog_print(int log_id, int priority, const char *tag, const char *format, ...)
{
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    check(log_id == 0, "lines go to the main buffer");
    last_priority = priority;
    last_line = std::string(tag) + '|' + text;
    return length;
}

int system_info_get_custom_bool(const char *key, bool *value)
{
    last_key = key;
    *value = false;
    return 0;
}

int system_info_get_custom_int(const char *key, int *value)
{
    last_key = key;
    *value = 2;
    return 0;
}

int system_info_get_value_int(int key, int *value)
{
    last_key = std::to_string(key);
    *value = 2;
    return 0;
}

CA_API::CAService *CA_API::CAService::CAPVRInstance()
{
    static OwnRights rights;
    return &rights;
}

int main()
{
    own_log_takes_the_lines();
    own_system_information_answers();
    own_rights_answer();
    std::printf("%d checks failed\n", failures);
    return failures == 0 ? 0 : 1;
}
