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


class HostPlatform(unittest.TestCase):
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

    def test_has_no_conditional_access_library(self):
        self.assertEqual(self.answers("rights"), (["null"], ""))


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
