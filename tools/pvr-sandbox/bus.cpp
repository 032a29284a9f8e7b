#include "bus.h"

#include <gio/gio.h>

#include "client/owned.h"

namespace sandbox {

std::string bus_address(const std::string &socket)
{
    // An abstract socket would be unreachable from other network namespaces, containers among them.
    return std::string("unix:path=") + pvr::OwnedText(g_dbus_address_escape_value(socket.c_str())).get();
}

std::string bus_configuration(const std::string &address)
{
    // Who may connect is not said: that leaves the daemon's own user, to whom root is added. Neither are
    // limits: the daemon's own are those of a system bus. An escaped address needs no escaping here.
    return R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>)" +
           address + R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="root"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
)";
}

std::vector<std::string> bus_command(const std::string &configuration)
{
    return {"dbus-daemon", "--nofork",          "--nopidfile",
            "--nosyslog",  "--print-address=1", "--config-file=" + configuration};
}

} // namespace sandbox
