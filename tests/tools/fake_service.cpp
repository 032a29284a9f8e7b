// A service that owns the Recording service's name and does nothing else. Before it owns the name it prints
// its arguments, and puts its process number into service.pid in the sandbox's folder.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gio/gio.h>
#include <unistd.h>

namespace {

/// A reader finds the whole number or no file.
void write_process_number(const std::filesystem::path &folder)
{
    std::ofstream(folder / "service.draft") << getpid() << '\n';
    std::filesystem::rename(folder / "service.draft", folder / "service.pid");
}

void lost(GDBusConnection * /*bus*/, const char * /*name*/, gpointer /*data*/)
{
    std::fputs("no bus, or the name is taken\n", stderr);
    std::exit(1);
}

} // namespace

int main(int argc, char **argv)
{
    const char *folder = std::getenv("PVR_SANDBOX");
    if (folder == nullptr)
        return 1;
    std::fputs("starting\n", stderr);
    for (int i = 1; i < argc; ++i)
        std::fprintf(stderr, "argument %s\n", argv[i]);
    write_process_number(folder);
    g_bus_own_name(G_BUS_TYPE_SYSTEM, "org.vexan.tv.pvr.server", G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, lost,
                   nullptr, nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
    return 0;
}
