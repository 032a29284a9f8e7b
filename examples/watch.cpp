// Watches what the service does until it has become idle again: registrations as objects, which are taken back with
// their owner, and member functions as callbacks.
//
//     watch
#include <cstdio>
#include <cstdlib>
#include <glib.h>
#include <memory>
#include <pvr_service_api.h>
#include <stdexcept>

namespace {

/// A registration for as long as the object lives. The library keeps the user data as long; since its callbacks run in
/// the thread of the main loop, which is also the owner's, none can be running when it is taken back.
template <auto Register, auto Unregister, auto Callback>
class Registration {
public:
    explicit Registration(void *user_data)
    {
        if (Register(Callback, user_data) != PS_SUCCESS)
            throw std::runtime_error("the product does not record");
    }
    ~Registration() { Unregister(Callback); }
    Registration(const Registration &) = delete;
    Registration &operator=(const Registration &) = delete;
};

class Session {
public:
    Session()
    {
        if (svc_pvr_service_init() != PS_SESSION_READY)
            throw std::runtime_error("there is no session");
    }
    ~Session() { svc_pvr_service_destroy(); }
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;
};

class Watcher {
public:
    void run() { g_main_loop_run(loop_.get()); }

private:
    static void on_state(int state, void *self) noexcept { static_cast<Watcher *>(self)->state_changed(state); }
    static void on_signal(pvr_service_signal *signal, void *) noexcept
    {
        std::printf("handle %d: %s\n", int{signal->handle}, signal->uri);
        std::fflush(stdout);
    }

    void state_changed(int state)
    {
        // The numbers are the service's; the development service's are 0 for idle, 1 for playing, 2 for recording.
        std::printf("the service is in state %d\n", state);
        std::fflush(stdout);
        if (state == 0)
            g_main_loop_quit(loop_.get());
    }

    using Signals = Registration<svc_pvr_register_signal_pointer_cb, svc_pvr_unregister_signal_pointer_cb, on_signal>;
    using States = Registration<svc_pvr_register_get_pvr_state_cb, svc_pvr_unregister_get_pvr_state_cb, on_state>;

    std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop_{g_main_loop_new(nullptr, FALSE), g_main_loop_unref};
    Session session_; // before what is registered in it
    Signals signals_{this};
    States states_{this};
};

} // namespace

int main()
{
    try {
        Watcher watcher;
        std::puts("watching");
        std::fflush(stdout);
        watcher.run();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "watch: %s (PVR_LOG=stderr tells more)\n", error.what());
        return EXIT_FAILURE;
    }
}
