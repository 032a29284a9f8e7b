// Small questions about a recording, answered from the files beside it.
#include "client/byte_order.h"
#include "client/outputs.h"
#include "client/session.h"
#include "client/support.h"
#include "pvr_service_api.h"

#include <cstdint>

using namespace pvr;

int svc_pvr_is_audio_only(const char *file_path, int *is_audio_only) noexcept
{
    if (const int refusal = check_support(ENTRY(" [file_path:%s]\n", file_path)); refusal != PS_SUCCESS)
        return refusal;
    pvr_file_info_s info{};
    const int result = svc_pvr_get_pvr_file_info(file_path, &info);
    const std::uint32_t thumbnail_type = little_endian(info.nThumbnailType);
    INFO(" [ret:%d][info.thumbnail_type:%d]\n", result, static_cast<int>(thumbnail_type));
    if (result != PS_SUCCESS || is_audio_only == nullptr || thumbnail_type > 1)
        return PS_CALL_METHOD_FAILED;
    *is_audio_only = static_cast<int>(thumbnail_type);
    return PS_SUCCESS;
}

int IsFileRecordedLocal(const char *, int *result) noexcept
{
    write_out(result, 0); // deliberately: no file counts as recorded by this product
    return 7;
}

int IsFileRecordedLocalVexan(const char *file_path, int *result) noexcept
{
    return IsFileRecordedLocal(file_path, result);
}

int svc_pvr_is_file_recorded_local(const char *file_path, int *result) noexcept
{
    ENTRY(" [file_path:%s] PROJECT_MODEL[%s]\n", file_path, project_model);
    int is_local = 0;
    const int returned = IsFileRecordedLocal(file_path, &is_local);
    write_out(result, is_local);
    PLAIN_INFO("svc_pvr_is_file_recorded_local return result[%d], retn[%d]\n", is_local, returned);
    return PS_SUCCESS;
}
