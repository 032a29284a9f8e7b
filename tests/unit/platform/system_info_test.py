"""The stand-ins of the system information and of the conditional-access library."""
import argparse
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()
SUPPORT = "bool:com.brimmel/featureconf/pvr.pvr_support"
SLOTS = "int:com.brimmel/featureconf/product.num_of_ci"
STANDARD = "value:333"
DEFAULTS = ["0=true", "0=0", "0=1"]
UNREADABLE = "-1=untouched"
# What may be asked of a recording, in the order of the library's table, and the answers where nothing is restricted.
RIGHTS = ["retention-exceeded", "thumbnail-type", "content-info", "expired-sections", "parental-blocked",
          "thumbnail-valid"]
UNRESTRICTED = {"retention-exceeded": "1=false", "thumbnail-type": "1=0", "content-info": "1=0 0",
                "expired-sections": "1=", "parental-blocked": "1=false", "thumbnail-valid": "1=true"}
MODULE = "[conditional-access]\nmodule=answers\n"
WHOLE = "from -2147483648 to 2147483647"


class PlatformTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = pathlib.Path(folder.name, "platform.conf")

    def answers(self, *questions, **settings):
        """The answers to questions, and what came on the error output."""
        environment = {name: value for name, value in os.environ.items() if name != "PVR_PLATFORM_CONFIG"}
        done = subprocess.run([OPTIONS.program, *questions], text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              env=environment | settings, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout.splitlines(), done.stderr

    def answers_from(self, text, *questions):
        self.file.write_text(text, encoding="utf-8")
        found, errors = self.answers(*questions, PVR_PLATFORM_CONFIG=str(self.file))
        self.assertEqual(errors, "")
        return found


class HostPlatform(PlatformTest):
    def test_has_defaults_without_a_file(self):
        for settings in {}, {"PVR_PLATFORM_CONFIG": ""}:
            with self.subTest(settings=settings):
                self.assertEqual(self.answers(SUPPORT, SLOTS, STANDARD, **settings), (DEFAULTS, ""))

    def test_takes_every_value_from_the_file(self):
        text = ("[custom-bool]\ncom.brimmel/featureconf/pvr.pvr_support=false\n"
                "[custom-int]\ncom.brimmel/featureconf/product.num_of_ci=2\n"
                "[value-int]\n333=0\n")
        self.assertEqual(self.answers_from(text, SUPPORT, SLOTS, STANDARD), ["0=false", "0=2", "0=0"])

    def test_keeps_the_defaults_of_what_the_file_leaves_out(self):
        self.assertEqual(self.answers_from("[value-int]\n333=2\n", SUPPORT, SLOTS, STANDARD),
                         ["0=true", "0=0", "0=2"])

    def test_answers_for_keys_that_only_the_file_has(self):
        text = "[custom-bool]\nother=true\n[custom-int]\nother=-7\n[value-int]\n12=34\n"
        self.assertEqual(self.answers_from(text, "bool:other", "int:other", "value:12"), ["0=true", "0=-7", "0=34"])

    def test_says_when_the_file_is_missing_and_goes_on_with_the_defaults(self):
        found, errors = self.answers(SUPPORT, SLOTS, STANDARD, PVR_PLATFORM_CONFIG=str(self.file))
        self.assertEqual(found, DEFAULTS)
        self.assertEqual(errors, f"PVR_PLATFORM_CONFIG: {self.file}: No such file or directory\n")

    def test_says_once_for_all_of_its_parts_that_the_file_is_missing(self):
        found, errors = self.answers(SUPPORT, "module", PVR_PLATFORM_CONFIG=str(self.file))
        self.assertEqual(found, ["0=true", "null"])
        self.assertEqual(errors, f"PVR_PLATFORM_CONFIG: {self.file}: No such file or directory\n")

    def test_says_when_the_file_is_no_key_file_and_goes_on_with_the_defaults(self):
        self.file.write_text("this is no key file\n", encoding="utf-8")
        found, errors = self.answers(SUPPORT, SLOTS, STANDARD, PVR_PLATFORM_CONFIG=str(self.file))
        self.assertEqual(found, DEFAULTS)
        self.assertRegex(errors, f"^PVR_PLATFORM_CONFIG: {self.file}: .+\n$")

    def test_fails_for_a_value_that_cannot_be_read_and_leaves_the_callers_as_it_was(self):
        text = ("[custom-bool]\ncom.brimmel/featureconf/pvr.pvr_support=perhaps\n"
                "[custom-int]\ncom.brimmel/featureconf/product.num_of_ci=many\n"
                "[value-int]\n333=99999999999\n")
        self.assertEqual(self.answers_from(text, SUPPORT, SLOTS, STANDARD), [UNREADABLE] * 3)

    def test_fails_for_a_key_that_nobody_knows_and_leaves_the_callers_value_as_it_was(self):
        self.assertEqual(self.answers("bool:unknown", "int:unknown", "value:1"), ([UNREADABLE] * 3, ""))


class ConditionalAccess(PlatformTest):
    def ask(self, text, path="/m/first.srf"):
        """The answers about a recording by name, and the complaints about the file."""
        self.file.write_text(text, encoding="utf-8")
        found, errors = self.answers(f"rights:{path}", PVR_PLATFORM_CONFIG=str(self.file))
        complaints = errors.splitlines()
        for complaint in complaints:
            self.assertTrue(complaint.startswith("PVR_PLATFORM_CONFIG: "), complaint)
        return dict(zip(RIGHTS, found, strict=bool(found))), [complaint.split(": ", 1)[1] for complaint in complaints]

    def test_is_missing_unless_the_file_has_a_module(self):
        self.assertEqual(self.answers("module"), (["null"], ""))
        for text in "", "[conditional-access]\n", "[conditional-access]\nmodule=missing\n", "[rights *]\ninfo-type=1\n":
            with self.subTest(text=text):
                self.assertEqual(self.answers_from(text, "module", "rights:/m/first.srf"), ["null"])

    def test_answers_refuses_or_throws_as_the_module_does(self):
        untouched = UNRESTRICTED | {name: "0=untouched" for name in RIGHTS} | {
            "content-info": "0=untouched untouched", "expired-sections": "0="}
        for module, wanted in [("answers", UNRESTRICTED), ("answers  ", UNRESTRICTED), ("refuses", untouched),
                               ("throws", dict.fromkeys(RIGHTS, "threw=the conditional-access module was pulled"))]:
            with self.subTest(module=module):
                text = f"[conditional-access]\nmodule={module}\n"
                self.assertEqual(self.ask(text), (wanted, []))
                self.assertEqual(self.answers_from(text, "module"), ["an object"])

    def test_says_when_the_module_is_unknown_and_goes_on_without(self):
        for module in "", "Answers", "answers # always":
            with self.subTest(module=module):
                self.assertEqual(self.ask(f"[conditional-access]\nmodule={module}\n"), ({}, [
                    f"[conditional-access] module: is missing, answers, refuses or throws, not '{module}'"]))

    def test_takes_each_value_from_the_file(self):
        for key, value, name, answer in [
                ("parental-blocked", "true", "parental-blocked", "1=true"),
                ("parental-blocked", "false", "parental-blocked", "1=false"),
                ("retention-exceeded", "true ", "retention-exceeded", "1=true"),
                ("thumbnail-valid", "false", "thumbnail-valid", "1=false"),
                ("thumbnail-type", "1", "thumbnail-type", "1=1"),
                ("thumbnail-type", "-2147483648", "thumbnail-type", "1=-2147483648"),
                ("info-type", "2147483647 ", "content-info", "1=2147483647 0"),
                ("play-count", "0", "content-info", "1=0 0"),
                ("play-count", "255", "content-info", "1=0 255"),
                ("expired-sections", "", "expired-sections", "1="),
                ("expired-sections", "0-0", "expired-sections", "1=0-0;"),
                ("expired-sections", "60-120;300-2147483647;", "expired-sections", "1=60-120;300-2147483647;")]:
            with self.subTest(key=key, value=value):
                self.assertEqual(self.ask(f"{MODULE}[rights *]\n{key}={value}\n"),
                                 (UNRESTRICTED | {name: answer}, []))

    def test_says_what_is_no_value_and_goes_on_without(self):
        for key, value, complaint in [
                *((key, value, f"takes true or false, not '{value}'")
                  for key in ("parental-blocked", "retention-exceeded", "thumbnail-valid")
                  for value in ("", "perhaps", "True", "1", "true or false")),
                *((key, value, f"takes a whole number {WHOLE}, not '{value}'")
                  for key in ("thumbnail-type", "info-type")
                  for value in ("", "many", "1 2", "0x1", "1.5", "2147483648", "-2147483649", "9" * 99)),
                *(("play-count", value, f"takes a whole number from 0 to 255, not '{value}'")
                  for value in ("", "-1", "256", "3 times")),
                *(("expired-sections", value, f"takes START-END;START-END in whole seconds, not '{value}'")
                  for value in ("60", "60-", "-120", "60-120-180", "60 - 120", "-60-120", "120-60", "9999999999-1"))]:
            with self.subTest(key=key, value=value):
                self.assertEqual(self.ask(f"{MODULE}[rights *]\n{key}={value}\n"),
                                 (UNRESTRICTED, [f"[rights *] {key}: {complaint}"]))

    def test_keeps_the_sections_beside_one_that_is_none(self):
        found, complaints = self.ask(MODULE + "[rights *]\nexpired-sections=1-2;x;3-4\n")
        self.assertEqual((found["expired-sections"], len(complaints)), ("1=1-2;3-4;", 1))

    def test_says_what_it_does_not_know(self):
        text = MODULE + "modul=refuses\n[rights *]\nparental-block=true\n[rights]\ninfo-type=1\n[rights  ]\n"
        pattern = "rights are of a pattern, as in [rights *.srf]"
        self.assertEqual(self.ask(text), (UNRESTRICTED, [
            "[conditional-access] modul: is unknown", "[rights *] parental-block: is unknown",
            "[rights]: " + pattern, "[rights  ]: " + pattern]))

    def test_tells_recordings_apart_by_their_paths(self):
        text = MODULE + ("[rights /m/first.srf]\ninfo-type=1\n[rights /m/f*]\ninfo-type=2\nplay-count=2\n"
                         "[rights /m/a\\b.srf]\ninfo-type=7\n[rights */?.srf]\ninfo-type=3\n"
                         "[rights  *ä*.srf ]\ninfo-type=4\n[rights *]\ninfo-type=5\n"
                         "[rights /m/last.srf]\ninfo-type=6\n")
        for path, found in [("/m/first.srf", "1 0"), ("/m/first.srf2", "2 2"), ("/m/f/a/b.srf", "2 2"),
                            ("/m/.srf", "5 0"), ("/m/x.srf", "3 0"), ("/m/n/x.srf", "3 0"), ("/m/xy.srf", "5 0"),
                            ("/m/Käse.srf", "4 0"), ("/m/a\\b.srf", "7 0"), ("/m/last.srf", "5 0"), ("", "5 0")]:
            with self.subTest(path=path):
                self.assertEqual(self.ask(text, path), (UNRESTRICTED | {"content-info": "1=" + found}, []))

    def test_restricts_no_recording_that_no_pattern_matches(self):
        for pattern in "*.srf", "first.tmp", "/M/FIRST*", "/m/firs?":
            self.assertEqual(self.ask(f"{MODULE}[rights {pattern}]\nparental-blocked=true\n", "/m/first.tmp"),
                             (UNRESTRICTED, []))


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
