"""Tells which lines and branches of src/ the tests reach, and compares what they do not with docs/reliability.md.

usage: measure.py PROFILE BUILD    ends with 1 when a limit or the list does not hold

Every line of src/ with code counts, also that of files which no program consists of, and so does each way of each
condition as it is written: the instances of a template are one. The lines that nothing reaches are listed in the
section "Coverage" by their text, so that the list outlives changes elsewhere in the file.
"""
import collections
import json
import pathlib
import re
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs/reliability.md"
LEAST_LINES, LEAST_BRANCHES = 98, 90  # per cent
OBJECTS = "src/CMakeFiles/pvr-service-api-objects.dir"


def compiled_headers(build):
    """An object with the code of every header, so that none is left out because nothing includes it."""
    folder = build / "headers"
    folder.mkdir(exist_ok=True)
    headers = sorted((ROOT / "src").rglob("*.h"))
    includes = "".join(f'#include "{header.relative_to(ROOT / "src")}"\n' for header in headers)
    (folder / "headers.cpp").write_text(includes, encoding="utf-8")
    entry = next(entry for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
                 if entry["file"].endswith("src/client/call.cpp"))
    command = shlex.split(entry["command"])
    output = command.index("-o")
    command[output + 1:] = [str(folder / "headers.o"), "-c", str(folder / "headers.cpp")]
    subprocess.run(command, cwd=entry["directory"], check=True)
    return folder / "headers.o"


def exported(build, profile, format_name):
    """What llvm-cov tells of the library's objects, and of the unit tests for the templates that they alone use."""
    objects = [*sorted((build / OBJECTS).rglob("*.o")), compiled_headers(build)]
    command = ["llvm-cov", "export", f"-format={format_name}", f"-instr-profile={profile}",
               build / "tests/unit/unit_tests", *(f"-object={path}" for path in objects)]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def is_ours(path):
    return path.is_relative_to(ROOT / "src")


def lines_of(report):
    """How often each line with code was reached, by file."""
    found, source = collections.defaultdict(dict), None
    for record in report.splitlines():
        kind, _, value = record.partition(":")
        if kind == "SF":
            source = pathlib.Path(value).resolve()
        elif kind == "DA" and is_ours(source):
            line, count = map(int, value.split(",")[:2])
            found[source][line] = max(count, found[source].get(line, 0))
    return found


def branches_of(report):
    """How often each way of a condition was taken, by file and by the condition's place."""
    found = collections.defaultdict(lambda: collections.defaultdict(lambda: [0, 0]))
    for file in json.loads(report)["data"][0]["files"]:
        source = pathlib.Path(file["filename"]).resolve()
        for line, column, end_line, end_column, taken, not_taken, *_ in file["branches"] if is_ours(source) else []:
            ways = found[source][line, column, end_line, end_column]
            ways[0] += taken
            ways[1] += not_taken
    return found


def listed():
    """The lines that the page lists, by file: their texts, and whether chance reaches them now and then."""
    section = PAGE.read_text(encoding="utf-8").partition("\n## Coverage\n")[2].partition("\n## ")[0]
    found = collections.defaultdict(list)
    for row in section.splitlines():
        if match := re.fullmatch(r"\| `src/(\S+)` \| `(.+)` \| (.+) \|", row):
            found[ROOT / "src" / match[1]].append((match[2].replace(r"\|", "|"), match[3].startswith("sometimes: ")))
    return found


def disagreements(lines):
    """Lines that are reached by nothing and not listed, and those that are listed and not so."""
    page = listed()
    for source in sorted(lines | page):
        text = source.read_text(encoding="utf-8").splitlines() if source.exists() else []
        counts = lines.get(source, {})
        missed = collections.Counter(text[line - 1].strip() for line, count in counts.items() if count == 0)
        missed = collections.Counter({line: count for line, count in missed.items() if re.search(r"\w", line)})
        known = collections.Counter(line for line, _ in page.get(source, []))
        there = {line.strip() for line in text}
        certain = collections.Counter(line for line, is_chance in page.get(source, [])
                                      if not is_chance or line not in there)
        name = source.relative_to(ROOT)
        yield from (f"not in {PAGE.name}: {name}: {line}" for line in (missed - known).elements())
        yield from (f"in {PAGE.name}, but reached or gone: {name}: {line}" for line in (certain - missed).elements())


def percent(reached, total):
    return 100 * reached / total if total else 100.0


def main():
    profile, build = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    lines = lines_of(exported(build, profile, "lcov"))
    branches = branches_of(exported(build, profile, "text"))
    missing = [path for path in sorted((ROOT / "src").rglob("*.cpp")) if path not in lines and
               not (build / OBJECTS / path.relative_to(ROOT / "src")).with_suffix(".cpp.o").exists() and
               re.search(r"^\S.*\)[^;]*\{", path.read_text(encoding="utf-8"), re.M)]
    for path in missing:  # compiled by nobody: nothing of it is reached
        text = path.read_text(encoding="utf-8").splitlines()
        lines[path] = {number: 0 for number, line in enumerate(text, 1) if re.search(r"\w", line) and "//" not in line}

    sums = [0, 0, 0, 0]
    print(f"{'file':<40} {'lines':>13} {'%':>6}   {'branches':>13} {'%':>6}")
    for source in sorted(lines):
        ways = [way for pair in branches[source].values() for way in pair]
        row = [sum(count > 0 for count in lines[source].values()), len(lines[source]),
               sum(way > 0 for way in ways), len(ways)]
        sums = [one + other for one, other in zip(sums, row)]
        print(f"{str(source.relative_to(ROOT)):<40} {row[0]:>5} of {row[1]:>4} {percent(*row[:2]):6.1f}   "
              f"{row[2]:>5} of {row[3]:>4} {percent(*row[2:]):6.1f}")
    print(f"{'all':<40} {sums[0]:>5} of {sums[1]:>4} {percent(*sums[:2]):6.2f}   "
          f"{sums[2]:>5} of {sums[3]:>4} {percent(*sums[2:]):6.2f}\n")
    for source in sorted(lines):
        text = source.read_text(encoding="utf-8").splitlines()
        for line, count in sorted(lines[source].items()):
            if count == 0:
                print(f"not reached: {source.relative_to(ROOT)}:{line}: {text[line - 1].strip()}")

    broken = list(disagreements(lines))
    if percent(*sums[:2]) < LEAST_LINES:
        broken.append(f"fewer than {LEAST_LINES} % of the lines are reached")
    if percent(*sums[2:]) < LEAST_BRANCHES:
        broken.append(f"fewer than {LEAST_BRANCHES} % of the branches are reached")
    for complaint in broken:
        print(f"coverage: {complaint}")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
