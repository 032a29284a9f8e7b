"""Checks one page of the documentation: every fenced block, every link, and every file of the tree that it names.

The blocks are taken in their order, in one folder, in one sandbox with the development service, and with the build's
programs on PATH: what one block does, the next one finds. What happens to a block is told by the word behind the three
backticks; a block with any other word, or with none, fails.

    sh               is run, as one script of bash; it has to end with 0. Its output is not looked at
    sh interrupted   each line is run until it has printed something; then Ctrl-C has to end it with 0 or 130.
                     A pvr-simulator gets a bus of its own
    sh build         is NOT run: what installs packages, builds or tests the tree. Whether the scripts, options,
                     presets, targets, variables, tests and files exist that it names is looked up (building.py). That
                     the commands work is seen by running scripts/test and scripts/demo, which is done with other tests
    console          is run: commands behind '$ ', and all that they print, which is compared. … stands for any text
                     within a line, and alone on a line for any number of lines. Each command has to end with 0
    c FILE, cpp FILE is compared with that file of the tree, which the build compiles. A line … leaves lines out
    c FILE part      is compared with that file: the parts of a page are the whole of it, in its order
    c, cpp           is compiled as a file of its own, with the public headers
    cmake            is configured and built as part of a project, against what the page has installed in ~/pvr
    toml FILE        is read by pvr-simulator, as --scenario when it has steps and else as --config
    ini FILE         is read by the stand-ins of the platform, as PVR_PLATFORM_CONFIG

Pictures are indented and have no fence. The folders and files of the tree that they name have to be there.
What a reader has before the first block is made by before/PAGE.sh.
"""
import argparse
import os
import pathlib
import sys

import languages
import references
import shell
from document import Document

HERE = pathlib.Path(__file__).resolve().parent


def in_sandbox(options):
    """This program once more, where the development service runs. Nothing of it is left."""
    environment = {name: value for name, value in os.environ.items()
                   if not name.startswith(("PVR_", "DBUS_SYSTEM", "LC_", "LANG", "CMAKE_", "PKG_CONFIG"))}
    environment |= {"PATH": f"{options.build / 'bin'}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8", "SHELL": "/bin/sh",
                    "TZ": "UTC", "PYTHONDONTWRITEBYTECODE": "1"}
    command = [options.sandbox, "--", sys.executable, *sys.argv, "--inside"]
    os.execve(options.sandbox, [str(word) for word in command], environment)


def enter_readers_folder(options, document):
    folder = pathlib.Path(os.environ["PVR_SANDBOX"], "reader")
    folder.mkdir()
    os.chdir(folder)
    os.environ |= {"HOME": str(folder), "SOURCE": str(options.source), "BUILD": str(options.build)}
    before = HERE / "before" / f"{document.path.stem}.sh"
    if before.exists() and document.path.is_relative_to(options.source):
        shell.run(before.read_text(encoding="utf-8"))


def check(options, document):
    problems = references.problems(document, options.source)
    for block in document.blocks:
        try:
            languages.check(options, block)
        except shell.Failure as failure:
            problems.append((block.line, f"block '{block.language}' {failure}"))
    problems += [(1, leftover) for leftover in languages.leftovers()]
    for line, text in problems:
        print(f"{document.path}:{line}: {text}\n")
    print(f"{document.path}: {len(document.blocks)} blocks, {len(document.links)} links, {len(problems)} problems")
    return 1 if problems else 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("document", type=pathlib.Path)
    for option in "source", "build", "sandbox", "cmake", "ctest", "cc", "cxx":
        parser.add_argument("--" + option, type=pathlib.Path, required=True)
    parser.add_argument("--inside", action="store_true")
    options = parser.parse_args()
    options.source = options.source.resolve()
    if not options.inside:
        in_sandbox(options)
    document = Document(options.document.resolve())
    try:
        enter_readers_folder(options, document)
    except shell.Failure as failure:
        sys.exit(f"{document.path}: what is done before it {failure}")
    sys.exit(check(options, document))


if __name__ == "__main__":
    main()
