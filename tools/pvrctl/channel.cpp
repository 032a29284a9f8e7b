// pvrctl channel: what is on a channel, and what can be done with it.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "listed.h"
#include "recordings.h"
#include "states.h"

namespace pvrctl {
namespace {

/// What can be asked about a channel.
struct Question {
    const char *name;
    int (*call)(std::uint64_t service_id, int *answer);
};

/// The service is asked the other way round. Another answer than 1 or 0 is no answer, and stays what it is.
int is_signal_there(std::uint64_t service_id, int *answer) noexcept
{
    const int result = svc_pvr_is_no_signal_channel(service_id, answer);
    if (*answer == 0 || *answer == 1)
        *answer = 1 - *answer;
    return result;
}

enum QuestionNumber { has_signal, locked, analogue, audio_only, recorded, timeshifted };

constexpr std::array questions{
    Question{"signal", is_signal_there},
    Question{"locked", svc_pvr_is_child_lock_channel},
    Question{"analogue", svc_pvr_is_analog_channel},
    Question{"audio_only", svc_pvr_is_audio_only_channel},
    Question{"recorded", svc_pvr_is_recording},
    Question{"timeshifted", svc_pvr_is_timeshifting},
};

struct Channel {
    std::uint64_t service_id = 0;
    channel_info info{};
    std::array<int, questions.size()> answers{}; ///< by QuestionNumber
    int seen_and_heard = 0;
    bool is_watched = false;

    /// The texts of the record need not end in NUL.
    template <std::size_t size>
    static std::string text(const char (&field)[size])
    {
        return {field, strnlen(field, size)};
    }
    std::string name() const { return text(info.channel_name); }
    std::string programme() const { return text(info.program_title); }
    std::string number() const { return std::to_string(info.major) + '-' + std::to_string(info.minor); }

    const char *kind() const
    {
        return answers[analogue] == 1 ? "analogue" : answers[audio_only] == 1 ? "radio" : "television";
    }

    /// Nothing is told of a channel that the service does not know.
    bool is_known() const { return answers[has_signal] >= 0 || !name().empty() || info.major != 0 || info.minor != 0; }
};

std::uint64_t watched_channel_id(const Service &service)
{
    std::uint64_t service_id = 0;
    service.check(svc_pvr_get_current_livetv_service_id(&service_id));
    return service_id;
}

Channel channel_of(const Service &service, std::uint64_t service_id)
{
    Channel channel;
    channel.service_id = service_id;
    service.check(svc_pvr_get_channel_info(service_id, &channel.info));
    for (std::size_t i = 0; i < questions.size(); ++i)
        service.check(questions[i].call(service_id, &channel.answers[i]));
    service.check(svc_pvr_get_av_status(service_id, &channel.seen_and_heard));
    channel.is_watched = watched_channel_id(service) == service_id;
    if (!channel.is_known())
        throw Failure(ExitCode::not_found, "there is no " + channel_text(service_id));
    return channel;
}

Json channel_json(const Channel &channel)
{
    const std::int64_t major = channel.info.major;
    const std::int64_t minor = channel.info.minor;
    const std::int64_t start = channel.info.start_time;
    const std::int64_t end = channel.info.end_time;
    Json data{{"service_id", channel.service_id},
              {"name", channel.name()},
              {"major", major},
              {"minor", minor},
              {"programme", {{"title", channel.programme()}, {"start_time", start}, {"end_time", end}}},
              {"kind", channel.kind()}};
    for (std::size_t i = 0; i < questions.size(); ++i)
        data[questions[i].name] = answer_json(channel.answers[i]);
    data["av_status"] = channel.seen_and_heard;
    data["watched"] = channel.is_watched;
    return data;
}

std::string programme_text(const Channel &channel)
{
    std::string text = channel.programme();
    for (const std::int64_t time : {std::int64_t{channel.info.start_time}, std::int64_t{channel.info.end_time}})
        if (time != 0)
            text += ", " + local_time(time);
    return text.empty() ? "none" : text;
}

std::string channel_line(const Channel &channel)
{
    std::string text = channel.name() + ", " + channel.number() + ", " + channel.kind();
    if (channel.is_watched)
        text += ", watched";
    if (channel.answers[has_signal] == 0)
        text += ", no signal";
    constexpr std::array<std::pair<QuestionNumber, const char *>, 3> remarks{
        {{locked, ", locked"}, {recorded, ", recorded"}, {timeshifted, ", timeshifted"}}};
    for (const auto &[question, remark] : remarks)
        if (channel.answers[question] == 1)
            text += remark;
    return text;
}

void show_channel(Service &service, Output &output, std::uint64_t service_id)
{
    service.open();
    const Channel channel = channel_of(service, service_id);
    output.show(channel_json(channel), {{"channel", std::to_string(service_id)},
                                        {"name", channel.name()},
                                        {"number", channel.number()},
                                        {"programme", programme_text(channel)},
                                        {"kind", channel.kind()},
                                        {"signal", answer_text(channel.answers[has_signal])},
                                        {"locked", answer_text(channel.answers[locked])},
                                        {"recorded", answer_text(channel.answers[recorded])},
                                        {"timeshifted", answer_text(channel.answers[timeshifted])},
                                        {"watched", channel.is_watched ? "yes" : "no"}});
}

/// The service lists no channels: the one that is watched and those that are recorded are all it tells of.
std::vector<std::uint64_t> channels_in_use(const Service &service)
{
    std::vector<std::uint64_t> ids;
    if (const std::uint64_t watched = watched_channel_id(service); watched != 0)
        ids.push_back(watched);
    for (const std::uint64_t id : listed(service, svc_pvr_get_recording_service_id_list))
        if (std::ranges::find(ids, id) == ids.end())
            ids.push_back(id);
    return ids;
}

void list_channels(Service &service, Output &output, const std::vector<std::uint64_t> &wanted)
{
    service.open();
    Json channels = Json::array();
    std::vector<Row> rows;
    for (const std::uint64_t id : wanted.empty() ? channels_in_use(service) : wanted) {
        const Channel channel = channel_of(service, id);
        channels.push_back(channel_json(channel));
        rows.push_back({std::to_string(id), channel_line(channel)});
    }
    if (rows.empty())
        rows.push_back({"channels", "none is watched or recorded"});
    const std::size_t count = channels.size();
    output.show({{"channels", std::move(channels)}, {"count", count}}, rows);
}

constexpr ChannelVerb channel_verb{"info", "Tell what is on a channel, and what is done with it", "channel info 1",
                                   show_channel};

} // namespace

void add_channel(Commands &commands)
{
    CLI::App &object =
        add_command(commands.root, "channel", "Channels, and what is on them", {"channel list", "channel info 1"});
    object.require_subcommand(1);
    add_channel_verb(commands, object, channel_verb);

    CLI::App &list = add_command(object, "list",
                                 "List channels. The service does not tell which there are: without service ids it is "
                                 "the one that is watched and those that are recorded.",
                                 {"channel list", "channel list 1 2 3"});
    const auto texts = std::make_shared<std::vector<std::string>>();
    const auto wanted = std::make_shared<std::vector<std::uint64_t>>();
    completes(list.add_option("SERVICE_ID", *texts, "the channels' service ids")->type_name(""), Completes::channel);
    choose(
        commands, list, [wanted](Service &service, Output &output) { list_channels(service, output, *wanted); },
        [texts, wanted] { std::ranges::transform(*texts, std::back_inserter(*wanted), parsed_channel); });
}

} // namespace pvrctl
