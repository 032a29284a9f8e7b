// pvrctl handle: what the service issues handles for.
#include <memory>
#include <pvr_service_api.h>
#include <string>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "issued_handle.h"
#include "listed.h"

namespace pvrctl {
namespace {

void list_handles(Service &service, Output &output)
{
    service.open();
    const std::vector<int> handles = listed(service, svc_pvr_get_handle_for_record);
    std::vector<Row> rows;
    rows.reserve(handles.size());
    for (const int handle : handles)
        rows.push_back({"handle", std::to_string(handle)});
    if (rows.empty())
        rows.push_back({"handles", "none: no recording is running"});
    output.show({{"handles", handles}, {"count", handles.size()}}, rows);
}

void get_handle(Service &service, Output &output)
{
    service.open();
    IssuedHandle handle(service, svc_pvr_get_handle);
    output.show({{"handle", handle.number()}}, {{"handle", std::to_string(handle.number())}});
    handle.keep();
}

void release_handle(Service &service, Output &output, int handle)
{
    service.open();
    service.check(svc_pvr_release_handle(handle));
    output.show({{"handle", handle}, {"released", true}}, {{"handle", std::to_string(handle) + ", given back"}});
}

} // namespace

void add_handle(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "handle", "Handles of recordings and playbacks",
                                   {"handle list", "handle release 3"});
    object.require_subcommand(1);

    CLI::App &list = add_command(object, "list", "List the handles of the recordings and timeshifts that run",
                                 {"handle list", "handle list --json"});
    choose(commands, list, list_handles);

    CLI::App &get = add_command(object, "get", "Have the service issue a handle", {"handle get"});
    choose(commands, get, get_handle);

    const auto handle = std::make_shared<int>();
    CLI::App &release = add_command(object, "release",
                                    "Give a handle back. The development service stops its playback first. "
                                    "Whether the service knew the handle cannot be told.",
                                    {"handle release 3"});
    completes(add_handle_argument(release, *handle), Completes::handle);
    choose(commands, release, [handle](Service &service, Output &output) { release_handle(service, output, *handle); });
}

} // namespace pvrctl
