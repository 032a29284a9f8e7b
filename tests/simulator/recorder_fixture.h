// A recorder with a clock that the test moves, folders that are devices, and a source that the test feeds.
#pragma once

#include "recorder.h"

#include "events/names.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <system_error>
#include <utility>
#include <vector>

namespace recorder_test {

using namespace simulator;
using namespace std::chrono_literals;

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr std::uint64_t first = 1;
constexpr std::uint64_t second = 2;
constexpr std::uint64_t radio = 3;
constexpr std::int64_t noon = 1'700'000'000; // 2023-11-14 22:13:20 UTC

/// As many bytes as it is asked for, or as the test lets come.
struct Feed {
    std::optional<std::size_t> rest{};
    bool is_broken = false;
};

class FedSource : public Source {
public:
    explicit FedSource(Feed &feed) : feed_(feed) {}
    std::size_t read(std::span<std::uint8_t> room) override
    {
        if (feed_.is_broken)
            throw std::system_error(ENODATA, std::generic_category(), "the feed");
        const std::size_t count = std::min(room.size(), feed_.rest.value_or(room.size()));
        if (feed_.rest)
            *feed_.rest -= count;
        std::fill_n(room.begin(), count, std::uint8_t{0x47});
        return count;
    }
    StreamDescription description() const override { return {7, 0x21, 0x22, 0x23}; }

private:
    Feed &feed_;
};

/// No file grows beyond a size, as on a device that is full.
class LimitedFileSize {
public:
    explicit LimitedFileSize(rlim_t size) : action_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{size, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~LimitedFileSize()
    {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, action_);
    }
    LimitedFileSize(const LimitedFileSize &) = delete;
    LimitedFileSize &operator=(const LimitedFileSize &) = delete;

private:
    void (*action_)(int);
    rlimit before_{};
};

inline std::string line(const RecordingEvent &event)
{
    const std::string state = pvr::_get_pvr_macro_name(pvr::ps_record_state_e_str, event.state);
    const std::string type = pvr::_get_pvr_macro_name(pvr::ps_record_type_e_str, event.type);
    const std::string method = pvr::_get_pvr_macro_name(pvr::ps_method_e_str, event.method);
    const std::string words[] = {"will start",
                                 method + " " + std::to_string(event.result),
                                 "is " + state,
                                 "is " + type,
                                 "will finish",
                                 "failed with " + std::to_string(event.result),
                                 "lasted " + std::to_string(event.seconds) + " s",
                                 "is over",
                                 "lasts " + std::to_string(event.seconds) + " s",
                                 ""};
    if (event.kind == RecordingEvent::became_busy)
        return "busy or idle";
    return std::to_string(event.handle) + " " + words[event.kind];
}

class RecorderTest : public testing::Test {
protected:
    RecorderTest()
    {
        fs::create_directory(folder / "usb");
        devices.emplace(
            std::vector<DeviceDescription>{{"usb", folder / "usb"}}, [this] { return now; },
            [this](const std::string &) {
                return Space{space, 1000};
            },
            [this](const DeviceEvent &event) {
                if (event.kind == DeviceEvent::left)
                    recorder->lose_device(event.handle);
            });
        set_tuners(2);
    }

    void set_tuners(int count)
    {
        recorder.reset();
        recorder.emplace(Recorder::Surroundings{handles, channels, *devices, [this] { return now; },
                                                [this] { return Microseconds(std::chrono::seconds(wall)); },
                                                [this](const Channel &channel) {
                                                    opened.push_back(channel.service_id);
                                                    if (unreadable == channel.service_id)
                                                        throw std::system_error(ENOENT, std::generic_category(),
                                                                                "/gone");
                                                    return std::make_unique<FedSource>(feed);
                                                },
                                                [this](int) { return channel_number; }, usual_pace, longest_timeshift},
                         count, [this](const RecordingEvent &event) { events_.push_back(line(event)); });
    }

    Lines events() { return std::exchange(events_, {}); }

    void pass(Microseconds time)
    {
        now += time;
        devices->advance();
        recorder->advance();
    }

    /// Lets time pass as timers do: nothing is noticed later than it is due.
    void pass_in_steps(Microseconds time)
    {
        const Microseconds end = now + time;
        while (recorder->due() && *recorder->due() <= end) {
            now = std::max(now, *recorder->due());
            recorder->advance();
        }
        now = end;
    }

    int start(std::uint64_t channel = first, ps_record_type_e type = PS_RECORD_TYPE_NORMAL)
    {
        EXPECT_EQ(recorder->start(std::nullopt, channel, type).reason, "");
        events();
        return recorder->either_of(channel)->handle;
    }

    pvr_file_info_s info(const std::string &path)
    {
        const auto found = read_info(with_extension(path, "inf"));
        EXPECT_TRUE(found) << path;
        return found.value_or(pvr_file_info_s{});
    }

private:
    Lines events_; // the recorder tells of its end

protected:
    support::TemporaryFolder folder;
    Microseconds now = 1000s;
    std::int64_t wall = noon;
    std::int64_t space = 1000;
    Microseconds longest_timeshift = Recorder::default_timeshift; ///< for set_tuners()
    std::uint64_t unreadable = 0;
    std::string channel_number;
    std::vector<std::uint64_t> opened;
    Feed feed;
    Handles handles;
    Channels channels{built_in_channels(), [this] { return wall; }};
    std::optional<Devices> devices;
    std::optional<Recorder> recorder;
};

} // namespace recorder_test
