"""cmake --install puts everything under any prefix, and programs build and run against it there."""
import argparse
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()
HERE = pathlib.Path(__file__).resolve().parent
LIBRARY = "libpvr-service-api.so"
PROGRAMS = "pvrctl", "pvr-sandbox", "pvr-simulator", "pvr-make-stream"
SCENARIOS = sorted((HERE.parents[1] / "simulator/scenarios").glob("*.toml"))
COMPONENTS = "library", "development", "policy", "tools", "simulator"
WITHOUT_A_BUS = {"DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent", "PVR_PLATFORM_CONFIG": ""}


def run(*command, **environment):
    done = subprocess.run([str(word) for word in command], text=True, stdout=subprocess.PIPE, check=False,
                          stderr=subprocess.STDOUT, env=dict(os.environ, **environment))
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def expected():
    """Every file under the prefix, and where a link points to."""
    lib, include, data = OPTIONS.libdir, OPTIONS.includedir, OPTIONS.datadir
    files = {
        f"{lib}/{LIBRARY}": f"{LIBRARY}.1",
        f"{lib}/{LIBRARY}.1": f"{LIBRARY}.1.10.8.1",
        f"{lib}/{LIBRARY}.1.10.8.1": None,
        f"{lib}/pkgconfig/pvr-service-api.pc": None,
        f"{lib}/cmake/pvr-service-api/pvr-service-api-config.cmake": None,
        f"{lib}/cmake/pvr-service-api/pvr-service-api-config-BUILDTYPE.cmake": None,
        f"{lib}/cmake/pvr-service-api/pvr-service-api-config-version.cmake": None,
        **{f"{include}/pvr_{name}.h": None
           for name in ("base", "callbacks", "events", "legacy", "playback", "recording", "records", "rights",
                        "service_api", "side_files", "status", "storage")},
        f"{data}/dbus-1/system.d/org.vexan.tv.pvr.conf": None,
    }
    if OPTIONS.mandir:  # what belongs to the tools
        files |= {name: None for program in PROGRAMS
                  for name in (f"{OPTIONS.bindir}/{program}", f"{OPTIONS.mandir}/man1/{program}.1")}
        files |= {f"{data}/pvr-simulator/{name}.toml": None
                  for name in ("pvr-simulator", *(f"scenarios/{scenario.stem}" for scenario in SCENARIOS))}
        files[f"{data}/dbus-1/system.d/org.vexan.tv.pvr.Simulator1.conf"] = None
        files |= {f"{data}/{name}": None
                  for name in ("bash-completion/completions/pvrctl", "zsh/vendor-completions/_pvrctl",
                               "fish/vendor_completions.d/pvrctl.fish")}
    for name in "dlog", "system_info", "ca_service":
        files[f"{lib}/pvr-service-api/libpvr-host-{name}.so.1"] = f"libpvr-host-{name}.so.1.0"
        files[f"{lib}/pvr-service-api/libpvr-host-{name}.so.1.0"] = None
    return files


def found(prefix):
    files = {}
    for path in prefix.rglob("*"):
        if path.is_symlink() or not path.is_dir():
            name = re.sub(r"-config-(?!version)\w+\.cmake$", "-config-BUILDTYPE.cmake", str(path.relative_to(prefix)))
            files[name] = os.readlink(path) if path.is_symlink() else None
    return files


def files_that_mention(folder, words):
    """Debugging information apart, which says where sources were when they were compiled."""
    mentioning = []
    for path in sorted(folder.rglob("*")):
        if path.is_symlink() or path.is_dir():
            continue
        content = path.read_bytes()
        if content.startswith(b"\x7fELF"):
            with tempfile.NamedTemporaryFile() as bare:
                run("objcopy", "--strip-debug", path, bare.name)
                content = pathlib.Path(bare.name).read_bytes()
        mentioning += [f"{path}: {word}" for word in words if word.encode() in content]
    return mentioning


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        run(OPTIONS.cmake, "--install", OPTIONS.build, "--prefix", cls.folder / "first", DESTDIR="")
        # What was installed in one place is used in another: nothing may depend on where it was put.
        cls.prefix = (cls.folder / "first").rename(cls.folder / "moved")
        cls.lib = cls.prefix / OPTIONS.libdir
        cls.dynamic = run("readelf", "-d", cls.lib / LIBRARY)

    def test_every_file_is_there_and_no_other(self):
        self.assertEqual(found(self.prefix), expected())

    def test_every_file_belongs_to_one_component(self):
        together = []
        for component in COMPONENTS:
            run(OPTIONS.cmake, "--install", OPTIONS.build, "--component", component, "--prefix",
                self.folder / component, DESTDIR="")
            together += found(self.folder / component)
        self.assertEqual(sorted(together), sorted(expected()))

    def test_the_programs_find_one_another_and_the_library(self):
        if not OPTIONS.bindir:
            self.skipTest("this build has no programs")
        status = run(self.prefix / OPTIONS.bindir / "pvr-sandbox", "--", "pvrctl", "--json", "status",
                     LD_LIBRARY_PATH="")
        self.assertTrue(json.loads(status)["records"])

    def test_a_staged_and_stripped_install_has_the_same_files(self):
        stage = self.folder / "stage"
        run(OPTIONS.cmake, "--install", OPTIONS.build, "--prefix", "/opt/pvr", "--strip", DESTDIR=str(stage))
        self.assertEqual(found(stage / "opt/pvr"), expected())
        self.assertEqual([path.name for path in stage.iterdir()], ["opt"])

    def test_the_catalogues_go_to_where_the_library_looks_when_they_are_asked_for(self):
        build, stage = self.folder / "with_catalogues", self.folder / "set"
        run(OPTIONS.cmake, "-S", OPTIONS.source, "-B", build, "-G", OPTIONS.generator, "-DPVR_INSTALL_CATALOGUE=ON",
            f"-DCMAKE_C_COMPILER={OPTIONS.cc}", f"-DCMAKE_CXX_COMPILER={OPTIONS.cxx}", "-DPVR_BUILD_TESTS=OFF",
            "-DPVR_BUILD_TOOLS=OFF")
        run(OPTIONS.cmake, "--build", build, "--target", "pvr-catalogues")
        run(OPTIONS.cmake, "-P", build / "res/cmake_install.cmake", DESTDIR=str(stage))
        directory = "usr/lib/org.vexan.pvr-service-api/res/locale"
        self.assertIn(f"/{directory}\0".encode(), (self.lib / LIBRARY).read_bytes())
        self.assertEqual(found(stage), {f"{directory}/{language}/LC_MESSAGES/org.vexan.pvr-service-api.mo": None
                                        for language in ("de", "en", "es", "fr")})

    def test_no_file_mentions_where_it_was_made(self):
        places = {OPTIONS.build, OPTIONS.source, os.path.realpath(OPTIONS.build), os.path.realpath(OPTIONS.source),
                  str(self.folder)}
        self.assertEqual(files_that_mention(self.prefix, places), [])

    def test_a_file_that_mentions_a_place_would_be_found(self):
        place = pathlib.Path(self.folder, "planted")
        place.mkdir()
        (place / "text.pc").write_text("prefix=/somewhere/build\n", encoding="utf-8")
        run(OPTIONS.cc, "-shared", "-fPIC", "-x", "c", "-o", place / "library.so", "-Wl,-rpath,/somewhere/build",
            os.devnull)
        self.assertEqual(files_that_mention(place, ["/somewhere/build"]),
                         [f"{place}/{name}: /somewhere/build" for name in ("library.so", "text.pc")])

    def test_the_library_has_its_soname(self):
        self.assertIn(f"Library soname: [{LIBRARY}.1]", self.dynamic)

    def test_the_library_looks_for_the_stand_ins_in_a_folder_beside_itself(self):
        paths = re.findall(r"\((?:RUNPATH|RPATH)\).*\[(.*)\]", self.dynamic)
        self.assertEqual(paths, ["$ORIGIN/pvr-service-api"])

    def test_pkg_config_knows_the_version_and_stays_within_the_prefix(self):
        self.assertEqual(self.pkg_config("--modversion"), "10.8.1")
        for variable, directory in {"libdir": OPTIONS.libdir, "includedir": OPTIONS.includedir}.items():
            path = self.pkg_config(f"--variable={variable}")
            self.assertEqual(os.path.realpath(path), os.path.realpath(self.prefix / directory))

    def test_a_c_program_builds_with_pkg_config_and_runs(self):
        self.build_and_run(OPTIONS.cc, "-std=c99", "-Wno-deprecated-declarations", HERE / "from_c.c")

    def test_a_cpp_program_builds_with_pkg_config_and_runs(self):
        self.build_and_run(OPTIONS.cxx, "-std=c++17", HERE / "consumer/in_cpp.cpp")

    def test_a_project_builds_with_find_package_and_runs(self):
        build = self.folder / "consumer"
        run(OPTIONS.cmake, "-S", HERE / "consumer", "-B", build, "-G", OPTIONS.generator,
            f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_C_COMPILER={OPTIONS.cc}",
            f"-DCMAKE_CXX_COMPILER={OPTIONS.cxx}")
        run(OPTIONS.cmake, "--build", build)
        for program in "in_c", "in_cpp":
            run(build / program, LD_LIBRARY_PATH=str(self.lib), **WITHOUT_A_BUS)

    def test_another_major_version_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "CMakeLists.txt").write_text(
                "cmake_minimum_required(VERSION 3.25)\nproject(other LANGUAGES NONE)\n"
                "find_package(pvr-service-api 11 REQUIRED)\n", encoding="utf-8")
            with self.assertRaisesRegex(AssertionError, r"version:\s+10\.8\.1"):
                run(OPTIONS.cmake, "-S", folder, "-B", f"{folder}/build", f"-DCMAKE_PREFIX_PATH={self.prefix}")

    def pkg_config(self, *arguments):
        return run("pkg-config", *arguments, "pvr-service-api", PKG_CONFIG_LIBDIR=str(self.lib / "pkgconfig")).strip()

    def build_and_run(self, compiler, *arguments):
        program = self.folder / "program"
        run(compiler, "-Wall", "-Wextra", "-Werror", *arguments, *self.pkg_config("--cflags", "--libs").split(),
            "-o", program)
        run(program, LD_LIBRARY_PATH=str(self.lib), **WITHOUT_A_BUS)
        needed = run("readelf", "-d", program)
        self.assertIn(f"[{LIBRARY}.1]", needed)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for option in ("cmake", "generator", "source", "build", "cc", "cxx", "libdir", "includedir", "datadir"):
        parser.add_argument("--" + option, required=True)
    for option in "bindir", "mandir":  # of a build that has programs
        parser.add_argument("--" + option)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
