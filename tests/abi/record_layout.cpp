// Where every byte of the public records lies. They are on disk, on the bus and in programs that were
// built long ago, so this is typed by hand and compiling it is the test.
#include "pvr_records.h"

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
