"""Compares the library with baseline.abi: every exported function, its types, and how its records are laid out.

With --update it writes the baseline instead. The comparison is libabigail's, on debugging information.
"""
import argparse
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()
BASELINE = pathlib.Path(__file__).resolve().with_name("baseline.abi")
# Nothing that another folder, compiler or machine of the same kind would write differently.
WRITING = ["--drop-private-types", "--exported-interfaces-only", "--no-architecture", "--no-comp-dir-path",
           "--no-corpus-path", "--no-elf-needed", "--no-parameter-names", "--no-show-locs", "--type-id-style", "hash"]
RECORDS = {"channel_info", "device_info", "expired_content_section", "pvr_file_info_s", "pvr_recording_info",
           "pvr_result_third", "pvr_service_result", "pvr_service_signal", "rec_dev_capacity", "yuv_info"}


def run(*command):
    return subprocess.run([str(word) for word in command], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False)


def written():
    """The library as a baseline says it. Sources are named from the tree's root."""
    done = run("abidw", *WRITING, "--headers-dir", OPTIONS.include, OPTIONS.library)
    if done.returncode != 0:
        raise AssertionError(f"abidw ended with {done.returncode}:\n{done.stdout}")
    return re.sub(r"(<abi-instr [^>]*path=')[^']*?(src/[^']*')", r"\1\2", done.stdout)


def differences(baseline):
    """What abidiff reports, or nothing when the two are the same. A const that went and the like are reported too."""
    with tempfile.TemporaryDirectory() as folder:
        now = pathlib.Path(folder, "library.abi")
        # Not the library itself: with --headers-dir2, which its private types take, abidiff 2.2 passes over records.
        now.write_text(written(), encoding="utf-8")
        done = run("abidiff", "--harmless", baseline, now)
    # 4: the two differ, 8: incompatibly; any other bit is a failure of the comparison itself.
    if done.returncode & ~0b1100:
        raise AssertionError(f"abidiff ended with {done.returncode}:\n{done.stdout}")
    return done.stdout if done.returncode else ""


def update():
    if not has_debugging_information():
        sys.exit(f"{OPTIONS.library}: has no debugging information")
    BASELINE.write_text(written(), encoding="utf-8")
    print(f"wrote {BASELINE}")


def has_debugging_information():
    return ".debug_info" in run("readelf", "--sections", "--wide", OPTIONS.library).stdout


class Baseline(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        if not has_debugging_information():
            raise AssertionError(f"{OPTIONS.library}: has no debugging information; the preset release gives it some")
        cls.text = BASELINE.read_text(encoding="utf-8")

    def differences_from(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "other.abi")
            path.write_text(text, encoding="utf-8")
            return differences(path)

    def tampered(self, pattern, replacement):
        text, count = re.subn(pattern, replacement, self.text, count=1, flags=re.DOTALL)
        self.assertEqual(count, 1, pattern)
        return text

    def test_is_what_the_library_is(self):
        report = differences(BASELINE)
        if report:
            again = shlex.join([sys.executable, *sys.argv, "--update"])
            self.fail(f"\n{report}\nPrograms that are built already rely on the old form. "
                      f"If the change is meant, rewrite the baseline:\n  {again}")

    def test_names_the_committed_symbols(self):
        symbols = re.findall(r"<elf-symbol name='([^']*)'", self.text)
        committed = pathlib.Path(OPTIONS.list).read_text(encoding="utf-8").split()
        self.assertEqual(sorted(symbols), sorted(committed))
        described = set(re.findall(r" elf-symbol-id='([^@']*)@", self.text))
        # g++ makes of it a second name for IsFileRecordedLocal, which has the same type and code.
        self.assertEqual(set(committed) - described, {"IsFileRecordedLocalVexan"})

    def test_has_every_record_of_the_headers(self):
        self.assertEqual(set(re.findall(r"<class-decl name='([^']*)'[^>]*[^/]>", self.text)), RECORDS)

    def test_says_nothing_of_the_machine_that_wrote_it(self):
        self.assertEqual(re.findall(r"='(?:/|\.\./)[^']*'", self.text), [])
        self.assertNotIn("filepath=", self.text)
        self.assertNotIn("architecture=", self.text)

    def test_a_field_in_another_place_is_reported_for_each_record(self):
        for record in sorted(RECORDS):
            with self.subTest(record=record):
                whole = re.search(rf"<class-decl name='{record}'.*?</class-decl>", self.text, re.DOTALL)[0]
                # The greedy pattern meets the last field.
                moved = re.sub(r"(.*layout-offset-in-bits=')(\d+)", lambda at: at[1] + str(int(at[2]) + 8), whole,
                               count=1, flags=re.DOTALL)
                report = self.differences_from(self.text.replace(whole, moved))
                self.assertIn(f"struct {record}", report)
                self.assertIn("offset changed", report)

    def test_a_function_that_is_not_in_the_baseline_is_reported(self):
        name = "svc_pvr_play_pause"
        text = self.tampered(rf"\s*<elf-symbol name='{name}'[^>]*/>", "")
        text = re.sub(rf"\s*<function-decl name='{name}'.*?</function-decl>", "", text, flags=re.DOTALL)
        report = self.differences_from(text)
        self.assertIn("1 Added function", report)
        self.assertIn(name, report)

    def test_a_parameter_of_another_type_is_reported(self):
        wide = re.search(r"<type-decl name='long long int'[^>]* id='([^']*)'", self.text)[1]
        text = self.tampered(r"(<function-decl name='svc_pvr_play_pause'[^>]*>\s*<parameter type-id=')[^']*",
                             rf"\g<1>{wide}")
        report = self.differences_from(text)
        self.assertRegex(report, r"function int svc_pvr_play_pause\(.*\)")
        self.assertIn("type name changed from 'long long int' to 'int'", report)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    for option in "library", "include", "list":
        parser.add_argument("--" + option, required=True)
    parser.add_argument("--update", action="store_true", help="write the baseline")
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    if OPTIONS.update:
        update()
    else:
        unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
