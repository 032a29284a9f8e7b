// pvrctl doctor: looks for what keeps an application from recording, one check after another.
#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "doctor.h"

namespace pvrctl {
namespace {

constexpr int usual_limit = 5;

/// Each stands behind those that it needs. The first that is wrong decides the exit code.
constexpr std::array doctor_checks{
    Check{"library", "the library's version and records", {}, examine_library},
    Check{"product", "the product records", {}, examine_product},
    Check{"bus", "the system bus is there", {}, examine_bus},
    Check{"service", "the Recording service runs", {"bus"}, examine_service},
    Check{"policy", "the bus lets it be called", {"service"}, examine_policy},
    Check{"answer", "it answers", {"policy"}, examine_answer},
    Check{"records", "it says that it records", {"answer"}, examine_records},
    Check{"interface", "it has the library's interface", {"answer"}, examine_interface},
    Check{"device", "there is a device to record to", {"product", "records"}, examine_device},
    Check{"folder", "its folder can be written to", {"device"}, examine_folder},
    Check{"room", "there is room on it", {"device"}, examine_room},
    Check{"catalogues", "the error texts are found", {"product"}, examine_catalogues},
};

struct VerdictName {
    Verdict verdict;
    const char *name;
};
constexpr std::array verdict_names{VerdictName{Verdict::ok, "ok"}, VerdictName{Verdict::warning, "warning"},
                                   VerdictName{Verdict::wrong, "wrong"}, VerdictName{Verdict::skipped, "skipped"}};

const char *name_of_verdict(Verdict verdict)
{
    return std::ranges::find(verdict_names, verdict, &VerdictName::verdict)->name;
}

struct Examined {
    const Check *check;
    Finding finding;
};

const Examined &named(const std::vector<Examined> &all, const std::string &name)
{
    return *std::ranges::find(all, name, [](const Examined &one) { return one.check->name; });
}

Finding finding_of(const Check &check, const std::vector<Examined> &before, Examination &examined)
{
    for (const char *needed : check.needs) {
        if (needed == nullptr)
            continue;
        const Finding &earlier = named(before, needed).finding;
        if (earlier.verdict == Verdict::ok || earlier.verdict == Verdict::warning)
            continue;
        const char *cause = earlier.missing != nullptr ? earlier.missing : needed; // not one that was skipped itself
        Finding finding = skipped(std::string("because of '") + cause + "'");
        finding.missing = cause;
        return finding;
    }
    try {
        return check.run(examined);
    } catch (const Failure &failure) {
        return wrong(failure.code(), failure.what(), "");
    }
}

Json finding_json(const Examined &one)
{
    const Finding &finding = one.finding;
    return {{"check", one.check->name},
            {"title", one.check->title},
            {"verdict", name_of_verdict(finding.verdict)},
            {"finding", finding.text},
            {"advice", finding.advice.empty() ? Json() : Json(finding.advice)},
            {"because_of", finding.missing == nullptr ? Json() : Json(finding.missing)}};
}

Row finding_row(const Examined &one)
{
    const Finding &finding = one.finding;
    std::string text = std::string(name_of_verdict(finding.verdict)) + ": " + finding.text;
    if (!finding.advice.empty())
        text += ". " + finding.advice;
    return {one.check->name, std::move(text)};
}

void examine_all(Service &service, Output &output, int limit)
{
    Examination examined{service, std::chrono::seconds(limit)};
    std::vector<Examined> all;
    for (const Check &check : doctor_checks)
        all.push_back({&check, finding_of(check, all, examined)});

    Json checks = Json::array();
    std::vector<Row> rows;
    for (const Examined &one : all) {
        checks.push_back(finding_json(one));
        rows.push_back(finding_row(one));
    }
    const auto count = [&all](Verdict verdict) {
        return std::ranges::count(all, verdict, [](const Examined &one) { return one.finding.verdict; });
    };
    const auto wrong_ones = count(Verdict::wrong);
    output.show({{"checks", std::move(checks)},
                 {"sound", wrong_ones == 0},
                 {"wrong", wrong_ones},
                 {"warnings", count(Verdict::warning)},
                 {"skipped", count(Verdict::skipped)}},
                rows);
    if (wrong_ones == 0)
        return;
    const Examined &first =
        *std::ranges::find(all, Verdict::wrong, [](const Examined &one) { return one.finding.verdict; });
    throw Failure(first.finding.code, std::to_string(wrong_ones) + " of " + std::to_string(all.size()) +
                                          " checks found something wrong, first '" + first.check->name + "'");
}

} // namespace

void add_doctor(Commands &commands)
{
    CLI::App &verb = add_command(commands.root, "doctor",
                                 "Look for what keeps applications from recording. A line per check tells what it "
                                 "found and what to do. A warning is not wrong.",
                                 {"doctor", "doctor --json"});
    const auto limit = std::make_shared<int>(usual_limit);
    add_number(verb, "--limit", *limit, "SECONDS", "how long the bus and the service may take to answer; without it 5",
               1);
    choose(commands, verb, [limit](Service &service, Output &output) { examine_all(service, output, *limit); });
}

} // namespace pvrctl
