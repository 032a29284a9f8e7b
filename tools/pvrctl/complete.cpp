// pvrctl complete: what the shells' completions ask. Walks the grammar along the words of a line, and prints what may
// stand in place of the last one, a line each: the word, a tab, what it is. ":files" and ":folders" have the shell add
// its own.
#include <algorithm>
#include <csignal>
#include <cstddef>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <sys/time.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "command.h"
#include "completion.h"

namespace pvrctl {
namespace {

/// Nobody waits longer for a word: a bus or a service that is silent ends the program, without a word of its own.
void end_after_a_moment()
{
    constexpr timeval moment{2, 0};
    std::signal(SIGALRM, [](int) { _exit(0); });
    const itimerval timer{{0, 0}, moment};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

bool is_option_word(std::string_view word) { return word.size() > 1 && word.front() == '-' && word != "--"; }

bool takes_value(const CLI::Option &option) { return option.get_items_expected_max() > 0; }

/// How far a line has come.
class Place {
public:
    explicit Place(const CLI::App &root) : root_(root), command_(&root) {}

    void pass(const std::string &word)
    {
        if (std::exchange(awaiting_, nullptr) != nullptr)
            return;
        if (!is_behind_options_ && word == "--") {
            is_behind_options_ = true;
        } else if (!is_behind_options_ && is_option_word(word)) {
            const CLI::Option *option = option_named(word.substr(0, word.find('=')));
            given_.insert(option);
            if (option != nullptr && takes_value(*option) && word.find('=') == std::string::npos)
                awaiting_ = option;
        } else if (const CLI::App *next = subcommand_named(word); next != nullptr && !is_behind_options_) {
            command_ = next;
            arguments_passed_ = 0;
        } else {
            is_lost_ = is_lost_ || argument() == nullptr;
            ++arguments_passed_;
        }
    }

    const CLI::App &command() const { return *command_; }
    /// Behind a word that makes no sense, nothing does.
    bool is_lost() const { return is_lost_; }
    bool is_behind_options() const { return is_behind_options_; }
    /// The option whose value the next word is, or null.
    const CLI::Option *awaiting() const { return awaiting_; }

    const CLI::Option *option_named(const std::string &name) const
    {
        const CLI::Option *own = command_->get_option_no_throw(name);
        return own != nullptr ? own : root_.get_option_no_throw(name);
    }

    /// The argument that the next word is, or null. The last one may be given often.
    const CLI::Option *argument() const
    {
        const auto all = command_->get_options([](const CLI::Option *option) { return option->get_positional(); });
        if (arguments_passed_ < all.size())
            return all[arguments_passed_];
        return !all.empty() && all.back()->get_items_expected_max() > 1 ? all.back() : nullptr;
    }

    /// Those that may still come, the common ones behind the command's own.
    std::vector<const CLI::Option *> options() const
    {
        const auto may_come = [this](const CLI::Option *option) {
            const auto is_given = [this](const CLI::Option *other) { return given_.contains(other); };
            return !option->get_lnames().empty() && !option->get_group().empty() &&
                   (!is_given(option) || option->get_items_expected_max() > 1) &&
                   std::ranges::none_of(option->get_excludes(), is_given);
        };
        std::vector<const CLI::Option *> all = command_->get_options(may_come);
        if (command_ == &root_)
            return all;
        for (const CLI::Option *option : root_.get_options(may_come))
            if (option->get_group() == common_options)
                all.push_back(option);
        return all;
    }

private:
    const CLI::App *subcommand_named(const std::string &word) const
    {
        const auto found =
            command_->get_subcommands([&word](const CLI::App *command) { return command->get_name() == word; });
        return found.empty() ? nullptr : found.front();
    }

    const CLI::App &root_;
    const CLI::App *command_;
    const CLI::Option *awaiting_ = nullptr;
    std::set<const CLI::Option *> given_;
    std::size_t arguments_passed_ = 0;
    bool is_behind_options_ = false;
    bool is_lost_ = false;
};

/// Prints what begins as the last word does.
class Words {
public:
    Words(const Output &output, std::string begun) : output_(output), begun_(std::move(begun)) {}

    void offer(const std::string &text, const std::string &description)
    {
        if (text.starts_with(begun_) && text.find('\n') == std::string::npos)
            lines_ += text + '\t' + printable(description.substr(0, description.find(". "))) + '\n';
    }
    void leave_to_shell(const char *what) { lines_ += std::string(":") + what + '\n'; }

    /// What follows may take too long.
    void flush()
    {
        if (!lines_.empty())
            output_.print(std::exchange(lines_, ""));
    }

private:
    const Output &output_;
    std::string begun_;
    std::string lines_;
};

void offer_values(Service &service, Words &words, const CLI::Option &argument, const std::string &before)
{
    const Completes what = what_completes(&argument);
    if (what == Completes::folder)
        words.leave_to_shell("folders");
    if (what == Completes::file || what == Completes::recording)
        words.leave_to_shell("files");
    words.flush();
    try {
        for (const Candidate &candidate : candidates(service, what))
            words.offer(before + candidate.text, candidate.description);
    } catch (const Failure &) {
        return; // whoever completes a word has not asked whether there is a service
    }
}

void offer_options(Words &words, const Place &place)
{
    for (const CLI::Option *option : place.options())
        words.offer("--" + option->get_lnames().front(), option->get_description());
}

void offer_commands(Words &words, const CLI::App &command)
{
    for (const CLI::App *known : command.get_subcommands([](const CLI::App *one) { return !one->get_group().empty(); }))
        words.offer(known->get_name(), known->get_description());
}

void complete(const CLI::App &root, Service &service, const Output &output, std::vector<std::string> line)
{
    end_after_a_moment();
    if (line.empty())
        line.emplace_back();
    Place place(root);
    for (const std::string &word : std::span(line).first(line.size() - 1))
        place.pass(word);
    if (place.is_lost())
        return;

    const std::string &last = line.back();
    Words words(output, last);
    const std::size_t equals = last.find('=');
    const bool is_option = is_option_word(last) && !place.is_behind_options();
    if (const CLI::Option *option = place.awaiting()) {
        offer_values(service, words, *option, "");
    } else if (is_option && equals != std::string::npos) {
        if (const CLI::Option *given = place.option_named(last.substr(0, equals));
            given != nullptr && takes_value(*given))
            offer_values(service, words, *given, last.substr(0, equals + 1));
    } else if (!place.is_behind_options() && last.starts_with("-")) {
        offer_options(words, place);
    } else {
        if (!place.is_behind_options())
            offer_commands(words, place.command());
        if (const CLI::Option *argument = place.argument())
            offer_values(service, words, *argument, "");
    }
    words.flush();
}

} // namespace

void add_complete(Commands &commands)
{
    CLI::App &verb =
        add_command(commands.root, "complete",
                    "Tell what may stand in place of the last of some words, for a shell that completes it",
                    {"complete -- play st"});
    verb.group(""); // for shells alone: neither listed nor completed
    const auto line = std::make_shared<std::vector<std::string>>();
    verb.add_option("WORD", *line, "the words behind 'pvrctl', the last one as far as it is written")->type_name("");
    choose(commands, verb,
           [&root = commands.root, line](Service &service, Output &output) { complete(root, service, output, *line); });
}

} // namespace pvrctl
