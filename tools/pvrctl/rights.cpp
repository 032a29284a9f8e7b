// pvrctl rights: what the library tells about a recording's viewing rights. Where an answer is missing, why.
#include <array>
#include <cstddef>
#include <exception>
#include <limits>
#include <memory>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "side_files.h"
#include "states.h"

namespace pvrctl {
namespace {

struct RightsWanted {
    std::string file;
    int position = 0;
};

/// What the questions are about.
struct Subject {
    std::string path;
    int position; ///< of the thumbnail, in the conditional-access library's unit
};

/// What an application is handed out, whatever came of the question.
struct Answer {
    int result = PVR_CA_NO_ANSWER;
    Json value;
    std::string text;
};

/// Something to ask about a recording.
struct Question {
    const char *name; ///< as JSON has it
    const char *label;
    bool takes_ci; ///< answered without asking where broadcasts know no CI, or there is no slot for one
    Answer (*answer)(const Subject &);
    int (*repeated)(const Subject &); ///< what the answer rests on; lets exceptions pass
};

/// The functions that tell of success beside the answer tell nothing else.
int result_of(int success) { return success == 1 ? PVR_CA_SUCCESS : PVR_CA_NO_ANSWER; }

/// What a function returns that may throw; why it threw is asked for when it matters.
template <typename Call>
int caught(Call call)
{
    try {
        return call();
    } catch (...) {
        return PVR_CA_NO_ANSWER;
    }
}

int ask_parental_block(const Subject &subject)
{
    int blocked = 0;
    return IsBlockedByParentalControl(subject.path.c_str(), &blocked);
}

Answer parental_block(const Subject &subject)
{
    int blocked = 0;
    const int result = svc_pvr_is_blocked_by_parental_control(subject.path.c_str(), &blocked);
    return {result, answer_json(blocked), blocked != 0 ? "blocked" : "not blocked"};
}

int ask_retention_limit(const Subject &subject)
{
    int exceeded = 0;
    return IsThisWholeFileExceededRetentionLimit(subject.path.c_str(), &exceeded);
}

Answer retention_limit(const Subject &subject)
{
    int exceeded = 0;
    const int result = svc_pvr_is_this_whole_file_exceeded_retention_limit(subject.path.c_str(), &exceeded);
    return {result, answer_json(exceeded), exceeded != 0 ? "exceeded" : "not exceeded"};
}

/// Preset as no section is: it would end before it starts.
struct FirstSection {
    int start = std::numeric_limits<int>::max();
    int end = std::numeric_limits<int>::min();

    bool is_there() const
    {
        constexpr FirstSection untouched;
        return start != untouched.start || end != untouched.end;
    }
};

int ask_first_section(const Subject &subject, FirstSection &first)
{
    int count = 0;
    return GetExpiredContentSections(subject.path.c_str(), &count, &first.start, &first.end);
}

int ask_expired_sections(const Subject &subject)
{
    FirstSection first;
    return ask_first_section(subject, first);
}

/// The function for applications knows whether the product answers at all, the one below it a section.
Answer expired_sections(const Subject &subject)
{
    std::array<expired_content_section, 100> none{};
    int count = 0;
    int success = 0;
    Answer answer{svc_pvr_get_expired_content_sections(subject.path.c_str(), none.data(), &count, &success), Json(),
                  "nothing"};
    if (answer.result != PVR_CA_SUCCESS)
        return answer;
    answer.value = Json::array();
    answer.text = "none";
    FirstSection first;
    answer.result = caught([&] { return ask_first_section(subject, first); });
    if (answer.result == PVR_CA_SUCCESS && first.is_there()) {
        answer.value.push_back({{"start", first.start}, {"end", first.end}});
        answer.text = std::to_string(first.start) + " s to " + std::to_string(first.end) +
                      " s; the library tells of the first alone";
    }
    return answer;
}

int ask_thumbnail_type(const Subject &subject)
{
    int type = 0;
    return GetCIThumbType(subject.path.c_str(), &type);
}

Answer thumbnail_type(const Subject &subject)
{
    int type = 0;
    int success = 0;
    svc_pvr_get_ci_thumb_type(subject.path.c_str(), &type, &success);
    return {result_of(success), type, std::to_string(type)};
}

int ask_thumbnail_valid(const Subject &subject)
{
    int valid = 0;
    return IsThumbnailValid(subject.path.c_str(), subject.position, &valid);
}

/// The function for applications does not tell whether anybody has answered.
Answer thumbnail_valid(const Subject &subject)
{
    int valid = 0;
    svc_pvr_is_thumbnail_valid(subject.path.c_str(), subject.position, &valid);
    return {caught([&] { return ask_thumbnail_valid(subject); }), answer_json(valid),
            valid != 0 ? "may be shown" : "may not be shown"};
}

int ask_content_info(const Subject &subject)
{
    int type = 0;
    unsigned char plays = 0;
    return GetContentInfo(subject.path.c_str(), &type, &plays);
}

Answer content_info(const Subject &subject)
{
    int type = 0;
    int plays = 0;
    int success = 0;
    svc_pvr_get_content_info(subject.path.c_str(), &type, &plays, &success);
    return {result_of(success),
            {{"info_type", type}, {"play_count", plays}},
            "type " + std::to_string(type) + ", played " + std::to_string(plays) + (plays == 1 ? " time" : " times")};
}

constexpr std::array questions{
    Question{"parental_blocked", "parental block", false, parental_block, ask_parental_block},
    Question{"retention_exceeded", "retention limit", true, retention_limit, ask_retention_limit},
    Question{"expired_sections", "expired", false, expired_sections, ask_expired_sections},
    Question{"thumbnail_type", "thumbnail type", true, thumbnail_type, ask_thumbnail_type},
    Question{"thumbnail_valid", "thumbnail", true, thumbnail_valid, ask_thumbnail_valid},
    Question{"content_info", "content", false, content_info, ask_content_info},
};

/// What the library makes of the product.
struct Product {
    int standard = GetDtvType();
    bool has_ci = IsSupportCI() != 0;

    /// Why nobody was asked what takes a CI; null when somebody was.
    const char *why_unasked() const
    {
        if (standard == PVR_DTV_ATSC)
            return "the product receives ATSC";
        return has_ci ? nullptr : "the product has no CI slot";
    }
};

/// Why there is no answer, by name and in words.
struct Lack {
    const char *name;
    std::string text;
};

Lack lack_of(const Question &question, const Subject &subject, int result)
{
    if (result == PS_CALL_METHOD_FAILED)
        return {"not-recording", "the product does not record"};
    try {
        question.repeated(subject);
    } catch (const std::exception &error) {
        return {"threw", std::string("the conditional-access library threw: ") + error.what()};
    } catch (...) {
        return {"threw", "the conditional-access library threw something unknown"};
    }
    return {"no-answer", "there is no conditional-access library, or it did not answer"};
}

void show_rights(const Service &service, const Output &output, const RightsWanted &wanted)
{
    const RecordingPath path(wanted.file);
    const Subject subject{path.recording(), wanted.position};
    opened_beside(subject.path); // tells why it cannot be
    const Product product;
    Json data{{"file", subject.path}, {"standard", standard_json(product.standard)}, {"ci_slot", product.has_ci}};
    std::vector<Row> rows{{"file", subject.path},
                          {"receives", standard_text(product.standard)},
                          {"CI slot", product.has_ci ? "yes" : "no"}};
    Json unanswered = Json::object();
    std::string why;
    for (const Question &question : questions) {
        const Answer answer = question.answer(subject);
        if (answer.result == PVR_CA_SUCCESS) {
            const char *unasked = question.takes_ci ? product.why_unasked() : nullptr;
            data[question.name] = answer.value;
            rows.push_back({question.label, answer.text + (unasked ? std::string("; not asked: ") + unasked : "")});
            continue;
        }
        const Lack lack = lack_of(question, subject, answer.result);
        data[question.name] = nullptr;
        unanswered[question.name] = {{"reason", lack.name}, {"message", lack.text}, {"handed_out", answer.value}};
        rows.push_back({question.label, "no answer: " + lack.text + ". Applications get: " + answer.text});
        if (why.find(lack.text) == std::string::npos)
            why += (why.empty() ? "" : "; ") + lack.text;
    }
    const std::size_t lacking = unanswered.size();
    data["unanswered"] = std::move(unanswered);
    output.show(data, rows);
    if (lacking == 0)
        return;
    service.check_product();
    throw Failure(ExitCode::failed, std::to_string(lacking) + " of " + std::to_string(questions.size()) +
                                        " questions have no answer: " + why + ". PVR_LOG=stderr tells more");
}

} // namespace

void add_rights(Commands &commands)
{
    CLI::App &verb = add_command(commands.root, "rights",
                                 "Tell what may be watched of a recording. The conditional-access library answers, "
                                 "and no service is asked. What has no answer says why, and the command fails.",
                                 {"rights first.srf", "rights first.srf --json"});
    const auto wanted = std::make_shared<RightsWanted>();
    completes(verb.add_option("FILE", wanted->file, "the recording or its info file: .srf, .inf or .tmp")
                  ->required()
                  ->type_name(""),
              Completes::recording);
    add_number(verb, "--position", wanted->position, "N",
               "the place whose thumbnail is asked for, in the conditional-access library's unit; 0 without it");
    choose(commands, verb, [wanted](Service &service, Output &output) { show_rights(service, output, *wanted); });
}

} // namespace pvrctl
