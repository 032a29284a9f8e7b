// The recording-info record field by field: what programs that show or change it go through.
#pragma once

#include "pvr_records.h"

#include <cstddef>
#include <iterator>

namespace pvr {

enum class FieldKind {
    number,        ///< unsigned
    signed_number, ///< in two's complement
    numbers,       ///< unsigned, of 4 bytes each
    text,          ///< UTF-8; ends in NUL, or with the field
    bytes,
};

struct RecordField {
    std::size_t offset;
    std::size_t width; ///< bytes
    const char *name;
    FieldKind kind;
};

namespace detail {

#define FIELD(member) sizeof(pvr_file_info_s::member), #member
using enum FieldKind;
// clang-format off
inline constexpr RecordField record_fields[] = {
// offset  width and name       kind
  {0,     FIELD(version),           number},
  {2,     FIELD(channel_name),      text},
  {258,   FIELD(programe_title),    text},
  {514,   FIELD(channel_num),       text},
  {770,   FIELD(reserved_770),      signed_number},
  {774,   FIELD(reserved_774),      signed_number},
  {778,   FIELD(start_time),        number},
  {782,   FIELD(duration),          number},
  {786,   FIELD(resume_play_pos),   number},
  {790,   FIELD(opaque_790),        number},
  {794,   FIELD(nThumbnailType),    number},
  {798,   FIELD(video_pid),         number},
  {802,   FIELD(PCR_pid),           number},
  {806,   FIELD(audio_pid),         number},
  {810,   FIELD(opaque_810),        number},
  {814,   FIELD(program_num),       number},
  {816,   FIELD(opaque_816),        number},
  {818,   FIELD(major),             number},
  {820,   FIELD(minor),             number},
  {822,   FIELD(opaque_822),        number},
  {824,   FIELD(channel_type),      number},
  {826,   FIELD(opaque_826),        bytes},
  {1082,  FIELD(opaque_1082),       numbers},
  {1098,  FIELD(opaque_1098),       bytes},
  {1248,  FIELD(opaque_1248),       bytes},
  {5344,  FIELD(opaque_5344),       bytes},
  {5600,  FIELD(opaque_5600),       numbers},
  {5616,  FIELD(flag_HD),           number},
  {5620,  FIELD(flag_TTX),          number},
  {5624,  FIELD(opaque_5624),       number},
  {5628,  FIELD(opaque_5628),       bytes},
  {6138,  FIELD(opaque_6138),       number},
  {6142,  FIELD(rating),            number},
  {6144,  FIELD(opaque_6144),       bytes},
  {6158,  FIELD(repeat_type),       number},
  {6160,  FIELD(opaque_6160),       number},
  {6162,  FIELD(video_type),        number},
  {6166,  FIELD(audio_type),        number},
  {6170,  FIELD(opaque_6170),       numbers},
  {6178,  FIELD(opaque_6178),       bytes},
  {6258,  FIELD(opaque_6258),       number},
  {6260,  FIELD(content_version),   number},
  {6261,  FIELD(opaque_6261),       bytes},
  {6517,  FIELD(opaque_6517),       numbers},
  {6529,  FIELD(opaque_6529),       number},
  {6531,  FIELD(opaque_6531),       bytes},
  {10627, FIELD(record_complete),   number},
  {10629, FIELD(opaque_10629),      bytes},
  {10645, FIELD(incomplete_reason), number},
  {10647, FIELD(opaque_10647),      bytes},
};
// clang-format on
#undef FIELD

/// No byte is left out and none is listed twice.
consteval bool sound()
{
    std::size_t end = 0;
    for (const RecordField &field : record_fields) {
        if (field.offset != end)
            return false;
        end += field.width;
    }
    return end == sizeof(pvr_file_info_s);
}
static_assert(sound());

} // namespace detail

using detail::record_fields;

} // namespace pvr
