// A C++ program against the installed library: the headers as C++ sees them, and one call that needs no bus.
#include <pvr_service_api.h>

static_assert(noexcept(svc_pvr_service_init()));
static_assert(noexcept(svc_pvr_play_start(1, "", 0)));
static_assert(!noexcept(IsBlockedByParentalControl("", nullptr)), "lets the platform's exceptions through");

int main()
{
    const pvr_signal_cb on_signal = [](pvr_service_signal, void *) {};
    return svc_pvr_register_signal_cb(on_signal, nullptr) == PS_SUCCESS &&
                   get_size_of_device_info() == sizeof(device_info)
               ? 0
               : 1;
}
