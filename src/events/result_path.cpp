#include "events/result_path.h"

#include "client/byte_order.h"
#include "client/outputs.h"
#include "client/owned.h"
#include "events/callbacks.h"
#include "events/names.h"
#include "events/others.h"
#include "events/result_rows.h"

#include <cinttypes>
#include <optional>

namespace pvr {
namespace {

template <typename Function>
void *address(const Slot<Function> &slot) noexcept
{
    return reinterpret_cast<void *>(slot.get().function);
}

void file_number(ResultNews &news, Place place, std::int32_t value) noexcept
{
    switch (place) {
    case Place::handle:
        news.result.handle = value;
        break;
    case Place::result:
        news.result.result = value;
        break;
    case Place::current_state:
        news.result.current_state = value;
        break;
    case Place::duration:
        news.result.duration = value;
        break;
    case Place::detail_result:
        news.result.detail_result = value;
        break;
    case Place::narrow_service_id:
        news.result.service_id = static_cast<std::uint32_t>(value);
        break;
    case Place::uid:
        news.uid = value;
        break;
    case Place::record_type:
        news.record_type = value;
        break;
    case Place::state:
        news.state = value;
        break;
    case Place::status:
        news.status = value;
        break;
    default:
        break;
    }
}

void file_member(ResultNews &news, Place place, GVariant *value) noexcept
{
    switch (type_of(place)) {
    case 't':
        news.result.service_id = g_variant_get_uint64(value);
        break;
    case 's':
        if (place == Place::location)
            news.location = g_variant_get_string(value, nullptr);
        else
            copy_field(news.result.mnt_path, g_variant_get_string(value, nullptr));
        break;
    default:
        file_number(news, place, g_variant_get_int32(value));
        break;
    }
}

/// Nothing when the inner value is of another type than the method's.
std::optional<ResultNews> unpacked(const ResultRow &row, GVariant *inner) noexcept
{
    ResultNews news{};
    news.result.method = row.method;
    if (row.signature == nullptr)
        return news;
    if (g_variant_is_of_type(inner, G_VARIANT_TYPE(row.signature)) == FALSE)
        return std::nullopt;
    const std::size_t count = g_variant_n_children(inner);
    for (std::size_t i = 0; i < count; ++i)
        file_member(news, row.places[i], OwnedVariant(g_variant_get_child_value(inner, i)).get());
    return news;
}

void log_delivery(Here here, AppLine line, const ResultNews &news) noexcept
{
    const pvr_service_result &result = news.result;
    const int method = result.method;
    const int handle = result.handle;
    const int outcome = result.result;
    const std::uint64_t service_id = result.service_id;
    const char *name = _get_pvr_macro_name(ps_method_e_str, method);
    switch (line) {
    case AppLine::none:
        break;
    case AppLine::play:
        PLAIN_INFO_AT(here, "result[handle:%d method:%s|%d result:%d]\n", handle, name, method, outcome);
        break;
    case AppLine::bare:
        PLAIN_INFO_AT(here, "result[method:%s|%d result:%d]\n", name, method, outcome);
        break;
    case AppLine::begin:
        PLAIN_INFO_AT(here, "result[handle:%d method:%s|%d]\n", handle, name, method);
        break;
    case AppLine::path:
        PLAIN_INFO_AT(here, "result[method:%s|%d mnt_path:%s]\n", name, method, result.mnt_path);
        break;
    case AppLine::handle:
        PLAIN_INFO_AT(here, "result[method:%s|%d handle:%d]\n", name, method, handle);
        break;
    case AppLine::length:
        PLAIN_INFO_AT(here, "result[method:%s|%d handle:%d duration:%ld bit_rate:%d] \n", name, method, handle,
                      long{result.duration}, int{result.detail_result});
        break;
    case AppLine::one_change:
        PLAIN_INFO_AT(here, "result[method:%s|%d service_id:%" PRIu64 " handle:%d]\n", name, method, service_id,
                      handle);
        break;
    case AppLine::change:
        PLAIN_INFO_AT(here, "result[method:%s|%d service_id:%" PRIu64 "]\n", name, method, service_id);
        break;
    case AppLine::refusal:
        PLAIN_INFO_AT(here, "result[handle:%d method:%s|%d] mnt_path[%s]\n", handle, name, method, result.mnt_path);
        break;
    case AppLine::recording:
        PLAIN_INFO_AT(here,
                      "result[method:%s|%d handle:%d result:%d UID:%ld service_id:%" PRIu64
                      " record_type:%s|%d detail_result:%d]\n",
                      name, method, handle, outcome, long{news.uid}, service_id,
                      _get_pvr_macro_name(ps_record_type_e_str, news.record_type), int{news.record_type},
                      int{result.detail_result});
        break;
    }
}

pvr_service_result as_record(const ResultNews &news) noexcept
{
    pvr_service_result record = news.result;
    record.method = little_endian(record.method);
    record.result = little_endian(record.result);
    record.handle = little_endian(record.handle);
    record.detail_result = little_endian(record.detail_result);
    record.duration = little_endian(record.duration);
    record.service_id = little_endian(record.service_id);
    record.current_state = little_endian(record.current_state);
    return record;
}

void deliver_to_app(Here here, AppLine line, const ResultNews &news) noexcept
{
    if (const auto [function, user_data] = to_pvr_app.get(); function != nullptr) {
        log_delivery(here, line, news);
        function(as_record(news), user_data);
    }
    if (const auto [function, user_data] = to_pvr_app_point.get(); function != nullptr) {
        log_delivery(here, line, news);
        pvr_service_result copy = as_record(news);
        function(&copy, user_data);
    }
}

} // namespace

void receive_result(Here here, GVariant *parameters) noexcept
{
    if (parameters == nullptr || g_variant_is_of_type(parameters, G_VARIANT_TYPE("(iv)")) == FALSE) {
        PLAIN_FAILURE_AT(here, "result_to_apps is not (iv), but %s\n",
                         parameters != nullptr ? g_variant_get_type_string(parameters) : "null");
        return;
    }
    // Member by member: g_variant_get() would read the format once per member.
    const OwnedVariant method_value(g_variant_get_child_value(parameters, 0));
    const OwnedVariant boxed(g_variant_get_child_value(parameters, 1));
    const std::int32_t method = g_variant_get_int32(method_value.get());
    const OwnedVariant inner(g_variant_get_variant(boxed.get()));
    const char *name = _get_pvr_macro_name(ps_method_e_str, method);
    PLAIN_INFO_AT(here, "Receive   >>>>>>    [command: %s|%d]\n", name, method);
    PLAIN_INFO_AT(here, "[to_pvr_app:%p][to_pvr_app_point:%p][to_other_apps:%p][to_pvr_get_state:%p]\n",
                  address(to_pvr_app), address(to_pvr_app_point), address(to_other_apps), address(to_pvr_get_state));

    const ResultRow *row = result_row(method);
    if (row == nullptr) {
        PLAIN_FAILURE_AT(here, "Received unknown command[%s|%d]\n", name, method);
        return;
    }
    const std::optional<ResultNews> news = unpacked(*row, inner.get());
    if (!news) {
        PLAIN_FAILURE_AT(here, "the value of [%s|%d] is not %s, but %s\n", name, method, row->signature,
                         g_variant_get_type_string(inner.get()));
        return;
    }
    if (row->app != AppLine::none)
        deliver_to_app(here, row->app, *news);
    tell_others(here, row->others, *news);
}

} // namespace pvr
