// The names under which log lines print the service's codes, and the lookup of a code's name.
#pragma once

#include <cstdint>

namespace pvr {

/// A code and its name. A table ends with the pair (-1, null).
struct NamedCode {
    std::int32_t value;
    const char *name;
};

extern const NamedCode ps_signal_type_e_str[];
extern const NamedCode ps_play_state_e_str[];
extern const NamedCode ps_record_state_e_str[];
extern const NamedCode ps_record_type_e_str[];
extern const NamedCode ps_third_part_method_e_str[];
extern const NamedCode ps_third_part_command_e_str[];
extern const NamedCode ps_method_e_str[];
extern const NamedCode ps_os_error_e_str[];

/// The name of value in a table, "" when it has none. The first matching pair wins, so that a code may
/// have the value of the end marker if it stands first.
const char *_get_pvr_macro_name(const NamedCode *table, std::int32_t value) noexcept;

} // namespace pvr
