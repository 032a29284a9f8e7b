#include "files/older_generations.h"

#include "client/byte_order.h"
#include "client/log.h"
#include "client/outputs.h"
#include "client/owned.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

namespace pvr {
namespace {

constexpr OlderGeneration ardel{"Ardel", "ardel", largest_older_image, _field_converter_ardel};
constexpr OlderGeneration selk{"Selk", "selk", 12044, _field_converter_selk};

struct FileSize {
    long bytes;
    const OlderGeneration *generation;
};
constexpr FileSize file_sizes[] = {{largest_older_file, &ardel}, {12048, &ardel}, {12044, &selk}};

constexpr std::uint16_t layout_version = 20;

// ---- What goes where.

enum class How { as_it_is, seconds_to_ms };
using enum How;

struct Row {
    std::size_t from = 0;
    std::size_t width = 0;
    std::size_t to = 0;
    How how = as_it_is;
};

constexpr std::size_t end(const Row &row) { return row.to + row.width; }

#define TO(member) offsetof(pvr_file_info_s, member)
// clang-format off
constexpr Row common_rows[] = {
// from  width  to
  {512,   256,  TO(channel_num)},
  {772,   4,    TO(start_time)},
  {776,   4,    TO(duration), seconds_to_ms},
  {780,   4,    TO(opaque_790)},
  {784,   4,    TO(nThumbnailType)},
  {older_resume_position, 4, TO(resume_play_pos), seconds_to_ms},
  {older_resume_position, 4, TO(PCR_pid)},    // deliberately the resume position in seconds,
  {older_resume_position, 4, TO(audio_pid)},  // as programs have seen it in these three
  {older_resume_position, 4, TO(opaque_810)}, // ever since
  {1304,  4,    TO(video_pid)},
  {1316,  2,    TO(program_num)},
  {1318,  2,    TO(opaque_816)},
  {1320,  2,    TO(major)},
  {1322,  2,    TO(minor)},
  {1324,  2,    TO(opaque_822)},
  {1376,  2,    TO(channel_type)},
  {1378,  256,  TO(opaque_826)},
  {1636,  16,   TO(opaque_1082)},
  {1652,  150,  TO(opaque_1098)},
  {1802,  4096, TO(opaque_1248)},
  {5898,  256,  TO(opaque_5344)},
  {6412,  28,   TO(opaque_5600)},             // with flag_HD and flag_TTX
  {6950,  255,  TO(opaque_5628) + 255},       // what lies before stays zero
  {7468,  4,    TO(opaque_6138)},
  {7472,  2,    TO(rating)},                  // the low half of four bytes
  {7476,  16,   TO(opaque_6144)},             // with repeat_type
  {7492,  2,    TO(opaque_6160)},             // the low half of four bytes
  {7496,  4,    TO(video_type)},
  {7500,  4,    TO(audio_type)},
  {7504,  8,    TO(opaque_6170)},
  {7512,  2,    TO(opaque_6258)},
  {7514,  80,   TO(opaque_6178)},
  {7674,  1,    TO(content_version)},
  {7675,  256,  TO(opaque_6261)},
  {7932,  12,   TO(opaque_6517)},
  {7944,  2,    TO(opaque_6529)},
  {7946,  4096, TO(opaque_6531)},
};
constexpr Row ardel_rows[] = {
  {12043, 1,    TO(opaque_10629) + 4},        // a byte becomes four
  {12044, 4,    TO(opaque_10629) + 8},
};
/// What the converters write by other means.
constexpr Row code_rows[] = {
  {0, sizeof pvr_file_info_s::version,         TO(version)},
  {0, sizeof pvr_file_info_s::channel_name,    TO(channel_name)},
  {0, sizeof pvr_file_info_s::programe_title,  TO(programe_title)},
  {0, sizeof pvr_file_info_s::reserved_770,    TO(reserved_770)},
  {0, sizeof pvr_file_info_s::reserved_774,    TO(reserved_774)},
  {0, sizeof pvr_file_info_s::record_complete, TO(record_complete)},
};
// clang-format on
#undef TO

/// Every row stays within image and record, numbers that are converted are four bytes, and no byte of the record is
/// written twice.
consteval bool sound()
{
    std::array<Row, std::size(common_rows) + std::size(ardel_rows) + std::size(code_rows)> rows;
    auto next = std::copy(std::begin(common_rows), std::end(common_rows), rows.begin());
    next = std::copy(std::begin(ardel_rows), std::end(ardel_rows), next);
    std::copy(std::begin(code_rows), std::end(code_rows), next);

    std::sort(rows.begin(), rows.end(), [](const Row &one, const Row &other) { return one.to < other.to; });
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].from + rows[i].width > ardel.size || end(rows[i]) > sizeof(pvr_file_info_s))
            return false;
        if (rows[i].how == seconds_to_ms && rows[i].width != sizeof(std::uint32_t))
            return false;
        if (i > 0 && end(rows[i - 1]) > rows[i].to)
            return false;
    }
    return std::all_of(std::begin(common_rows), std::end(common_rows),
                       [](const Row &row) { return row.from + row.width <= selk.size; });
}
static_assert(sound());

template <typename Rows>
void copy_rows(pvr_file_info_s &info, const unsigned char *image, const Rows &rows) noexcept
{
    auto *const record = reinterpret_cast<unsigned char *>(&info);
    for (const Row &row : rows) {
        std::memcpy(record + row.to, image + row.from, row.width);
        if (row.how == seconds_to_ms) {
            std::uint32_t number = 0;
            std::memcpy(&number, record + row.to, sizeof number);
            number = little_endian(little_endian(number) * 1000);
            std::memcpy(record + row.to, &number, sizeof number);
        }
    }
}

// ---- The two texts.

using OlderText = std::array<unsigned short, units_in_older_text>;

/// How many units come before the zero unit; all of them when there is none.
int length_of(const OlderText &text) noexcept
{
    return static_cast<int>(std::find(text.begin(), text.end(), 0) - text.begin());
}

/// At most 254 bytes, which may cut a character; nothing of a text that is not UTF-16.
void store_text(char (&field)[256], const OlderText &text, int length) noexcept
{
    static_assert(sizeof(gunichar2) == sizeof(unsigned short));
    const OwnedText converted(g_utf16_to_utf8(text.data(), length, nullptr, nullptr, nullptr));
    if (converted)
        field[copy_bytes(field, converted.get(), 254)] = '\0';
}

/// Deliberately a signed comparison with one less: an empty name passes, and only a text without an end does not.
bool is_too_long(int length) noexcept { return length - 1 > 254; }

void convert_channel_name(Here here, pvr_file_info_s &info, const unsigned char *image) noexcept
{
    OlderText units{};
    _trans_string(units.data(), image);
    // Half of the field is used, so the name ends there at the latest.
    std::fill(units.begin() + units_in_older_text / 2, units.end(), static_cast<unsigned short>(0));

    const int length = length_of(units);
    if (is_too_long(length)) {
        PLAIN_FAILURE_AT(here, "channelname_len=[%d] > 256 or < 0\n", length);
        return;
    }
    PLAIN_INFO_AT(here, "channelname_len is [%d]\n", length);
    store_text(info.channel_name, units, length);
    PLAIN_INFO_AT(here, "utf8_channelname = %.256s\n", info.channel_name);
}

void convert_title(Here here, pvr_file_info_s &info, const unsigned char *image) noexcept
{
    constexpr std::size_t title = 792;
    OlderText units{};
    std::memcpy(units.data(), image + title, sizeof units);
    std::transform(units.begin(), units.end(), units.begin(), little_endian<unsigned short>);

    const int length = length_of(units);
    if (is_too_long(length)) {
        PLAIN_FAILURE_AT(here, "programe_title_len=[%d] > 256 or < 0\n", length);
        return;
    }
    PLAIN_INFO_AT(here, "programe_title_len is [%d]\n", length);
    store_text(info.programe_title, units, length);
    PLAIN_INFO_AT(here, "utf8_programtitle = %.256s\n", info.programe_title);
}

unsigned long number_at(const unsigned char *image, std::size_t offset) noexcept
{
    std::uint32_t number = 0;
    std::memcpy(&number, image + offset, sizeof number);
    return little_endian(number);
}

/// All but what one of the two has at its end. The lines name the converter.
void convert_common(Here here, pvr_file_info_s &info, const unsigned char *image,
                    const OlderGeneration &generation) noexcept
{
    info.version = little_endian(layout_version);
    PLAIN_INFO_AT(here, "VERSION = %d\n", int{layout_version});
    convert_channel_name(here, info, image);
    copy_rows(info, image, common_rows);
    PLAIN_INFO_AT(here, "channel_num = %.256s\n", info.channel_num);
    convert_title(here, info, image);
    info.reserved_770 = 0;
    info.reserved_774 = 0;
    PLAIN_INFO_AT(here, "pvr_info_%s->ulDuration is %lu\n", generation.lower_case_name, number_at(image, 776));
    PLAIN_INFO_AT(here, "pvr_info_%s->ulResumePlayTime is %lu\n", generation.lower_case_name,
                  number_at(image, older_resume_position));
    PLAIN_INFO_AT(here, "pvr_info_%s->nThumbnailType is %d\n", generation.lower_case_name,
                  static_cast<int>(number_at(image, 784)));
    info.record_complete = little_endian(std::uint16_t{1});
    PLAIN_INFO_AT(here, "pvr_info->record_complete = 1\n");
}

} // namespace

const OlderGeneration *older_generation(long file_size) noexcept
{
    const auto *const found = std::find_if(std::begin(file_sizes), std::end(file_sizes),
                                           [=](const FileSize &row) { return row.bytes == file_size; });
    return found != std::end(file_sizes) ? found->generation : nullptr;
}

void _trans_string(unsigned short *dst, const unsigned char *src) noexcept
{
    for (std::size_t i = 0; i < units_in_older_text; ++i) {
        dst[i] = static_cast<unsigned short>(src[2 * i] << 8 | src[2 * i + 1]);
        if (dst[i] == 0)
            return;
    }
}

void _field_converter_ardel(pvr_file_info_s *info, const unsigned char *image) noexcept
{
    convert_common(Here(), *info, image, ardel);
    std::memset(info->opaque_10629, 0, sizeof info->opaque_10629);
    copy_rows(*info, image, ardel_rows);
}

void _field_converter_selk(pvr_file_info_s *info, const unsigned char *image) noexcept
{
    convert_common(Here(), *info, image, selk);
    std::memset(info->opaque_10629, 0, sizeof info->opaque_10629);
}

} // namespace pvr
