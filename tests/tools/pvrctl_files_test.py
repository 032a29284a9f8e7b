"""Paths of recordings, and the fingerprint file and the colour-format file beside one. Most of it without a bus:
these commands work on files alone wherever the library does."""
import fcntl
import hashlib
import json
import os
import pathlib
import pty
import shutil
import subprocess

from pvrctl_case import (DONE, FAILED, HANGS, NOT_FOUND, NOT_RUNNING, OPTIONS, USAGE, ScriptedTest, lines, main)
from side_files_case import GOLDEN, MISSING, TELEVISION, SideFilesTest, bytes_of


class Paths(SideFilesTest):
    VERBS = (["inf", "show"], ["inf", "verify"], ["inf", "set"], ["sas", "list"], ["sas", "get"], ["sas", "put"],
             ["thumb", "info"])

    def each(self, path):
        """Every verb, with the rest of its line."""
        for verb in self.VERBS:
            rest = {"set": ["rating=1"], "get": ["7", "--output", "out"], "put": ["7"]}.get(verb[1], [])
            with self.subTest(verb=verb, path=path):
                yield [*verb, path, *rest]

    def test_of_other_files_are_refused(self):
        for path in "first", "first.SRF", "first.ts", "first.sas", ".", "..", "srf", "first.srf/":
            for line in self.each(path):
                self.assertEqual(self.fail_with(USAGE, *line),
                                 f"'{path}' names no recording: it has to end in .srf, .inf or .tmp")

    def test_that_the_library_would_cut_are_refused(self):
        depth = self.folder
        while len(str(depth)) < 200:
            depth /= "d" * 20
        depth.mkdir(parents=True)
        longest = str(depth / "x").ljust(251, "x") + ".inf"
        shutil.copyfile(GOLDEN / (TELEVISION + ".inf"), longest)
        self.assertEqual(self.succeed("inf", "show", longest)["file"], longest)
        too_long = longest[:-4] + "x.inf"
        for path in too_long, os.path.relpath(too_long, self.folder):  # it is sent whole
            for line in self.each(path):
                self.assertEqual(self.fail_with(USAGE, *line),
                                 f"the path of the file is longer than 255 bytes: {too_long}")
        for line in self.each("x" * 300 + ".srf"):
            self.assertIn("longer than 255 bytes", self.fail_with(USAGE, *line))
        self.assertEqual([path.name for path in depth.iterdir()], [pathlib.Path(longest).name])

    def test_that_are_not_utf_8_are_refused(self):
        for line in self.each(os.fsdecode(b"no\xfftext.srf")):
            self.assertEqual(self.fail_with(USAGE, *line),
                             f"the path of the file is not UTF-8: {self.folder}/no\ufffdtext.srf")

    def test_of_nothing_are_not_found(self):
        for path in "missing.srf", "missing/missing.srf", "/dev/null/missing.tmp":
            for line in self.each(path):
                code, output, _ = self.run_pvrctl(*line)
                self.assertEqual((code, output != ""), (NOT_FOUND, line[:2] == ["inf", "verify"]))
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_keep_their_name_and_not_their_folder(self):
        (self.folder / "real").mkdir()
        (self.folder / "link").symlink_to("real")
        for name in "first.inf", "other.inf":
            shutil.copyfile(GOLDEN / (TELEVISION + ".inf"), self.folder / "real" / name)
        (self.folder / "real" / "other.srf").touch()
        (self.folder / "real" / "first.srf").symlink_to("other.srf")
        self.assertEqual(self.succeed("inf", "verify", "link/first.srf")["files"][0]["file"],
                         str(self.folder / "real" / "first.inf"))


class Fingerprints(SideFilesTest):
    def run_bytes(self, *arguments, **popen):
        """The same as run_pvrctl, with the bytes that are printed."""
        return subprocess.run([OPTIONS.pvrctl, *map(str, arguments)], env=self.environment, cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=HANGS, check=False, **popen)

    def test_are_listed_and_got(self):
        for dump in sorted(GOLDEN.glob("*.sas.json")):
            name = dump.name.removesuffix(".sas.json")
            recording = self.take(name, recording=False)
            blocks = json.loads(dump.read_text(encoding="utf-8"))["blocks"]
            with self.subTest(file=name):
                listed = self.succeed("sas", "list", recording)
                self.assertEqual((listed["file"], listed["count"]), (str(self.folder / (name + ".sas")), len(blocks)))
                self.assertEqual([(block["time"], block["size"], block["offset"]) for block in listed["blocks"]],
                                 [(block["time"], block["size"], block["offset"]) for block in blocks])
                times = [block["time"] for block in blocks]
                self.assertEqual([block["readable"] for block in listed["blocks"]],
                                 [times.index(time) == index for index, time in enumerate(times)])
                for block in {block["time"]: block for block in reversed(blocks[:8])}.values():
                    got = self.run_bytes("sas", "get", recording, block["time"])
                    self.assertEqual((got.returncode, got.stderr), (DONE, b""))
                    self.assertEqual((len(got.stdout), hashlib.sha256(got.stdout).hexdigest()),
                                     (block["size"], block["sha256"]))

    def test_that_are_broken_are_told(self):
        for row in self.take_broken():
            for read in row.get("reads", []):
                with self.subTest(row=row):
                    got = self.run_bytes("sas", "get", row["file"].replace(".sas", ".srf"), read["time"])
                    if read["result"] == 0:
                        self.assertEqual((got.returncode, len(got.stdout)), (DONE, read["size"]))
                        continue
                    self.assertEqual(got.stdout, b"")
                    message = " ".join(got.stderr.decode().split())
                    if read["size"] is not None:
                        self.assertEqual(got.returncode, FAILED)
                        self.assertIn("is not whole in", message)
                    elif row["file"].startswith("count-300"):
                        self.assertEqual(got.returncode, NOT_FOUND)
                        self.assertIn("has no block of the time 1", message)
                    else:
                        self.assertEqual(got.returncode, FAILED)
                        self.assertIn("is no fingerprint file", message)
                        self.assertIn("is no fingerprint file",
                                      self.fail_with(FAILED, "sas", "list", row["file"].replace(".sas", ".srf")))
        self.assertEqual(self.run_pvrctl("sas", "list", "block-missing.srf")[1],
                         "7  5 bytes at 4808, not whole in the file\n")

    def test_that_cannot_be_read_are_marked(self):
        self.assertRegex(self.run_pvrctl("sas", "list", self.take("same-time"))[1],
                         r"\d+ bytes at \d+, behind another of the same time, and cannot be read\n")

    def test_go_to_a_file(self):
        recording = self.take("one-block")
        got = self.succeed("sas", "get", recording, 1766952000, "--output", "block")
        self.assertEqual(got, {"file": str(self.folder / "one-block.sas"), "time": 1766952000, "size": 38,
                               "output": "block"})
        self.assertEqual((self.folder / "block").read_bytes(), b"a fingerprint is opaque to the library")
        self.assertIn("has no block of the time 5", self.fail_with(NOT_FOUND, "sas", "get", recording, 5,
                                                                  "--output", "block"))
        self.assertEqual((self.folder / "block").stat().st_size, 38)  # what is there is not lost for nothing
        self.assertIn("cannot write '/dev/full': No space left on device",
                      self.fail_with(FAILED, "sas", "get", recording, 1766952000, "--output", "/dev/full"))
        self.assertIn(MISSING, self.fail_with(NOT_FOUND, "sas", "get", recording, 1766952000, "--output", "no/block"))

    def test_do_not_mix_with_other_output(self):
        recording = self.take("one-block")
        for form in "--json", "--quiet":
            got = self.run_bytes("sas", "get", recording, 1766952000, form)
            self.assertEqual((got.returncode, got.stdout), (USAGE, b""))
        ours, terminal = pty.openpty()
        self.addCleanup(os.close, ours)
        code, _, errors = self.run_pvrctl("sas", "get", recording, 1766952000, stdout=terminal)
        os.close(terminal)
        self.assertEqual(code, USAGE)
        self.assertIn("is not printed to a terminal", " ".join(errors.split()))
        self.assertRaises(OSError, os.read, ours, 1)  # nothing was: the other end has gone

    def test_are_stored_without_a_service(self):
        recording = self.take(TELEVISION)
        file = self.folder / (TELEVISION + ".sas")
        stored = json.dumps({"file": str(file), "time": -7, "size": 3, "stored": True, "told": False},
                            separators=(",", ":")) + "\n"
        (self.folder / "block").write_bytes(b"a\0b")
        message = self.fail_with(NOT_RUNNING, "sas", "put", recording, -7, "--input", "block", data=stored)
        self.assertIn("the block is stored, but the service was not told: the system bus cannot be reached", message)
        self.assertEqual(self.run_bytes("sas", "get", recording, -7).stdout, b"a\0b")
        self.assertEqual(self.run_bytes("sas", "put", recording, 8, input=bytes(100000)).returncode, NOT_RUNNING)
        self.assertEqual(self.run_bytes("sas", "get", recording, 8).stdout, bytes(100000))
        self.assertEqual(file.stat().st_size, 4808 + 3 + 100000)

    def test_are_not_stored_where_there_is_no_recording(self):
        self.fail_with(NOT_FOUND, "sas", "put", "typo.srf", 1)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_are_not_stored_in_other_files(self):
        for row in self.take_broken():
            if row.get("write") == -1:
                with self.subTest(row=row):
                    file = self.folder / row["file"]
                    before = file.read_bytes()
                    message = self.fail_with(FAILED, "sas", "put", file.with_suffix(".srf"), 9)
                    self.assertRegex(message, "is no fingerprint file|is full: it has 300 blocks|cannot be stored in")
                    self.assertEqual(file.read_bytes(), before)
        self.assertIn("is full: it has 300 blocks", self.fail_with(FAILED, "sas", "put", self.take("full"), 1))

    def test_are_not_stored_when_they_cannot_be_read(self):
        recording = self.take("one-block")
        before = (self.folder / "one-block.sas").read_bytes()
        put = ["sas", "put", recording, 1]
        self.assertIn("'missing': " + MISSING, self.fail_with(NOT_FOUND, *put, "--input", "missing"))
        self.assertIn("cannot read '.': Is a directory", self.fail_with(FAILED, *put, "--input", "."))
        got = self.run_bytes("sas", "put", recording, 1, preexec_fn=lambda: os.close(0))
        self.assertEqual(got.returncode, FAILED)
        self.assertIn("cannot read standard input: Bad file descriptor", " ".join(got.stderr.decode().split()))
        self.assertEqual((self.folder / "one-block.sas").read_bytes(), before)

    def test_have_times_of_64_bits(self):
        recording = self.take("several-blocks")
        for time in -2 ** 63, 2 ** 63 - 1:
            self.assertEqual(self.run_bytes("sas", "get", recording, time).returncode, DONE)
        for time in "x", 2 ** 63, "":
            self.fail_with(USAGE, "sas", "get", recording, time, "--output", "block")

    def test_wait_for_their_lock(self):
        recording = self.take("one-block")
        with open(self.folder / "one-block.sas", "rb") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            listing = self.begin("sas", "list", self.folder / recording)
            with self.assertRaises(subprocess.TimeoutExpired):
                listing.wait(0.2)
            fcntl.flock(file, fcntl.LOCK_UN)
            self.assertEqual(self.finish(listing)[0], DONE)


class FingerprintsTold(ScriptedTest):
    def test_the_service_is_told_the_time(self):
        recording = self.folder / "first.srf"
        recording.touch()
        self.answer(set_fp_rec_time="(0,)")
        stored = {"file": str(self.folder / "first.sas"), "time": 90, "size": 0, "stored": True, "told": True}
        self.assertEqual(self.succeed("sas", "put", "first.srf", 90), stored)
        self.assertEqual(lines(self.run_pvrctl("sas", "put", "first.srf", 91)[1])["service told"], "yes")

    def test_an_error_of_the_service_is_told_apart(self):
        (self.folder / "first.srf").touch()
        self.answer(set_fp_rec_time="('one',)")
        code, output, errors = self.run_pvrctl("--json", "sas", "put", "first.srf", 90)
        self.assertEqual((code, json.loads(output)["stored"], json.loads(output)["told"]), (FAILED, True, False))
        self.assertIn("the block is stored, but the service was not told: the answer to 'set_fp_rec_time' cannot be "
                      "understood", json.loads(errors)["error"]["message"])


class Thumbnails(SideFilesTest):
    def test_are_told_as_the_file_says(self):
        for name in "picture", "pattern", "longer":
            with self.subTest(name=name):
                shutil.copyfile(GOLDEN / (name + ".cft"), self.folder / (name + ".cft"))
                shown = self.succeed("thumb", "info", name + ".srf")
                dump = json.loads((GOLDEN / (name + ".cft.json")).read_text(encoding="utf-8"))["record"]
                self.assertEqual(shown, {"file": str(self.folder / (name + ".cft"))} | {
                    row["name"]: bytes_of(row).hex() if "hex" in row else row["value"] for row in dump})
        self.assertEqual(lines(self.run_pvrctl("thumb", "info", "picture.srf")[1]), {
            "file": str(self.folder / "picture.cft"), "colour format": "1, planar 4:2:0", "size": "320 x 180"})

    def test_that_are_broken_are_told(self):
        for row in self.take_broken():
            if row["file"].endswith(".cft"):
                name = row["file"].replace(".cft", ".srf")
                with self.subTest(row=row):
                    if row["result"] == 0:
                        self.succeed("thumb", "info", name)
                    else:
                        self.assertIn("has fewer than 52 bytes", self.fail_with(FAILED, "thumb", "info", name))
        (self.folder / "folder.cft").mkdir()
        self.assertIn("is no regular file", self.fail_with(FAILED, "thumb", "info", "folder.srf"))


if __name__ == "__main__":
    main()
