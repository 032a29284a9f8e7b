"""The log's stand-in: where lines go, which are kept, and what becomes of wrong settings."""
import argparse
import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()
HEAD = r"\d\d:\d\d:\d\d\.\d{6} (?P<pid>\d+) TAG (?P<level>\w+) +"
NOTHING_KEPT = "0 0 0 0 0 0"


def start(*arguments, errors=subprocess.PIPE, **settings):
    environment = {name: value for name, value in os.environ.items() if name not in ("PVR_LOG", "PVR_LOG_LEVEL")}
    return subprocess.Popen([OPTIONS.program, *arguments], text=True, stdout=subprocess.PIPE, stderr=errors,
                            env=environment | settings)


class Log(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = pathlib.Path(folder.name, "log.txt")

    def logged(self, *arguments, **settings):
        """What a program printed, and what came on its error output, once it has ended well."""
        program = start(*arguments, **settings)
        output, errors = program.communicate(timeout=60)
        self.assertEqual(program.returncode, 0, errors)
        self.pid = str(program.pid)
        return output.strip(), errors

    def priorities(self, text):
        """The priorities of the lines, every one of which must be whole."""
        found = []
        for line in text.splitlines():
            match = re.fullmatch(HEAD + r"priority (\d)", line)
            self.assertTrue(match, line)
            self.assertEqual(match["pid"], self.pid)
            found.append(int(match[3]))
        return found

    def test_is_off_without_a_setting(self):
        self.assertEqual(self.logged("lines"), (NOTHING_KEPT, ""))

    def test_is_off_when_it_is_set_to_off_or_to_nothing(self):
        for setting in "off", "":
            with self.subTest(setting=setting):
                self.assertEqual(self.logged("lines", PVR_LOG=setting, PVR_LOG_LEVEL="debug"), (NOTHING_KEPT, ""))

    def test_goes_to_standard_error_from_info_on(self):
        output, errors = self.logged("lines", PVR_LOG="stderr")
        self.assertEqual(self.priorities(errors), [4, 5, 6, 7])
        self.assertEqual(output, "0 0 11 11 11 11")

    def test_names_the_level_of_each_line(self):
        errors = self.logged("lines", PVR_LOG="stderr", PVR_LOG_LEVEL="debug")[1]
        levels = [re.match(HEAD, line)["level"] for line in errors.splitlines()]
        self.assertEqual(levels, ["debug", "info", "warning", "error", "error"])

    def test_keeps_what_is_at_its_level_or_above(self):
        for level, kept in {"debug": [3, 4, 5, 6, 7], "info": [4, 5, 6, 7], "warning": [5, 6, 7], "error": [6, 7],
                            "": [4, 5, 6, 7]}.items():
            with self.subTest(level=level):
                self.assertEqual(self.priorities(self.logged("lines", PVR_LOG="stderr", PVR_LOG_LEVEL=level)[1]), kept)

    def test_goes_to_a_file_behind_what_is_there(self):
        self.file.write_text("an older line\n", encoding="utf-8")
        self.assertEqual(self.logged("lines", PVR_LOG=f"file:{self.file}"), ("0 0 11 11 11 11", ""))
        older, new = self.file.read_text(encoding="utf-8").split("\n", 1)
        self.assertEqual(older, "an older line")
        self.assertEqual(self.priorities(new), [4, 5, 6, 7])

    def test_says_when_the_destination_is_unknown_and_goes_on_without(self):
        self.assertEqual(self.logged("lines", PVR_LOG="paper"),
                         (NOTHING_KEPT, "PVR_LOG: 'paper' is none of off, stderr, journal, file:PATH\n"))

    def test_says_when_the_file_cannot_be_written_and_goes_on_without(self):
        path = self.file.parent / "missing" / "log.txt"
        self.assertEqual(self.logged("lines", PVR_LOG=f"file:{path}"),
                         (NOTHING_KEPT, f"PVR_LOG: cannot write {path}: No such file or directory\n"))

    def test_says_when_the_level_is_unknown_and_goes_on_with_info(self):
        errors = self.logged("lines", PVR_LOG="stderr", PVR_LOG_LEVEL="loud")[1]
        complaint, lines = errors.split("\n", 1)
        self.assertEqual(complaint, "PVR_LOG_LEVEL: 'loud' is none of debug, info, warning, error")
        self.assertEqual(self.priorities(lines), [4, 5, 6, 7])

    def test_takes_a_line_of_any_length_and_any_text(self):
        text = "100% %s %n " + "x" * 20000
        self.assertRegex(self.logged("text", text, PVR_LOG="stderr")[1], f"^{HEAD}{re.escape(text)}\n$")

    def assert_whole_lines_of(self, text, writers, count, length):
        """Every line belongs to one writer from end to end, and each writer's lines are all there."""
        writers = {writer.args[-1]: str(writer.pid) for writer in writers}
        order = []
        for line in text.splitlines():
            match = re.fullmatch(HEAD + r"\[(?P<letter>\w)(?P=letter)*\]", line)
            self.assertTrue(match, line[:200])
            self.assertEqual(match["pid"], writers[match["letter"]])
            self.assertEqual(match.end() - match.start("letter") - 1, length)
            order.append(match["letter"])
        self.assertEqual(collections.Counter(order), dict.fromkeys(writers, count))

    def test_lines_of_several_processes_do_not_mix_in_a_file(self):
        count, length = 400, 20000
        writers = [start("many", str(count), str(length), letter, PVR_LOG=f"file:{self.file}") for letter in "abcd"]
        for writer in writers:
            self.assertEqual(writer.communicate(timeout=60), ("", ""))
        self.assert_whole_lines_of(self.file.read_text(encoding="utf-8"), writers, count, length)

    def test_lines_of_several_processes_do_not_mix_on_one_error_output(self):
        count, length = 400, 3000  # what a pipe takes in one piece
        reading, writing = os.pipe()
        with open(reading, encoding="utf-8") as output:
            writers = [start("many", str(count), str(length), letter, errors=writing, PVR_LOG="stderr")
                       for letter in "abcd"]
            os.close(writing)
            text = output.read()
        for writer in writers:
            self.assertEqual(writer.communicate(timeout=60), ("", None))
        self.assert_whole_lines_of(text, writers, count, length)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
