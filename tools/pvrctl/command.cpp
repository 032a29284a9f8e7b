#include "command.h"

#include <memory>
#include <utility>

#include "arguments.h"

namespace pvrctl {
namespace {

constexpr std::size_t description_column = 25;

/// "  name   description", the description wrapped in its own column.
std::string entry(const std::string &name, const std::string &description)
{
    std::string head = "  " + name;
    head += head.size() + 2 <= description_column ? std::string(description_column - head.size(), ' ')
                                                  : '\n' + std::string(description_column, ' ');
    const std::size_t line = head.find('\n') == std::string::npos ? 0 : head.find('\n') + 1;
    // Spaces at the head are columns, not places to break.
    return head.substr(0, line) + head.substr(line) +
           wrapped(std::string(description_column, '.') + description, description_column).substr(description_column) +
           '\n';
}

const CLI::App &root_of(const CLI::App &app) { return app.get_parent() == nullptr ? app : root_of(*app.get_parent()); }

class HelpFormatter : public CLI::Formatter {
public:
    std::string make_help(const CLI::App *app, std::string name, CLI::AppFormatMode mode) const override
    {
        return CLI::detail::find_and_replace(Formatter::make_help(app, std::move(name), mode), "\n\n\n", "\n\n");
    }

    std::string make_description(const CLI::App *app) const override
    {
        return wrapped(app->get_description(), 0) + "\n\n";
    }

    /// Goes on behind a command's own options with those that every command takes.
    std::string make_subcommands(const CLI::App *app, CLI::AppFormatMode mode) const override
    {
        std::string text;
        if (app->get_parent() != nullptr)
            text = make_group(common_options, false, root_of(*app).get_options([](const CLI::Option *option) {
                return option->get_group() == common_options;
            }));
        return text + Formatter::make_subcommands(app, mode);
    }

    std::string make_option(const CLI::Option *option, bool is_positional) const override
    {
        return entry(make_option_name(option, is_positional) + (is_positional ? "" : make_option_opts(option)),
                     option->get_description());
    }

    /// A positional that takes many words is no number of them.
    std::string make_option_usage(const CLI::Option *option) const override
    {
        const bool has_many = option->get_expected_min() > 1;
        return has_many ? '[' + make_option_name(option, true) + "...]" : Formatter::make_option_usage(option);
    }

    std::string make_option_opts(const CLI::Option *option) const override
    {
        return option->get_type_size() != 0 ? ' ' + option->get_type_name() : "";
    }

    /// What a command does, without what else its own help says.
    std::string make_subcommand(const CLI::App *command) const override
    {
        const std::string description = command->get_description();
        return entry(command->get_name(), description.substr(0, description.find(". ")));
    }
};

} // namespace

std::shared_ptr<CLI::Formatter> help_formatter()
{
    auto formatter = std::make_shared<HelpFormatter>();
    formatter->label("Positionals", "Arguments");
    formatter->label("SUBCOMMAND", "COMMAND");
    return formatter;
}

std::string help_footer(Examples examples)
{
    std::string text = "Examples:\n";
    for (const char *example : examples)
        text += std::string("  pvrctl ") + example + '\n';
    text += "\nExit codes:\n";
    for (const ExitCodeText &known : exit_codes())
        text += "  " + std::to_string(static_cast<int>(known.code)) + "  " + known.meaning + '\n';
    text.pop_back();
    return text;
}

CLI::App &add_command(CLI::App &parent, const std::string &name, const std::string &description, Examples examples)
{
    CLI::App &command = *parent.add_subcommand(name, description);
    command.group("Commands");
    command.footer(help_footer(examples));
    return command;
}

void choose(Commands &commands, CLI::App &verb, Action action, std::function<void()> check)
{
    verb.callback([&commands, action = std::move(action), check = std::move(check)] {
        if (check)
            check();
        commands.chosen = action;
    });
}

void add_channel_verb(Commands &commands, CLI::App &object, const ChannelVerb &verb)
{
    CLI::App &command = add_command(object, verb.name, verb.description, {verb.example});
    const auto service_id = std::make_shared<std::uint64_t>();
    completes(add_channel_argument(command, *service_id), verb.channel);
    choose(commands, command,
           [service_id, &verb](Service &service, Output &output) { verb.action(service, output, *service_id); });
}

} // namespace pvrctl
