// pvrctl share: values that applications leave with the service for one another.
#include <cstdint>
#include <memory>
#include <pvr_service_api.h>
#include <string>

#include "arguments.h"
#include "command.h"

namespace pvrctl {
namespace {

struct SharedValue {
    int type = 0;
    std::int64_t value = 0;
};

void show_value(const Output &output, const SharedValue &shared)
{
    output.show({{"type", shared.type}, {"value", shared.value}},
                {{"type", std::to_string(shared.type)}, {"value", std::to_string(shared.value)}});
}

void get_value(Service &service, Output &output, SharedValue &shared)
{
    service.open();
    const int result = svc_pvr_get_share_data(shared.type, &shared.value);
    service.check_delivered(result);
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::not_found, "the service has no value of type " + std::to_string(shared.type));
    show_value(output, shared);
}

void set_value(Service &service, Output &output, const SharedValue &shared)
{
    service.open();
    const int result = svc_pvr_set_share_data(shared.type, shared.value);
    service.check_delivered(result);
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::refused, "the service did not take the value of type " + std::to_string(shared.type));
    show_value(output, shared);
}

} // namespace

void add_share(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "share", "Values that applications share through the service",
                                   {"share set 7 42", "share get 7"});
    object.require_subcommand(1);
    const auto shared = std::make_shared<SharedValue>();
    const char *type = "which value, a number of the applications' own";

    CLI::App &get = add_command(object, "get", "Tell a value", {"share get 7"});
    add_number(get, "TYPE", shared->type, "", type)->required();
    choose(commands, get, [shared](Service &service, Output &output) { get_value(service, output, *shared); });

    CLI::App &set = add_command(object, "set", "Leave a value for other applications", {"share set 7 42"});
    add_number(set, "TYPE", shared->type, "", type)->required();
    add_number(set, "VALUE", shared->value, "", "a whole number of 64 bits")->required();
    choose(commands, set, [shared](Service &service, Output &output) { set_value(service, output, *shared); });
}

} // namespace pvrctl
