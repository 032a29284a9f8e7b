"""Compares the pages on file formats with the tables that the golden files are made from, and their examples with the
golden files.
"""
import argparse
import pathlib
import re
import unittest

from make_side_files import GOLDEN
from side_files import info_file
from side_files.layouts import ARDEL_SIZE, CONVERTED, FINGERPRINT_HEADER, OLDER, RECORD, RECORD_SIZE, THUMBNAIL_FORMAT

OPTIONS = argparse.Namespace()
PAGES = {  # each with what its table has to say
    "recording-info-file.md": RECORD,
    "recording-info-file-older.md": OLDER,
    "fingerprint-file.md": FINGERPRINT_HEADER,
    "thumbnail-format-file.md": THUMBNAIL_FORMAT,
}
AS_WRITTEN = {"copy": "", "milliseconds": ", × 1000", "utf-8": ", as UTF-8", "low": ", lower half",
              "zero-extend": ", as u32"}


def page(name):
    return pathlib.Path(OPTIONS.docs, name).read_text(encoding="utf-8")


def tables(text):
    """The tables of a page, as lists of rows by column; with each the text before it."""
    for match in re.finditer(r"(?:^\|.*\|$\n?)+", text, re.MULTILINE):
        rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in match[0].splitlines()]
        if any(len(row) != len(rows[0]) for row in rows):
            raise AssertionError(f"rows of different length below {rows[0]}")
        yield text[:match.start()], [dict(zip(rows[0], row)) for row in rows[2:]]


def tables_with(name, *columns):
    return [(before, rows) for before, rows in tables(page(name)) if set(columns) <= set(rows[0])]


def layout_table(name):
    (_, rows), = tables_with(name, "offset", "size", "type", "name")
    return rows


def goes_to(field):
    """What the column of the older page says of a field."""
    places = []
    for target in field.targets:
        row = next(row for row in reversed(RECORD) if row.offset <= target.offset)
        place = row.name if row.offset == target.offset else f"{row.name} at {target.offset}"
        places.append(place + AS_WRITTEN[target.how])
    return ("Ardel only: " if field.ardel_only else "") + "; ".join(places)


def with_gaps(fields, end):
    """The rows that a page has of the fields, and of what lies between them."""
    rows, at = [], 0
    for field in fields:
        if field.offset > at:
            rows.append((str(at), str(field.offset - at), "gap", ""))
        rows.append((str(field.offset), str(field.size), field.type, field.name))
        at = field.offset + field.size
    if at != end:
        raise AssertionError(f"the fields end at {at}, not at {end}")
    return rows


def dumped_as_by_xxd(data, start, length):
    lines = []
    for at in range(start, min(len(data), start + length), 16):
        row = data[at:min(at + 16, start + length)]
        pairs = " ".join(row[two:two + 2].hex() for two in range(0, len(row), 2))
        shown = "".join(chr(byte) if 32 <= byte < 127 else "." for byte in row)
        lines.append(f"{at:08x}: {pairs:<39}  {shown}")
    return lines


class Layouts(unittest.TestCase):
    def test_tables_have_the_rows_that_the_files_are_made_from(self):
        for name, fields in PAGES.items():
            end = ARDEL_SIZE if fields is OLDER else fields[-1].offset + fields[-1].size
            rows = [(row["offset"], row["size"], row["type"], row["name"]) for row in layout_table(name)]
            self.assertEqual(rows, with_gaps(fields, end), name)

    def test_older_fields_go_where_the_conversion_puts_them(self):
        rows = {row["name"]: row["goes to"] for row in layout_table("recording-info-file-older.md")}
        self.assertEqual({name: place for name, place in rows.items() if name},
                         {field.name: goes_to(field) for field in OLDER})
        self.assertEqual(rows[""], "")

    def test_generations_are_told_apart_by_the_sizes_of_the_page(self):
        (_, rows), = tables_with("recording-info-file.md", "bytes", "generation")
        told = {int(row["bytes"]): row["generation"].partition(",")[0] for row in rows if row["bytes"].isdigit()}
        self.assertEqual(told, {size: info_file.generation_of(size) for size in (12052, 12048, 12044)})
        self.assertEqual([row["bytes"] for row in rows if row["generation"].startswith("Vexan")],
                         [f"any other size from {RECORD_SIZE} on"])

    def test_numbers_of_every_converted_record_are_told(self):
        (_, rows), = tables_with("recording-info-file-older.md", "field of the record", "value")
        told = {row["field of the record"]: re.match(r"\d+", row["value"]) for row in rows}
        self.assertEqual({name: int(number[0]) for name, number in told.items() if number and number[0] != "0"},
                         CONVERTED)
        record = info_file.record_of((GOLDEN / "ardel-pattern.inf").read_bytes())
        zero = {field.name for field in RECORD if not any(record[field.offset:field.offset + field.size])}
        untold = zero - set(", ".join(told).split(", "))
        self.assertEqual(untold, set())


class Examples(unittest.TestCase):
    def test_excerpts_are_what_xxd_shows(self):
        for name in PAGES:
            excerpts = re.findall(r"^\$ xxd (?:-s (\d+) )?(?:-l (\d+) )?(\S+)\n((?:[0-9a-f]{8}: .*\n)+)", page(name),
                                  re.MULTILINE)
            self.assertGreater(len(excerpts), 0, name)
            self.assertEqual(len(excerpts), page(name).count("$ xxd"), name)
            for start, length, file, lines in excerpts:
                data = (GOLDEN / file).read_bytes()
                self.assertEqual(lines.splitlines(), dumped_as_by_xxd(data, int(start or 0), int(length or len(data))),
                                 f"{name}: {file} from {start or 0} on")

    def test_bytes_that_are_explained_lie_where_the_page_says(self):
        seen = 0
        for name in PAGES:
            for before, rows in tables_with(name, "bytes"):
                files = re.findall(r"^\$ xxd .*?(\S+)$", before, re.MULTILINE)
                image = (GOLDEN / files[-1]).read_bytes() if files else b""
                record = info_file.record_of(image) if name.startswith("recording-info") and files else b""
                cells = [(row["bytes"], image) for row in rows]
                cells += [(row.get("in the record", ""), record) for row in rows]
                for cell, data in cells:
                    for digits, offset in re.findall(r"`([0-9a-f]+)` at (\d+)", cell):
                        there = data[int(offset):int(offset) + len(digits) // 2]
                        self.assertEqual(there.hex(), digits, f"{name}: at {offset}")
                        seen += 1
        self.assertGreaterEqual(seen, 18)


class Pages(unittest.TestCase):
    def test_links_lead_somewhere(self):
        for name in PAGES:
            for file, anchor in re.findall(r"\]\(([\w.-]*)#?([\w-]*)\)", page(name)):
                heads = re.findall(r"^#+ (.*)$", page(file or name), re.MULTILINE)
                anchors = {re.sub(r"[^\w -]", "", head.lower()).replace(" ", "-") for head in heads}
                self.assertIn(anchor, anchors | {""}, f"{name}: {file}#{anchor}")


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--docs", required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=["pages_test.py", *rest], verbosity=2)
