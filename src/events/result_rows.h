// What the signal result_to_apps carries for each method, and who is told: one row for each method.
#pragma once

#include "pvr_events.h"
#include "pvr_records.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace pvr {

/// What a member of the inner value is.
enum class Place : std::uint8_t {
    none,
    ignored,
    handle,
    result,
    current_state,
    duration,
    detail_result,
    mnt_path,   ///< a text
    service_id, ///< 64 bits
    narrow_service_id,
    uid,
    record_type,
    state,
    status,
    location, ///< a text
};

/// The character of a place's type in a signature.
constexpr char type_of(Place place) noexcept
{
    switch (place) {
    case Place::none:
        return '\0';
    case Place::service_id:
        return 't';
    case Place::mnt_path:
    case Place::location:
        return 's';
    default:
        return 'i';
    }
}

/// The line that tells of a delivery to the recorder application.
enum class AppLine : std::uint8_t {
    none,
    play,
    bare,
    begin,
    path,
    handle,
    length,
    one_change,
    change,
    refusal,
    recording
};

/// How other applications, or nobody but one callback, are told.
enum class Others : std::uint8_t {
    none,
    playback,
    recording,
    pre_start,
    launch_failed,
    duration_set,
    state,
    thumbnail
};

struct ResultRow {
    std::int32_t method;
    const char *signature; ///< of the inner value; null when it is not read
    std::array<Place, 6> places;
    AppLine app;
    Others others;
};

namespace rows {

using enum Place;
using App = AppLine;

// clang-format off
inline constexpr ResultRow table[] = {
    // method                            inner value   its members, in order                                            app              others
    {PS_PLAY_START,                      "(iii)",      {handle, result, current_state},                                 App::play,       Others::playback},
    {PS_PLAY_PAUSE,                      "(iii)",      {handle, result, current_state},                                 App::play,       Others::playback},
    {PS_STEP_FRAME,                      "(iii)",      {handle, result, current_state},                                 App::play,       Others::none},
    {PS_PLAY_RESUME,                     "(iii)",      {handle, result, current_state},                                 App::play,       Others::none},
    {PS_PLAY_FORWARD,                    "(iii)",      {handle, result, current_state},                                 App::play,       Others::none},
    {PS_PLAY_REWIND,                     "(iii)",      {handle, result, current_state},                                 App::play,       Others::playback},
    {PS_PLAY_SKIP,                       "(iii)",      {handle, result, current_state},                                 App::play,       Others::playback},
    {PS_PLAY_STOP,                       "(iii)",      {handle, result, current_state},                                 App::play,       Others::playback},
    {PS_RECORD_START,                    "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_RECORD_PAUSE,                    "(ii)",       {handle, result},                                                App::play,       Others::none},
    {PS_RECORD_RESUME,                   "(ii)",       {handle, result},                                                App::play,       Others::none},
    {PS_RECORD_STOP,                     "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_SWITCH_TO_RECORD,                "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_STOP_PVR,                        "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_FORMAT,                          "(i)",        {result},                                                        App::bare,       Others::none},
    {PS_PERFORMANCE_TEST,                "(i)",        {result},                                                        App::bare,       Others::none},
    {PS_PRECHECK_RECORDING_AVAILABLE,    "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_PRE_PLAY_START,                  "(ii)",       {ignored, ignored},                                              App::none,       Others::pre_start},
    {PS_PLAY_BEGIN,                      "(i)",        {handle},                                                        App::begin,      Others::none},
    {PS_PLAY_END,                        "(i)",        {handle},                                                        App::begin,      Others::none},
    {PS_REMOVE_DEV,                      "(s)",        {mnt_path},                                                      App::path,       Others::none},
    {PS_SEND_SIGNAL_STATE,               "(i)",        {result},                                                        App::bare,       Others::none},
    {PS_SEND_THUMBNAIL_RESULT,           "(is)",       {status, location},                                              App::none,       Others::thumbnail},
    {PS_SEND_SYS_PLAY_ERROR,             "(i)",        {handle},                                                        App::handle,     Others::none},
    {PS_SEND_SYS_RECORD_ERROR,           "(i)",        {handle},                                                        App::handle,     Others::none},
    {PS_SEND_CHANNEL_CHANGE,             "(i)",        {handle},                                                        App::begin,      Others::none},
    {PS_UPLOAD_RECORD_DURATION,          "(iii)",      {handle, duration, detail_result},                               App::length,     Others::none},
    {PS_RECORD_EXCEPTION,                "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_RECORD_NO_SIGNAL_STOP,           "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_RECORD_DISK_LESS_FIFTY,          "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_RECORD_DISK_LESS_ALERT,          "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_RECORD_LAUNCH_FAILED,            "(ii)",       {narrow_service_id, uid},                                        App::none,       Others::launch_failed},
    {PS_PVR_STATE_CHANGE,                "(i)",        {state},                                                         App::none,       Others::state},
    {PS_RATING_CHANGE,                   nullptr,      {},                                                              App::bare,       Others::none},
    {PS_ONE_RECORDING_CHANGE_CHANNEL,    "(ti)",       {service_id, handle},                                            App::one_change, Others::none},
    {PS_TWO_RECORDING_CHANGE_CHANNEL,    "(t)",        {service_id},                                                    App::change,     Others::none},
    {PS_STOP_PLAYBACK_BY_CIP,            "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_STOP_RECORD_BY_CIP,              "(iiitii)",   {handle, result, uid, service_id, record_type, detail_result},   App::recording,  Others::recording},
    {PS_ALL_RECORDING_CHANGE_CHANNEL,    "(t)",        {service_id},                                                    App::change,     Others::none},
    {PS_SET_DURATION_ALREADY,            nullptr,      {},                                                              App::bare,       Others::duration_set},
    {PS_STOP_TIMESHIFT_BY_CIP,           "(iiitii)",   {handle, result, ignored, service_id, ignored, ignored},        App::bare,       Others::none},
    {PS_STOP_TIMESHIFT_BY_CIP_FOR_ZIGGO, "(iiitii)",   {handle, result, ignored, service_id, ignored, ignored},        App::bare,       Others::none},
    {PS_SEND_SYS_RECORD_ERROR_DISK_NEED_REPAIR, "(i)", {handle},                                                        App::handle,     Others::none},
    {PS_SEND_SYS_PLAY_ERROR_DISK_NEED_REPAIR,   "(i)", {handle},                                                        App::handle,     Others::none},
    {PS_RECORD_NOT_ALLOWED_BY_CA,        "(is)",       {handle, mnt_path},                                              App::refusal,    Others::none},
    {PS_RECORD_NO_CA_DEVICE,             "(is)",       {handle, mnt_path},                                              App::refusal,    Others::none},
    {PS_PLAYBACK_NO_CA_DEVICE,           "(is)",       {handle, mnt_path},                                              App::refusal,    Others::none},
    {PS_PLAYBACK_NOT_ALLOWED_BY_CA,      "(is)",       {handle, mnt_path},                                              App::refusal,    Others::none},
    {PS_PLAYBACK_DESCRAMBLE_DENIED,      "(is)",       {handle, mnt_path},                                              App::refusal,    Others::none},
};
// clang-format on

/// The methods ascend, each member has a place of its type and no place is left over, and somebody is told.
consteval bool sound()
{
    for (std::size_t i = 0; i < std::size(table); ++i) {
        const ResultRow &row = table[i];
        if (i > 0 && table[i - 1].method >= row.method)
            return false;
        if (row.app == AppLine::none && row.others == Others::none)
            return false;
        std::size_t members = 0;
        if (row.signature != nullptr) {
            if (row.signature[0] != '(')
                return false;
            for (const char *type = row.signature + 1; *type != ')'; ++type)
                if (members == row.places.size() || type_of(row.places[members++]) != *type)
                    return false;
        }
        for (; members < row.places.size(); ++members)
            if (row.places[members] != Place::none)
                return false;
    }
    return true;
}
static_assert(sound());

} // namespace rows

/// The row of a method; null for a method that nobody is told of.
constexpr const ResultRow *result_row(std::int32_t method) noexcept
{
    for (const ResultRow &row : rows::table)
        if (row.method == method)
            return &row;
    return nullptr;
}

/// What the inner value of result_to_apps holds.
struct ResultNews {
    pvr_service_result result; ///< as the recorder application gets it
    std::int32_t uid;
    std::int32_t record_type;
    std::int32_t state;
    std::int32_t status;
    const char *location; ///< lives as long as the inner value
};

} // namespace pvr
