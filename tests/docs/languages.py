"""What becomes of a fenced block, by its language and the word behind it. A block without a row fails."""
import json
import pathlib
import re
import textwrap

import building
import shell
from shell import Failure


def differs(expected, printed):
    """Whether a text is not what a page shows. In a page … stands for any text within a line; alone on a line it stands
    for any number of lines."""
    lines = [line.rstrip() for line in expected.rstrip().splitlines()]
    pattern = "".join(r"(?:.*\n)*" if line == "…" else re.escape(line).replace("…", ".*") + r"\n" for line in lines)
    stripped = "".join(f"{line.rstrip()}\n" for line in printed.rstrip().splitlines())
    return re.fullmatch(pattern, stripped) is None


def run(_, block):
    """Commands that the reader types, as one script."""
    shell.run(block.text)


def run_interrupted(_, block):
    """Commands that go on until Ctrl-C. A service is started where there is none yet."""
    for command in block.text.replace("\\\n", " ").splitlines():
        alone = "pvr-sandbox --no-service -- " if command.startswith("pvr-simulator") else ""
        shell.interrupt(alone + command)


def look_at_build(options, block):
    """Commands that build and test the tree: see building.py."""
    building.check(options, block.text)


def dialogue(text):
    """Commands behind $, with further lines behind >, and what each prints."""
    exchanges = []
    for line in text.splitlines():
        if line.startswith("$ "):
            exchanges.append([line[2:], ""])
        elif line.startswith("> ") and exchanges and not exchanges[-1][1]:
            exchanges[-1][0] += "\n" + line[2:]
        elif exchanges:
            exchanges[-1][1] += line + "\n"
        else:
            raise Failure("begins with output: a command begins with '$ '")
    if not exchanges:
        raise Failure("is empty")
    return exchanges


def compare_output(_, block):
    """Commands and what they print on standard output and standard error, compared."""
    exchanges = dialogue(block.text)
    answers = shell.run_each([command for command, _ in exchanges])
    for (command, expected), (_, printed) in zip(exchanges, answers):
        if differs(expected, printed):
            raise Failure(f"$ {command}\nprinted\n{printed}")


def compare_source(options, block):
    """With the name of a file of the tree: lines of it as they stand there. Paragraphs may be left out: a line …"""
    path = options.source / block.words[0]
    if not path.is_file():
        raise Failure(f"the tree has no {block.words[0]}")
    source, place = path.read_text(encoding="utf-8"), 0
    for part in re.split(r"^\s*…\n", block.text, flags=re.MULTILINE):
        wanted = textwrap.dedent(part).strip("\n")
        found = re.search(r"^( *)" + r"\n".join(re.escape(line) if not number else rf"(?:\1{re.escape(line)})" if line
                                                 else "" for number, line in enumerate(wanted.splitlines())) + "$",
                          source[place:], re.MULTILINE)
        if not found:
            raise Failure(f"is not in {block.words[0]}, or not in this order:\n{wanted}")
        place += found.end()


def compile_source(options, block):
    """Without: a file that the compiler takes."""
    language = {"c": ["-x", "c", "-std=c99"], "cpp": ["-x", "c++", "-std=c++17"]}[block.language]
    compiler = options.cc if block.language == "c" else options.cxx
    path = pathlib.Path("block." + block.language)
    path.write_text(block.text, encoding="utf-8")
    shell.run(f"'{compiler}' {' '.join(language)} -Wall -Wextra -Werror -fsyntax-only -I '{options.source}/include' "
              f"$(pkg-config --cflags gio-2.0) {path}")


_parts = {}  # what is not yet shown of the files that a page shows in parts


def compare_part(options, block):
    """With the word part: the file goes on with these lines. Together the parts of a page are the whole file."""
    name = block.words[0]
    lines = _parts.setdefault(name, (options.source / name).read_text(encoding="utf-8").strip("\n").splitlines())
    part = block.text.strip("\n").splitlines()
    for number, line in enumerate(part):
        if lines[number:number + 1] != [line]:
            raise Failure(f"differs from {name} at\n{line}\nwhere the file has\n{''.join(lines[number:number + 1])}")
    del lines[:len(part)]
    while lines and not lines[0]:
        del lines[0]


def leftovers():
    """What parts of a page have left out of their files."""
    return [f"does not show the rest of {name}, from\n{lines[0]}" for name, lines in _parts.items() if lines]


def source(options, block):
    rule = compare_part if block.words[1:] == ["part"] else compare_source if block.words else compile_source
    rule(options, block)


def configure_project(options, block):
    """Lines of a CMake project that finds the library where the page has installed it, and builds a program with it."""
    folder = pathlib.Path("project")
    folder.mkdir(exist_ok=True)
    (folder / "CMakeLists.txt").write_text(
        "cmake_minimum_required(VERSION 3.25)\nproject(reader LANGUAGES C)\n"
        f"add_executable(smallest {options.source}/examples/smallest.c)\n{block.text}", encoding="utf-8")
    shell.run(f"'{options.cmake}' -S project -B project/build -G Ninja -DCMAKE_PREFIX_PATH=\"$HOME/pvr\" "
              f"-DCMAKE_C_COMPILER='{options.cc}' && '{options.cmake}' --build project/build")


def file_named(block):
    """The file of the reader's folder that a block is: blocks that follow may use it."""
    if len(block.words) != 1:
        raise Failure("takes the name of a file behind the language")
    path = pathlib.Path(block.words[0])
    path.write_text(block.text, encoding="utf-8")
    return path


def read_toml(_, block):
    """A configuration or a scenario of the development service, which has to start with it."""
    path = file_named(block)
    option = "--scenario" if re.search(r"^\[\[step\]\]", block.text, re.MULTILINE) else "--config"
    shell.interrupt(f"pvr-sandbox --no-service -- pvr-simulator {option} {path}")


def read_key_file(_, block):
    """A file for PVR_PLATFORM_CONFIG, which the stand-ins have to read without a complaint. Of the product's numbers
    they do not complain, so those have to be what the library sees."""
    path = file_named(block)
    pathlib.Path("any.srf").touch()  # what is asked about; 1 and 5 tell that a question has no answer
    output = shell.run(f"PVR_PLATFORM_CONFIG=$PWD/{path} pvrctl --json rights any.srf 2>&1 || "
                       "case $? in 1 | 5) ;; *) false ;; esac")
    complaints = [line for line in output.splitlines() if not line.startswith("{")]
    if complaints:
        raise Failure("\n".join(complaints))
    seen = json.loads(next(line for line in output.splitlines() if line.startswith('{"file"')))
    for pattern, value in {r"333=(.*)": str(seen["standard"]["code"]),
                           r".*/product\.num_of_ci=(.*)": str(int(seen["ci_slot"]))}.items():
        for said in re.findall(f"^{pattern}$", block.text, re.MULTILINE):
            if said != value:
                raise Failure(f"says {said} where the library sees {value}: {pattern}")


ROWS = {
    "sh": run,
    "sh interrupted": run_interrupted,
    "sh build": look_at_build,
    "console": compare_output,
    "c": source,
    "cpp": source,
    "cmake": configure_project,
    "toml": read_toml,
    "ini": read_key_file,
}


def check(options, block):
    info = " ".join([block.language, *block.words])
    row = ROWS.get(info) or (ROWS.get(block.language) if block.language in ("c", "cpp", "toml", "ini") else None)
    if row is None:
        raise Failure(f"there is no rule for a block '{info}'")
    row(options, block)
