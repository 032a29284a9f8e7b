// The conditional-access queries: they copy the path, and read an info file.
#include "faults/scenario.h"

#include "ca_module.h"
#include "pvr_service_api.h"
#include "support/files.h"

#include <new>

namespace faults {
namespace {

using support::content_of;
using support::write_file;

constexpr char path[] = "/media/usb1/a recording whose path no text holds in place.srf";

/// The module answers, and everything is 0 then.
void module_answers(Stage &)
{
    support::reset_module();
    support::module.sections = {{10, 20}};
}

template <typename Call>
std::string outcome(Call call)
{
    int first = -77;
    int second = -77;
    int third = -77;
    std::string returned;
    try {
        returned = std::to_string(call(first, second, third));
    } catch (const std::bad_alloc &) {
        returned = "bad_alloc";
    }
    for (const int value : {first, second, third})
        returned += "; " + (value == -77 ? "untouched" : std::to_string(value));
    return returned;
}

/// What no memory comes to: it is thrown through the functions that may throw, and for the others nobody has answered.
template <typename Call>
Scenario question(const char *name, Call call, const std::string &good, const std::string &bad)
{
    return {name,
            "",
            Start::no_session,
            module_answers,
            [call](Stage &) { return outcome(call); },
            good,
            bad,
            {{Kind::access, good, "the file that overrides the product counts as not there"}}};
}

std::string atsc3(Stage &stage) { return std::to_string(IsATSC3Url((stage.folder / "a.srf").c_str())); }

void atsc3_file(Stage &stage) { write_file(stage.folder / "a.inf", content_of(PVR_GOLDEN_FILES "/vexan-atsc3.inf")); }

} // namespace

std::vector<Scenario> rights_scenarios()
{
    // clang-format off
    return {
        question("IsBlockedByParentalControl", [](int &one, int &, int &) { return IsBlockedByParentalControl(path, &one); },
                 "0; 0; untouched; untouched", "bad_alloc; 1; untouched; untouched"),
        question("IsThumbnailValid", [](int &one, int &, int &) { return IsThumbnailValid(path, 5, &one); },
                 "0; 0; untouched; untouched", "bad_alloc; 1; untouched; untouched"),
        question("IsThisWholeFileExceededRetentionLimit",
                 [](int &one, int &, int &) { return IsThisWholeFileExceededRetentionLimit(path, &one); },
                 "0; 0; untouched; untouched", "bad_alloc; 1; untouched; untouched"),
        question("GetCIThumbType", [](int &one, int &, int &) { return GetCIThumbType(path, &one); },
                 "0; 0; untouched; untouched", "bad_alloc; 0; untouched; untouched"),
        question("GetContentInfo",
                 [](int &one, int &two, int &) {
                     unsigned char count = 7;
                     const auto write = [&] { two = count; };
                     try {
                         const int returned = GetContentInfo(path, &one, &count);
                         write();
                         return returned;
                     } catch (...) {
                         write();
                         throw;
                     }
                 },
                 "0; 0; 200; untouched", "bad_alloc; 0; 0; untouched"),
        question("GetExpiredContentSections",
                 [](int &one, int &two, int &three) { return GetExpiredContentSections(path, &one, &two, &three); },
                 "0; 0; 10; 20", "bad_alloc; 0; untouched; untouched"),
        question("svc_pvr_is_blocked_by_parental_control",
                 [](int &one, int &, int &) { return svc_pvr_is_blocked_by_parental_control(path, &one); },
                 "0; 0; untouched; untouched", "7; 1; untouched; untouched"),
        question("svc_pvr_is_thumbnail_valid",
                 [](int &one, int &, int &) { return svc_pvr_is_thumbnail_valid(path, 5, &one); },
                 "0; 0; untouched; untouched", "0; 1; untouched; untouched"),
        question("svc_pvr_is_this_whole_file_exceeded_retention_limit",
                 [](int &one, int &, int &) { return svc_pvr_is_this_whole_file_exceeded_retention_limit(path, &one); },
                 "0; 0; untouched; untouched", "7; 1; untouched; untouched"),
        question("svc_pvr_get_ci_thumb_type",
                 [](int &one, int &two, int &) { return svc_pvr_get_ci_thumb_type(path, &one, &two); },
                 "0; 0; 1; untouched", "0; 0; 0; untouched"),
        question("svc_pvr_get_content_info",
                 [](int &one, int &two, int &three) { return svc_pvr_get_content_info(path, &one, &two, &three); },
                 "0; 0; 200; 1", "0; 0; 0; 0"),
        question("svc_pvr_get_expired_content_sections",
                 [](int &one, int &two, int &) {
                     expired_content_section section;
                     return svc_pvr_get_expired_content_sections(path, &section, &one, &two);
                 },
                 "0; 0; 1; untouched", "7; untouched; 0; untouched"),
        {"_Z10IsATSC3UrlPKc", "", Start::no_session, atsc3_file, atsc3, "1", "0",
         {{Kind::pread, "1", "goes on reading", "EINTR"},
          {Kind::pread, "1", "goes on reading", "half"},
          {Kind::close, "1", "it was only read"}}},
    };
    // clang-format on
}

} // namespace faults
