#include "bus/row_shapes.h"

#include <gtest/gtest.h>
#include <utility>

using namespace support;
using Result = RemoteCall::Result;

namespace {

constexpr int untouched = -77;

struct Judged {
    int result;
    int returned;
};

/// Answers that tell a rule from the others, and what it makes of them.
std::vector<Judged> judged(Rule rule)
{
    switch (rule) {
    case Rule::transport:
        return {{1, 0}, {0, 0}, {-2, 0}, {403, 0}};
    case Rule::one_is_success:
        return {{1, 0}, {0, -2}, {-2, -2}, {2, -2}};
    case Rule::zero:
        return {{0, 0}, {1, -2}, {-2, -2}, {403, -2}};
    case Rule::sign:
        return {{0, 0}, {1, 0}, {403, 0}, {-1, -2}, {-2147483647 - 1, -2}};
    case Rule::pass_through:
        return {{1, 1}, {0, 0}, {-5, -5}, {403, 403}};
    }
    return {};
}

constexpr int telling_numbers[] = {1, 0, -1, 2147483647};

/// The answer that carries value, as GVariant text. The result beside it is one that a rule of results would refuse.
std::string carrying(const std::string &value, Beside beside, int result = -403)
{
    return "(" + value + "," + (beside == Beside::result ? " " + std::to_string(result) : "") + ")";
}

Result published(Beside beside) { return beside == Beside::result ? Result::is_published : Result::is_the_answer; }

} // namespace

Lines filled_in(const Lines &lines, const std::string &value)
{
    Lines filled = lines;
    for (std::string &line : filled)
        if (const auto at = line.rfind('%'); at != std::string::npos)
            line.replace(at, 1, value);
    return filled;
}

RemoteCall control(const std::string &name, std::function<int()> call, const std::string &entry_text, Request request,
                   Rule rule, const Lines &lines)
{
    std::vector<Outcome> outcomes;
    for (const auto [result, returned] : judged(rule)) {
        const std::string number = std::to_string(result);
        Lines logged = filled_in(lines, number);
        if (rule == Rule::one_is_success || rule == Rule::zero)
            logged.push_back(info(" [g_result:" + number + "]"));
        outcomes.push_back({"(" + number + ",)", returned, "", logged});
    }
    return {
        .name = name,
        .call = [call = std::move(call)](std::ostream &) { return call(); },
        .untouched = "",
        .entry = entry(entry_text),
        .is_checked = true,
        .request = std::move(request),
        .result = Result::is_published,
        .outcomes = std::move(outcomes),
        .call_with_null_outputs = {},
    };
}

RemoteCall message(const std::string &name, std::function<int()> call, const std::string &entry_text, Request request,
                   const Lines &lines)
{
    RemoteCall row = control(name, std::move(call), entry_text, std::move(request), Rule::transport, lines);
    row.result = Result::is_the_answer;
    row.outcomes = {{"()", 0, "", lines}};
    return row;
}

RemoteCall number(const std::string &name, std::function<int(int *)> call, const std::string &entry_text,
                  Request request, Beside beside, const Lines &lines)
{
    std::vector<Outcome> outcomes;
    for (const int value : telling_numbers) {
        const std::string number = std::to_string(value);
        outcomes.push_back({carrying(number, beside, value == 0 ? 1 : -403), 0, number, filled_in(lines, number)});
    }
    return {
        .name = name,
        .call =
            [call](std::ostream &outputs) {
                int value = untouched;
                const int returned = call(&value);
                outputs << value;
                return returned;
            },
        .untouched = std::to_string(untouched),
        .entry = entry(entry_text),
        .is_checked = true,
        .request = std::move(request),
        .result = published(beside),
        .outcomes = std::move(outcomes),
        .call_with_null_outputs = [call] { return call(nullptr); },
    };
}

RemoteCall returned_number(const std::string &name, std::function<int()> call, const std::string &entry_text,
                           Request request, const std::string &answer_tail, const Lines &lines)
{
    RemoteCall row = control(name, std::move(call), entry_text, std::move(request));
    row.result = Result::is_the_answer;
    row.outcomes.clear();
    for (const int value : telling_numbers) {
        const std::string number = std::to_string(value);
        row.outcomes.push_back({"(" + number + answer_tail + ")", value, "", filled_in(lines, number)});
    }
    return row;
}

RemoteCall service_id(const std::string &name, std::function<int(std::uint64_t *)> call, Request request)
{
    return {
        .name = name,
        .call =
            [call](std::ostream &outputs) {
                std::uint64_t value = 77;
                const int returned = call(&value);
                outputs << value;
                return returned;
            },
        .untouched = "77",
        .entry = entry(""),
        .is_checked = true,
        .request = std::move(request),
        .result = Result::is_the_answer,
        .outcomes = {{"(uint64 " + wide_id_text + ",)", 0, wide_id_text, {}}, {"(uint64 0,)", 0, "0", {}}},
        .call_with_null_outputs = [call] { return call(nullptr); },
    };
}

RemoteCall text(const std::string &name, std::function<int(char *)> call, const std::string &entry_text,
                Request request, std::size_t size, Beside beside, const Lines &lines)
{
    const std::size_t longest = size - 1;
    std::vector<Outcome> outcomes;
    for (const std::string &sent :
         {std::string("/m/a.srf"), std::string(), std::string("%n%s"), std::string(longest, 'u'),
          std::string(longest + 1, 'u'), std::string(300, 'u'), std::string(100'000, 'u'),
          std::string(longest - 1, 'u') + "ä"}) // a cut may split a character
        outcomes.push_back({carrying("'" + sent + "'", beside), 0, sent.substr(0, longest), filled_in(lines, sent)});
    return {
        .name = name,
        .call =
            [call, size](std::ostream &outputs) {
                std::string buffer(size + 1, '#');
                const int returned = call(buffer.data());
                outputs << text_of(buffer.data(), size);
                EXPECT_EQ(buffer.back(), '#'); // never beyond its size
                return returned;
            },
        .untouched = std::string(size, '#'),
        .entry = entry(entry_text),
        .is_checked = true,
        .request = std::move(request),
        .result = published(beside),
        .outcomes = std::move(outcomes),
        .call_with_null_outputs = [call] { return call(nullptr); },
    };
}
