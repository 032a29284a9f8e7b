#include "bus/news.h"

#include "bus/main_context.h"
#include "support/little_endian.h"

#include <cstring>
#include <sstream>
#include <utility>

namespace support {
namespace {

std::vector<std::string> told;
void (*reaction_to_news)() = nullptr;

/// Words for the members that are not zero.
class Words {
public:
    explicit Words(const std::string &beginning) { text_ << beginning; }

    template <typename Value>
    Words &add(const char *name, Value value)
    {
        if (value != Value{})
            text_ << " " << name << " " << value;
        return *this;
    }

    void tell(const void *name)
    {
        if (name != nullptr)
            text_ << " to " << static_cast<const char *>(name);
        told.push_back(text_.str());
        if (reaction_to_news != nullptr)
            reaction_to_news();
    }

private:
    std::ostringstream text_;
};

void tell_result(const std::string &who, const pvr_service_result &result, const void *name)
{
    Words(who)
        .add("method", int{as_little_endian(result.method)})
        .add("result", int{as_little_endian(result.result)})
        .add("handle", int{as_little_endian(result.handle)})
        .add("mnt_path", std::string(result.mnt_path))
        .add("detail_result", int{as_little_endian(result.detail_result)})
        .add("duration", int{as_little_endian(result.duration)})
        .add("service_id", std::uint64_t{as_little_endian(result.service_id)})
        .add("current_state", int{as_little_endian(result.current_state)})
        .tell(name);
}

void tell_signal(const std::string &who, const pvr_service_signal &signal, const void *name)
{
    Words(who)
        .add("result", int{as_little_endian(signal.result)})
        .add("handle", int{as_little_endian(signal.handle)})
        .add("uri", std::string(signal.uri, strnlen(signal.uri, sizeof signal.uri)))
        .add("current_state", int{as_little_endian(signal.current_state)})
        .add("last", int{as_little_endian(signal.opaque_287)})
        .tell(name);
}

} // namespace

News::News() { told.clear(); }

News::~News() { reaction_to_news = nullptr; }

std::vector<std::string> News::take(ScriptedService &service)
{
    // The answer comes behind the signals on the same connection, and is waited for in another context.
    service.script("get_handle", answers("(1, 0)"));
    int handle = 0;
    svc_pvr_get_handle(&handle);
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    return std::exchange(told, {});
}

void on_result(pvr_service_result result, void *name) { tell_result("app", result, name); }
void on_result_pointer(pvr_service_result *result, void *name) { tell_result("pointer app", *result, name); }
void on_signal(pvr_service_signal signal, void *name) { tell_signal("signal", signal, name); }
void on_signal_pointer(pvr_service_signal *signal, void *name) { tell_signal("pointer signal", *signal, name); }

void on_third(pvr_result_third third, void *name)
{
    Words("third")
        .add("method", int{as_little_endian(third.third_part_method)})
        .add("command", int{as_little_endian(third.third_part_command)})
        .add("result", int{as_little_endian(third.result)})
        .add("service_result", int{as_little_endian(third.service_result)})
        .add("service_id", std::uint64_t{as_little_endian(third.service_id)})
        .add("UID", int{as_little_endian(third.UID)})
        .tell(name);
}

void on_state(int state, void *name) { Words("state").add("is", state).tell(name); }

void set_reaction(void (*reaction)()) { reaction_to_news = reaction; }

std::string digits(const pvr_service_signal &record)
{
    constexpr char characters[] = "0123456789abcdef";
    const auto *bytes = reinterpret_cast<const unsigned char *>(&record);
    std::string text;
    for (std::size_t i = 0; i < sizeof record; ++i)
        text += {characters[bytes[i] >> 4], characters[bytes[i] & 0xf]};
    return text;
}

void emit_signal(ScriptedService &service, int type, const std::string &text)
{
    service.emit("send_pvr_signal_to_apps", "(int32 " + std::to_string(type) + ", '" + text + "')");
}

void emit_result(ScriptedService &service, int method, const std::string &value)
{
    service.emit("result_to_apps", "(int32 " + std::to_string(method) + ", <" + value + ">)");
}

} // namespace support
