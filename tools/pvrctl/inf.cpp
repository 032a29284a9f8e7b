// pvrctl inf: what the info file beside a recording says.
#include <memory>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "info_fields.h"
#include "side_files.h"

namespace pvrctl {
namespace {

constexpr unsigned cut_off = 5; ///< incomplete_reason of a recording that nobody finished

struct InfoShow {
    std::string path;
    bool is_all = false;
};

/// Whether a recording is whole, by name and in words.
struct Completeness {
    const char *name;
    const char *text;
};

Completeness completeness_of(const pvr_file_info_s &record, bool is_asked)
{
    if (record.record_complete == 0)
        return is_asked ? Completeness{"recording", "being recorded"}
                        : Completeness{"unfinished", "unfinished; whether it is being recorded could not be asked"};
    if (record.record_complete != 1)
        return {"unknown", "unknown: record_complete is neither 0 nor 1"};
    if (record.incomplete_reason == 0)
        return {"complete", "complete"};
    return record.incomplete_reason == cut_off ? Completeness{"cut-off", "cut off"}
                                               : Completeness{"incomplete", "finished, but not whole"};
}

/// The library asks for a timeshift as if it were a recording, and so takes it for cut off while it is under way.
bool is_timeshift_under_way(const RecordingPath &path)
{
    const std::string timeshift = path.recording();
    int answer = 0;
    return timeshift.ends_with(".tmp") && svc_pvr_is_recording_file(timeshift.c_str(), &answer) == PS_SUCCESS &&
           answer == 1;
}

void show_record(Service &service, Output &output, const InfoShow &wanted)
{
    const RecordingPath path(wanted.path);
    const InfoFile file = read_info_file(path.beside("inf"));
    check_size(file);
    // Of a recording that is not finished the library asks the service, and of no other.
    const bool is_unfinished = !file.is_older() && file.record().record_complete == 0;
    if (is_unfinished)
        service.try_bus();
    const pvr_file_info_s record = handed_out_record(service, path);
    Completeness completeness = completeness_of(record, service.has_answered());
    if (is_unfinished && record.record_complete != 0 && is_timeshift_under_way(path))
        completeness = {"recording", "being recorded, although the library takes it for cut off"};

    Json fields = Json::object();
    Json odd_texts = Json::object();
    std::vector<Row> rows{{"file", file.path}, {"generation", file.generation()}, {"state", completeness.text}};
    for (const pvr::RecordField &field : pvr::record_fields) {
        fields[field.name] = field_json(record, field);
        if (field.kind == pvr::FieldKind::text && is_more_than_text(record, field))
            odd_texts[field.name] = field_digits(record, field);
        if (wanted.is_all || has_meaning(field))
            rows.push_back({field.name, field_for_people(record, field)});
    }
    output.show({{"file", file.path},
                 {"size", file.size},
                 {"generation", file.generation()},
                 {"state", completeness.name},
                 {"record", std::move(fields)},
                 {"text_bytes", std::move(odd_texts)}},
                rows);
}

} // namespace

void add_inf(Commands &commands)
{
    CLI::App &object =
        add_command(commands.root, "inf", "The info file beside a recording",
                    {"inf show first.srf", "inf set first.srf resume_play_pos=0", "inf verify first.srf"});
    object.require_subcommand(1);

    CLI::App &show = add_command(object, "show",
                                 "Tell what the info file says. It takes no service: without one a recording that is "
                                 "not finished stays unfinished, since it may be under way.",
                                 {"inf show first.srf", "inf show first.srf --all", "inf show first.srf --json"});
    const auto wanted = std::make_shared<InfoShow>();
    completes(show.add_option("FILE", wanted->path, "the recording or its info file: .srf, .inf or .tmp")
                  ->required()
                  ->type_name(""),
              Completes::recording);
    show.add_flag("--all", wanted->is_all, "show the fields whose meaning is not known, too, as --json does");
    choose(commands, show, [wanted](Service &service, Output &output) { show_record(service, output, *wanted); });

    add_inf_set(commands, object);
    add_inf_verify(commands, object);
}

} // namespace pvrctl
