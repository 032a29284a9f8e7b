"""What pvrctl shows of the info file beside a recording, finds wrong with it and changes in it."""
import hashlib
import json
import os
import shutil
import socket
import struct

from pvrctl_case import (DONE, FAILED, NOT_FOUND, NOT_RECORDING, NOT_RUNNING, USAGE, SandboxedTest, lines, main)
from side_files_case import GOLDEN, MISSING, RECORD_SIZE, TELEVISION, SideFilesTest, bytes_of


def is_utf_8(text):
    return text.decode(errors="ignore").encode() == text


class InfoShow(SideFilesTest):
    def assert_shown(self, file, dump):
        shown = self.succeed("inf", "show", file)
        self.assertEqual((shown["file"], shown["size"], shown["generation"]),
                         (str(self.folder / dump["file"]), dump["size"], dump["generation"]))
        record, odd = shown["record"], shown["text_bytes"]
        self.assertEqual(list(record), [row["name"] for row in dump["record"]])
        whole = b""
        for row in dump["record"]:
            name, wanted = row["name"], bytes_of(row)
            whole += bytes.fromhex(odd[name]) if name in odd else wanted
            if row["type"] == "text":
                text = wanted.partition(b"\0")[0]
                self.assertEqual(name in odd, bool(wanted[len(text):].strip(b"\0")) or not is_utf_8(text), name)
                self.assertEqual(record[name].replace("\ufffd", ""), text.decode(errors="ignore"), name)
            elif row["type"] == "bytes":
                self.assertEqual(record[name], wanted.hex(), name)
            else:
                self.assertEqual(record[name], row["value"], name)
        self.assertEqual(hashlib.sha256(whole).hexdigest(), dump["sha256"])
        return shown

    def test_every_field_of_every_generation_is_told(self):
        for dump in sorted(GOLDEN.glob("*.inf.json")):
            with self.subTest(dump=dump.name):
                name = dump.name.removesuffix(".inf.json")
                shown = self.assert_shown(self.take(name, recording=False),
                                          json.loads(dump.read_text(encoding="utf-8")))
                if name == "vexan-unfinished":
                    self.assertEqual(shown["state"], "unfinished")

    def test_what_is_broken_is_told_as_the_library_reads_it(self):
        for row in self.take_broken():
            with self.subTest(row=row):
                name = row["file"]
                if not name.endswith(".inf"):
                    continue
                if row["result"] == 0:
                    dump = json.loads((self.folder / (name + ".json")).read_text(encoding="utf-8"))
                    self.assert_shown(name, dump)
                else:
                    self.assertIn(f"is no info file: it has {row['size']} bytes",
                                  self.fail_with(FAILED, "inf", "show", name))

    def test_texts_that_are_no_utf_8_are_told_twice(self):
        self.take_broken()
        shown = self.succeed("inf", "show", "vexan-texts-not-utf-8.srf")
        self.assertEqual(shown["record"]["channel_name"], "M\ufffdn")
        self.assertEqual(shown["text_bytes"]["channel_name"], "4dff6e".ljust(512, "0"))

    def test_people_see_what_the_numbers_mean(self):
        self.environment["TZ"] = "CET-1"
        code, text, errors = self.run_pvrctl("inf", "show", self.take(TELEVISION))
        self.assertEqual((code, errors), (DONE, ""))
        shown = lines(text)
        self.assertEqual(
            {name: shown[name] for name in ["state", "generation", "channel_name", "channel_num", "start_time",
                                            "duration", "resume_play_pos", "nThumbnailType", "video_pid", "flag_HD",
                                            "record_complete", "incomplete_reason"]},
            {"state": "complete", "generation": "Vexan", "channel_name": "Südwest Fernsehen HD", "channel_num": "12",
             "start_time": "2025-12-28 21:00:00", "duration": "1:30:00", "resume_play_pos": "0:25:00",
             "nThumbnailType": "0, video", "video_pid": "511", "flag_HD": "yes", "record_complete": "1, finished",
             "incomplete_reason": "0, none"})
        self.assertEqual([name for name in shown if name.startswith(("opaque", "reserved"))], [])

    def test_people_see_unnamed_fields_when_they_ask(self):
        shown = lines(self.run_pvrctl("inf", "show", self.take(TELEVISION), "--all")[1])
        self.assertEqual((shown["reserved_770"], shown["opaque_826"], shown["opaque_1082"], shown["opaque_5344"]),
                         ("0", "646575 and zeros", "1,0,0,2", "zeros"))

    def test_people_see_hostile_texts_without_harm(self):
        self.take(TELEVISION)
        file = self.folder / (TELEVISION + ".inf")
        file.write_bytes(b"\x14\0\x1b[31m\xff\n\0" + self.info(TELEVISION)[10:])
        self.assertEqual(lines(self.run_pvrctl("inf", "show", file)[1])["channel_name"], "\\x1b[31m\ufffd\\x0a")

    def test_why_a_recording_is_not_whole_is_told(self):
        self.take(TELEVISION)
        image = bytearray(self.info(TELEVISION))
        for complete, reason, state in [(1, 1, "incomplete"), (1, 5, "cut-off"), (2, 0, "unknown")]:
            struct.pack_into("<H", image, 10627, complete)
            struct.pack_into("<H", image, 10645, reason)
            (self.folder / (TELEVISION + ".inf")).write_bytes(image)
            self.assertEqual(self.succeed("inf", "show", TELEVISION + ".srf")["state"], state)
        struct.pack_into("<HH", image, 10627, 1, 0)
        for reason, words in (1, "the device was full"), (4, "the service was ended in the middle"):
            struct.pack_into("<H", image, 10645, reason)
            (self.folder / (TELEVISION + ".inf")).write_bytes(image)
            self.assertEqual(lines(self.run_pvrctl("inf", "show", TELEVISION + ".srf")[1])["incomplete_reason"],
                             f"{reason}, {words}")

    def test_a_finished_recording_takes_no_bus(self):
        recording = self.take(TELEVISION)
        with socket.socket(socket.AF_UNIX) as mute:  # whoever asks this bus waits for it
            mute.bind(str(self.folder / "mute"))
            mute.listen()
            self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.folder}/mute"
            self.assertEqual(self.succeed("inf", "show", recording)["state"], "complete")
            self.assertTrue(self.succeed("inf", "verify", recording)["sound"])
            mute.setblocking(False)
            self.assertRaises(BlockingIOError, mute.accept)

    def test_a_product_that_does_not_record_says_so(self):
        settings = self.folder / "platform.conf"
        settings.write_text("[custom-bool]\ncom.brimmel/featureconf/pvr.pvr_support=false\n", encoding="utf-8")
        self.environment["PVR_PLATFORM_CONFIG"] = str(settings)
        self.assertEqual(self.fail_with(NOT_RECORDING, "inf", "show", self.take(TELEVISION)),
                         "this product does not record")


class InfoShowAsked(SandboxedTest):
    def test_the_service_tells_whether_a_recording_is_under_way(self):
        shutil.copyfile(GOLDEN / "vexan-unfinished.inf", self.folder / "old.inf")
        shown = self.succeed("inf", "show", "old.srf")
        self.assertEqual((shown["state"], shown["record"]["record_complete"], shown["record"]["incomplete_reason"]),
                         ("cut-off", 1, 5))
        uri = self.succeed("record", "start", 1)["uri"]
        shown = self.succeed("inf", "show", uri)
        self.assertEqual((shown["state"], shown["record"]["record_complete"]), ("recording", 0))
        self.control("FailMethod", "is_recording_file", "org.example.Planted", "it is planted", 1)
        self.assertEqual(self.succeed("inf", "show", uri)["state"], "unfinished")
        self.control("Vanish", 0)
        self.assertEqual(self.succeed("inf", "show", uri)["state"], "unfinished")
        self.control("Return")
        self.succeed("record", "stop", 1)
        self.assertEqual(self.succeed("inf", "show", uri)["state"], "complete")

    def test_a_timeshift_under_way_is_no_recording_that_was_cut_off(self):
        self.succeed("timeshift", "start", 1)
        for name in "timeshift.tmp", "timeshift.inf":
            self.assertEqual(self.succeed("inf", "show", name, cwd=self.device)["state"], "recording")
        shutil.copyfile(self.device / "timeshift.inf", self.folder / "timeshift.inf")
        self.assertEqual(self.succeed("inf", "show", "timeshift.tmp")["state"], "cut-off")


# What is wrong with a file, and where; those that are not named are sound. Files of a pattern are looked at on their
# own.
TOO_LONG = ("warning", 256)  # what goes on behind the units that are read
PROBLEMS = {
    "vexan-empty-names": [("error", 0)],
    "ardel-limits": [("error", 788)],
    "selk-cut-names": [TOO_LONG],
    "vexan-version-0": [("error", 0)],
    "vexan-record-complete-2": [("error", 10627)],
    "vexan-texts-without-terminator": [("error", 257), ("error", 513), ("error", 769)],
    "vexan-texts-not-utf-8": [("error", 3), ("error", 260), ("error", 515)],
    "vexan-thumbnail-type-2": [("error", 794)],
    "selk-name-unpaired-high": [("error", 2)],
    "selk-name-unpaired-low": [("error", 2)],
    "selk-name-ends-high": [("error", 4)],
    "selk-name-pair-swapped": [("error", 0)],
    "selk-name-pair-across-the-cut": [TOO_LONG, ("error", 254)],
    "selk-name-pair-before-the-cut": [TOO_LONG],
    "selk-name-without-terminator": [("error", 510)],
    "selk-name-unpaired-behind-the-cut": [TOO_LONG],
    "selk-title-unpaired-high": [("error", 794)],
    "selk-title-unpaired-low": [("error", 794)],
    "selk-title-ends-high": [("error", 796)],
    "selk-title-pair-swapped": [("error", 792)],
    "selk-title-without-terminator": [("error", 1302)],
}


class InfoVerify(SideFilesTest):
    def verify(self, *names):
        """Exit code, and each file's findings."""
        code, output, errors = self.run_pvrctl("--json", "inf", "verify", *names)
        data = json.loads(output)
        self.assertEqual((data["sound"], errors == ""), (code == DONE, code == DONE))
        self.assertEqual(data["sound"], all(file["sound"] for file in data["files"]))
        return code, data["files"]

    def found(self, name):
        code, [file] = self.verify(name)
        problems = [(problem["severity"], problem["offset"]) for problem in file["problems"]]
        self.assertEqual(code, FAILED if any(severity == "error" for severity, _ in problems) else DONE)
        return file, problems

    def change(self, name, offset, kind, value):
        image = bytearray(self.info(name))
        struct.pack_into(kind, image, offset, value)
        (self.folder / name).with_suffix(".inf").write_bytes(image)

    def test_finds_nothing_wrong_with_sound_files(self):
        for path in sorted(GOLDEN.glob("*.inf")):
            if not path.stem.endswith("-pattern"):
                with self.subTest(file=path.name):
                    file, problems = self.found(self.take(path.stem))
                    self.assertEqual((problems, file["size"]), (PROBLEMS.get(path.stem, []), path.stat().st_size))
                    self.assertEqual(file["generation"].lower(), path.stem.partition("-")[0])

    def test_tells_what_is_wrong_and_where(self):
        for row in self.take_broken():
            name, extension = row["file"].split(".")
            if extension != "inf":
                continue
            with self.subTest(row=row):
                file, problems = self.found(row["file"])
                if row["result"] != 0:
                    self.assertEqual((problems, file["generation"]), ([("error", row["size"])], None))
                elif "bytes" in name or "-by-one" in name:
                    self.assertEqual((problems[0], file["generation"]), (("warning", RECORD_SIZE), "Vexan"))
                else:
                    self.assertEqual(problems, PROBLEMS.get(name, []))

    def test_of_longer_files_only_the_size_is_worth_a_warning(self):
        recording = self.take(TELEVISION)
        file = self.folder / (TELEVISION + ".inf")
        os.truncate(file, 2 ** 40)  # a hole: reading all of it would not end in time
        found, problems = self.found(recording)
        self.assertEqual((problems, found["size"]), ([("warning", RECORD_SIZE)], 2 ** 40))

    def test_the_position_lies_within_the_recording(self):
        recording = self.take(TELEVISION)
        self.change(recording, 786, "<I", 5400000)
        self.assertEqual(self.found(recording)[1], [])
        self.change(recording, 786, "<I", 5400001)
        self.assertEqual(self.found(recording)[1], [("error", 786)])
        self.change(recording, 10627, "<H", 0)  # how long it will be is not known yet
        self.assertEqual(self.found(recording)[1], [])
        older = self.take("ardel-television")
        self.change(older, 788, "<I", 91)
        self.assertEqual(self.found(older)[1], [("error", 788)])
        self.change(older, 788, "<I", 90)
        self.change(older, 784, "<I", 2)
        self.assertEqual(self.found(older)[1], [("error", 784)])

    def test_older_channel_numbers_are_looked_at(self):
        older = self.take("selk-television")
        self.change(older, 513, "B", 0xff)
        self.assertEqual(self.found(older)[1], [("error", 513)])

    def test_a_recording_belongs_to_it(self):
        name = self.take(TELEVISION, recording=False)
        code, [file] = self.verify(name)
        self.assertEqual((code, file["problems"]), (FAILED, [
            {"severity": "error", "offset": None,
             "message": f"there is no recording '{self.folder / name}' beside it"}]))
        (self.folder / name).mkdir()
        self.assertEqual(self.found(name)[1], [("error", None)])
        shutil.copyfile(GOLDEN / (TELEVISION + ".inf"), self.folder / "timeshift.inf")
        self.assertEqual(self.found("timeshift.inf")[1], [("error", None)])
        (self.folder / "timeshift.tmp").touch()
        self.assertEqual(self.found("timeshift.inf")[1], [])

    def test_what_is_no_file_is_not_waited_for(self):
        os.mkfifo(self.folder / "pipe.inf")
        (self.folder / "folder.inf").mkdir()
        for name in "pipe.srf", "folder.srf":
            code, [file] = self.verify(name)
            self.assertEqual((code, file["size"], file["problems"][0]["message"]), (
                FAILED, None, f"'{self.folder / name.replace('srf', 'inf')}' is no regular file"))

    def test_many_files_are_told_one_by_one(self):
        sound, broken = self.take(TELEVISION), self.take("vexan-pattern")
        code, files = self.verify(sound, broken, "missing.srf")
        self.assertEqual((code, [file["sound"] for file in files]), (FAILED, [True, False, False]))
        code, files = self.verify(sound, "missing.srf")
        self.assertEqual((code, files[1]["problems"][0]["message"]),
                         (NOT_FOUND, f"'{self.folder}/missing.inf': {MISSING}"))
        (self.folder / "dangling.inf").symlink_to("nowhere")
        self.assertEqual(self.verify("dangling.srf")[0], NOT_FOUND)
        code, text, errors = self.run_pvrctl("inf", "verify", sound, broken)
        self.assertEqual((code, errors), (FAILED, "pvrctl: 1 of 2 info files not sound\n"))
        self.assertEqual(text.splitlines()[:3], [f"file        {self.folder}/{TELEVISION}.inf",
                                                 f"generation  Vexan, {RECORD_SIZE} bytes", "sound       yes"])
        self.assertIn("wrong       at 0: version is 513, not 20", text.splitlines())


class InfoSet(SandboxedTest):
    take = SideFilesTest.take
    info = SideFilesTest.info

    def assert_changed(self, name, before, changes):
        """The bytes that were to change have, and no others."""
        wanted = bytearray(before)
        for offset, new in changes.items():
            wanted[offset:offset + len(new)] = new
        self.assertEqual(self.info(name), bytes(wanted))

    def test_fields_of_every_kind_are_changed(self):
        recording = self.take(TELEVISION)
        before = self.info(recording)
        digits = bytes(range(14)).hex()
        done = self.succeed("inf", "set", recording, "programe_title=Ünï = 1", "rating=0x10", "video_pid=4294967295",
                            "reserved_770=-5", "opaque_6170=1,0xffffffff", f"opaque_6144={digits}", "channel_num=",
                            "content_version=255", "reserved_774=-0x80000000")
        self.assertEqual(done, {"file": str(self.folder / (TELEVISION + ".inf")), "generation": "Vexan", "record": {
            "programe_title": "Ünï = 1", "rating": 16, "video_pid": 4294967295, "reserved_770": -5,
            "opaque_6170": [1, 4294967295], "opaque_6144": digits, "channel_num": "", "content_version": 255,
            "reserved_774": -2147483648}})
        self.assert_changed(recording, before, {
            258: "Ünï = 1".encode().ljust(256, b"\0"), 6142: b"\x10\0", 798: b"\xff" * 4, 770: b"\xfb\xff\xff\xff",
            6170: b"\1\0\0\0\xff\xff\xff\xff", 6144: bytes(range(14)), 514: bytes(256), 6260: b"\xff",
            774: b"\0\0\0\x80"})
        self.assertEqual(lines(self.run_pvrctl("inf", "set", recording, "resume_play_pos=61000", "flag_HD=0")[1]), {
            "file": str(self.folder / (TELEVISION + ".inf")), "resume_play_pos": "0:01:01", "flag_HD": "no"})

    def test_the_longest_text_and_all_bytes_fit(self):
        recording = self.take(TELEVISION)
        before = self.info(recording)
        self.succeed("inf", "set", recording, "channel_name=" + "x" * 255, "opaque_1248=" + "a5" * 4096)
        self.assert_changed(recording, before, {2: b"x" * 255 + b"\0", 1248: b"\xa5" * 4096})

    def test_an_older_file_keeps_all_but_the_position(self):
        for name in "ardel-television", "ardel-12052", "selk-television":
            with self.subTest(name=name):
                recording = self.take(name)
                before = self.info(recording)
                done = self.succeed("inf", "set", recording, "resume_play_pos=7999")
                self.assertEqual(done["record"], {"resume_play_pos": 7000})
                self.assert_changed(recording, before[:12048], {788: struct.pack("<I", 7)})
                self.assertEqual(self.fail_with(USAGE, "inf", "set", recording, "resume_play_pos=1", "rating=3"),
                                 f"rating cannot be set in '{self.folder / name}.inf': it is of the older generation "
                                 f"{done['generation']}, in which only resume_play_pos can be set")
                self.assert_changed(recording, before[:12048], {788: struct.pack("<I", 7)})

    def test_a_recording_that_was_cut_off_stays_unfinished(self):
        recording = self.take("vexan-unfinished")
        before = self.info(recording)
        self.succeed("inf", "set", recording, "rating=9")
        self.assert_changed(recording, before, {6142: b"\x09\0"})
        self.succeed("inf", "set", recording, "record_complete=1")
        self.assert_changed(recording, before, {6142: b"\x09\0", 10627: b"\1\0"})

    def test_a_device_that_takes_no_files_is_noticed(self):
        recording = self.take(TELEVISION)
        before = self.info(recording)
        (self.folder / (TELEVISION + ".tmp")).mkdir()  # in the way of what the library makes to see
        self.assertIn("was not changed: its folder takes no files", self.fail_with(FAILED, "inf", "set", recording,
                                                                                   "rating=9"))
        self.assertEqual(self.info(recording), before)

    def test_it_takes_a_service(self):
        recording = self.take(TELEVISION)
        before = self.info(recording)
        self.control("Vanish", 0)
        self.assertIn("the Recording service is not running", self.fail_with(NOT_RUNNING, "inf", "set", recording,
                                                                             "rating=9"))
        self.assertEqual(self.info(recording), before)


class InfoSetRefusals(SideFilesTest):
    """Without a bus: what is wrong with the line is told before it is missed."""

    def test_a_missing_bus_is_told(self):
        self.assertIn("the system bus cannot be reached", self.fail_with(NOT_RUNNING, "inf", "set",
                                                                         self.take(TELEVISION), "rating=9"))

    def test_what_does_not_fit_is_told(self):
        recording = self.take(TELEVISION)
        before = self.info(recording)
        number = "is no whole number, in decimal or with 0x"
        for change, message in [
                ("rating", "CHANGE: 'rating' is not FIELD=VALUE"),
                ("=1", "CHANGE: '' is no field of an info file"),
                ("Rating=1", "CHANGE: 'Rating' is no field of an info file"),
                ("version=20", "version: cannot be set: the library stamps it"),
                ("rating=", f"rating: '' {number}"),
                ("rating=x", f"rating: 'x' {number}"),
                ("rating=1x", f"rating: '1x' {number}"),
                ("rating=0x", f"rating: '0x' {number}"),
                ("rating=0x-1", f"rating: '0x-1' {number}"),
                ("rating=--1", f"rating: '--1' {number}"),
                ("rating= 1", f"rating: ' 1' {number}"),
                ("rating=65536", "rating: '65536' is not between 0 and 65535"),
                ("rating=-1", "rating: '-1' is not between 0 and 65535"),
                ("content_version=0x100", "content_version: '0x100' is not between 0 and 255"),
                ("duration=4294967296", "is not between 0 and 4294967295"),
                ("duration=" + "9" * 99, "is not between 0 and 4294967295"),
                ("reserved_770=2147483648", "is not between -2147483648 and 2147483647"),
                ("reserved_770=-2147483649", "is not between -2147483648 and 2147483647"),
                ("opaque_1082=1,2,3", "takes 4 numbers with commas between, not 3"),
                ("opaque_1082=1,2,3,4,5", "takes 4 numbers with commas between, not 5"),
                ("opaque_1082=1,,3,4", number),
                ("opaque_1082=1,2,3,4294967296", "is not between 0 and 4294967295"),
                ("opaque_1082=1,2,3,-1", "is not between 0 and 4294967295"),
                ("opaque_6144=" + "00" * 13, "opaque_6144: takes 28 hexadecimal digits, for 14 bytes"),
                ("opaque_6144=" + "00" * 15, "takes 28 hexadecimal digits"),
                ("opaque_6144=" + "0" * 29, "takes 28 hexadecimal digits"),
                ("opaque_6144=" + "00" * 13 + "0g", "takes 28 hexadecimal digits"),
                ("opaque_6144=" + "00" * 13 + "-1", "takes 28 hexadecimal digits"),
                ("channel_name=" + "x" * 256, "the text has 256 bytes, and the field holds 255"),
                ("channel_name=" + "ä" * 128, "the text has 256 bytes, and the field holds 255"),
                (b"channel_name=\xff", "channel_name: the text is not UTF-8")]:
            with self.subTest(change=change):
                change = os.fsdecode(change) if isinstance(change, bytes) else change
                self.assertIn(message, self.fail_with(USAGE, "inf", "set", recording, "major=1", change))
        self.assertIn("rating: is given twice", self.fail_with(USAGE, "inf", "set", recording, "rating=1", "rating=2"))
        self.assertIn("CHANGE is required", self.fail_with(USAGE, "inf", "set", recording))
        self.assertEqual(self.info(recording), before)

    def test_a_file_that_is_none_is_told(self):
        (self.folder / "short.inf").write_bytes(bytes(RECORD_SIZE - 1))
        self.assertIn("is no info file: it has 10904 bytes",
                      self.fail_with(FAILED, "inf", "set", "short.srf", "rating=1"))


if __name__ == "__main__":
    main()
