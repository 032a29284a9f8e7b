// Writes a test programme to a file, to be played as a recording.
#include "test_programme.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <system_error>

namespace {

constexpr int wrong_usage = 2;

} // namespace

int main(int count, char **arguments)
{
    CLI::App app("Writes a transport stream that plays: one channel of silence, of constant bit rate.");
    int seconds = 60;
    int bit_rate = simulator::TestProgramme::lowest_bit_rate;
    std::string path;
    app.add_option("--seconds", seconds, "How long it plays")
        ->capture_default_str()
        ->check(CLI::Range(1, simulator::longest_programme));
    app.add_option("--bit-rate", bit_rate, "Of the whole stream, in bits per second")
        ->capture_default_str()
        ->check(CLI::Range(simulator::TestProgramme::lowest_bit_rate, simulator::TestProgramme::highest_bit_rate));
    app.add_option("FILE", path, "The file to write, in place of one of the same name")->required();
    app.set_version_flag("--version", PVR_VERSION);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : wrong_usage;
    }

    try {
        simulator::write_test_programme(path, seconds, bit_rate);
    } catch (const std::system_error &error) {
        std::cerr << "pvr-make-stream: cannot write " << error.what() << "\n";
        return 1;
    }
    return 0;
}
