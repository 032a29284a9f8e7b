// That whatever the library imports is either made to fail here, or left alone for a reason.
#include "faults/fault.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace {

constexpr char answers_only[] = "computes its answer, and has no way to tell of a failure";
constexpr char aborts[] = "allocates by GLib, which ends the process when there is no memory";
constexpr char platform[] = "the platform's: tests/unit and tests/bus have it fail";
constexpr char releases[] = "releases what was acquired";
constexpr char cannot[] = "fails only when it is called wrongly";
constexpr char compiler[] = "the compiler's";

struct LeftAlone {
    const char *why;
    std::set<std::string> imports;
};

const LeftAlone left_alone[] = {
    {answers_only,
     {"__errno_location",
      "g_dbus_connection_is_closed",
      "g_dbus_error_quark",
      "g_dbus_proxy_get_connection",
      "g_error_matches",
      "g_io_error_quark",
      "g_main_current_source",
      "g_utf8_validate",
      "g_variant_check_format_string",
      "g_variant_get_fixed_array",
      "g_variant_get_int32",
      "g_variant_get_string",
      "g_variant_get_type_string",
      "g_variant_get_uint32",
      "g_variant_get_uint64",
      "g_variant_is_of_type",
      "g_variant_n_children",
      "g_variant_type_checked_",
      "getpid",
      "memcmp",
      "strcmp",
      "strlen",
      "strnlen",
      "_ZSt7nothrow",
      "_ZNSt6chrono3_V212steady_clock3nowEv",
      "dcgettext"}},
    {aborts,
     {"g_dbus_proxy_get_name_owner", "g_idle_source_new", "g_main_context_push_thread_default",
      "g_main_context_ref_thread_default", "g_set_error", "g_signal_connect_data", "g_source_attach",
      "g_source_set_callback", "g_variant_get", "g_variant_get_child", "g_variant_get_child_value", "g_variant_get_va",
      "g_variant_get_variant", "g_variant_new_int32", "g_variant_new_string", "g_variant_new_tuple",
      "g_variant_new_uint32", "g_variant_new_uint64"}},
    {platform,
     {"_ZN6CA_API9CAService13CAPVRInstanceEv", "__dlog_print", "system_info_get_custom_bool",
      "system_info_get_custom_int", "system_info_get_value_int"}},
    {releases,
     {"_ZdlPvm", "free", "g_error_free", "g_free", "g_main_context_pop_thread_default", "g_main_context_release",
      "g_main_context_unref", "g_object_unref", "g_signal_handler_disconnect", "g_source_destroy", "g_source_unref",
      "g_variant_unref", "pthread_mutex_destroy", "pthread_mutex_unlock"}},
    {cannot,
     {"g_dbus_connection_set_exit_on_close", "g_object_ref", "g_source_set_priority", "pthread_mutex_lock",
      "snprintf"}},
    {compiler,
     {"_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "_Unwind_Resume", "_ZSt19__throw_logic_errorPKc",
      "_ZSt20__throw_system_errori", "_ZSt24__throw_out_of_range_fmtPKcz", "__cxa_begin_catch", "__cxa_end_catch",
      "__cxa_finalize", "__gmon_start__", "__gxx_personality_v0"}},
};

std::set<std::string> imported()
{
    std::set<std::string> names;
    std::ifstream lines(PVR_IMPORTED_SYMBOLS);
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with('#'))
            names.insert(line);
    return names;
}

} // namespace

TEST(FaultPoints, AreAllImportsThatMayFail)
{
    std::map<std::string, std::string> known;
    for (const faults::KindName &kind : faults::kind_names)
        for (const char *import : kind.imports)
            if (import != nullptr) {
                EXPECT_TRUE(known.emplace(import, kind.name).second) << import;
            }
    for (const LeftAlone &group : left_alone)
        for (const std::string &import : group.imports)
            EXPECT_TRUE(known.emplace(import, group.why).second) << import;

    std::set<std::string> names;
    for (const auto &[import, what] : known)
        names.insert(import);
    EXPECT_EQ(names, imported());
}
