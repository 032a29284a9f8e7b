// pvrctl inf set: changes fields of the info file beside a recording. The library returns success also when nothing was
// written, so the file is looked at afterwards.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <pvr_service_api.h>
#include <string>
#include <utility>
#include <vector>

#include "arguments.h"
#include "command.h"
#include "files/older_generations.h"
#include "info_fields.h"
#include "side_files.h"

namespace pvrctl {
namespace {

constexpr std::uint32_t ms_per_second = 1000; ///< older files keep whole seconds

struct InfoSet {
    std::string path;
    std::vector<std::string> texts;
    std::vector<FieldChange> changes;
};

void parse_changes(InfoSet &wanted)
{
    for (const std::string &text : wanted.texts) {
        FieldChange change = parsed_change(text);
        if (std::ranges::find(wanted.changes, change.field, &FieldChange::field) != wanted.changes.end())
            throw CLI::ValidationError(change.field->name, "is given twice");
        wanted.changes.push_back(std::move(change));
    }
}

bool is_kept_by_older(const FieldChange &change)
{
    return change.field->offset == offsetof(pvr_file_info_s, resume_play_pos);
}

/// The record as it shall be. The library hands out a recording that was cut off as finished; the file says something
/// else, and keeps it.
pvr_file_info_s changed_record(pvr_file_info_s record, const InfoFile &file, const std::vector<FieldChange> &changes)
{
    if (!file.is_older()) {
        const pvr_file_info_s kept = file.record();
        record.record_complete = kept.record_complete;
        record.incomplete_reason = kept.incomplete_reason;
    }
    for (const FieldChange &change : changes)
        change.apply(record);
    return record;
}

/// What a file says of the fields that can be set in its generation.
pvr_file_info_s settable_record(const InfoFile &file)
{
    if (!file.is_older())
        return file.record();
    pvr_file_info_s record{};
    record.resume_play_pos = static_cast<std::uint32_t>(
        file.number(pvr::older_resume_position, sizeof record.resume_play_pos) * ms_per_second);
    return record;
}

void set_fields(Service &service, Output &output, const InfoSet &wanted)
{
    const RecordingPath path(wanted.path);
    const InfoFile before = read_info_file(path.beside("inf"));
    check_size(before);
    const auto refused = std::ranges::find_if_not(wanted.changes, is_kept_by_older);
    if (before.is_older() && refused != wanted.changes.end())
        throw Failure(ExitCode::usage, std::string(refused->field->name) + " cannot be set in '" + before.path +
                                           "': it is of the older generation " + before.generation() +
                                           ", in which only resume_play_pos can be set");
    service.open();
    service.check_running();

    pvr_file_info_s record = changed_record(handed_out_record(service, path), before, wanted.changes);
    const std::uint32_t whole_seconds = record.resume_play_pos / ms_per_second * ms_per_second;
    if (svc_pvr_set_pvr_file_info_ex(path.c_str(), &record) != PS_SUCCESS)
        throw Failure(ExitCode::failed, '\'' + before.path + "' cannot be written. PVR_LOG=stderr tells why");
    const InfoFile after = read_info_file(before.path);
    check_size(after);
    const pvr_file_info_s now = settable_record(after);
    const bool is_set =
        before.is_older()
            ? now.resume_play_pos == whole_seconds
            : std::ranges::all_of(wanted.changes, [&](const FieldChange &change) { return change.is_in(now); });
    if (!is_set)
        throw Failure(ExitCode::failed, '\'' + before.path +
                                            "' was not changed: its folder takes no files, or another program has "
                                            "written it since. PVR_LOG=stderr tells more");

    Json fields = Json::object();
    std::vector<Row> rows{{"file", after.path}};
    for (const FieldChange &change : wanted.changes) {
        fields[change.field->name] = field_json(now, *change.field);
        rows.push_back({change.field->name, field_for_people(now, *change.field)});
    }
    output.show({{"file", after.path}, {"generation", after.generation()}, {"record", std::move(fields)}}, rows);
}

} // namespace

void add_inf_set(Commands &commands, CLI::App &object)
{
    CLI::App &verb = add_command(
        object, "set",
        "Change fields of the info file. The Recording service has to run, since it is told. Numbers are decimal or "
        "begin with 0x, lists have commas between, bytes are hexadecimal digits. In a file of an older generation only "
        "resume_play_pos can be set, and becomes whole seconds.",
        {"inf set first.srf resume_play_pos=0", "inf set first.srf programe_title=News rating=0x10"});
    const auto wanted = std::make_shared<InfoSet>();
    completes(verb.add_option("FILE", wanted->path, "the recording or its info file: .srf, .inf or .tmp")
                  ->required()
                  ->type_name(""),
              Completes::recording);
    completes(
        verb.add_option("CHANGE", wanted->texts, "FIELD=VALUE, with the names that 'inf show --all' has; not version")
            ->required()
            ->type_name(""),
        Completes::field);
    choose(
        commands, verb, [wanted](Service &service, Output &output) { set_fields(service, output, *wanted); },
        [wanted] { parse_changes(*wanted); });
}

} // namespace pvrctl
