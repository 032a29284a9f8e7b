"""The man pages name what help and completion name, no more and no less, and readers of man pages take them."""
import itertools
import os
import pathlib
import re
import subprocess

from pvrctl_case import DONE, OPTIONS, PvrctlTest, main

PROGRAMS = ["pvrctl", "pvr-sandbox", "pvr-simulator", "pvr-make-stream"]


def page(program):
    return pathlib.Path(OPTIONS.man, program + ".1")


def plain(roff):
    return re.sub(r"\\f[BIR]", "", roff).replace("\\-", "-").replace("\\(aq", "'").replace("\\&", "")


def options_in(text):
    return set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", text))


class ManPages(PvrctlTest):
    def run_reader(self, *command, **environment):
        done = subprocess.run(list(map(str, command)), env=os.environ | {"LC_ALL": "C.UTF-8"} | environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        return done.stdout, done.stderr

    def test_are_taken_without_a_warning(self):
        for program in PROGRAMS:
            with self.subTest(program=program):
                complaints = self.run_reader("mandoc", "-Tlint", "-Wwarning", page(program))[0].splitlines()
                # The day on which it was built would make each build another.
                self.assertEqual([line for line in complaints if "missing date" not in line], [])
                text, complaints = self.run_reader("man", "--warnings", "-l", page(program), MANWIDTH="80")
                self.assertEqual(complaints, "")
                self.assertIn("DESCRIPTION", text)

    def test_with_a_fault_would_be_complained_of(self):
        broken = self.folder / "broken.1"
        broken.write_text('.TH broken 1 "" ""\n.SH NAME\n.PP\n\\fCbroken\\fR\n', encoding="utf-8")
        self.assertIn("WARNING", self.run_reader("mandoc", "-Tlint", "-Wwarning", broken)[0])

    def test_are_found_by_their_names(self):
        for program in PROGRAMS:
            self.assertRegex(self.run_reader("lexgrog", page(program))[0], rf': "{program} - \w.*"')

    def test_have_no_table_and_no_link_left(self):
        for program in PROGRAMS:
            text = page(program).read_text(encoding="utf-8")
            self.assertNotIn(".TS", text)
            self.assertNotRegex(text, r"\]\(")

    def test_name_every_option(self):
        for program in PROGRAMS[1:]:
            with self.subTest(program=program):
                helped = subprocess.run([pathlib.Path(OPTIONS.pvrctl).parent / program, "--help"], text=True,
                                        stdout=subprocess.PIPE, check=True).stdout
                said = options_in(plain(page(program).read_text(encoding="utf-8")))
                self.assertEqual(options_in(helped) - said - {"--help", "--version"}, set())
        said = options_in(plain(page("pvrctl").read_text(encoding="utf-8")))
        for command in commands_of(self):
            self.assertEqual(options_in(options_of(self, command)) - said, set(), command)


def help_of(test, command):
    code, text, _ = test.run_pvrctl(*command, "--help")
    test.assertEqual(code, DONE)
    return text


def options_of(test, command):
    return help_of(test, command).partition("\nOptions:\n")[2].partition("\nExamples:\n")[0]


def commands_below(test, command):
    listed = help_of(test, command).partition("\nCommands:\n")[2].partition("\n\n")[0]
    return re.findall(r"^  ([\w-]+)(?:  |$)", listed, re.MULTILINE)


def commands_of(test, command=()):
    """Every command there is, objects among them, as the grammar's help lists them."""
    below = [(*command, name) for name in commands_below(test, command)]
    return [*below, *itertools.chain(*(commands_of(test, one) for one in below))]


class Verbs(PvrctlTest):
    """Every verb of the grammar stands in the help, in the man page and in the completion, and no other."""

    def setUp(self):
        super().setUp()
        self.commands = commands_of(self)
        self.assertLessEqual({("play", "start"), ("sim", "fault", "add"), ("doctor",)}, set(self.commands))
        self.verbs = {one for one in self.commands if not any(other[:-1] == one for other in self.commands)}

    def test_are_completed(self):
        for command in [(), *(one for one in self.commands if one not in self.verbs)]:
            with self.subTest(command=command):
                completed = [line.split("\t")[0] for line in
                             self.run_pvrctl("complete", "--", *command, "")[1].splitlines()]
                self.assertEqual(completed, [one[-1] for one in self.commands if one[:-1] == command])

    def test_are_in_the_man_page(self):
        section = page("pvrctl").read_text(encoding="utf-8").partition(".SH COMMANDS\n")[2].partition("\n.SH ")[0]
        terms = [tuple(plain(term).split()) for term in re.findall(r"^\.TP .*\n(.+)$", section, re.MULTILINE)]
        terms = [term for term in terms if not term[0].startswith("-")]  # options of every command
        self.assertGreaterEqual(len(terms), len(self.verbs))
        named = {verb for verb in self.verbs for term in terms if term[:len(verb)] == verb}
        self.assertEqual(self.verbs - named, set(), "are not in the man page")
        self.assertEqual([term for term in terms if not any(term[:len(verb)] == verb for verb in self.verbs)], [],
                         "are no commands")

    def test_in_the_examples_of_the_man_page_are_there(self):
        text = plain(page("pvrctl").read_text(encoding="utf-8"))
        lines = set(re.findall(r"^pvrctl ([a-z][a-z-]*)", text, re.MULTILINE))
        self.assertLessEqual({"play", "record", "sim"}, lines)
        self.assertEqual(lines - {one[0] for one in self.commands}, set())


if __name__ == "__main__":
    main("man")
