// The fields of the recording-info record, shown and changed through its table.
#pragma once

#include <pvr_records.h>
#include <string>

#include "files/record_layout.h"
#include "output.h"

namespace pvrctl {

/// Not one of those of which only the place is known.
bool has_meaning(const pvr::RecordField &field);

/// A number, a list of numbers, a text in which what is no UTF-8 is U+FFFD, or bytes in hexadecimal.
Json field_json(const pvr_file_info_s &record, const pvr::RecordField &field);
/// The same for any record, from its first byte on.
Json field_json(const char *record, const pvr::RecordField &field);

/// Whether the text of field_json() is not all that a text field holds.
bool is_more_than_text(const pvr_file_info_s &record, const pvr::RecordField &field);

/// All bytes of a field.
std::string field_digits(const pvr_file_info_s &record, const pvr::RecordField &field);

/// For people: times on the clock, durations in hours, names beside codes.
std::string field_for_people(const pvr_file_info_s &record, const pvr::RecordField &field);

/// A new value of a field.
struct FieldChange {
    const pvr::RecordField *field;
    std::string bytes; ///< as many as the field has

    void apply(pvr_file_info_s &record) const;
    bool is_in(const pvr_file_info_s &record) const;
};

/// Reads "field=value". Throws CLI::ValidationError for a field that is not there or cannot be set, and for a value
/// that does not fit into it.
FieldChange parsed_change(const std::string &text);

/// The same for a record that is nobody's yet: every field can be set.
FieldChange parsed_field(const std::string &text);

} // namespace pvrctl
