#include "source.h"

#include "descriptor.h"
#include "test_programme.h"
#include "transport_stream.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace simulator {
namespace {

/// How many of these lie at the start of the bytes, as far as they go.
std::size_t packets_in_step(std::span<const std::uint8_t> bytes)
{
    std::size_t packets = 0;
    while (packets < packets_to_trust && packets * packet_size < bytes.size() &&
           bytes[packets * packet_size] == sync_byte)
        ++packets;
    return packets;
}

std::system_error failure(int error, const std::string &text)
{
    return std::system_error(error, std::generic_category(), text);
}

class ProgrammeSource : public Source {
public:
    explicit ProgrammeSource(int bit_rate) : programme_(bit_rate) {}

    std::size_t read(std::span<std::uint8_t> room) override
    {
        std::size_t taken = 0;
        for (; room.size() - taken >= packet_size; taken += packet_size) {
            const Packet packet = programme_.next();
            std::copy(packet.begin(), packet.end(), room.subspan(taken).begin());
        }
        return taken;
    }

    StreamDescription description() const override
    {
        return {TestProgramme::programme_number, TestProgramme::audio_pid, TestProgramme::audio_pid, 0};
    }

private:
    TestProgramme programme_;
};

/// A file from its beginning to its last whole packet, over and over.
class FileSource : public Source {
public:
    explicit FileSource(std::string path);
    std::size_t read(std::span<std::uint8_t> room) override;

private:
    std::string path_;
    Descriptor file_;
    off_t offset_ = 0;
    std::optional<std::system_error> end_;
};

FileSource::FileSource(std::string path)
    : path_(std::move(path)), file_(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
{
    struct stat status {};
    if (!file_.is_open() || fstat(file_.number(), &status) != 0)
        throw failure(errno, path_);
    if (S_ISDIR(status.st_mode))
        throw failure(EISDIR, path_);
    if (!S_ISREG(status.st_mode))
        throw failure(EINVAL, path_ + " is no regular file");

    std::array<std::uint8_t, packets_to_trust * packet_size> head{};
    const ssize_t count = pread(file_.number(), head.data(), head.size(), 0);
    if (count < 0)
        throw failure(errno, path_);
    const std::size_t packets = static_cast<std::size_t>(count) / packet_size;
    if (packets == 0 || packets_in_step(std::span(head).first(packets * packet_size)) != packets)
        throw failure(ENOEXEC, path_ + " holds no transport stream");
}

std::size_t FileSource::read(std::span<std::uint8_t> room)
{
    if (end_)
        throw std::system_error(*end_);
    room = room.first(room.size() / packet_size * packet_size);
    std::size_t taken = 0;
    while (taken < room.size()) {
        const std::span rest = room.subspan(taken);
        const ssize_t count = pread(file_.number(), rest.data(), rest.size(), offset_);
        if (count < 0 && errno == EINTR)
            continue;
        const std::size_t whole = count < 0 ? 0 : static_cast<std::size_t>(count) / packet_size * packet_size;
        if (whole == 0 && (count < 0 || offset_ == 0)) {
            end_ = count < 0 ? failure(errno, path_) : failure(ENODATA, path_ + " has been emptied");
            break;
        }
        taken += whole;
        offset_ = whole == 0 ? 0 : offset_ + static_cast<off_t>(whole);
    }
    if (end_ && taken == 0)
        throw std::system_error(*end_);
    return taken;
}

/// Finds the packets in bytes that come in pieces. What is none is skipped.
class PacketFinder {
public:
    /// Takes whole packets out. When nothing follows, the last of them need not prove that they are some.
    std::size_t take(std::span<std::uint8_t> room, bool does_nothing_follow);
    /// Where more bytes go, after there was nothing left to take.
    std::span<std::uint8_t> space();
    void add(std::size_t count) { end_ += count; }

    /// How many bytes were skipped since the last packet.
    std::size_t skipped() const { return skipped_; }

private:
    bool find(bool does_nothing_follow);

    std::vector<std::uint8_t> bytes_ = std::vector<std::uint8_t>(1024 * packet_size);
    std::size_t begin_ = 0; ///< of the bytes that wait
    std::size_t end_ = 0;
    std::size_t skipped_ = 0;
    bool is_in_step_ = false;
};

std::size_t PacketFinder::take(std::span<std::uint8_t> room, bool does_nothing_follow)
{
    std::size_t taken = 0;
    for (; room.size() - taken >= packet_size && find(does_nothing_follow); taken += packet_size) {
        const auto packet = std::span(bytes_).subspan(begin_, packet_size);
        std::copy(packet.begin(), packet.end(), room.subspan(taken).begin());
        begin_ += packet_size;
    }
    return taken;
}

std::span<std::uint8_t> PacketFinder::space()
{
    const auto waiting = std::span(bytes_).subspan(begin_, end_ - begin_);
    std::copy(waiting.begin(), waiting.end(), bytes_.begin());
    begin_ = 0;
    end_ = waiting.size();
    return std::span(bytes_).subspan(end_);
}

bool PacketFinder::find(bool does_nothing_follow)
{
    for (; end_ - begin_ >= packet_size; ++begin_, ++skipped_) {
        const auto waiting = std::span(bytes_).subspan(begin_, end_ - begin_);
        const std::size_t packets = packets_in_step(waiting);
        const bool is_promising = packets == packets_to_trust || packets * packet_size >= waiting.size();
        if (is_in_step_ ? packets > 0 : is_promising) {
            is_in_step_ = is_in_step_ || packets == packets_to_trust || does_nothing_follow;
            skipped_ = is_in_step_ ? 0 : skipped_;
            return is_in_step_;
        }
        is_in_step_ = false;
    }
    return false;
}

/// What a shell is started with.
class SpawnPlan {
public:
    /// In this group, 0 for one of its own. Its input, its output and its standard error are all that it has in common
    /// with this process; without an input or an output it has nothing.
    SpawnPlan(pid_t group, std::optional<int> input, std::optional<int> output);
    ~SpawnPlan()
    {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    SpawnPlan(const SpawnPlan &) = delete;
    SpawnPlan &operator=(const SpawnPlan &) = delete;

    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_t actions{};
    int error = 0; ///< what went wrong first
};

SpawnPlan::SpawnPlan(pid_t group, std::optional<int> input, std::optional<int> output)
{
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
    sigset_t every_signal;
    sigset_t no_signal;
    sigfillset(&every_signal);
    sigemptyset(&no_signal);
    const auto attach = [this](std::optional<int> given, int number, int flags) {
        return given ? posix_spawn_file_actions_adddup2(&actions, *given, number)
                     : posix_spawn_file_actions_addopen(&actions, number, "/dev/null", flags, 0);
    };
    const auto attach_output = [&] { return attach(output, STDOUT_FILENO, O_WRONLY); };
    const auto attach_input = [&] { return attach(input, STDIN_FILENO, O_RDONLY); };
    // What is given first: its number may be that of the other, which was closed.
    const bool is_input_first = input.has_value();
    const int errors[] = {
        is_input_first ? attach_input() : attach_output(),
        is_input_first ? attach_output() : attach_input(),
        posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1),
        posix_spawnattr_setpgroup(&attributes, group),
        posix_spawnattr_setsigdefault(&attributes, &every_signal),
        posix_spawnattr_setsigmask(&attributes, &no_signal),
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK),
    };
    if (const auto *first = std::find_if(std::begin(errors), std::end(errors), [](int value) { return value != 0; });
        first != std::end(errors))
        error = *first;
}

pid_t start_shell(std::string command, const SpawnPlan &plan)
{
    std::string shell = "/bin/sh";
    std::string option = "-c";
    char *arguments[] = {shell.data(), option.data(), command.data(), nullptr};
    pid_t pid = 0;
    const int error = plan.error != 0
                          ? plan.error
                          : posix_spawn(&pid, arguments[0], &plan.actions, &plan.attributes, arguments, environ);
    if (error != 0)
        throw failure(error, shell);
    return pid;
}

/// Waits for the end of a process; nothing when it is no child.
std::optional<siginfo_t> wait_for(pid_t process)
{
    siginfo_t news{};
    int result = 0;
    do
        result = waitid(P_PID, static_cast<id_t>(process), &news, WEXITED);
    while (result != 0 && errno == EINTR);
    return result == 0 ? std::optional(news) : std::nullopt;
}

struct Pipe {
    enum Reader { waits, does_not_wait };
    explicit Pipe(Reader reader);

    Descriptor reading;
    Descriptor writing;
};

Pipe::Pipe(Reader reader)
{
    int ends[2] = {};
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw failure(errno, "a pipe");
    reading = Descriptor(ends[0]);
    writing = Descriptor(ends[1]);
    if (reader == waits)
        return;
    if (fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0)
        throw failure(errno, "a pipe");
    // So that the command need not wait for whoever reads. Where it is not allowed, the usual size has to do.
    fcntl(ends[0], F_SETPIPE_SZ, 1 << 20);
}

/// A process group that ends with this process, however that ends: its leader waits for the end of a pipe of which this
/// process has the other end, and then kills the group.
class Group {
public:
    Group();
    ~Group();
    Group(const Group &) = delete;
    Group &operator=(const Group &) = delete;

    /// Nobody else's for as long as this lives.
    pid_t number() const { return keeper_; }
    void kill_all() const { kill(-keeper_, SIGKILL); }

private:
    explicit Group(Pipe pipe)
        : life_(std::move(pipe.writing)),
          keeper_(start_shell("read line; kill -KILL 0", SpawnPlan(0, pipe.reading.number(), std::nullopt)))
    {
    }

    Descriptor life_;
    pid_t keeper_;
};

Group::Group() : Group(Pipe(Pipe::waits)) {}

Group::~Group()
{
    kill_all();
    wait_for(keeper_);
}

/// A shell's command in a process group of its own, nothing of which outlives it.
class Command {
public:
    Command(std::string text, int output);
    ~Command() { end(); }
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    /// Whether the shell has ended. Then nothing is left of the group.
    bool has_ended();
    /// Kills what is left of the group.
    void end();
    /// How the shell ended.
    const std::string &fate() const { return fate_; }

private:
    std::optional<Group> group_;
    pid_t shell_;
    std::string fate_ = "ended";
};

Command::Command(std::string text, int output)
    : group_(std::in_place), shell_(start_shell(std::move(text), SpawnPlan(group_->number(), std::nullopt, output)))
{
}

bool Command::has_ended()
{
    siginfo_t news{};
    if (group_ && waitid(P_PID, static_cast<id_t>(shell_), &news, WEXITED | WNOHANG | WNOWAIT) == 0 && news.si_pid == 0)
        return false;
    end();
    return true;
}

void Command::end()
{
    if (!group_)
        return;
    group_->kill_all();
    if (const auto news = wait_for(shell_))
        fate_ = (news->si_code == CLD_EXITED ? "ended with status " : "was ended by signal ") +
                std::to_string(news->si_status);
    group_.reset();
}

class CommandSource : public Source {
public:
    explicit CommandSource(std::string command) : CommandSource(std::move(command), Pipe(Pipe::does_not_wait)) {}
    std::size_t read(std::span<std::uint8_t> room) override;

private:
    enum class Output { comes, waits, is_closed };

    CommandSource(std::string command, Pipe pipe)
        : output_(std::move(pipe.reading)), command_(std::move(command), pipe.writing.number())
    {
    }
    Output receive();
    bool is_closed_for_long(Output output);
    [[noreturn]] void stop(int error, const std::string &reason);

    Descriptor output_;
    Command command_;
    PacketFinder packets_;
    std::optional<std::chrono::steady_clock::time_point> closed_;
    std::optional<std::system_error> end_;
};

std::size_t CommandSource::read(std::span<std::uint8_t> room)
{
    if (end_)
        throw std::system_error(*end_);
    // Asked before the pipe is read: what the command has written until its end is all in there.
    const bool has_ended = command_.has_ended();
    std::size_t taken = packets_.take(room, false);
    Output output = Output::comes;
    while (output == Output::comes && room.size() - taken >= packet_size && packets_.skipped() <= probe_size) {
        output = receive();
        taken += packets_.take(room.subspan(taken), false);
    }
    if (taken != 0)
        return taken;
    if (packets_.skipped() > probe_size)
        stop(ENOEXEC, "writes no transport stream");
    if (output == Output::comes)
        return 0; // there is no room
    if (has_ended) {
        taken = packets_.take(room, true);
        if (taken == 0)
            stop(ENODATA, command_.fate());
    } else if (is_closed_for_long(output)) {
        stop(ENODATA, "has closed its output");
    }
    return taken;
}

CommandSource::Output CommandSource::receive()
{
    const std::span space = packets_.space();
    const ssize_t count = ::read(output_.number(), space.data(), space.size());
    if (count > 0) {
        packets_.add(static_cast<std::size_t>(count));
        return Output::comes;
    }
    if (count < 0 && errno == EINTR)
        return Output::comes;
    return count < 0 && errno == EAGAIN ? Output::waits : Output::is_closed;
}

/// A program may close its output a moment before it ends, and how it ends is worth knowing.
bool CommandSource::is_closed_for_long(Output output)
{
    constexpr std::chrono::seconds moment(1);
    if (output != Output::is_closed)
        return false;
    const auto now = std::chrono::steady_clock::now();
    if (!closed_)
        closed_ = now;
    return now - *closed_ >= moment;
}

void CommandSource::stop(int error, const std::string &reason)
{
    command_.end();
    output_ = Descriptor();
    end_ = failure(error, "the command " + reason);
    throw std::system_error(*end_);
}

} // namespace

std::unique_ptr<Source> open_source(const std::string &what, int bits_per_second)
{
    constexpr std::string_view command = "exec:";
    if (what.empty())
        return std::make_unique<ProgrammeSource>(bits_per_second);
    if (what.starts_with(command))
        return std::make_unique<CommandSource>(what.substr(command.size()));
    return std::make_unique<FileSource>(what);
}

} // namespace simulator
