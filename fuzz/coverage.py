"""Tells how many lines of a reader its target has reached, and which it has not.

usage: coverage.py TARGET PROGRAM PROFILE    ends with 1 below the limit

readers.tsv says which functions belong to the reader, or that all of a source do. Their lines are those with code
between the first and the last of the function, lambdas in it included, as llvm-cov counts them. None is left out for
being hard to reach.
"""
import collections
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIMIT = 95  # per cent
ALL, LEFT_OUT = "*", "!"


def readers(target):
    """The names of the functions by source file."""
    rows = (line.split("\t") for line in (ROOT / "fuzz/readers.tsv").read_text(encoding="utf-8").splitlines()
            if not line.startswith("#"))
    return {ROOT / source: set(functions.split()) for name, source, functions in rows if name == target}


def source_of(name):
    """As the compiler was given it, which a compiler cache makes relative to the build folder."""
    return pathlib.Path(os.path.normpath(name))


def exported(format_name, program, profile):
    command = ["llvm-cov", "export", f"-format={format_name}", f"-instr-profile={profile}", program]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def names_of(function):
    """Of a demangled function: without scopes and template arguments, and the same with the count of parameters."""
    function = function.replace("(anonymous namespace)", "anonymous").replace("[abi:cxx11]", "")
    while re.search(r"<[^<>]*>", function):
        function = re.sub(r"<[^<>]*>", "", function)
    head, _, parameters = function.partition("(")
    name = head.split("::")[-1].split(" ")[-1]
    parameters = parameters.rpartition(")")[0]
    return {name, f"{name}/{parameters.count(',') + 1 if parameters else 0}"}


def ranges_of(program, profile, wanted):
    """The first and the last line of each wanted function, by source file, and of each that is left out."""
    functions = json.loads(exported("text", program, profile))["data"][0]["functions"]
    functions = [function for function in functions if source_of(function["filenames"][0]) in wanted]
    mangled = [function["name"].rpartition(":")[2] for function in functions]
    names = subprocess.run(["c++filt"], input="\n".join(mangled), check=True, capture_output=True, text=True).stdout
    ranges, left_out = collections.defaultdict(list), collections.defaultdict(list)
    seen = collections.defaultdict(set)
    for name, function in zip(names.splitlines(), functions):
        source = source_of(function["filenames"][0])
        first, _, last = function["regions"][0][:3]
        if found := {known for known in wanted[source] if known[0] == LEFT_OUT and known[1:] in name}:
            left_out[source].append((first, last))
        elif found := (names_of(name) | {ALL}) & wanted[source]:
            ranges[source].append((first, last))
        seen[source] |= found
    for source, functions in wanted.items():
        for function in sorted(functions - seen[source]):
            raise SystemExit(f"coverage.py: there is no {function} in {source.relative_to(ROOT)}; see fuzz/readers.tsv")
    return ranges, left_out


def lines_of(program, profile):
    """How often each line with code was reached, by source file."""
    lines, source = collections.defaultdict(dict), None
    for record in exported("lcov", program, profile).splitlines():
        kind, _, value = record.partition(":")
        if kind == "SF":
            source = source_of(value)
        elif kind == "DA":
            line, count = value.split(",")[:2]
            lines[source][int(line)] = int(count)
    return lines


def is_within(line, ranges):
    return any(first <= line <= last for first, last in ranges)


def main():
    target, program, profile = sys.argv[1:]
    wanted = readers(target)
    ranges, left_out = ranges_of(program, profile, wanted)
    lines = lines_of(program, profile)
    total, missed = 0, []
    for source in wanted:
        inside = {line: count for line, count in lines[source].items()
                  if is_within(line, ranges[source]) and not is_within(line, left_out[source])}
        total += len(inside)
        missed += [f"{source.relative_to(ROOT)}:{line}" for line, count in sorted(inside.items()) if count == 0]
    if total == 0:
        raise SystemExit(f"coverage.py: {target} has no lines; see fuzz/readers.tsv")
    reached = total - len(missed)
    percent = 100 * reached / total
    verdict = "" if percent >= LIMIT else f"  BELOW {LIMIT} %"
    print(f"{target:<18} {reached:>4} of {total:>4} lines  {percent:5.1f} %{verdict}" +
          (f"  not reached: {', '.join(missed)}" if missed else ""))
    return 0 if percent >= LIMIT else 1


if __name__ == "__main__":
    sys.exit(main())
