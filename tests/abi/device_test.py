"""Builds the library for a device, against dummy platform libraries, and compares what it imports with
device-undefined.txt (symbols) and device-needed.txt (libraries). With --update it writes the two instead.
"""
import argparse
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()
HERE = pathlib.Path(__file__).resolve().parent
UNDEFINED = HERE / "device-undefined.txt"
NEEDED = HERE / "device-needed.txt"
PLATFORM = {  # source: library, soname
    "log.cpp": ("libplatform-log.so", "libplatform-log.so.0"),
    "system_info.cpp": ("libplatform-system-info.so", "libplatform-system-info.so.3"),
    "ca.cpp": ("libplatform-ca.so", "libplatform-ca.so.2"),
}
IMPORTED_FROM_THE_PLATFORM = {
    "_ZN6CA_API9CAService13CAPVRInstanceEv",
    "__dlog_print",
    "system_info_get_custom_bool",
    "system_info_get_custom_int",
    "system_info_get_value_int",
}
MULTIARCH = "lib/any-machine-gnu"


def run(*command, check=True):
    environment = {name: value for name, value in os.environ.items()
                   if name not in ("CFLAGS", "CXXFLAGS", "CPPFLAGS", "LDFLAGS", "DESTDIR")}
    done = subprocess.run([str(word) for word in command], text=True, stdout=subprocess.PIPE, check=False,
                          stderr=subprocess.STDOUT, env=environment)
    if check and done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}")
    return done


def configure(build, *settings, check=True):
    return run(OPTIONS.cmake, "--fresh", "-S", OPTIONS.source, "-B", build, "-G", OPTIONS.generator,
               "-DCMAKE_BUILD_TYPE=Release", "-DPVR_BUILD_TESTS=OFF", "-DPVR_BUILD_TOOLS=OFF",
               f"-DCMAKE_C_COMPILER={OPTIONS.cc}", f"-DCMAKE_CXX_COMPILER={OPTIONS.cxx}", *settings, check=check)


def build_for_device(work):
    work.mkdir(parents=True, exist_ok=True)
    libraries = []
    for source, (name, soname) in PLATFORM.items():
        libraries.append(str(work / name))
        run(OPTIONS.cxx, "-std=c++20", "-shared", "-fPIC", f"-Wl,-soname,{soname}", "-I",
            pathlib.Path(OPTIONS.source, "platform/include"), HERE / "dummy_platform" / source, "-o", work / name)
    configure(work / "build", "-DPVR_PLATFORM=device", f"-DPVR_PLATFORM_LIBRARIES={';'.join(libraries)}",
              f"-DCMAKE_INSTALL_LIBDIR={MULTIARCH}")
    run(OPTIONS.cmake, "--build", work / "build", "--parallel", "2", "--target", "pvr-service-api-installed")
    return work / "build/src/installed/libpvr-service-api.so"


def undefined_symbols(library):
    lines = run("nm", "-D", "--undefined-only", "--format=posix", library).stdout.splitlines()
    return sorted({line.split()[0].partition("@")[0] for line in lines})


def needed_libraries(library):
    return re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-d", library).stdout)


def newest_version(library, family):
    """Of the symbols that the library imports, as 'GLIBC_2.34'."""
    versions = re.findall(rf"Name: {family}_(\d[\d.]*)", run("readelf", "--version-info", "--wide", library).stdout)
    return f"{family}_" + max(versions, key=lambda version: [int(part) for part in version.split(".")])


def newest_glib(symbols):
    """The GLib that first had all of these symbols, as its headers tell."""
    folder = pathlib.Path(run("pkg-config", "--variable=includedir", "glib-2.0").stdout.strip(), "glib-2.0")
    text = "\n".join(path.read_text(encoding="utf-8") for path in folder.rglob("*.h"))
    since = {name: int(minor) for minor, name in
             re.findall(r"\w+_AVAILABLE_IN_2_(\d+)\b[^;{]*?\b(\w+)\s*\(", text)}
    return "GLib 2." + str(max(since.get(symbol, 0) for symbol in symbols))


def committed(path):
    return [line for line in path.read_text(encoding="utf-8").splitlines() if not line.startswith("#")]


def update(library):
    for path, lines, title in ((UNDEFINED, undefined_symbols(library), "imports from elsewhere, without versions"),
                               (NEEDED, needed_libraries(library), "is linked with, in their order")):
        head = f"# What the library {title}: a Release build for a device with g++ 12.\n"
        path.write_text(head + "".join(f"{line}\n" for line in lines), encoding="utf-8")
        print(f"wrote {path}: {len(lines)} lines")


class Device(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.work = pathlib.Path(OPTIONS.work)
        cls.library = build_for_device(cls.work)

    def compare(self, path, found):
        expected = committed(path)
        report = [f"{line}: not in {path.name}" for line in found if line not in expected]
        report += [f"{line}: in {path.name}, but not in the library" for line in expected if line not in found]
        if not report and found != expected:
            report = [f"the order is now {found}"]
        if report:
            again = shlex.join([sys.executable, *sys.argv, "--update"])
            self.fail("\n".join(["", *report, f"If that is meant, rewrite the committed lists:\n  {again}"]))

    def test_imports_the_committed_symbols(self):
        self.compare(UNDEFINED, undefined_symbols(self.library))

    def test_is_linked_with_the_committed_libraries(self):
        self.compare(NEEDED, needed_libraries(self.library))

    def test_imports_what_the_platform_provides_from_the_libraries_named_by_the_integrator(self):
        self.assertEqual(IMPORTED_FROM_THE_PLATFORM - set(undefined_symbols(self.library)), set())
        sonames = {soname for _, soname in PLATFORM.values()}
        self.assertEqual(sonames - set(needed_libraries(self.library)), set())
        self.assertFalse([name for name in needed_libraries(self.library) if "pvr-host" in name])

    def test_imports_nothing_newer_than_the_page_for_integrators_tells(self):
        page = pathlib.Path(OPTIONS.source, "docs/integrating.md").read_text(encoding="utf-8")
        found = [newest_version(self.library, family) for family in ("GLIBC", "GLIBCXX", "CXXABI")]
        found.append(newest_glib(undefined_symbols(self.library)))
        told = re.search(r"^\| imported, at the newest \|.*$", page, re.MULTILINE)[0]
        self.assertEqual(sorted(re.findall(r"GLib 2\.\d+|[A-Z]+_[\d.]+", told)), sorted(found))

    def test_builds_no_stand_ins(self):
        self.assertEqual(list(self.work.glob("build/**/libpvr-host-*")), [])

    def test_an_import_that_is_not_committed_is_reported(self):
        with self.assertRaisesRegex(AssertionError, r"planted: not in device-undefined\.txt[^$]*--update"):
            self.compare(UNDEFINED, undefined_symbols(self.library) + ["planted"])
        with self.assertRaisesRegex(AssertionError, r"libc\.so\.6: in device-needed\.txt, but not in the library"):
            self.compare(NEEDED, [name for name in needed_libraries(self.library) if name != "libc.so.6"])

    def test_installs_where_a_distribution_keeps_the_libraries_of_several_machines(self):
        prefix = self.work / "prefix"
        shutil.rmtree(prefix, ignore_errors=True)
        run(OPTIONS.cmake, "--install", self.work / "build", "--prefix", prefix)
        settings = {"libdir": MULTIARCH, "includedir": "include"}
        for variable, directory in settings.items():
            done = run("env", f"PKG_CONFIG_LIBDIR={prefix}/{MULTIARCH}/pkgconfig", "pkg-config",
                       f"--variable={variable}", "pvr-service-api")
            self.assertEqual(os.path.realpath(done.stdout.strip()), os.path.realpath(prefix / directory))
        dynamic = run("readelf", "-d", prefix / MULTIARCH / "libpvr-service-api.so").stdout
        self.assertNotRegex(dynamic, r"\((RUNPATH|RPATH)\)")


class Settings(unittest.TestCase):
    def refused(self, *settings):
        with tempfile.TemporaryDirectory() as build:
            done = configure(build, *settings, check=False)
            self.assertNotEqual(done.returncode, 0, done.stdout)
            return re.sub(r"\s+", " ", done.stdout)

    def test_a_device_without_its_libraries_is_refused(self):
        self.assertIn("PVR_PLATFORM=device needs PVR_PLATFORM_LIBRARIES: the libraries that provide __dlog_print, "
                      "system_info_get_* and CA_API::CAService::CAPVRInstance", self.refused("-DPVR_PLATFORM=device"))

    def test_an_unknown_platform_is_refused(self):
        self.assertIn("PVR_PLATFORM is 'toaster'; it takes host or device", self.refused("-DPVR_PLATFORM=toaster"))


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    for option in "cmake", "generator", "source", "work", "cc", "cxx":
        parser.add_argument("--" + option, required=True)
    parser.add_argument("--update", action="store_true", help="rewrite the committed lists")
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    if OPTIONS.update:
        update(build_for_device(pathlib.Path(OPTIONS.work)))
    else:
        unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
