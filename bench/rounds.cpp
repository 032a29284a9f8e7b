#include "rounds.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <unistd.h>

namespace bench {
namespace {

/// Writes all rounds into one document, each run under its subject's plain name and with its round.
class RoundsReporter : public benchmark::BenchmarkReporter {
public:
    RoundsReporter(std::ostream &output, int rounds) : rounds_(rounds) { json_.SetOutputStream(&output); }

    void begin_round(int round) { round_ = round; }
    bool has_failed() const { return has_failed_; }
    void finish() { json_.Finalize(); }

    bool ReportContext(const Context &context) override { return round_ > 0 || json_.ReportContext(context); }

    void ReportRuns(const std::vector<Run> &reported) override
    {
        std::vector<Run> runs = reported;
        for (Run &run : runs) {
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", run.run_name.function_name.c_str(), run.error_message.c_str());
                has_failed_ = true;
            }
            benchmark::BenchmarkName plain;
            plain.function_name = run.run_name.function_name;
            run.run_name = plain;
            run.repetition_index = round_;
            run.repetitions = rounds_;
        }
        json_.ReportRuns(runs);
    }

private:
    benchmark::JSONReporter json_;
    int rounds_;
    int round_ = 0;
    bool has_failed_ = false;
};

[[noreturn]] void refuse(const char *why)
{
    std::fprintf(stderr, "%s\n", why);
    std::exit(2);
}

} // namespace

Options parse(int argc, char **argv, int default_rounds)
{
    benchmark::Initialize(&argc, argv);
    Options options;
    options.rounds = default_rounds;
    options.json = "/dev/stdout";
    for (int index = 1; index < argc; ++index) {
        const std::string_view argument = argv[index];
        constexpr std::string_view rounds = "--rounds=";
        constexpr std::string_view json = "--json=";
        if (argument.starts_with(rounds))
            options.rounds = std::atoi(argument.substr(rounds.size()).data());
        else if (argument.starts_with(json))
            options.json = argument.substr(json.size());
        else
            refuse("usage: [--rounds=N] [--json=FILE] [Google Benchmark's options]");
    }
    if (options.rounds < 1)
        refuse("--rounds takes a number from 1");
    if (std::getenv("PVR_LOG") != nullptr || std::getenv("PVR_PLATFORM_CONFIG") != nullptr)
        refuse("unset PVR_LOG and PVR_PLATFORM_CONFIG: the platform is measured as it stands by default");
    return options;
}

int run_rounds(std::vector<Group> groups, const Options &options)
{
    std::ofstream output(options.json);
    RoundsReporter reporter(output, options.rounds);
    const unsigned seed = std::random_device()();
    benchmark::AddCustomContext("order_seed", std::to_string(seed));
    std::mt19937 random(seed);
    const bool is_watched = isatty(STDERR_FILENO) != 0;

    for (int round = 0; round < options.rounds; ++round) {
        if (is_watched)
            std::fprintf(stderr, "\rround %d of %d ", round + 1, options.rounds);
        // Google Benchmark's own interleaving shuffles all repetitions together; here a round stays a round.
        std::ranges::shuffle(groups, random);
        for (Group &group : groups) {
            std::ranges::shuffle(group, random);
            for (const Subject &subject : group)
                benchmark::RegisterBenchmark(subject.name.c_str(), subject.run)
                    ->Iterations(subject.iterations)
                    ->UseRealTime();
        }
        reporter.begin_round(round);
        const std::size_t matching = benchmark::RunSpecifiedBenchmarks(&reporter);
        benchmark::ClearRegisteredBenchmarks();
        if (matching == 0)
            refuse("no subject has such a name");
        if (reporter.has_failed())
            return 2;
    }
    if (is_watched)
        std::fputs("\r                         \r", stderr);
    reporter.finish();
    output.flush();
    return output ? 0 : 2;
}

int measured(const std::function<int()> &run)
{
    try {
        return run();
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 2;
    }
}

} // namespace bench
