"""Writes the layout of the older info files as a C++ table, from the tables that the test files are made from: what
the targets expect is not what the library's own table says.
"""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests/data"))
from side_files.layouts import CONVERTED, OLDER, RECORD  # noqa: E402

HOW = {"copy": "copied", "low": "copied", "zero-extend": "copied", "milliseconds": "milliseconds", "utf-8": "text"}


def main():
    rows = [f"    {{{field.offset}, {field.size}, {target.offset}, {target.size}, "
            f"How::{HOW[target.how]}, {str(field.type == 'utf-16be').lower()}, {str(field.ardel_only).lower()}}},"
            for field in OLDER for target in field.targets]
    set_numbers = [f"    {{{field.offset}, {CONVERTED[field.name]}}}," for field in RECORD if field.name in CONVERTED]
    pathlib.Path(sys.argv[1]).write_text("\n".join([
        "// Made by fuzz/make_layout.py.",
        "inline constexpr Move moves[] = {", *rows, "};",
        "inline constexpr Number numbers[] = {", *set_numbers, "};", ""]), encoding="utf-8")


if __name__ == "__main__":
    main()
