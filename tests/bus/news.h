// What an application is told: callbacks that write down what they get.
#pragma once

#include "pvr_service_api.h"
#include "support/scripted_service.h"

#include <string>
#include <vector>

namespace support {

/// What the callbacks got, in order: "app method 8 handle 1 …", members that are zero left out. A pointer callback's
/// lines begin with "pointer", and with the record's kind.
class News {
public:
    News();
    ~News();
    News(const News &) = delete;
    News &operator=(const News &) = delete;

    /// Runs the main context until everything that the service has emitted before has been handled, and takes what
    /// came.
    std::vector<std::string> take(ScriptedService &service);
};

// The callbacks. Their user data is a name that is written behind what they got; null for none.
void on_result(pvr_service_result result, void *name);
void on_result_pointer(pvr_service_result *result, void *name);
void on_third(pvr_result_third third, void *name);
void on_state(int state, void *name);
void on_signal(pvr_service_signal signal, void *name);
void on_signal_pointer(pvr_service_signal *signal, void *name);

/// Has a callback do something more when it has written down what it got.
void set_reaction(void (*reaction)());

/// The digits of a record as the service sends them.
std::string digits(const pvr_service_signal &record);

/// Emits send_pvr_signal_to_apps.
void emit_signal(ScriptedService &service, int type, const std::string &text);
/// Emits result_to_apps; the inner value is GVariant text with its types.
void emit_result(ScriptedService &service, int method, const std::string &value);

} // namespace support
