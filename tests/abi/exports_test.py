"""Shows that exports.py notices what it is there to notice, on a small library and on the real one."""
import argparse
import pathlib
import subprocess
import sys
import tempfile
import unittest

import exports

HEADER = """#define PVR_API __attribute__((visibility("default")))
#define RETIRED __attribute__((deprecated("gone; use the other (one)")))
#ifdef __cplusplus
extern "C" {
#endif
typedef void (*callback)(int, void *);
enum code { FIRST = (1), SECOND = 2 };
struct __attribute__((packed)) record { char text[4]; };
PVR_API int open_it(void);
PVR_API RETIRED unsigned close_it(const struct record *what, callback called);
#ifdef __cplusplus
}
PVR_API int take_it(const char *text);
#endif
"""
SOURCE = """#include "sample.h"
int open_it() { return 0; }
unsigned close_it(const record *, callback) { return 0; }
int take_it(const char *) { return 0; }
"""
TEMPLATES = """#include <string>
#include <vector>
static std::vector<std::string> kept;
void keep(const char *text) { kept.emplace_back(text); }
"""
NAMES = ["_Z7take_itPKc", "close_it", "open_it"]
MAP = exports.NODE + " {\n global:\n%s local:\n  *;\n};\n"
OPTIONS = argparse.Namespace()


class Sample(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()
        self.map = self.folder / "sample.map"
        self.list = self.folder / "names.txt"
        (self.folder / "sample.h").write_text(HEADER)
        (self.folder / "sample.cpp").write_text(SOURCE)
        self.write_map(NAMES)
        self.list.write_text("\n".join(NAMES))

    def write_map(self, names):
        self.map.write_text(MAP % "".join(f"  {name};\n" for name in names))

    def replace_in_header(self, old, new):
        self.assertIn(old, HEADER)
        (self.folder / "sample.h").write_text(HEADER.replace(old, new))

    def faults(self, link_with_map=True):
        library = self.folder / "libsample.so"
        script = [f"-Wl,--version-script={self.map}"] if link_with_map else []
        subprocess.run([OPTIONS.compiler, "-shared", "-fPIC", "-w", *script, "-o", library,
                        self.folder / "sample.cpp"], check=True)
        return exports.check("nm", OPTIONS.compiler, library, self.folder, self.map, self.list)[0]

    def test_four_that_agree_have_no_fault(self):
        self.assertEqual(self.faults(), [])

    def test_a_name_that_only_the_list_lacks(self):
        self.list.write_text("\n".join(NAMES[:-1]))
        self.assertEqual(self.faults(), ["open_it: in library, headers, sample.map, but not in names.txt"])

    def test_a_name_that_only_the_list_has(self):
        self.list.write_text("\n".join(NAMES + ["reopen_it"]))
        self.assertEqual(self.faults(), ["reopen_it: in names.txt, but not in library, headers, sample.map"])

    def test_a_declaration_that_is_missing(self):
        self.replace_in_header("PVR_API int take_it(const char *text);", "")
        self.assertEqual(self.faults(), ["_Z7take_itPKc: in library, sample.map, names.txt, but not in headers"])

    def test_a_declaration_without_its_mark(self):
        self.replace_in_header("PVR_API int open_it", "int open_it")
        self.assertIn("open_it: declared in a header without PVR_API", self.faults())

    def test_another_linkage_than_the_exported_one(self):
        self.replace_in_header('extern "C" {', 'extern "C++" {')
        faults = self.faults()
        self.assertIn("_Z7open_itv: in headers, but not in library, sample.map, names.txt", faults)
        self.assertIn("open_it: in sample.map, names.txt, but not in library, headers", faults)

    def test_headers_that_declare_nothing(self):
        self.list.write_text("")
        (self.folder / "sample.h").write_text("")
        (self.folder / "sample.cpp").write_text("static int nothing;")
        faults = self.faults(link_with_map=False)
        self.assertIn(f"{self.folder}: no header declares a function with PVR_API", faults)
        self.assertIn(f"{self.folder}/libsample.so: exports nothing at all", faults)

    def test_a_name_that_the_map_lacks_is_not_exported_either(self):
        self.write_map(NAMES[:-1])
        self.assertEqual(self.faults(), ["open_it: in headers, names.txt, but not in library, sample.map"])

    def test_a_wildcard_in_the_map(self):
        self.write_map(NAMES + ["open_*"])
        self.assertIn("sample.map: 'open_*' is no plain name", self.faults())

    def test_another_version_node(self):
        self.map.write_text(self.map.read_text().replace(exports.NODE, "OTHER_1"))
        faults = self.faults()
        self.assertIn(f"sample.map: the node is OTHER_1, not {exports.NODE}", faults)
        self.assertIn(f"open_it: exported by the library without the version {exports.NODE}: 'open_it@@OTHER_1'",
                      faults)

    def test_a_library_linked_without_the_map(self):
        (self.folder / "sample.cpp").write_text(SOURCE + TEMPLATES)
        faults = self.faults(link_with_map=False)
        self.assertIn(f"open_it: exported by the library without the version {exports.NODE}: 'open_it'", faults)
        weak = [fault for fault in faults if fault.startswith("_ZNSt6vector") and "as 'W'" in fault]
        self.assertTrue(weak, "the weak symbols of std::vector were not noticed")

    def test_a_list_out_of_order(self):
        self.list.write_text("\n".join(reversed(NAMES)))
        self.assertEqual(self.faults(), ["names.txt: is not sorted by bytes (LC_ALL=C sort -u)"])


class RealLibrary(unittest.TestCase):
    """Only the list is tampered with: the script is run as the test of the library runs it."""

    def run_with_list(self, names):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "names.txt")
            path.write_text("\n".join(names) + "\n")
            return subprocess.run([sys.executable, "-B", exports.__file__, "--compiler", OPTIONS.compiler,
                                   "--library", OPTIONS.library, "--include", OPTIONS.include, "--map", OPTIONS.map,
                                   "--list", path], text=True, stdout=subprocess.PIPE, check=False)

    def setUp(self):
        self.names = pathlib.Path(OPTIONS.list).read_text().split()

    def test_the_committed_list_passes(self):
        done = self.run_with_list(self.names)
        self.assertEqual(done.returncode, 0, done.stdout)

    def test_every_name_taken_out_is_reported(self):
        done = self.run_with_list([])
        self.assertEqual(done.returncode, 1, done.stdout)
        reported = {line.partition(":")[0] for line in done.stdout.splitlines() if "but not in names.txt" in line}
        self.assertEqual(reported, set(self.names))

    def test_a_name_put_in_is_reported(self):
        done = self.run_with_list(sorted(self.names + ["svc_pvr_planted"]))
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertIn("svc_pvr_planted: in names.txt, but not in library", done.stdout)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for option in "compiler", "library", "include", "map", "list":
        parser.add_argument("--" + option, required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
