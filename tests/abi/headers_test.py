"""The public headers as programs meet them: alone, in each language, with each compiler there is."""
import argparse
import itertools
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import exports

LANGUAGES = {"c99": "c", "c11": "c", "c++17": "c++", "c++20": "c++"}
STRICT = ["-pedantic", "-Wall", "-Wextra", "-Werror"]
RETIRED = [
    "svc_pvr_get_rec_default_dev_index",
    "svc_pvr_get_rec_device_key_by_index",
    "svc_pvr_get_recording_channel",
    "svc_pvr_get_recording_file_info",
    "svc_pvr_get_recording_time",
    "svc_pvr_is_pvr_operating",
    "svc_pvr_is_recording_available",
    "svc_pvr_is_recording_pause",
    "svc_pvr_remove_recording_info",
]
OPTIONS = argparse.Namespace()
COMPILERS = [name for name in ("gcc", "clang") if shutil.which(name)]


def compiled(compiler, standard, source, include, *options):
    """What a compiler says of a source text, having checked it and made nothing."""
    command = [compiler, "-x", LANGUAGES[standard], f"-std={standard}", "-I", include, *options, "-fsyntax-only", "-"]
    return subprocess.run(command, input=source, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          check=False)


class EveryHeader(unittest.TestCase):
    def setUp(self):
        self.headers = sorted(path.name for path in OPTIONS.include.glob("*.h"))
        self.assertEqual(self.headers, [
            "pvr_base.h", "pvr_callbacks.h", "pvr_events.h", "pvr_legacy.h", "pvr_playback.h", "pvr_recording.h",
            "pvr_records.h", "pvr_rights.h", "pvr_service_api.h", "pvr_side_files.h", "pvr_status.h", "pvr_storage.h"])
        self.assertTrue(COMPILERS, "neither gcc nor clang was found")

    def for_each(self, check):
        for compiler, standard, header in itertools.product(COMPILERS, LANGUAGES, self.headers):
            with self.subTest(compiler=compiler, standard=standard, header=header):
                check(compiler, standard, header)

    def test_compiles_alone_and_twice(self):
        def check(compiler, standard, header):
            source = f"#include <{header}>\n" * 2 + "extern int not_empty;\n"
            done = compiled(compiler, standard, source, OPTIONS.include, *STRICT)
            self.assertEqual((done.returncode, done.stdout), (0, ""))

        self.for_each(check)

    def test_is_refused_with_a_language_extension_planted(self):
        def check(compiler, standard, header):
            with tempfile.TemporaryDirectory() as folder:
                copy = shutil.copytree(OPTIONS.include, pathlib.Path(folder, "include"))
                with open(copy / header, "a", encoding="utf-8") as text:
                    text.write("typedef int planted[0];\n")
                source = f"#include <{header}>\nextern int not_empty;\n"
                done = compiled(compiler, standard, source, copy, *STRICT)
                self.assertNotEqual(done.returncode, 0)
                self.assertIn("planted[0]", done.stdout)

        self.for_each(check)


class Deprecation(unittest.TestCase):
    INCLUDE = "#include <pvr_service_api.h>\n"

    def warnings(self, compiler, standard, source):
        done = compiled(compiler, standard, self.INCLUDE + source, OPTIONS.include, "-Wdeprecated-declarations")
        self.assertEqual(done.returncode, 0, done.stdout)
        return [line for line in done.stdout.splitlines() if "-Wdeprecated-declarations" in line]

    def test_every_call_of_a_retired_function_warns_and_names_it(self):
        calls = "".join(f"int call_{name}(void);\nint call_{name}(void) {{ return {name}(0); }}\n" for name in RETIRED)
        for compiler in COMPILERS:
            for standard in LANGUAGES:
                with self.subTest(compiler=compiler, standard=standard):
                    warnings = self.warnings(compiler, standard, calls)
                    self.assertEqual(len(warnings), len(RETIRED), warnings)
                    for name in RETIRED:
                        self.assertTrue(any(name in warning for warning in warnings), name)

    def test_no_other_function_warns(self):
        for compiler in COMPILERS:
            names, faults = exports.in_headers(compiler, OPTIONS.include)
            self.assertEqual(faults, [])
            self.assertEqual(set(RETIRED) - names, set())
            others = sorted(name for name in names - set(RETIRED) if not name.startswith("_Z"))
            self.assertGreater(len(others), 20)
            uses = "".join(f"void *use_{name}(void);\nvoid *use_{name}(void) {{ return (void *){name}; }}\n"
                           for name in others)
            for standard in LANGUAGES:
                with self.subTest(compiler=compiler, standard=standard):
                    self.assertEqual(self.warnings(compiler, standard, uses), [])


class RecordLayout(unittest.TestCase):
    """The proofs of record_layout.cpp hold, and break when a record does."""

    def proved(self, include):
        source = pathlib.Path(OPTIONS.layout).read_text(encoding="utf-8")
        return [compiled(compiler, "c++20", source, include) for compiler in COMPILERS]

    def refused(self, change):
        records = (OPTIONS.include / "pvr_records.h").read_text(encoding="utf-8")
        changed = change(records)
        self.assertNotEqual(changed, records)
        with tempfile.TemporaryDirectory() as folder:
            include = shutil.copytree(OPTIONS.include, pathlib.Path(folder, "include"))
            (include / "pvr_records.h").write_text(changed, encoding="utf-8")
            for done in self.proved(include):
                self.assertNotEqual(done.returncode, 0)
                self.assertRegex(done.stdout, "static.assert")

    def test_holds(self):
        for done in self.proved(OPTIONS.include):
            self.assertEqual((done.returncode, done.stdout), (0, ""))

    def test_breaks_when_records_are_padded(self):
        self.refused(lambda text: text.replace("__attribute__((packed))", ""))

    def test_breaks_when_a_text_is_one_byte_longer(self):
        self.refused(lambda text: text.replace("char product_name[255];", "char product_name[256];"))

    def test_breaks_when_two_fields_of_one_type_change_places(self):
        self.refused(lambda text: text.replace(" major;", " @;").replace(" minor;", " major;").replace("@", "minor"))

    def test_breaks_when_a_number_loses_its_sign(self):
        self.refused(lambda text: text.replace(" int64_t avail_size;", " uint64_t avail_size;"))


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for option in "include", "layout":
        parser.add_argument("--" + option, required=True, type=lambda path: pathlib.Path(path).resolve())
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    print("compilers:", *COMPILERS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
