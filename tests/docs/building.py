"""Commands that install packages, build or test the tree. They are not run from here, where they would take minutes or
never end: each has to have a row in the table below, which looks whether everything that it names is there."""
import json
import re
import shlex
import subprocess

from shell import Failure

# Options that cmake and ctest have always had.
KNOWN = {
    "cmake": {"--preset", "--build", "--target", "--fresh", "--toolchain"},
    "ctest": {"--test-dir", "-R", "--output-on-failure", "--verbose"},
}


def output_of(*command, cwd=None):
    return subprocess.run([str(word) for word in command], cwd=cwd, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=True).stdout


def demand(condition, complaint):
    if not condition:
        raise Failure(complaint)


def script(options, words):
    """A script of the tree, whose own --help tells its options."""
    path = options.source / words[0]
    demand(path.is_file(), f"there is no {words[0]}")
    explained = output_of(path, "--help")
    for word in words[1:]:
        demand(not word.startswith("-") or re.search(rf"(?<![\w-]){word}\b", explained),
               f"{words[0]} --help does not tell of {word}")


def presets(options, kind):
    text = json.loads((options.source / "CMakePresets.json").read_text(encoding="utf-8"))
    return {preset["name"] for preset in text[f"{kind}Presets"] if not preset.get("hidden")}


def known(words):
    for word in words[1:]:
        demand(not word.startswith("-") or word.startswith("-DPVR_") or word in KNOWN[words[0]],
               f"it is not known here whether {words[0]} has {word}")


def configure(options, words):
    """Presets, toolchain files and variables have to be the tree's."""
    known(words)
    demand(words[2] in presets(options, "configure"), f"there is no preset {words[2]}")
    declared = (options.build / "CMakeCache.txt").read_text(encoding="utf-8")
    if "--toolchain" in words:
        toolchain = options.source / words[words.index("--toolchain") + 1]
        demand(toolchain.is_file(), f"there is no {toolchain.name}")
        declared += "\n".join(path.read_text(encoding="utf-8") for path in toolchain.parent.glob("*.cmake"))
    for name in re.findall(r"-D(PVR_\w+)=", " ".join(words)):
        demand(re.search(rf"^(set\()?{name}\b", declared, re.MULTILINE), f"the tree has no variable {name}")


def build(options, words):
    """Presets and targets have to be the tree's."""
    known(words)
    demand(words[2] == "--preset", "expected --build --preset")
    demand(words[3] in presets(options, "build"), f"there is no preset {words[3]}")
    if "--target" in words:
        targets = output_of(options.cmake, "--build", options.build, "--target", "help")
        for target in words[words.index("--target") + 1:]:
            demand(re.search(rf"^{target}: ", targets, re.MULTILINE), f"there is no target {target}")


def cmake(options, words):
    {"--preset": configure, "--build": build}[words[1]](options, words)


def ctest(options, words):
    """What -R names has to be there."""
    known(words)
    found = output_of(options.ctest, "--test-dir", options.build, "-N", "-R", words[words.index("-R") + 1])
    demand(not re.search(r"Total Tests: 0$", found, re.MULTILINE), "there is no such test")


def clang_format(options, words):
    for name in words[2:]:
        demand((options.source / name).is_file(), f"there is no {name}")


ROWS = [
    (r"\./scripts/\w+", script),
    (r"cmake --(preset|build) ", cmake),
    (r"ctest --test-dir ", ctest),
    (r"clang-format -i ", clang_format),
]


def check(options, text):
    for line in text.replace("\\\n", " ").splitlines():
        for command in re.split(r" && ", line):
            words = shlex.split(command, comments=True)
            if words:
                checks = [row for pattern, row in ROWS if re.match(pattern, command.strip())]
                demand(checks, f"{command}: building.py has no row for this command")
                try:
                    checks[0](options, words)
                except (Failure, LookupError) as failure:
                    raise Failure(f"{command}: {failure}") from None
