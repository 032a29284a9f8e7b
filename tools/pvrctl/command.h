// The grammar, OBJECT VERB, and how a verb is tied to what it does.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include "completion.h"
#include "output.h"
#include "service.h"

namespace pvrctl {

using Action = std::function<void(Service &, Output &)>;

/// The command line's root, and the action that was chosen once it has been parsed.
struct Commands {
    CLI::App &root;
    Action chosen;
};

/// Examples for the help: each line the words behind "pvrctl".
using Examples = std::initializer_list<const char *>;

/// Adds an object, or a verb that needs none.
CLI::App &add_command(CLI::App &parent, const std::string &name, const std::string &description, Examples examples);

/// Has the command line choose an action when it names the verb. Checks of several arguments together
/// stand in check, which throws CLI::ValidationError.
void choose(Commands &commands, CLI::App &verb, Action action, std::function<void()> check = {});

/// A verb that takes a channel and nothing else; it has to stay for as long as the command line.
struct ChannelVerb {
    const char *name;
    const char *description;
    const char *example;
    void (*action)(Service &, Output &, std::uint64_t service_id);
    Completes channel = Completes::channel; ///< which channels make sense
};
void add_channel_verb(Commands &commands, CLI::App &object, const ChannelVerb &verb);

/// The group of the options that every command takes; they are the root's.
inline constexpr char common_options[] = "Options of every command";

/// Help that fits 80 columns.
std::shared_ptr<CLI::Formatter> help_formatter();

/// What is below the options in every help: examples and exit codes.
std::string help_footer(Examples examples);

// Verbs that have a file of their own.
void add_record_start(Commands &commands, CLI::App &object);
void add_inf_set(Commands &commands, CLI::App &object);
void add_inf_verify(Commands &commands, CLI::App &object);
void add_sim_calls(Commands &commands, CLI::App &object);
void add_sim_fault(Commands &commands, CLI::App &object);

// One function per object.
void add_play(Commands &commands);
void add_record(Commands &commands);
void add_timeshift(Commands &commands);
void add_handle(Commands &commands);
void add_device(Commands &commands);
void add_channel(Commands &commands);
void add_share(Commands &commands);
void add_file(Commands &commands);
void add_inf(Commands &commands);
void add_sas(Commands &commands);
void add_thumb(Commands &commands);
void add_rights(Commands &commands);
void add_error_text(Commands &commands);
void add_status(Commands &commands);
void add_monitor(Commands &commands);
void add_doctor(Commands &commands);
void add_complete(Commands &commands);
void add_sim(Commands &commands);
void add_call(Commands &commands);
void add_wait(Commands &commands);

} // namespace pvrctl
