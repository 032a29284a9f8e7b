"""Shows that the golden files tell apart what a reader could confuse, and that the broken ones are broken."""
import contextlib
import io
import itertools
import json
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest

import make_side_files
from side_files import broken, fingerprint_file, info_file
from side_files.layouts import (FINGERPRINT_HEADER, FINGERPRINT_HEADER_SIZE, OLDER, RECORD, RECORD_SIZE,
                                THUMBNAIL_FORMAT, element)
from side_files.pattern import pattern

GOLDEN = make_side_files.golden_files()
INFO_FILES = {name: image for name, image in GOLDEN.items() if name.endswith(".inf")}
PATTERNS = {name: image for name, image in INFO_FILES.items() if "-pattern" in name}
SAME_ON_PURPOSE = {"PCR_pid", "audio_pid", "opaque_810"}  # the older resume position, three times
SAME_IN_ALL_CONVERTED = {"version", "record_complete"}


def bytes_at(field, image):
    return image[field.offset:field.offset + field.size]


def by_name(dump):
    return {row["name"]: row for row in dump["record"]}


def dumped(name):
    return by_name(json.loads(GOLDEN[name + ".json"]))


class Layouts(unittest.TestCase):
    def test_the_record_has_no_holes_and_10905_bytes(self):
        end = 0
        for field in RECORD:
            self.assertEqual(field.offset, end, field.name)
            end += field.size
        self.assertEqual(end, 10905)

    def test_numbers_are_as_wide_as_their_type(self):
        for field in RECORD + OLDER + FINGERPRINT_HEADER + THUMBNAIL_FORMAT:
            count, number = element(field.type)
            if count:
                self.assertEqual(field.size, count * int(number[1:]) // 8, field)

    def test_older_fields_do_not_overlap(self):
        for one, next_one in itertools.pairwise(OLDER):
            self.assertLessEqual(one.offset + one.size, next_one.offset, next_one.name)

    def test_each_older_field_goes_to_whole_fields_of_the_record_or_to_their_named_part(self):
        ends = {field.offset: field.offset + field.size for field in RECORD}
        inside = {5883: 5628 + 510, 10633: 10637, 10637: 10641}
        for field in OLDER:
            for target in field.targets:
                end = target.offset + target.size
                self.assertEqual(end, ends.get(target.offset, inside.get(target.offset)), field.name)

    def test_no_two_older_fields_go_to_one_place(self):
        targets = sorted(target[:2] for field in OLDER for target in field.targets)
        for (one, size), (next_one, _) in itertools.pairwise(targets):
            self.assertLessEqual(one + size, next_one)

    def test_headers_are_as_long_as_they_say(self):
        for fields, size in (FINGERPRINT_HEADER, 4808), (THUMBNAIL_FORMAT, 52):
            self.assertEqual(sum(field.size for field in fields), size)
            self.assertEqual(fields[-1].offset + fields[-1].size, size)


class Pattern(unittest.TestCase):
    def test_two_bytes_lie_at_one_place_alone_also_when_swapped(self):
        data, seen = pattern(12052), {}
        for at in range(len(data) - 1):
            if at % 255 == 254:
                continue  # across a change of the step
            pair = data[at:at + 2]
            self.assertNotIn(pair, seen)
            self.assertNotIn(pair[::-1], seen)
            seen[pair] = at

    def test_bytes_of_255_in_a_row_all_differ(self):
        self.assertEqual(len(set(pattern(255, 510))), 255)


class PatternFiles(unittest.TestCase):
    def test_there_is_one_for_each_generation(self):
        self.assertEqual({name: len(image) for name, image in PATTERNS.items()},
                         {"vexan-pattern.inf": 10905, "ardel-pattern.inf": 12048, "selk-pattern.inf": 12044})

    def test_no_byte_is_zero_but_the_terminator_of_the_older_title(self):
        for name, image in PATTERNS.items():
            zeros = {at for at, byte in enumerate(image) if byte == 0}
            self.assertEqual(zeros, set() if "vexan" in name else {792 + 254, 792 + 255}, name)

    def test_all_fields_of_a_dump_differ(self):
        for name in PATTERNS:
            seen = {}
            for field in RECORD:
                data = bytes_at(field, info_file.record_of(PATTERNS[name]))
                if field.name in SAME_ON_PURPOSE or "vexan" not in name and (
                        field.name in SAME_IN_ALL_CONVERTED or not any(data)):
                    continue
                self.assertNotIn(data, seen, f"{name}: {field.name} is as {seen.get(data)}")
                seen[data] = field.name

    def test_what_stays_zero_in_a_converted_record_is_known(self):
        for name, tail in ("ardel-pattern.inf", 0), ("selk-pattern.inf", 1):
            zero = {row["name"] for row in dumped(name).values() if row.get("value", row.get("hex")) in (0, [])}
            expected = {"reserved_770", "reserved_774", "incomplete_reason", "opaque_10647"}
            self.assertEqual(zero, expected | ({"opaque_10629"} if tail else set()), name)

    def test_a_number_from_any_place_nearby_is_another(self):
        for name, image in PATTERNS.items():
            for field in info_file.fields_of(info_file.generation_of(len(image))):
                count, _ = element(field.type)
                for shift in range(-16, 17) if count and field.size <= 4 else ():
                    at = field.offset + shift
                    if at >= 0 and shift:
                        self.assertNotEqual(image[at:at + field.size], bytes_at(field, image), (name, field, shift))


class Conversion(unittest.TestCase):
    """By hand, from the file: the tables could be wrong in the same way for the maker and the dump."""

    def test_a_television_recording_of_ardel(self):
        record = dumped("ardel-television.inf")
        expected = {
            "version": 20, "channel_name": "Österreich Eins", "programe_title": "Frühstück um Fünf – naïve Größen",
            "channel_num": "7", "start_time": 1356998400, "duration": 90000, "resume_play_pos": 42000,
            "opaque_790": 2, "PCR_pid": 42, "audio_pid": 42, "opaque_810": 42, "video_pid": 161, "rating": 12,
            "repeat_type": 2, "opaque_6160": 17, "flag_HD": 1, "flag_TTX": 0, "opaque_5600": [5, 6, 7, 8],
            "opaque_5624": 12, "opaque_5628": ["00" * 48] * 5 + ["00" * 15 + "ff"],
            "opaque_10629": ["00000000" "c8000000" "005ed0b2"], "record_complete": 1, "incomplete_reason": 0,
        }
        for name, value in expected.items():
            row = record[name]
            self.assertEqual(row.get("value", row.get("text", row.get("hex"))), value, name)

    def test_only_ardel_has_an_extra_tail(self):
        image = INFO_FILES["ardel-pattern.inf"]
        tail = info_file.record_of(image)[10629:10645]
        self.assertEqual(tail, bytes(4) + image[12043:12044] + bytes(3) + image[12044:12048] + bytes(4))
        self.assertEqual(info_file.record_of(image[:12044])[10629:10645], bytes(16))
        self.assertEqual(info_file.record_of(image + b"more"), info_file.record_of(image))

    def test_milliseconds_are_modulo_2_to_the_32(self):
        record = dumped("ardel-limits.inf")
        self.assertEqual((record["duration"]["value"], record["resume_play_pos"]["value"]), (4294967000, 704))

    def test_names_are_cut_to_254_bytes_even_within_a_character(self):
        for name, ends in ("selk-cut-names.inf", ("e590", "78" + "f09f8eb5" * 63 + "f0")), \
                ("ardel-limits.inf", ("c39f", "c3a9")):
            record = info_file.record_of(INFO_FILES[name])
            for at, end in zip((2, 258), ends):
                end = bytes.fromhex(end)
                self.assertEqual(record[at:at + 256], record[at:at + 254 - len(end)] + end + b"\0\0", name)

    def test_a_dump_accounts_for_each_byte(self):
        for name, image in INFO_FILES.items():
            record = b""
            for row in json.loads(GOLDEN[name + ".json"])["record"]:
                count, number = element(row["type"])
                if count:
                    values = row["value"] if isinstance(row["value"], list) else [row["value"]]
                    data = struct.pack(f"<{count}{info_file.FORMATS[number]}", *values)
                else:
                    data = row["text"].encode() if "text" in row else bytes.fromhex("".join(row["hex"]))
                record += data.ljust(row["size"], b"\0")
            self.assertEqual(record, info_file.record_of(image), name)


class FingerprintFiles(unittest.TestCase):
    def test_blocks_lie_one_behind_the_other(self):
        for name in "one-block", "several-blocks", "same-time", "empty-blocks", "full":
            end = FINGERPRINT_HEADER_SIZE
            for block in json.loads(GOLDEN[name + ".sas.json"])["blocks"]:
                self.assertEqual(block["offset"], end, name)
                end += block["size"]
            self.assertEqual(end, len(GOLDEN[name + ".sas"]), name)

    def test_the_full_one_has_300_times_and_300_blocks_that_differ_from_their_neighbours(self):
        blocks = json.loads(GOLDEN["full.sas.json"])["blocks"]
        self.assertEqual(len({block["time"] for block in blocks}), 300)
        for one, other in itertools.pairwise(blocks):
            self.assertNotEqual(one["sha256"], other["sha256"])

    def test_what_follows_the_entries_is_zero(self):
        image = GOLDEN["one-block.sas"]
        self.assertEqual(image[:20], bytes.fromhex("297a3301" "01000000") + struct.pack("<qi", 1766952000, 0))
        self.assertEqual((image[2408:2416], image[3608:3616]), (struct.pack("<Q", 38), struct.pack("<Q", 4808)))


class BrokenFiles(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.path = pathlib.Path(cls.folder.name) / "a folder" / "of broken files"
        with contextlib.redirect_stdout(io.StringIO()):
            broken.write(cls.path)
        cls.rows = {row["file"]: row for row in json.loads((cls.path / "broken.json").read_text())["files"]}

    def image(self, name):
        return (self.path / name).read_bytes()

    def test_each_is_listed_once_with_its_size(self):
        self.assertEqual(len(self.rows), len(broken.ALL))
        for name, row in self.rows.items():
            self.assertEqual(len(self.image(name)), row["size"], name)

    def test_sizes_are_as_the_names_say(self):
        sizes = {"empty.inf": 0, "vexan-short-by-one.inf": 10904, "vexan-long-by-one.inf": 10906,
                 "vexan-20000-bytes.inf": 20000, "selk-short-by-one.inf": 12043, "selk-long-by-one.inf": 12045,
                 "ardel-short-by-one.inf": 12047, "ardel-12051-bytes.inf": 12051, "empty.sas": 0,
                 "header-short-by-one.sas": 4807, "block-missing.sas": 4808, "block-short-by-one.sas": 4812,
                 "empty.cft": 0, "short-by-one.cft": 51, "long-by-one.cft": 53}
        self.assertEqual({name: self.rows[name]["size"] for name in sizes}, sizes)

    def test_what_can_be_read_has_a_dump_and_nothing_else_has(self):
        for name, row in self.rows.items():
            can_be_read = name.endswith(".inf") and row["result"] == 0
            self.assertEqual((self.path / f"{name}.json").exists(), can_be_read, name)
            if name.endswith(".inf"):
                self.assertEqual(can_be_read, row["size"] >= RECORD_SIZE, name)

    def test_files_of_unusual_size_are_read_as_the_current_generation(self):
        for name in "selk-short-by-one.inf", "selk-long-by-one.inf", "ardel-12051-bytes.inf", "ardel-12053-bytes.inf":
            self.assertEqual(info_file.record_of(self.image(name)), self.image(name)[:10905])

    def test_unpaired_surrogates_are_there_and_leave_the_name_empty(self):
        for name in self.rows:
            if not any(word in name for word in ("unpaired-high", "unpaired-low", "ends-high", "swapped", "-across-")):
                continue
            field = next(field for field in OLDER if field.name == (
                "channel_name" if "-name-" in name else "programe_title"))
            text = bytes_at(field, self.image(name))[:256]
            with self.assertRaises(UnicodeDecodeError, msg=name):
                text.decode(info_file.ENCODINGS[field.type])
            dump = by_name(json.loads((self.path / f"{name}.json").read_text()))
            self.assertEqual(dump[field.name]["text"], "", name)
            self.assertNotEqual(dump["programe_title" if field.offset == 0 else "channel_name"]["text"], "", name)

    def test_a_title_without_terminator_is_empty_and_a_name_without_one_is_not(self):
        for name, start in ("title", 792), ("name", 0):
            image = self.image(f"selk-{name}-without-terminator.inf")
            self.assertNotIn(b"\0\0", [image[at:at + 2] for at in range(start, start + 512, 2)])
        self.assertEqual(info_file.record_of(self.image("selk-title-without-terminator.inf"))[258:514], bytes(256))
        self.assertEqual(info_file.record_of(self.image("selk-name-without-terminator.inf"))[2:258],
                         b"c" * 128 + bytes(128))

    def test_a_title_of_255_units_is_taken_and_cut_to_254_bytes(self):
        self.assertEqual(info_file.record_of(self.image("selk-title-255-units.inf"))[258:514], b"t" * 254 + b"\0\0")
        self.assertEqual(info_file.record_of(self.image("selk-title-too-long-in-utf-8.inf"))[258:514],
                         "題".encode() * 84 + "題".encode()[:2] + b"\0\0")

    def test_reads_that_fail_name_a_block_that_is_not_in_the_file(self):
        for name, row in self.rows.items():
            image = self.image(name)
            if not name.endswith(".sas") or len(image) < 4808 or not 1 <= struct.unpack_from("<i", image, 4)[0] <= 300:
                continue
            blocks = fingerprint_file.dump(name, image)["blocks"]
            for read in row["reads"]:
                block = next((block for block in blocks if block["time"] == read["time"]), None)
                lies_inside = block and (block["size"] == 0 or block["offset"] + block["size"] <= len(image))
                self.assertEqual(read["result"], 0 if lies_inside else -1, f"{name}, time {read['time']}")
                self.assertEqual(read["size"] is None, block is None, name)
                if block:
                    self.assertEqual(read["size"] % 2**32, block["size"], name)

    def test_counts_are_as_the_names_say(self):
        for name, count in (("count-0", 0), ("count-minus-1", -1), ("count-301", 301), ("count-largest", 2**31 - 1),
                            ("count-smallest", -2**31), ("count-300-of-nothing", 300)):
            self.assertEqual(struct.unpack_from("<i", self.image(f"{name}.sas"), 4), (count,))

    def test_another_block_is_refused_where_its_offset_or_its_place_is_beyond_what_there_is(self):
        for name, row in self.rows.items():
            image = self.image(name)
            if not name.endswith(".sas") or len(image) < 4808:
                continue
            count, = struct.unpack_from("<i", image, 4)
            last = struct.unpack_from("<I", image, 2408 + 4 * (count - 1)) + \
                struct.unpack_from("<I", image, 3608 + 4 * (count - 1)) if 1 <= count <= 299 else (2**32,)
            self.assertEqual(row["write"], 0 if sum(last) < 2**32 else -1, name)


class Check(unittest.TestCase):
    def test_names_each_file_that_is_missing_too_many_or_changed(self):
        with tempfile.TemporaryDirectory() as place, contextlib.redirect_stdout(io.StringIO()):
            folder = pathlib.Path(place)
            make_side_files.write_golden(folder)
            self.assertEqual(make_side_files.differences(folder), [])
            (folder / "one-block.sas").unlink()
            (folder / "stray.inf").write_bytes(b"")
            image = bytearray(GOLDEN["picture.cft"])
            image[51] ^= 1
            (folder / "picture.cft").write_bytes(image)
            (folder / "same-time.sas").write_bytes(GOLDEN["same-time.sas"] + b"x")
            self.assertEqual(make_side_files.differences(folder), [
                "one-block.sas: missing", "stray.inf: nothing under content/ makes it",
                "picture.cft: 52 bytes instead of 52, different from 51 on",
                "same-time.sas: 4852 bytes instead of 4851, different from 4851 on"])

    def test_content_that_makes_no_sense_is_named(self):
        for text, problem in (("generation = 'Selk'\n[fields]\nno_field = 1", "no_field"),
                              ("generation = 'Vexan'\n[fields]\nmajor = 65536", "65535"),
                              ("generation = 'Ardel'\n[fields]\nprograme_title = [['t', 257]]", "programe_title"),
                              ("generation = ", "Invalid value")):
            with tempfile.TemporaryDirectory() as place:
                (pathlib.Path(place) / "made.inf.toml").write_text(text, encoding="utf-8")
                with self.assertRaisesRegex(SystemExit, f"made.inf.toml: .*{problem}"):
                    make_side_files.golden_files(pathlib.Path(place))

    def test_an_unknown_command_is_refused(self):
        done = subprocess.run([sys.executable, "-B", make_side_files.__file__, "silver"], capture_output=True,
                              text=True, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertIn("invalid choice: 'silver'", done.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
