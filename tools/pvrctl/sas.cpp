// pvrctl sas: the fingerprint file beside a recording, blocks of bytes that are filed by time.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <pvr_service_api.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "files/fingerprint.h"
#include "side_files.h"

namespace pvrctl {
namespace {

constexpr int largest_block = std::numeric_limits<int>::max();
constexpr int stored_but_not_told = PS_CALL_METHOD_FAILED;

struct FingerprintBlock {
    std::string path; ///< of the recording
    std::int64_t time = 0;
    std::string file; ///< where the block goes or comes from; empty for a standard stream
};

struct Fingerprint {
    std::int64_t time;
    std::uint32_t size;
    std::uint32_t offset;
    bool is_whole;
    bool is_first; ///< of its time; others cannot be read
};

struct FingerprintFile {
    std::string path;
    std::uint32_t version;
    std::vector<Fingerprint> blocks;
};

FingerprintFile read_fingerprint_file(const std::string &path)
{
    const pvr::LockedFile file = locked_beside(path);
    pvr::FingerprintHeader header{};
    const std::size_t size = file.read(&header, sizeof header, 0);
    if (size < sizeof header)
        throw Failure(ExitCode::failed, '\'' + path + "' is no fingerprint file: it has " + std::to_string(size) +
                                            " bytes, and a header has " + std::to_string(sizeof header));
    if (header.count < 1 || header.count > pvr::most_fingerprints)
        throw Failure(ExitCode::failed,
                      '\'' + path + "' is no fingerprint file: its count of blocks is " + std::to_string(header.count));
    FingerprintFile read{path, header.version, {}};
    const long file_size = file.size();
    for (int i = 0; i < header.count; ++i) {
        Fingerprint block{header.recTime[i], header.bufSize[i], header.offset[i], true, true};
        block.is_whole =
            block.size == 0 || (block.size <= largest_block && std::int64_t{block.offset} + block.size <= file_size);
        block.is_first = std::ranges::find(read.blocks, block.time, &Fingerprint::time) == read.blocks.end();
        read.blocks.push_back(block);
    }
    return read;
}

void list_blocks(Output &output, const std::string &file)
{
    const FingerprintFile found = read_fingerprint_file(RecordingPath(file).beside("sas"));
    Json blocks = Json::array();
    std::vector<Row> rows;
    for (const Fingerprint &block : found.blocks) {
        blocks.push_back({{"time", block.time},
                          {"size", block.size},
                          {"offset", block.offset},
                          {"readable", block.is_first && block.is_whole}});
        rows.push_back({std::to_string(block.time),
                        std::to_string(block.size) + " bytes at " + std::to_string(block.offset) +
                            (block.is_whole ? "" : ", not whole in the file") +
                            (block.is_first ? "" : ", behind another of the same time, and cannot be read")});
    }
    output.show({{"file", found.path},
                 {"version", found.version},
                 {"blocks", std::move(blocks)},
                 {"count", found.blocks.size()}},
                rows);
}

// ---- Blocks on their way.

class OpenedFile {
public:
    OpenedFile(const std::string &path, int flags) : number_(open(path.c_str(), flags | O_CLOEXEC, 0666))
    {
        if (number_ < 0)
            throw Failure(errno == ENOENT ? ExitCode::not_found : ExitCode::failed,
                          '\'' + path + "': " + std::strerror(errno));
    }
    ~OpenedFile()
    {
        if (number_ >= 0)
            close(number_);
    }
    OpenedFile(const OpenedFile &) = delete;
    OpenedFile &operator=(const OpenedFile &) = delete;

    int number() const noexcept { return number_; }
    /// False when what was written does not arrive.
    bool finish() noexcept { return close(std::exchange(number_, -1)) == 0; }

private:
    int number_;
};

/// All there is to read, unless it is more than a block may have.
std::string read_block(int from, const std::string &name)
{
    constexpr std::size_t piece = 65536;
    std::string block;
    for (;;) {
        const std::size_t size = block.size();
        block.resize(size + piece);
        const ssize_t count = read(from, block.data() + size, piece);
        const int error = errno;
        block.resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count == 0)
            return block;
        if (count < 0 && error != EINTR)
            throw Failure(ExitCode::failed, "cannot read " + name + ": " + std::strerror(error));
        if (block.size() > largest_block)
            throw Failure(ExitCode::failed,
                          name + " is larger than a block may be, " + std::to_string(largest_block) + " bytes");
    }
}

void write_block(const std::string &path, const std::string &block)
{
    OpenedFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
    std::size_t done = 0;
    while (done < block.size()) {
        const ssize_t count = write(file.number(), block.data() + done, block.size() - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    if (done < block.size() || !file.finish())
        throw Failure(ExitCode::failed, "cannot write '" + path + "': " + std::strerror(errno) +
                                            "; what it has of the block is not whole");
}

void get_block(Output &output, const FingerprintBlock &wanted)
{
    const bool is_to_stdout = wanted.file.empty();
    if (is_to_stdout && output.form() != Output::Form::text)
        throw Failure(ExitCode::usage,
                      "without --output the block itself is printed, which --json and --quiet exclude");
    if (is_to_stdout && isatty(STDOUT_FILENO) != 0)
        throw Failure(ExitCode::usage, "a block is no text, and is not printed to a terminal: use --output, or a pipe");
    const RecordingPath path(wanted.path);
    const FingerprintFile found = read_fingerprint_file(path.beside("sas"));
    const auto block = std::ranges::find(found.blocks, wanted.time, &Fingerprint::time);
    if (block == found.blocks.end())
        throw Failure(ExitCode::not_found,
                      '\'' + found.path + "' has no block of the time " + std::to_string(wanted.time));
    if (!block->is_whole)
        throw Failure(ExitCode::failed, "the block of the time " + std::to_string(wanted.time) + " is not whole in '" +
                                            found.path + "': " + std::to_string(block->size) + " bytes from " +
                                            std::to_string(block->offset) + " on");
    int size = 0;
    std::string bytes;
    int result = svc_pvr_read_sas_file(path.c_str(), wanted.time, &size, nullptr);
    if (result == PS_SUCCESS && size > 0) {
        bytes.resize(static_cast<std::size_t>(size));
        result = svc_pvr_read_sas_file(path.c_str(), wanted.time, &size, bytes.data());
    }
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::failed, '\'' + found.path + "' cannot be read. PVR_LOG=stderr tells why");
    if (is_to_stdout) {
        output.print(bytes);
        return;
    }
    write_block(wanted.file, bytes);
    output.show({{"file", found.path}, {"time", wanted.time}, {"size", bytes.size()}, {"output", wanted.file}},
                {{"file", found.path},
                 {"time", std::to_string(wanted.time)},
                 {"size", std::to_string(bytes.size()) + " bytes"},
                 {"written to", wanted.file}});
}

/// Why a block was not stored, as far as the file shows it.
Failure not_stored(const std::string &path)
{
    try {
        if (read_fingerprint_file(path).blocks.size() == static_cast<std::size_t>(pvr::most_fingerprints))
            return {ExitCode::failed, '\'' + path + "' is full: it has 300 blocks"};
    } catch (const Failure &failure) {
        if (failure.code() != ExitCode::not_found)
            return failure;
    }
    return {ExitCode::failed, "the block cannot be stored in '" + path + "'. PVR_LOG=stderr tells why"};
}

void put_block(Service &service, Output &output, const FingerprintBlock &given)
{
    const RecordingPath path(given.path);
    const std::string file = path.beside("sas");
    std::error_code error;
    if (!std::filesystem::exists(path.c_str(), error) && !std::filesystem::exists(file, error))
        throw Failure(ExitCode::not_found, '\'' + std::string(path.c_str()) + "': " + std::strerror(ENOENT));
    const std::string block = given.file.empty()
                                  ? read_block(STDIN_FILENO, "standard input")
                                  : read_block(OpenedFile(given.file, O_RDONLY).number(), '\'' + given.file + '\'');
    service.try_bus();
    const int result = svc_pvr_write_sas_file(path.c_str(), given.time, static_cast<int>(block.size()), block.data());
    if (result != PS_SUCCESS && result != stored_but_not_told)
        throw not_stored(file);
    const bool is_told = result == PS_SUCCESS;
    output.show({{"file", file}, {"time", given.time}, {"size", block.size()}, {"stored", true}, {"told", is_told}},
                {{"file", file},
                 {"time", std::to_string(given.time)},
                 {"stored", std::to_string(block.size()) + " bytes"},
                 {"service told", is_told ? "yes" : "no"}});
    if (!is_told) {
        const Failure reason = service.reason();
        throw Failure(reason.code(),
                      std::string("the block is stored, but the service was not told: ") + reason.what());
    }
}

struct BlockVerb {
    const char *name;
    const char *description;
    Examples examples;
    const char *option;
    const char *option_description;
    void (*action)(Service &, Output &, const FingerprintBlock &block);
};

void add_block_verb(Commands &commands, CLI::App &object, const BlockVerb &known)
{
    CLI::App &verb = add_command(object, known.name, known.description, known.examples);
    const auto block = std::make_shared<FingerprintBlock>();
    completes(verb.add_option("FILE", block->path, "the recording or its info file: .srf, .inf or .tmp")
                  ->required()
                  ->type_name(""),
              Completes::recording);
    add_number(verb, "TIME", block->time, "", "the time of the block, a whole number of 64 bits")->required();
    completes(verb.add_option(known.option, block->file, known.option_description)->type_name("PATH"), Completes::file);
    choose(commands, verb,
           [block, action = known.action](Service &service, Output &output) { action(service, output, *block); });
}

} // namespace

void add_sas(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "sas", "The fingerprint file beside a recording",
                                   {"sas list first.srf", "sas get first.srf 90 --output block"});
    object.require_subcommand(1);

    CLI::App &list = add_command(object, "list", "List the blocks", {"sas list first.srf"});
    const auto file = std::make_shared<std::string>();
    completes(
        list.add_option("FILE", *file, "the recording or its info file: .srf, .inf or .tmp")->required()->type_name(""),
        Completes::recording);
    choose(commands, list, [file](Service &, Output &output) { list_blocks(output, *file); });

    add_block_verb(commands, object,
                   {"get",
                    "Print a block, as it is",
                    {"sas get first.srf 90 --output block"},
                    "--output",
                    "a file for the block; without it standard output, unless that is a terminal",
                    [](Service &, Output &output, const FingerprintBlock &block) { get_block(output, block); }});
    add_block_verb(commands, object,
                   {"put",
                    "Store a block, and tell the service its time. The block stays when the service cannot be told. "
                    "No block is replaced: of two with the same time the first is read.",
                    {"sas put first.srf 90", "sas put first.srf 90 --input block"},
                    "--input",
                    "a file that is the block; without it standard input",
                    put_block});
}

} // namespace pvrctl
