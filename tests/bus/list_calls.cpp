// The calls that fill a list: how much they store for every room that a caller may have.
#include "bus/row_shapes.h"
#include "pvr_service_api.h"

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

/// What an answer with these elements and this count must become in a list with room for length.
template <typename T>
Outcome outcome(const ListCall<T> &list, int length, const std::vector<T> &sent, int count)
{
    std::ostringstream answer;
    answer << "(@" << list.array << " [";
    for (std::size_t i = 0; i < sent.size(); ++i)
        answer << (i == 0 ? "" : ", ") << sent[i];
    answer << "], " << count << (list.beside == Beside::result ? ", -403)" : ")");

    std::ostringstream outputs;
    Lines lines;
    if (list.is_count_logged_first)
        lines.push_back(detail("num_of_list : " + std::to_string(count) + " "));
    outputs << count << ":";
    for (std::size_t i = 0; count > 0 && i < sent.size(); ++i) {
        lines.push_back(element_line(static_cast<int>(i), sent[i])); // logged also when there is no room left
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

/// Rows with an answer that is long, and room for some of it or for all.
template <typename T>
std::vector<RemoteCall> long_rows(const ListCall<T> &list)
{
    std::vector<T> many(10'000);
    std::iota(many.begin(), many.end(), T{1});
    std::vector<RemoteCall> of_either_room;
    for (const int length : {3, 10'000}) {
        RemoteCall call = row(list, length);
        call.outcomes = {outcome(list, length, many, 10'000)};
        of_either_room.push_back(std::move(call));
    }
    return of_either_room;
}

} // namespace

std::vector<RemoteCall> list_calls()
{
    return joined({rows(handles), rows(devices), rows(recording_devices), rows(recordings)});
}

std::vector<RemoteCall> long_list_calls()
{
    return joined({long_rows(handles), long_rows(devices), long_rows(recording_devices), long_rows(recordings)});
}
