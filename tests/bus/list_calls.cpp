// The calls that fill a list: how much they store for every room that a caller may have.
#include "bus/row_shapes.h"
#include "pvr_service_api.h"
#include "support/platform.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <ostream>
#include <sstream>
#include <utility>
#include <vector>

using namespace support;
using Result = RemoteCall::Result;

namespace {

constexpr int untouched_count = -77;

/// What differs from list to list.
template <typename T>
struct ListCall {
    std::string name;
    std::function<int(T *list, int length, int *count)> call;
    std::string method;
    std::string array; ///< its type
    Beside beside;
    bool is_length_sent;
    bool is_count_logged_first; ///< else last, together with the length
};

template <typename T>
std::string element(int index, T value)
{
    return plain_info("index[" + std::to_string(index) + "] value[" + std::to_string(value) + "]");
}

/// What an answer with these elements and this count must become in a list with room for length.
template <typename T>
Outcome outcome(const ListCall<T> &list, int length, const std::vector<T> &sent, int count)
{
    std::ostringstream answer;
    answer << "(@" << list.array << " [";
    for (std::size_t i = 0; i < sent.size(); ++i)
        answer << (i == 0 ? "" : ", ") << sent[i];
    answer << "], " << count << (list.beside == Beside::result ? ", 403)" : ")");

    std::ostringstream outputs;
    Lines lines;
    if (list.is_count_logged_first)
        lines.push_back(detail("num_of_list : " + std::to_string(count) + " "));
    outputs << count << ":";
    for (std::size_t i = 0; count > 0 && i < sent.size(); ++i) {
        lines.push_back(element(static_cast<int>(i), sent[i])); // logged also when there is no room left
        if (static_cast<int>(i) >= length)
            break;
        outputs << " " << sent[i];
    }
    if (!list.is_count_logged_first)
        lines.push_back(info("[length:" + std::to_string(length) + "][num_of_list:" + std::to_string(count) + "]"));
    return {answer.str(), 0, outputs.str(), lines};
}

template <typename T>
RemoteCall row(const ListCall<T> &list, int length)
{
    const std::vector<T> three{T{5}, T{0}, static_cast<T>(wide_id)};
    std::vector<Outcome> outcomes;
    for (const int count : {3, 100'000, 1, 0, -1})
        outcomes.push_back(outcome(list, length, three, count));
    outcomes.push_back(outcome(list, length, {}, 2));
    const std::string number = std::to_string(length);
    return {
        .name = list.name,
        .call =
            [call = list.call, length](std::ostream &outputs) {
                std::vector<T> stored(static_cast<std::size_t>(std::max(length, 0)) + 2, T{123'456'789});
                int count = untouched_count;
                const int returned = call(stored.data(), length, &count);
                outputs << count << ":";
                EXPECT_EQ(std::count(stored.end() - 2, stored.end(), T{123'456'789}), 2); // never beyond the room
                for (const T value : stored)
                    if (value != T{123'456'789})
                        outputs << " " << value;
                return returned;
            },
        .untouched = "-77:",
        .entry = entry("[length:" + number + "]"),
        .is_checked = true,
        .request =
            list.is_length_sent ? request(list.method, "i", "(" + number + ",)") : request(list.method, "", "()"),
        .result = list.beside == Beside::result ? Result::is_published : Result::is_the_answer,
        .outcomes = std::move(outcomes),
        .call_with_null_outputs = [call = list.call, length] { return call(nullptr, length, nullptr); },
        .variant = "Room" + std::to_string(length + 1),
    };
}

template <typename T>
std::vector<RemoteCall> rows(const ListCall<T> &list)
{
    std::vector<RemoteCall> of_every_room;
    for (const int length : {-1, 0, 1, 3, 4, 10'000})
        of_every_room.push_back(row(list, length));
    return of_every_room;
}

const ListCall<int> handles{"svc_pvr_get_handle_for_record",
                            svc_pvr_get_handle_for_record,
                            "get_handle_for_record",
                            "ai",
                            Beside::nothing,
                            false,
                            true};
const ListCall<int> devices{
    "svc_pvr_get_device_list", svc_pvr_get_device_list, "get_device_list", "ai", Beside::result, true, false};
const ListCall<int> recording_devices{"svc_pvr_get_rec_device_list",
                                      svc_pvr_get_rec_device_list,
                                      "get_rec_device_list",
                                      "ai",
                                      Beside::result,
                                      true,
                                      false};
const ListCall<std::uint64_t> recordings{"svc_pvr_get_recording_service_id_list",
                                         svc_pvr_get_recording_service_id_list,
                                         "get_recording_service_id_list",
                                         "at",
                                         Beside::nothing,
                                         false,
                                         true};

/// What no row has, since rows are made in every process: an answer that is long.
template <typename T>
void take_ten_thousand_elements(const ListCall<T> &list)
{
    SCOPED_TRACE(list.name);
    std::vector<T> many(10'000);
    std::iota(many.begin(), many.end(), T{1});
    for (const int length : {3, 10'000}) {
        const RemoteCall call = row(list, length);
        const Outcome expected = outcome(list, length, many, 10'000);
        ScriptedService service;
        service.script(list.method, answers(expected.answer));
        ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
        logged();
        std::ostringstream outputs;
        EXPECT_EQ(call.call(outputs), PS_SUCCESS);
        EXPECT_EQ(outputs.str(), expected.outputs);
        Lines lines{call.entry, detail(support_line(1))};
        lines.insert(lines.end(), expected.lines.begin(), expected.lines.end());
        EXPECT_EQ(logged_lines(), lines);
        EXPECT_EQ(svc_pvr_service_destroy(), PS_SUCCESS);
    }
}

} // namespace

std::vector<RemoteCall> list_calls()
{
    return joined({rows(handles), rows(devices), rows(recording_devices), rows(recordings)});
}

TEST(Lists, AreWalkedWholeHoweverLong)
{
    take_ten_thousand_elements(handles);
    take_ten_thousand_elements(devices);
    take_ten_thousand_elements(recording_devices);
    take_ten_thousand_elements(recordings);
}

namespace {

/// Channels as the service lists them, and how many of them the walk stores and asks about.
struct Walk {
    const char *name;
    int length;
    std::vector<std::uint64_t> recording; ///< of the three ids 1, 2 and wide_id, those that are recorded
    std::vector<std::uint64_t> stored;
    int asked;
};

class RecordingsWithoutTimeshift : public testing::TestWithParam<Walk> {};

const std::vector<std::uint64_t> listed{1, 2, wide_id};

} // namespace

TEST_P(RecordingsWithoutTimeshift, AreListedUpToTheFirstTimeshift)
{
    const Walk &walk = GetParam();
    ScriptedService service;
    service.script("get_recording_service_id_list", answers("(@at [1, 2, " + wide_id_text + "], 3)"));
    for (const std::uint64_t id : listed) {
        const bool is_recorded = std::find(walk.recording.begin(), walk.recording.end(), id) != walk.recording.end();
        service.script("is_recording", "(uint64 " + std::to_string(id) + ",)", answers(is_recorded ? "(1,)" : "(0,)"));
    }
    ASSERT_EQ(svc_pvr_service_init(), PS_SESSION_READY);
    logged();
    std::vector<std::uint64_t> stored(5, 77);
    int count = -77;
    EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(stored.data(), walk.length, &count), PS_SUCCESS);
    EXPECT_EQ(count, static_cast<int>(walk.stored.size()));
    for (std::size_t i = 0; i < stored.size(); ++i)
        EXPECT_EQ(stored[i], i < walk.stored.size() ? walk.stored[i] : 77);

    const auto requests = service.requests();
    ASSERT_EQ(static_cast<int>(requests.size()), 1 + walk.asked);
    Lines lines{entry("[length:" + std::to_string(walk.length) + "]"), detail(support_line(1)),
                detail("num_of_list : 3 ")};
    for (int i = 0; i < walk.asked; ++i) {
        const std::uint64_t id = listed[static_cast<std::size_t>(i)];
        EXPECT_EQ(requests[static_cast<std::size_t>(i) + 1],
                  request("is_recording", "t", "(uint64 " + std::to_string(id) + ",)"));
        lines.push_back(element(i, id));
        if (std::find(walk.recording.begin(), walk.recording.end(), id) == walk.recording.end())
            lines.push_back(info("[value:" + std::to_string(id) + " is TimeShift]"));
    }
    lines.push_back(plain_info("count:" + std::to_string(count) + " "));
    EXPECT_EQ(logged_lines(), lines);
    EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(nullptr, walk.length, &count), PS_SUCCESS);
    EXPECT_EQ(count, static_cast<int>(walk.stored.size()));
}

INSTANTIATE_TEST_SUITE_P(All, RecordingsWithoutTimeshift,
                         testing::Values(Walk{"AllRecorded", 5, {1, 2, wide_id}, {1, 2, wide_id}, 3},
                                         Walk{"JustEnoughRoom", 3, {1, 2, wide_id}, {1, 2, wide_id}, 3},
                                         // one more is asked about than stored
                                         Walk{"TooLittleRoom", 1, {1, 2, wide_id}, {1}, 2},
                                         Walk{"NoRoom", 0, {1, 2, wide_id}, {}, 1},
                                         Walk{"NegativeRoom", -1, {1, 2, wide_id}, {}, 1},
                                         // what stands behind a timeshift is not examined
                                         Walk{"TimeshiftInTheMiddle", 5, {1, wide_id}, {1}, 2},
                                         Walk{"TimeshiftFirst", 5, {}, {}, 1}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(RecordingsWithoutTimeshift, EndWhereTheServiceCannotBeAsked)
{
    ScriptedService service;
    service.script("get_recording_service_id_list", answers("(@at [1, 2], 2)"));
    service.script("is_recording", fails("org.example.No", "no"));
    std::uint64_t list[2] = {77, 77};
    int count = -77;
    EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(list, 2, &count), PS_SUCCESS);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(list[0], 77U);
    EXPECT_EQ(service.requests().size(), 2U);
}

TEST(RecordingsWithoutTimeshift, LeaveOutputsUntouchedWhenTheListCannotBeHad)
{
    ScriptedService service;
    service.script("get_recording_service_id_list", fails("org.example.No", "no"));
    std::uint64_t list[2] = {77, 77};
    int count = -77;
    EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(list, 2, &count), PS_CALL_METHOD_FAILED);
    EXPECT_EQ(count, -77);
    EXPECT_EQ(list[0], 77U);
    for (const std::string empty : {"(@at [1, 2], 0)", "(@at [1, 2], -1)", "(@at [], 3)"}) {
        service.script("get_recording_service_id_list", answers(empty));
        EXPECT_EQ(svc_pvr_get_recording_no_ts_service_id_list(list, 2, &count), PS_SUCCESS) << empty;
        EXPECT_EQ(count, 0) << empty;
    }
    EXPECT_EQ(list[0], 77U);
}
