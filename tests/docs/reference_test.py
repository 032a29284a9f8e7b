"""The reference of the public headers: it can be built, tells of every exported function, warns of what it lacks."""
import argparse
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()


class Reference(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        shutil.copytree(pathlib.Path(OPTIONS.source, "include"), self.folder / "include")

    def build(self):
        """Exit status and complaints of doxygen, with what CMake has put into its file, but for the places."""
        more = f"INPUT={self.folder}/include\nSTRIP_FROM_PATH={self.folder}/include\n" \
               f"OUTPUT_DIRECTORY={self.folder}/html\n"
        text = pathlib.Path(OPTIONS.doxyfile).read_text(encoding="utf-8") + more
        done = subprocess.run([OPTIONS.doxygen, "-"], input=text, text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, check=False)
        return done.returncode, done.stdout

    def test_tells_of_every_exported_function(self):
        self.assertEqual(self.build(), (0, ""))
        pages = "".join(page.read_text(encoding="utf-8") for page in (self.folder / "html").glob("*_8h.html"))
        symbols = pathlib.Path(OPTIONS.source, "tests/abi/exported-symbols.txt").read_text(encoding="utf-8").split()
        names = [re.sub(r"^_Z\d+(\w+)PKc$", r"\1", symbol) for symbol in symbols]
        self.assertGreater(len(names), 150)
        told = {re.sub(r"<[^>]*>", "", name).split()[-1] for name in re.findall(r'class="memname">(.*?)</td>', pages)}
        self.assertEqual([name for name in names if name not in told], [])

    def test_fails_when_something_is_not_documented(self):
        header = self.folder / "include/pvr_base.h"
        whole = header.read_text(encoding="utf-8")
        additions = {
            "void of_old(void);": "Member of_old(void)",
            "/** Takes it. */ void takes(int it);": "parameters of member takes",
            "/** Takes it. @param that  it */ void takes_that(int it);": "'that'",
            "/** @return 1 */ int gives(int it);": "parameters of member gives",
            "/** It. */ struct record { int member; };": "Member member",
            "#define MACRO 1": "Member MACRO",
        }
        header.write_text("\n".join([whole, "/** @file */", *additions]), encoding="utf-8")
        status, complaints = self.build()
        self.assertNotEqual(status, 0)
        for addition, complaint in additions.items():
            with self.subTest(addition):
                self.assertIn(complaint, complaints)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for option in "doxygen", "doxyfile", "source":
        parser.add_argument("--" + option, required=True)
    parser.parse_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1], verbosity=2)
