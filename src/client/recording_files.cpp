// Files on the storage devices: recordings, their info files and folders.
#include "client/call.h"
#include "files/paths.h"

#include <cinttypes>

using namespace pvr;

int svc_pvr_mkdir(const char *path, int mode) noexcept
{
    Call call(ENTRY("[path:%s][mode:%d]\n", path, mode));
    auto answer = call.remote(wire::mkdir, path, mode, service_result);
    return answer.sign_rule();
}

int svc_pvr_delete_record_file(const char *file_path, int *ret) noexcept
{
    Call call(ENTRY("[file_path:%s]\n", file_path));
    int outcome = 0;
    auto answer = call.remote(wire::delete_record_file, file_path, &outcome);
    if (answer) {
        write_out(ret, outcome);
        INFO(" [ret:%d]\n", outcome);
    }
    return answer.transport_rule();
}

int svc_pvr_delete_segment_file(std::uint64_t service_id) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    auto answer = call.remote(wire::delete_segment_record, service_id, service_result);
    return answer.transport_rule();
}

int svc_pvr_remove_inf(const char *file_path, int mode) noexcept
{
    Call call(ENTRY("[file_path:%s][mode:%d]\n", file_path, mode));
    if (call && !_is_valid_pvr_srf_inf_file(file_path))
        return call.refused(FAILURE(" file_path[%s] is invalid pvr inf file\n", file_path));

    auto answer = call.remote(wire::remove_inf, file_path, mode, service_result);
    if (answer)
        INFO(" The inf file removed success!\n");
    return answer.transport_rule();
}

int svc_pvr_is_recording_file(const char *file_path, int *result) noexcept
{
    Call call(ENTRY("[file_path:%s]\n", file_path));
    int is_recording = 0;
    auto answer = call.remote(wire::is_recording_file, file_path, &is_recording);
    if (answer) {
        write_out(result, is_recording);
        INFO(" Is Recording file [file:%s result:%d]\n", file_path, is_recording);
    }
    return answer.transport_rule();
}

int svc_pvr_get_system_record_num(int *num) noexcept
{
    Call call(ENTRY("\n"));
    int count = 0;
    auto answer = call.remote(wire::get_system_record_num, &count);
    if (answer)
        write_out(num, count);
    return answer.transport_rule();
}

int svc_pvr_check_parent_lock(const char *file_path, int *result) noexcept
{
    Call call(ENTRY("[file_path:%s]\n", file_path));
    int is_locked = 0;
    auto answer = call.remote(wire::check_parent_lock, file_path, &is_locked);
    if (answer)
        write_out(result, is_locked);
    return answer.transport_rule();
}

int svc_pvr_make_thumbnail_file(const char *uri, int userdata, int width, int height) noexcept
{
    Call call(ENTRY("[uri:%s][userdata:%d][width:%d][height:%d]\n", uri, userdata, width, height));
    // the wire takes the height before the width
    auto answer = call.remote(wire::make_thumbnail_file, uri, userdata, height, width, service_result);
    return answer.transport_rule();
}

// ---- where they are

int svc_pvr_get_inf_uri(int handle, char *uri) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    OwnedText text;
    auto answer = call.remote(wire::get_inf_uri, handle, &text);
    if (answer) {
        copy_text(uri, text);
        INFO(" svc_pvr_get_inf_uri done\n");
    }
    return answer.transport_rule();
}

int svc_pvr_get_recording_uri(int handle, char *uri) noexcept
{
    Call call(ENTRY("[handle:%d]\n", handle));
    OwnedText text;
    auto answer = call.remote(wire::get_recording_uri, handle, &text);
    if (answer) {
        copy_text(uri, text);
        INFO(" Done\n");
    }
    return answer.transport_rule();
}

int svc_pvr_get_recording_uri_by_service_id(std::uint64_t service_id, char *uri) noexcept
{
    Call call(ENTRY("[service_id:%" PRIu64 "]\n", service_id));
    OwnedText text;
    auto answer = call.remote(wire::get_recording_uri_by_service_id, service_id, &text);
    if (answer) {
        copy_text(uri, text);
        INFO(" svc_pvr_get_current_service_id done\n"); // deliberately another call's name
    }
    return answer.transport_rule();
}

int svc_pvr_get_current_recording_uri(char *uri) noexcept
{
    Call call(ENTRY("\n"));
    OwnedText text;
    auto answer = call.remote(wire::get_current_recording_uri, &text);
    if (answer) {
        copy_long_text(uri, text);
        INFO(" get recording uri[%s]\n", text.get());
    }
    return answer.transport_rule();
}
