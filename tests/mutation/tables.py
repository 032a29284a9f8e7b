"""The tables: where they stand, what their columns are, and how a cell of each is changed."""
import dataclasses
import re

from cpp_text import cells, closing, without_comments
from mutants import Mutant


def next_other(cell, column):
    """What another row has in its place."""
    following = column[column.index(cell):] + column
    return [next((other for other in following if other != cell), f"({cell}) + 1")]


def plus_one(cell, _):
    return [f"({cell}) + 1"]


def minus_one(cell, _):
    return [f"({cell}) - 1"]


def text(cell, _):
    return ['"~' + cell[1:]] if cell.startswith('"') else ['"(i)"' if cell == "nullptr" else f'&"~"[0]']


def signature(cell, column):
    return text(cell, column) if cell == "nullptr" else [cell[:-2] + 'i)"', "nullptr"]


def places(cell, _):
    """Each member in the place of the next, of the same type and of another, and one too many and too few."""
    inner = [part.strip() for part in cell.strip("{}").split(",") if part.strip()]
    changed = []
    numbers = ["handle", "result", "current_state", "duration", "detail_result", "uid", "record_type", "state",
               "status", "narrow_service_id"]
    for i, member in enumerate(inner):
        if member in numbers:
            changed.append(inner[:i] + [numbers[(numbers.index(member) + 1) % len(numbers)]] + inner[i + 1:])
        of_another_type = {"mnt_path": "location", "location": "mnt_path"}.get(member, "ignored")
        changed.append(inner[:i] + [of_another_type] + inner[i + 1:])
    changed += [inner[:-1], inner + ["ignored"]] if len(inner) < 6 else [inner[:-1]]
    return ["{" + ", ".join(row) + "}" for row in changed if row != inner]


def named(cell, _):
    """The one word that makes a code and its name."""
    return [f"{{{cell} + 1, \"{cell}\"}}", f'{{{cell}, "~{cell}"}}']


@dataclasses.dataclass(eq=False)
class Table:
    file: str
    name: str
    element: str
    columns: list        # (name, function that gives the changed cells) each
    tests: list
    check: str = "sound"  # the compile-time check that reads it
    prefix: str = r"\{"   # with what a row begins
    missing: dict = dataclasses.field(default_factory=dict)  # cells that rows may leave out


CODES = [Table("src/events/names.cpp", name, "NamedCode", [("code and name", named)], [rf"^unit/.*{test}"], check="",
               prefix=r"NAMED\(")
         for name, test in [("ps_signal_type_e_str", "SignalTypes"), ("ps_play_state_e_str", "PlayStates"),
                            ("ps_record_state_e_str", "RecordStates"), ("ps_record_type_e_str", "RecordTypes"),
                            ("ps_third_part_method_e_str", "CodesForOther"),
                            ("ps_third_part_command_e_str", "CodesForOther"),
                            ("ps_method_e_str", "Methods"), ("ps_os_error_e_str", "OperatingSystemErrors")]]
OLDER = [("from", plus_one), ("width", minus_one), ("to", plus_one),
         ("how", lambda cell, _: ["as_it_is" if cell == "seconds_to_ms" else "seconds_to_ms"])]
OLDER_TESTS = [r"^unit/.*(OlderGenerations|GoldenFiles)", r"^unit/.*InfoReader"]
TABLES = CODES + [
    Table("src/events/result_rows.h", "table", "ResultRow",
          [("method", plus_one), ("signature", signature), ("places", places), ("app", next_other),
           ("others", next_other)],
          [r"^bus/.*EachResult", r"^bus/.*Results", r"^unit/Subscribe"]),
    Table("src/client/error_texts.cpp", "rows", "Row", [("first", plus_one), ("last", plus_one), ("id", next_other)],
          [r"^unit/.*ErrorTexts"]),
    Table("src/files/older_generations.cpp", "file_sizes", "FileSize",
          [("bytes", plus_one), ("generation", next_other)], OLDER_TESTS, check=""),
    Table("src/files/older_generations.cpp", "common_rows", "Row", OLDER, OLDER_TESTS, missing={3: "as_it_is"}),
    Table("src/files/older_generations.cpp", "ardel_rows", "Row", OLDER, OLDER_TESTS, missing={3: "as_it_is"}),
    Table("src/files/record_layout.h", "record_fields", "RecordField",
          [("offset", plus_one), ("width", minus_one), ("name", text), ("kind", next_other)], [r"^unit/.*GoldenFiles"]),
    Table("src/files/paths.cpp", "accepted_extensions", "const char *", [("extension", text)],
          [r"^unit/.*(RecordingPath|FileSize|SidePath)"], check="", prefix='"'),
]


def rows_of(source, table):
    """The span of a table's definition, that of what stands within its braces, and the spans of its rows."""
    match = re.search(rf"^[^\n]*\b{table.name}\[\] = \{{", source, re.M)
    start, end = match.end(), closing(source, match.end() - 1)
    rows = [span for span in cells(source, start, end) if re.match(table.prefix, source[slice(*span)])]
    return (match.start(), end + 2), rows


def cells_of(row, table):
    """A row's cells, with what the files' own short words stand for; what rows may leave out is there."""
    row = re.sub(r"\bTO\((\w+)\)", r"offsetof(pvr_file_info_s, \1)", row)
    row = re.sub(r"\bFIELD\((\w+)\)", r'sizeof(pvr_file_info_s::\1), "\1"', row)
    if table.prefix == "NAMED\\(":
        return [row[len("NAMED("):-1]]
    if not row.startswith("{"):
        return [row]
    found = [row[slice(*span)] for span in cells(row, 1, len(row) - 1)]
    for index, value in table.missing.items():
        if len(found) == index:
            found.append(value)
    return found


def mutants_of(table, source):
    """The mutants of each row."""
    bare = without_comments(source)
    _, spans = rows_of(bare, table)
    rows = [cells_of(bare[slice(*span)], table) for span in spans]
    found = []
    for index, row in enumerate(rows):
        for place, (column, change) in enumerate(table.columns):
            for new in change(row[place], [other[place] for other in rows]):
                changed = ", ".join(row[:place] + [new] + row[place + 1:])
                if len(row) > 1 and not changed.startswith("{{"):
                    changed = "{" + changed + "}"
                found.append(Mutant(table.name, row[0], column, f"{row[place]} -> {new}", table.tests,
                                    cell=(index, changed)))
    return found
