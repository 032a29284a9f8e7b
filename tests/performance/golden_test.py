"""Compares what each exported function costs with golden.tsv, and says which figures are others now.

The program calls every function once under callgrind. What is the library's own of a call:
  instructions  executed in the code of the library's file; those of GLib, the C library and the stubs are not in it
  calls out     from there into other libraries, the stubs among them
  blocks        taken from the heap until the function returned, by whomever, but for what the stubs took
With --update the figures are written instead. Ends with 77 where they would be those of another build.
"""
import argparse
import collections
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile

NOT_COMPARABLE = 77
TOLERANCE = 0.01  # of the instructions: a compiler that was patched arranges code a little differently
LEAST_DIFFERENCE = 2  # instructions; 1 % of a short function would be none

HEAD = """\
# What each exported function costs, in the library's own code: head of golden_test.py.
# Written by: cmake --build --preset release --target performance-golden
# build: """

Cost = collections.namedtuple("Cost", "instructions calls blocks returned")
FIELDS = {"instructions": "instructions", "calls": "calls out", "blocks": "blocks", "returned": "returned"}


class CannotMeasure(Exception):
    """Something other than the library's cost is wrong."""


def own_costs(lines, library):
    """Instructions and calls out of the library by dump, from a file of callgrind with names and addresses in full."""
    costs = {}
    executed, callers = collections.Counter(), set()  # addresses in the library
    is_own, callee = False, None

    for line in lines:
        key, separator, value = line.partition("=")
        if line.startswith("desc: Trigger: Client Request: "):
            executed, callers = collections.Counter(), set()
            costs[line.partition("Client Request: ")[2]] = executed, callers
        elif separator and key == "ob":
            is_own = value == library
        elif separator and key == "cob":
            callee = value
        elif separator and key == "calls":
            # How often is not what this line says, as callgrind never starts that number anew, but what the calling
            # instruction says. The next line is of what was called.
            address = next(lines).split()[0]
            if is_own and callee not in (None, library):
                callers.add(address)
            callee = None
        elif line.startswith("0x") and is_own:
            address, cost = line.split()
            executed[address] += int(cost)
    return {name: (executed.total(), sum(executed[address] for address in callers))
            for name, (executed, callers) in costs.items()}


def measured(arguments):
    """What each call cost, in the order of the program."""
    with tempfile.TemporaryDirectory(prefix="pvr-performance-") as folder:
        output = pathlib.Path(folder, "callgrind.out")
        # Without --skip-plt=no the jump behind each call out would have the address of the call, and count as another.
        command = [arguments.valgrind, "--tool=callgrind", "--quiet", "--collect-atstart=no", "--combine-dumps=yes",
                   "--compress-strings=no", "--compress-pos=no", "--dump-instr=yes", "--dump-line=no", "--skip-plt=no",
                   f"--callgrind-out-file={output}",
                   arguments.program, arguments.files]
        # GLib's own allocator would hide blocks; a language would bring its catalogue along.
        environment = dict(os.environ, G_SLICE="always-malloc", LC_ALL="C.UTF-8", LANGUAGE="")
        done = subprocess.run(command, cwd=folder, env=environment, text=True, capture_output=True, check=False)
        if done.returncode != 0 or done.stderr:
            raise CannotMeasure(f"the program ended with {done.returncode}:\n{done.stderr}")
        with output.open(encoding="utf-8") as lines:
            own = own_costs((line.rstrip("\n") for line in lines), os.path.realpath(arguments.library))
    costs = {}
    for line in done.stdout.splitlines():
        name, blocks, returned = line.split("\t")
        if name not in own:
            raise CannotMeasure(f"callgrind has no dump of {name}")
        costs[name] = Cost(*own[name], int(blocks), int(returned))
    if not any(cost.instructions for cost in costs.values()):
        raise CannotMeasure("callgrind saw nothing of the library")
    return costs


def read_golden(path):
    """The build that the figures are of, and the figures."""
    build, costs = None, {}
    for line in path.read_text(encoding="utf-8").splitlines():
        if line.startswith("# build: "):
            build = line.removeprefix("# build: ")
        elif line and not line.startswith("#"):
            name, *numbers = line.split("\t")
            costs[name] = Cost(*map(int, numbers))
    return build, costs


def write_golden(path, build, costs):
    rows = ["\t".join(["# function", *FIELDS.values()])]
    rows += ["\t".join([name, *map(str, cost)]) for name, cost in costs.items()]
    path.write_text(HEAD + build + "\n" + "\n".join(rows) + "\n", encoding="utf-8")


def is_other(field, was, now):
    if field != "instructions":
        return was != now
    return abs(now - was) > max(LEAST_DIFFERENCE, TOLERANCE * was)


def differences(golden, costs):
    """A row for each figure that is another now: function, what, was, is, per cent."""
    rows = []
    for name in list(golden) + [name for name in costs if name not in golden]:
        if name not in costs or name not in golden:
            gone = name in golden
            rows.append((name, "", "" if gone else "not there", "not there" if gone else "", ""))
            continue
        for field, was, now in zip(FIELDS, golden[name], costs[name]):
            if is_other(field, was, now):
                percent = f"{100 * (now - was) / was:+.1f} %" if was > 0 and field != "returned" else ""
                rows.append((name, FIELDS[field], str(was), str(now), percent))
    return rows


def print_table(rows):
    rows = [("function", "", "was", "is", "")] + rows
    widths = [max(len(row[column]) for row in rows) for column in range(5)]
    for name, field, *figures in rows:
        print("  ".join([name.ljust(widths[0]), field.ljust(widths[1])] +
                        [figure.rjust(width) for figure, width in zip(figures, widths[2:])]).rstrip())


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", required=True, help="compiler, machine and flags of this build")
    parser.add_argument("--golden", required=True, type=pathlib.Path)
    parser.add_argument("--valgrind")
    parser.add_argument("--program", help="every_call; without it this build cannot be measured")
    parser.add_argument("--library")
    parser.add_argument("--files", help="the golden side files")
    parser.add_argument("--update", action="store_true", help="write the figures")
    arguments = parser.parse_args()

    build, golden = read_golden(arguments.golden) if arguments.golden.exists() else (None, {})
    if build != arguments.build and not arguments.update:
        print(f"Skipped: the figures are of the build\n  {build}\nand say nothing of\n  {arguments.build}")
        return NOT_COMPARABLE
    if arguments.program is None:
        print("Skipped: there is no valgrind, or none that could run what this build makes")
        return NOT_COMPARABLE
    try:
        costs = measured(arguments)
    except CannotMeasure as problem:
        print(problem, file=sys.stderr)
        return 2
    rows = differences(golden, costs)
    if rows:
        print_table(rows)
    if arguments.update:
        write_golden(arguments.golden, arguments.build, costs)
        print(f"wrote {arguments.golden}, {len(costs)} rows, {len(rows)} differences")
        return 0
    if rows:
        print("\nWhat costs more has a reason, or goes. What is meant, or costs less, is committed with new figures:\n"
              f"  {shlex.join([sys.executable, '-B', *sys.argv, '--update'])}")
    return 1 if rows else 0


if __name__ == "__main__":
    sys.exit(main())
