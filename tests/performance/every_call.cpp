// Calls every exported function once under callgrind, each with a dump of its own, and prints what the function
// returned and how many blocks of the heap it took. Run by golden_test.py, with a folder of side files.
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <valgrind/callgrind.h>

#include "performance/heap.h"
#include "performance/stubs.h"
#include "pvr_service_api.h"

namespace {

using performance::HeapCount;

constexpr int number = 3;
constexpr long long block_time = number;
constexpr char recording[] = "contents/0a1b2c3d.srf"; // relative: how long it is does not depend on the folder

/// What a parameter is given, by its type: the same number everywhere, the path of the recording, a buffer that is
/// larger than whatever is written or read, a callback that does nothing.
template <typename T>
struct Argument {
    static_assert(std::integral<T>);
    T pass() { return static_cast<T>(number); }
};

template <>
struct Argument<const char *> {
    const char *pass() { return recording; }
};

template <typename T>
struct Argument<T *> {
    alignas(std::max_align_t) std::array<std::byte, 65536> room{};
    T *pass() { return reinterpret_cast<T *>(room.data()); }
};

template <typename... Parameters>
struct Argument<void (*)(Parameters...)> {
    using Callback = void (*)(Parameters...);
    Callback pass()
    {
        return [](Parameters...) {};
    }
};

/// Measures one call under a name.
template <typename Call>
void measure(const std::string &name, Call call)
{
    long returned = 0;
    long blocks = 0;
    {
        const HeapCount heap;
        CALLGRIND_TOGGLE_COLLECT;
        returned = static_cast<long>(call());
        CALLGRIND_TOGGLE_COLLECT;
        blocks = heap.blocks();
    }
    CALLGRIND_DUMP_STATS_AT(name.c_str());
    std::printf("%s\t%ld\t%ld\n", name.c_str(), blocks, returned);
}

/// The callback that is passed to the measured calls too, so that they find it.
template <typename Callback>
void register_own(int (*register_callback)(Callback, void *))
{
    register_callback(Argument<Callback>().pass(), nullptr);
}

/// What a call finds: a session, each callback registered, and the files beside the recording as they were.
void restore(const std::filesystem::path &folder, const std::string &info_file)
{
    namespace files = std::filesystem;
    const files::path to = files::path(recording).parent_path();
    files::remove_all(to);
    files::create_directory(to);
    const files::path stem = files::path(recording).replace_extension();
    files::copy_file(folder / info_file, files::path(stem).replace_extension("inf"));
    files::copy_file(folder / "picture.cft", files::path(stem).replace_extension("cft"));
    constexpr std::array<char, 64> block{};
    svc_pvr_service_init();
    svc_pvr_write_sas_file(recording, block_time, static_cast<int>(block.size()), block.data());
    register_own(svc_pvr_register_result_pvr_cb);
    register_own(svc_pvr_register_result_pvr_point_cb);
    register_own(svc_pvr_register_to_other_apps_cb);
    register_own(svc_pvr_register_get_pvr_state_cb);
    register_own(svc_pvr_register_signal_cb);
    register_own(svc_pvr_register_signal_pointer_cb);
    register_own(svc_pvr_register_signal_cb_in_list);
}

struct Folder {
    std::filesystem::path golden;
    std::string info_file = "vexan-television.inf";
};

/// The same call twice, of which the second one is measured: what is made on first use is there then.
template <typename Result, typename... Parameters>
void measure_function(const Folder &folder, const std::string &name, Result (*function)(Parameters...))
{
    using Arguments = std::tuple<Argument<Parameters>...>;
    const auto call = [function](Arguments &arguments) {
        return std::apply([function](auto &...argument) { return function(argument.pass()...); }, arguments);
    };
    restore(folder.golden, folder.info_file);
    call(*std::make_unique<Arguments>());
    restore(folder.golden, folder.info_file);
    const auto arguments = std::make_unique<Arguments>();
    measure(name, [&] { return call(*arguments); });
}

/// The first call for a session, with everything but the session in place.
void measure_new_session()
{
    svc_pvr_service_destroy();
    measure("svc_pvr_service_init, no session yet", svc_pvr_service_init);
}

void measure_signal(const Folder &folder, const char *signal, const char *parameters)
{
    restore(folder.golden, folder.info_file);
    GVariant *const value = g_variant_ref_sink(g_variant_new_parsed(parameters));
    const auto hand_over = [signal, value] {
        performance::signal_handler()(nullptr, ":1.1", signal, value, nullptr);
        return 0;
    };
    hand_over();
    measure(std::string("signal ") + signal, hand_over);
    g_variant_unref(value);
}

/// A signal's record, as its digits.
std::string signal_with_record()
{
    constexpr std::size_t digits_of_a_record = 2 * sizeof(pvr_service_signal);
    return "(" + std::to_string(PS_SIGNAL_TYPE_THUMB_DONE) + ", '" + std::string(digits_of_a_record, '5') + "')";
}

} // namespace

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations" // retired functions are called like all others
#define FUNCTION(name) measure_function(folder, #name, name);

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fputs("usage: every_call FOLDER, in a folder that may be written to\n", stderr);
        return 2;
    }
    Folder folder{argv[1]};
#include "exported_functions.inc"
    measure_new_session();
    measure_signal(folder, "send_pvr_signal_to_apps", signal_with_record().c_str());
    measure_signal(folder, "result_to_apps", ("(" + std::to_string(PS_PLAY_START) + ", <(1, 1, 1)>)").c_str());
    for (const char *const older : {"ardel-television.inf", "selk-television.inf"}) {
        folder.info_file = older;
        measure_function(folder, std::string("svc_pvr_get_pvr_file_info, ") + older, svc_pvr_get_pvr_file_info);
    }
    return 0;
}
#pragma GCC diagnostic pop
