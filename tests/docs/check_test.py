"""The check of a page notices what is wrong with it: what must fail, each for a reason of its own, and
what must not."""
import pathlib
import subprocess
import sys
import tempfile
import textwrap
import unittest

HERE = pathlib.Path(__file__).resolve().parent
OPTIONS = []

WRONG = {
    "a block without a language": ("```\nls\n```", "there is no rule for a block ''"),
    "a language without a rule": ("```python\nprint()\n```", "there is no rule for a block 'python'"),
    "a word without a rule": ("```sh later\nls\n```", "there is no rule for a block 'sh later'"),
    "a command that fails": ("```sh\nfalse\n```", "ends with 1"),
    "a command that fails before one that works": ("```sh\nfalse\ntrue\n```", "ends with 1"),
    "a command that fails in a pipe": ("```sh\nfalse | cat\n```", "ends with 1"),
    "a command that is not there": ("```sh\npvrctl-of-old\n```", "command not found"),
    "an option that is not there": ("```sh\npvrctl status --of-old\n```", "ends with 2"),
    "a dialogue whose command fails": ("```console\n$ pvrctl play pause 77\npvrctl: …\n```", "ends with 7"),
    "another output": ("```console\n$ echo one\ntwo\n```", "printed\none"),
    "more output": ("```console\n$ echo one; echo two\none\n```", "printed\none\ntwo"),
    "less output": ("```console\n$ echo one\none\ntwo\n```", "printed\none"),
    "no output": ("```console\n$ true\none\n```", "printed"),
    "the second of two outputs": ("```console\n$ echo one\none\n$ echo two\nthree\n```", "printed\ntwo"),
    "an ellipsis beyond its line": ("```console\n$ printf 'a\\nb\\nc\\n'\na…c\n```", "printed\na\nb\nc"),
    "a dialogue without a command": ("```console\none\n```", "begins with output"),
    "a dialogue that ends its shell": ("```console\n$ exit 0\n$ echo two\ntwo\n```", "ends with"),
    "an endless command that ends by itself": ("```sh interrupted\nsh -c 'exit 2'\n```", "ends with 2"),
    "a script that is not there": ("```sh build\n./scripts/of-old\n```", "there is no ./scripts/of-old"),
    "an option that a script has not": ("```sh build\n./scripts/test --lon\n```", "does not tell of --lon"),
    "a preset that is not there": ("```sh build\ncmake --preset of-old\n```", "there is no preset of-old"),
    "a target that is not there": ("```sh build\ncmake --build --preset release --target of-old\n```",
                                   "there is no target of-old"),
    "a variable that is not there": ("```sh build\ncmake --preset release -DPVR_OF_OLD=1\n```",
                                     "the tree has no variable PVR_OF_OLD"),
    "a toolchain file that is not there": ("```sh build\ncmake --preset release --toolchain cmake/of-old.cmake\n```",
                                           "there is no of-old.cmake"),
    "a test that is not there": ("```sh build\nctest --test-dir build/release -R of.old\n```", "there is no such test"),
    "any command as one that builds": ("```sh build\nmake\n```", "has no row for this command"),
    "source that is another": ("```c examples/smallest.c\nint main(void)\n```", "is not in examples/smallest.c"),
    "source in another order": ("```c examples/smallest.c\nint main(int argc, char *argv[])\n…\n"
                                "static int failed(const char *what)\n```", "is not in examples/smallest.c"),
    "a part that is another": ("```c examples/tutorial.c part\nint main(void)\n```",
                               "differs from examples/tutorial.c"),
    "source of no file": ("```c examples/of_old.c\nint i;\n```", "the tree has no examples/of_old.c"),
    "source that does not compile": ("```c\n#include <pvr_service_api.h>\nint i = svc_pvr_of_old();\n```",
                                     "svc_pvr_of_old"),
    "a project that does not build": ("```cmake\nfind_package(pvr-of-old REQUIRED)\n```", "ends with 1"),
    "a scenario with a mistake": ("```toml evening.toml\n[[step]]\nat = 1\nwobble = true\n```", "ends with 2"),
    "a configuration with a mistake": ("```toml set.toml\ntuners = 12\n```", "tuners is 12"),
    "a key file with a mistake": ("```ini product.conf\n[custom-int]\ncom.brimmel/featureconf/product.num_of_ci=many\n"
                                  "```", "num_of_ci"),
    "a key file with a key that is none": ("```ini product.conf\n[conditional-access]\nmodule=answers\n[rights *]\n"
                                           "play=3\n```", "play: is unknown"),
    "a link to no page": ("[a page](of-old.md)", "there is no of-old.md"),
    "a link to no heading": ("# One\n\n[two](#two)", "there is no such heading"),
    "a file that is not there": ("`src/client/of_old.cpp`", "the tree has no such file"),
    "a folder in a picture": ("A picture:\n\n    application -> src/of-old\n", "the tree has no such file"),
}

RIGHT = """\
        # A page

        ```sh
        pvrctl status > status
        ```
        ```console
        $ pvrctl --json share set 5 77
        {"type":5,"value":77}
        $ cat \\
        > status
        bus  …
        …
        ```
        ```sh interrupted
        pvr-simulator
        pvrctl monitor        # until Ctrl-C
        ```
        ```sh build
        ./scripts/test --long                                   # takes its time
        cmake --preset release -DPVR_BUILD_BENCH=OFF && cmake --build --preset release --target pvrctl
        ctest --test-dir build/release -R docs.check
        clang-format -i examples/smallest.c
        ```
        ```c examples/smallest.c
        int main(int argc, char *argv[])
        {
            …
            char *recording = realpath(argv[1], NULL);
        ```
        ```c
        #include <pvr_service_api.h>
        int i = PS_SUCCESS;
        ```
        ```toml set.toml
        tuners = 1
        ```
        ```toml evening.toml
        [[step]]
        at = 10
        note = "it is late"
        ```
        ```ini product.conf
        [custom-int]
        com.brimmel/featureconf/product.num_of_ci=1
        ```

        [This](#a-page), `src/client`, `build/release`, `src/client/NAME.cpp`, `tests/*/of_old`.

            application -> src/client
        """


def check(text):
    with tempfile.TemporaryDirectory() as folder:
        page = pathlib.Path(folder, "page.md")
        page.write_text(textwrap.dedent(text), encoding="utf-8")
        done = subprocess.run([sys.executable, "-B", HERE / "document_test.py", page, *OPTIONS], text=True, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return done.returncode, done.stdout


class Check(unittest.TestCase):
    def test_notices_what_is_wrong(self):
        """All in one page, so that one sandbox does; each complaint has the line of its block."""
        page = "```c examples/tutorial.c part\n" \
               "/* Records a channel and shows how far the recording is. Ctrl-C stops it. " \
               "docs/tutorial.md explains each part.\n```\n\n"
        lines = {}
        for name, (text, _) in WRONG.items():
            lines[name] = page.count("\n") + 1
            page += text + "\n\n"
        status, output = check(page)
        self.assertEqual(status, 1)
        complaints = {}
        for part in output.split("page.md:")[1:]:
            line, _, complaint = part.partition(":")
            line = int(line) if line.isdigit() else 0
            complaints[line] = complaints.get(line, "") + complaint
        self.assertIn("does not show the rest of examples/tutorial.c", complaints[1])
        for name, (text, complaint) in WRONG.items():
            with self.subTest(name):
                near = range(lines[name], lines[name] + text.count("\n") + 1)
                found = "".join(complaints.get(line, "") for line in near)
                self.assertIn(complaint, found)

    def test_takes_what_is_right(self):
        status, output = check(RIGHT)
        self.assertEqual(status, 0, output)


if __name__ == "__main__":
    OPTIONS += sys.argv[1:]
    unittest.main(argv=sys.argv[:1], verbosity=2)
