// Where every byte of the public records lies. They are on disk, on the bus and in programs that were
// built long ago, so this is typed by hand and compiling it is the test.
#include "pvr_records.h"
#include "pvr_rights.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace {

template <typename Record>
constexpr bool is_plain = std::is_trivially_copyable_v<Record> &&std::is_standard_layout_v<Record> &&
                          alignof(Record) == 1;

// clang-format off
#define RECORD(record, size) \
    static_assert(sizeof(record) == (size)); \
    static_assert(is_plain<record>)
#define FIELD(at, record, member, ...) \
    static_assert(offsetof(record, member) == (at)); \
    static_assert(std::is_same_v<decltype(record::member), __VA_ARGS__>)

//     offset  record              member         type
FIELD(      0, device_info,        device_type,   std::int32_t);
FIELD(      4, device_info,        file_format,   std::int32_t);
FIELD(      8, device_info,        device_name,   char[255]);
FIELD(    263, device_info,        product_name,  char[255]);
FIELD(    518, device_info,        mnt_path,      char[255]);
FIELD(    773, device_info,        total_size,    std::int64_t);
FIELD(    781, device_info,        avail_size,    std::int64_t);
RECORD(        device_info,        789);

FIELD(      0, rec_dev_capacity,   available_size, std::int64_t);
FIELD(      8, rec_dev_capacity,   total_size,    std::int64_t);
RECORD(        rec_dev_capacity,   16);

FIELD(      0, pvr_recording_info, low_word,      std::uint32_t);
FIELD(      4, pvr_recording_info, high_word,     std::uint32_t);
FIELD(      8, pvr_recording_info, opaque_8,      std::int32_t);
FIELD(     12, pvr_recording_info, opaque_12,     std::int32_t);
FIELD(     16, pvr_recording_info, opaque_16,     std::int32_t);
RECORD(        pvr_recording_info, 20);

FIELD(      0, pvr_file_info_s,    version,           std::uint16_t);
FIELD(      2, pvr_file_info_s,    channel_name,      char[256]);
FIELD(    258, pvr_file_info_s,    programe_title,    char[256]);
FIELD(    514, pvr_file_info_s,    channel_num,       char[256]);
FIELD(    770, pvr_file_info_s,    reserved_770,      std::int32_t);
FIELD(    774, pvr_file_info_s,    reserved_774,      std::int32_t);
FIELD(    778, pvr_file_info_s,    start_time,        std::uint32_t);
FIELD(    782, pvr_file_info_s,    duration,          std::uint32_t);
FIELD(    786, pvr_file_info_s,    resume_play_pos,   std::uint32_t);
FIELD(    790, pvr_file_info_s,    opaque_790,        std::uint32_t);
FIELD(    794, pvr_file_info_s,    nThumbnailType,    std::uint32_t);
FIELD(    798, pvr_file_info_s,    video_pid,         std::uint32_t);
FIELD(    802, pvr_file_info_s,    PCR_pid,           std::uint32_t);
FIELD(    806, pvr_file_info_s,    audio_pid,         std::uint32_t);
FIELD(    810, pvr_file_info_s,    opaque_810,        std::uint32_t);
FIELD(    814, pvr_file_info_s,    program_num,       std::uint16_t);
FIELD(    816, pvr_file_info_s,    opaque_816,        std::uint16_t);
FIELD(    818, pvr_file_info_s,    major,             std::uint16_t);
FIELD(    820, pvr_file_info_s,    minor,             std::uint16_t);
FIELD(    822, pvr_file_info_s,    opaque_822,        std::uint16_t);
FIELD(    824, pvr_file_info_s,    channel_type,      std::uint16_t);
FIELD(    826, pvr_file_info_s,    opaque_826,        std::uint8_t[256]);
FIELD(   1082, pvr_file_info_s,    opaque_1082,       std::uint32_t[4]);
FIELD(   1098, pvr_file_info_s,    opaque_1098,       std::uint8_t[150]);
FIELD(   1248, pvr_file_info_s,    opaque_1248,       std::uint8_t[4096]);
FIELD(   5344, pvr_file_info_s,    opaque_5344,       std::uint8_t[256]);
FIELD(   5600, pvr_file_info_s,    opaque_5600,       std::uint32_t[4]);
FIELD(   5616, pvr_file_info_s,    flag_HD,           std::uint32_t);
FIELD(   5620, pvr_file_info_s,    flag_TTX,          std::uint32_t);
FIELD(   5624, pvr_file_info_s,    opaque_5624,       std::uint32_t);
FIELD(   5628, pvr_file_info_s,    opaque_5628,       std::uint8_t[510]);
FIELD(   6138, pvr_file_info_s,    opaque_6138,       std::uint32_t);
FIELD(   6142, pvr_file_info_s,    rating,            std::uint16_t);
FIELD(   6144, pvr_file_info_s,    opaque_6144,       std::uint8_t[14]);
FIELD(   6158, pvr_file_info_s,    repeat_type,       std::uint16_t);
FIELD(   6160, pvr_file_info_s,    opaque_6160,       std::uint16_t);
FIELD(   6162, pvr_file_info_s,    video_type,        std::uint32_t);
FIELD(   6166, pvr_file_info_s,    audio_type,        std::uint32_t);
FIELD(   6170, pvr_file_info_s,    opaque_6170,       std::uint32_t[2]);
FIELD(   6178, pvr_file_info_s,    opaque_6178,       std::uint8_t[80]);
FIELD(   6258, pvr_file_info_s,    opaque_6258,       std::uint16_t);
FIELD(   6260, pvr_file_info_s,    content_version,   std::uint8_t);
FIELD(   6261, pvr_file_info_s,    opaque_6261,       std::uint8_t[256]);
FIELD(   6517, pvr_file_info_s,    opaque_6517,       std::uint32_t[3]);
FIELD(   6529, pvr_file_info_s,    opaque_6529,       std::uint16_t);
FIELD(   6531, pvr_file_info_s,    opaque_6531,       std::uint8_t[4096]);
FIELD(  10627, pvr_file_info_s,    record_complete,   std::uint16_t);
FIELD(  10629, pvr_file_info_s,    opaque_10629,      std::uint8_t[16]);
FIELD(  10645, pvr_file_info_s,    incomplete_reason, std::uint16_t);
FIELD(  10647, pvr_file_info_s,    opaque_10647,      std::uint8_t[258]);
RECORD(        pvr_file_info_s,    10905);

FIELD(      0, expired_content_section, start_time, std::int32_t);
FIELD(      4, expired_content_section, end_time,   std::int32_t);
static_assert(sizeof(expired_content_section) == 8);

FIELD(      0, yuv_info,           color_format,  std::int32_t);
FIELD(      4, yuv_info,           width,         std::int32_t);
FIELD(      8, yuv_info,           height,        std::int32_t);
FIELD(     12, yuv_info,           reserved,      std::uint8_t[40]);
RECORD(        yuv_info,           52);

FIELD(      0, channel_info,       major,         std::int32_t);
FIELD(      4, channel_info,       minor,         std::int32_t);
FIELD(      8, channel_info,       start_time,    std::uint32_t);
FIELD(     12, channel_info,       end_time,      std::uint32_t);
FIELD(     16, channel_info,       channel_name,  char[255]);
FIELD(    271, channel_info,       program_title, char[255]);
RECORD(        channel_info,       526);

FIELD(      0, pvr_service_signal, opaque_0,      std::int32_t);
FIELD(      4, pvr_service_signal, result,        std::int32_t);
FIELD(      8, pvr_service_signal, handle,        std::int32_t);
FIELD(     12, pvr_service_signal, opaque_12,     std::uint8_t[8]);
FIELD(     20, pvr_service_signal, profile_type,  std::int32_t);
FIELD(     24, pvr_service_signal, screen_id,     std::int32_t);
FIELD(     28, pvr_service_signal, uri,           char[255]);
FIELD(    283, pvr_service_signal, current_state, std::int32_t);
FIELD(    287, pvr_service_signal, opaque_287,    std::int32_t);
RECORD(        pvr_service_signal, 291);

FIELD(      0, pvr_service_result, method,        std::int32_t);
FIELD(      4, pvr_service_result, result,        std::int32_t);
FIELD(      8, pvr_service_result, handle,        std::int32_t);
FIELD(     12, pvr_service_result, mnt_path,      char[255]);
FIELD(    267, pvr_service_result, detail_result, std::int32_t);
FIELD(    271, pvr_service_result, duration,      std::int32_t);
FIELD(    275, pvr_service_result, service_id,    std::uint64_t);
FIELD(    283, pvr_service_result, current_state, std::int32_t);
RECORD(        pvr_service_result, 287);

#undef FIELD
#undef RECORD
// clang-format on

} // namespace
