// pvrctl file: files and folders on the storage devices, as the service handles them.
#include <array>
#include <cstdio>
#include <memory>
#include <pvr_service_api.h>
#include <string>

#include "arguments.h"
#include "command.h"
#include "states.h"

namespace pvrctl {
namespace {

struct NewFolder {
    std::string path;
    int permissions = 0755;
};

void delete_file(Service &service, Output &output, const std::string &file)
{
    const std::string uri = existing_file(file);
    service.open();
    int result = 0;
    service.check(svc_pvr_delete_record_file(uri.c_str(), &result));
    if (result != 0)
        throw Failure(ExitCode::refused,
                      "the service did not delete " + uri + "; it answered " + std::to_string(result));
    output.show({{"uri", uri}, {"deleted", true}}, {{"deleted", uri}});
}

void ask_whether_recording(Service &service, Output &output, const std::string &file)
{
    const std::string uri = existing_file(file);
    service.open();
    int answer = 0;
    service.check(svc_pvr_is_recording_file(uri.c_str(), &answer));
    output.show({{"uri", uri}, {"recording", answer_json(answer)}},
                {{"file", uri}, {"being recorded", answer_text(answer)}});
}

void make_folder(Service &service, Output &output, const NewFolder &folder)
{
    std::string path = absolute_path(folder.path);
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    service.open();
    const int result = svc_pvr_mkdir(path.c_str(), folder.permissions);
    service.check_delivered(result);
    if (result != PS_SUCCESS)
        throw Failure(ExitCode::refused, "the service did not make " + path);
    std::array<char, 16> octal{};
    std::snprintf(octal.data(), octal.size(), "%04o", static_cast<unsigned>(folder.permissions));
    output.show({{"path", path}, {"mode", octal.data()}, {"made", true}}, {{"made", path}, {"mode", octal.data()}});
}

struct FileVerb {
    const char *name;
    const char *description;
    const char *example;
    const char *argument;
    void (*action)(Service &, Output &, const std::string &file);
};

constexpr std::array file_verbs{
    FileVerb{"delete", "Delete a recording and the files beside it", "file delete first.srf", "the recording",
             delete_file},
    FileVerb{"is-recording", "Tell whether a file is being recorded to", "file is-recording first.srf", "the file",
             ask_whether_recording},
};

} // namespace

void add_file(Commands &commands)
{
    CLI::App &object = add_command(commands.root, "file", "Files and folders on the storage devices",
                                   {"file delete first.srf", "file is-recording first.srf"});
    object.require_subcommand(1);
    for (const FileVerb &known : file_verbs) {
        CLI::App &verb = add_command(object, known.name, known.description, {known.example});
        const auto file = std::make_shared<std::string>();
        completes(verb.add_option("FILE", *file, known.argument)->required()->type_name(""), Completes::recording);
        choose(commands, verb,
               [file, &known](Service &service, Output &output) { known.action(service, output, *file); });
    }

    CLI::App &verb =
        add_command(object, "mkdir", "Make a folder on a device", {"file mkdir films", "file mkdir films --mode 700"});
    const auto folder = std::make_shared<NewFolder>();
    completes(verb.add_option("FOLDER", folder->path, "the folder; all but its last part has to be there")
                  ->required()
                  ->type_name(""),
              Completes::folder);
    add_permissions(verb, "--mode", folder->permissions, "its permissions; without it 755");
    choose(commands, verb, [folder](Service &service, Output &output) { make_folder(service, output, *folder); });
}

} // namespace pvrctl
