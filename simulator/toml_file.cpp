#include "toml_file.h"

#include "client/owned.h"
#include "log.h"
#include "toml_library.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <gio/gio.h>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

namespace simulator {

struct TomlDocument {
    std::string path;
    toml::table root{};
    std::multimap<toml::source_index, std::string> mistakes{}; ///< by their line
    std::map<const toml::table *, std::vector<std::string>> asked{};

    void complain(const toml::source_region &place, const std::string &text)
    {
        const toml::source_index line = std::max(place.begin.line, toml::source_index{1});
        mistakes.emplace(line, path + ":" + std::to_string(line) + ": " + text);
    }
};

namespace {

std::string in_quotes(std::string_view text) { return "'" + shown(text) + "'"; }

std::string decimal(double number)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.10g", number);
    return text.data();
}

/// What is there, in words.
std::string shown_node(const toml::node &node)
{
    if (const auto *text = node.as_string())
        return in_quotes(text->get());
    if (const auto *number = node.as_integer())
        return std::to_string(number->get());
    if (const auto *number = node.as_floating_point())
        return decimal(number->get());
    if (const auto *truth = node.as_boolean())
        return truth->get() ? "true" : "false";
    if (node.is_table())
        return "a table";
    return node.is_array() ? "a list" : "a date or a time";
}

bool is_plain_text(std::string_view text)
{
    return !text.empty() && std::none_of(text.begin(), text.end(), [](char character) {
        return static_cast<unsigned char>(character) < ' ' || character == '\x7f';
    });
}

std::string listed(std::span<const std::string> words)
{
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i)
        text += (i == 0 ? "" : i + 1 == words.size() ? " or " : ", ") + words[i];
    return text;
}

std::int64_t seconds_since_1970(const toml::date_time &moment)
{
    using namespace std::chrono;
    const sys_days day = year(moment.date.year) / month(moment.date.month) / std::chrono::day(moment.date.day);
    const auto time = hours(moment.time.hour) + minutes(moment.time.minute) + seconds(moment.time.second);
    return duration_cast<seconds>(day.time_since_epoch() + time - minutes(moment.offset->minutes)).count();
}

const toml::table &library_table(const void *table) { return *static_cast<const toml::table *>(table); }

/// Notes that the key was asked for. Null when it is not there.
const toml::node *asked_for(TomlDocument &document, const void *table, const std::string &key)
{
    const toml::table &known = library_table(table);
    std::vector<std::string> &asked = document.asked[&known];
    if (std::find(asked.begin(), asked.end(), key) == asked.end())
        asked.push_back(key);
    return known.get(key);
}

} // namespace

// ---- What is asked of a table.

bool TomlTable::has(const std::string &key) const { return asked_for(*document_, table_, key) != nullptr; }

std::vector<std::string> TomlTable::keys() const
{
    std::vector<std::string> keys;
    for (const auto &[key, node] : library_table(table_))
        keys.emplace_back(key.str());
    return keys;
}

void TomlTable::complain(const std::string &key, const std::string &text) const
{
    const toml::table &table = library_table(table_);
    const toml::node *node = table.get(key);
    document_->complain(node != nullptr ? node->source() : table.source(), text);
}

void TomlTable::refuse(const std::string &key, const std::string &expected) const
{
    const toml::node *node = library_table(table_).get(key);
    complain(key, shown(key) + " is " + (node != nullptr ? shown_node(*node) : "missing") + ", expected " + expected);
}

void TomlTable::require(const std::string &key, const std::string &what) const
{
    if (!has(key))
        complain("", "there is no " + key + ", expected " + what);
}

std::optional<std::int64_t> TomlTable::integer(const std::string &key, std::int64_t least, std::int64_t most) const
{
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return std::nullopt;
    const auto *number = node->as_integer();
    if (number != nullptr && number->get() >= least && number->get() <= most)
        return number->get();
    refuse(key, "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    return std::nullopt;
}

std::optional<double> TomlTable::number(const std::string &key, double least, double most) const
{
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return std::nullopt;
    const std::optional<double> number = node->is_number() ? node->value<double>() : std::nullopt;
    if (number && *number >= least && *number <= most) // what is no number is neither
        return number;
    refuse(key, "a number from " + decimal(least) + " to " + decimal(most));
    return std::nullopt;
}

std::optional<bool> TomlTable::boolean(const std::string &key) const
{
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return std::nullopt;
    if (const auto *truth = node->as_boolean())
        return truth->get();
    refuse(key, "true or false");
    return std::nullopt;
}

std::optional<std::string> TomlTable::text(const std::string &key) const
{
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return std::nullopt;
    if (const auto *text = node->as_string(); text != nullptr && is_plain_text(text->get()))
        return text->get();
    refuse(key, "a text, not empty and without control characters");
    return std::nullopt;
}

std::optional<std::vector<std::string>> TomlTable::texts(const std::string &key) const
{
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return std::nullopt;
    const toml::array *array = node->as_array();
    if (array == nullptr) {
        refuse(key, "a list of texts");
        return std::nullopt;
    }
    std::vector<std::string> texts;
    for (const toml::node &element : *array)
        if (const auto *text = element.as_string(); text != nullptr && is_plain_text(text->get()))
            texts.push_back(text->get());
        else
            document_->complain(element.source(), key + " has " + shown_node(element) +
                                                      ", expected texts, not empty and without control characters");
    return texts;
}

std::optional<std::size_t> TomlTable::word(const std::string &key, std::span<const char *const> words) const
{
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return std::nullopt;
    const auto *text = node->as_string();
    for (std::size_t i = 0; i < words.size(); ++i)
        if (text != nullptr && text->get() == words[i])
            return i;
    refuse(key, listed(std::vector<std::string>(words.begin(), words.end())));
    return std::nullopt;
}

std::optional<std::uint64_t> TomlTable::service_id(const std::string &key) const
{
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return std::nullopt;
    if (const auto *number = node->as_integer(); number != nullptr && number->get() >= 0)
        return static_cast<std::uint64_t>(number->get());
    if (const auto *text = node->as_string()) {
        std::uint64_t number = 0;
        const char *behind = text->get().data() + text->get().size();
        const auto [end, error] = std::from_chars(text->get().data(), behind, number);
        if (error == std::errc() && end == behind)
            return number;
    }
    refuse(key, "a whole number from 0, in quotes from 9223372036854775808 on");
    return std::nullopt;
}

std::optional<std::int64_t> TomlTable::moment(const std::string &key) const
{
    constexpr int first_year = 1970;
    constexpr int last_year = 2100;
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return std::nullopt;
    if (const auto *moment = node->as_date_time()) {
        const toml::date_time &value = moment->get();
        if (value.offset && value.date.year > first_year && value.date.year < last_year)
            return seconds_since_1970(value);
    }
    refuse(key, "a date and time such as 2024-03-01T20:15:00Z, from 1971 to 2099");
    return std::nullopt;
}

std::optional<TomlTable> TomlTable::table(const std::string &key) const
{
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return std::nullopt;
    if (const toml::table *table = node->as_table())
        return TomlTable(document_, table);
    refuse(key, "a table, [" + key + "]");
    return std::nullopt;
}

std::vector<TomlTable> TomlTable::tables(const std::string &key) const
{
    const toml::node *node = asked_for(*document_, table_, key);
    if (node == nullptr)
        return {};
    const toml::array *array = node->as_array();
    const bool are_tables =
        array != nullptr &&
        std::all_of(array->begin(), array->end(), [](const toml::node &element) { return element.is_table(); });
    if (!are_tables || array->empty()) {
        refuse(key, "tables, each [[" + key + "]]");
        return {};
    }
    std::vector<TomlTable> tables;
    for (const toml::node &element : *array)
        tables.push_back(TomlTable(document_, element.as_table()));
    return tables;
}

// ---- The file.

TomlFile::TomlFile(const std::string &path) : path_(path), document_(std::make_shared<TomlDocument>())
{
    document_->path = path;
    char *content = nullptr;
    gsize size = 0;
    pvr::OwnedError error;
    if (g_file_get_contents(path.c_str(), &content, &size, error.slot()) == FALSE)
        throw std::invalid_argument(error->message);
    const pvr::OwnedText owned(content);
    // The library decodes ahead of what it reads, and so tells too early a line.
    if (const char *end = nullptr; g_utf8_validate(content, static_cast<gssize>(size), &end) == FALSE) {
        toml::source_region place;
        place.begin.line = static_cast<toml::source_index>(1 + std::count<const char *>(content, end, '\n'));
        document_->complain(place, "there is a byte that is no text, expected UTF-8");
        finish();
    }
    try {
        document_->root = toml::parse(std::string_view(content, size));
    } catch (const toml::parse_error &mistake) {
        document_->complain(mistake.source(), shown(mistake.description()));
        finish();
    }
}

TomlTable TomlFile::root() const { return {document_, &document_->root}; }

std::string TomlFile::resolved(const std::string &path) const
{
    return std::filesystem::path(path_).parent_path() / path;
}

void TomlFile::finish() const
{
    for (const auto &[table, asked] : document_->asked)
        for (const auto &[key, node] : *table)
            if (std::find(asked.begin(), asked.end(), key.str()) == asked.end())
                document_->complain(key.source(), in_quotes(key.str()) + " is no key here, expected " + listed(asked));
    std::string text;
    for (const auto &[line, mistake] : document_->mistakes)
        text += (text.empty() ? "" : "\n") + mistake;
    if (!text.empty())
        throw WrongFile(text);
}

} // namespace simulator
