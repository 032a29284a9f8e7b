#include "watch.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace pvrctl {
namespace {

constexpr std::string_view interface_name = "org.vexan.tv.pvr";
constexpr std::string_view news_signal = "result_to_apps";

struct ReleaseValue {
    void operator()(GVariant *value) const noexcept { g_variant_unref(value); }
};
using OwnedValue = std::unique_ptr<GVariant, ReleaseValue>;

std::string or_empty(const char *text) { return text != nullptr ? text : ""; }

std::string first_text(GDBusMessage *message)
{
    GVariant *body = g_dbus_message_get_body(message);
    if (body == nullptr || g_variant_is_of_type(body, G_VARIANT_TYPE("(s)")) == FALSE)
        return {};
    const char *text = nullptr;
    g_variant_get(body, "(&s)", &text);
    return text;
}

/// Nothing for what tells something else than numbers.
std::optional<News> news_in(GDBusMessage *message)
{
    GVariant *body = g_dbus_message_get_body(message);
    if (body == nullptr || g_variant_is_of_type(body, G_VARIANT_TYPE("(iv)")) == FALSE)
        return std::nullopt;
    News news{};
    GVariant *unpacked = nullptr;
    g_variant_get(body, "(iv)", &news.method, &unpacked);
    const OwnedValue value(unpacked);
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_TUPLE) == FALSE)
        return std::nullopt;
    for (gsize i = 0; i < g_variant_n_children(value.get()); ++i) {
        const OwnedValue number(g_variant_get_child_value(value.get(), i));
        if (g_variant_is_of_type(number.get(), G_VARIANT_TYPE_INT32) == FALSE)
            return std::nullopt;
        news.numbers.push_back(g_variant_get_int32(number.get()));
    }
    return news;
}

} // namespace

struct Watch::Shared {
    std::mutex mutex;
    guint32 serial = 0;
    Exchange latest;
    std::optional<int> method; ///< whose news are kept
    std::vector<News> news;
};

Watch::Watch(GDBusConnection *connection)
    : connection_(static_cast<GDBusConnection *>(g_object_ref(connection))), shared_(new Shared)
{
    // GDBus's locks order its thread before and behind ours. Taking our own as well shows that to the thread
    // sanitizer, which does not see GLib's.
    shared_->mutex.lock();
    shared_->mutex.unlock();
    filter_ = g_dbus_connection_add_filter(connection_, on_message, shared_, [](gpointer pointer) {
        auto *shared = static_cast<Shared *>(pointer);
        shared->mutex.lock();
        shared->mutex.unlock();
        delete shared;
    });
}

Watch::~Watch()
{
    g_dbus_connection_remove_filter(connection_, filter_);
    g_object_unref(connection_);
}

Exchange Watch::latest() const
{
    const std::lock_guard lock(shared_->mutex);
    return shared_->latest;
}

void Watch::forget()
{
    const std::lock_guard lock(shared_->mutex);
    shared_->latest = {};
    shared_->serial = 0;
}

void Watch::listen(int method)
{
    const std::lock_guard lock(shared_->mutex);
    shared_->method = method;
    shared_->news.clear();
}

std::vector<News> Watch::take_news()
{
    const std::lock_guard lock(shared_->mutex);
    return std::exchange(shared_->news, {});
}

// GDBus's own thread calls this: for a call before it is sent, for a reply before the caller gets it, for a signal that
// somebody in the process has asked the bus for, such as the library for the service's.
GDBusMessage *Watch::on_message(GDBusConnection *, GDBusMessage *message, gboolean is_incoming,
                                gpointer shared_pointer) noexcept
{
    Shared &shared = *static_cast<Shared *>(shared_pointer);
    const GDBusMessageType type = g_dbus_message_get_message_type(message);
    const std::lock_guard lock(shared.mutex);
    if (is_incoming == FALSE && type == G_DBUS_MESSAGE_TYPE_METHOD_CALL &&
        or_empty(g_dbus_message_get_interface(message)) == interface_name) {
        shared.serial = g_dbus_message_get_serial(message);
        shared.latest = {Exchange::unanswered, or_empty(g_dbus_message_get_member(message)), {}, {}};
    } else if (is_incoming != FALSE && shared.serial != 0 &&
               g_dbus_message_get_reply_serial(message) == shared.serial) {
        const bool is_error = type == G_DBUS_MESSAGE_TYPE_ERROR;
        shared.latest.kind = is_error ? Exchange::error : Exchange::answered;
        if (is_error) {
            shared.latest.error_name = or_empty(g_dbus_message_get_error_name(message));
            shared.latest.error_text = first_text(message);
        }
    } else if (type == G_DBUS_MESSAGE_TYPE_SIGNAL && shared.method &&
               or_empty(g_dbus_message_get_interface(message)) == interface_name &&
               or_empty(g_dbus_message_get_member(message)) == news_signal) {
        if (std::optional<News> news = news_in(message); news && news->method == *shared.method)
            shared.news.push_back(*std::move(news));
    }
    return message;
}

} // namespace pvrctl
