// How many calls a second one client process makes, and many at the same time: with the library, and with GDBus as it
// comes. Clients, bus and service share one CPU, so that what is added anywhere is seen.
#include "private_bus.h"
#include "rounds.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using namespace bench;
using benchmark::State;
using Clock = std::chrono::steady_clock;

constexpr int default_rounds = 40;
constexpr std::int32_t calls_in_all = 640;
constexpr std::size_t numbers_of_clients[] = {1, 4, 16, 64};
constexpr std::size_t most_clients = 64;

class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    Descriptor(Descriptor &&other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    ~Descriptor()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    Descriptor &operator=(Descriptor &&) = delete;
    int get() const { return descriptor_; }

private:
    int descriptor_;
};

/// A client process, idle until it is told how many calls to make.
class Client {
public:
    explicit Client(const std::string &kind) : Client(kind, pair()) {}

    void start(std::int32_t calls) const
    {
        if (write(ours_.get(), &calls, sizeof calls) != sizeof calls)
            throw std::system_error(errno, std::generic_category(), "a client is gone");
    }
    void wait() const
    {
        char done = 'n';
        if (read(ours_.get(), &done, 1) != 1 || done != 'y')
            throw std::runtime_error("a client's call failed");
    }

private:
    using Pair = std::pair<Descriptor, Descriptor>;

    static Pair pair()
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0 || fcntl(ends[0], F_SETFD, FD_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "sockets");
        return {Descriptor(ends[0]), Descriptor(ends[1])};
    }

    /// The client's end is closed here once the client has it.
    Client(const std::string &kind, Pair ends)
        : ours_(std::move(ends.first)),
          process_({std::filesystem::read_symlink("/proc/self/exe").parent_path() / "pvr-bench-client", kind,
                    std::to_string(ends.second.get())})
    {
    }

    Descriptor ours_;
    support::ChildProcess process_;
};

std::vector<Client> started(const std::string &kind)
{
    std::vector<Client> clients;
    while (clients.size() < most_clients)
        clients.emplace_back(kind);
    return clients;
}

/// Some of the clients make the calls at the same time; tells the time per call.
void call(State &state, const std::vector<Client> &clients, std::size_t count)
{
    const auto calls_of_each = calls_in_all / static_cast<std::int32_t>(count);
    for ([[maybe_unused]] auto _ : state) {
        const Clock::time_point before = Clock::now();
        for (std::size_t index = 0; index < count; ++index)
            clients[index].start(calls_of_each);
        for (std::size_t index = 0; index < count; ++index)
            clients[index].wait();
        const std::chrono::duration<double, std::nano> elapsed = Clock::now() - before;
        state.counters["elapsed_ns"] = elapsed.count() / calls_in_all;
    }
}

int run(const Options &options)
{
    const PrivateBus bus;
    const std::vector<Client> library = started("library"), bare = started("bare");
    std::vector<Group> groups;
    for (const std::size_t count : numbers_of_clients) {
        const auto with = [count](const std::vector<Client> &clients) {
            return [&clients, count](State &state) { call(state, clients, count); };
        };
        const std::string name = "clients/" + std::to_string(count);
        groups.push_back({{name + "/library", with(library), 1}, {name + "/bare", with(bare), 1}});
    }
    return run_rounds(groups, options);
}

} // namespace

int main(int argc, char **argv)
{
    return measured([&] { return run(parse(argc, argv, default_rounds)); });
}
