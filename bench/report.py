"""Runs the benchmark programs of a build folder and reports what they measured.

Called by scripts/bench, whose head explains the table and the options.
"""
import argparse
import collections
import json
import os
import resource
import signal
import statistics
import subprocess
import sys
import tempfile
import time

import page

LEAST_ROUNDS = 6  # with fewer there is no 95 % interval of a median

Row = collections.namedtuple("Row", "name kind subject baseline limit why")


class CannotMeasure(Exception):
    """Something other than the library's speed went wrong."""


def read_limits(path):
    rows = []
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            if line.startswith("#") or not line.strip():
                continue
            fields = line.rstrip("\n").split("\t")
            if len(fields) != len(Row._fields):
                raise CannotMeasure(f"{path}:{number}: {len(fields)} columns instead of {len(Row._fields)}")
            row = Row(*fields)
            if row.kind not in ("ratio", "difference", "value"):
                raise CannotMeasure(f"{path}:{number}: '{row.kind}' is none of ratio, difference, value")
            rows.append(row._replace(limit=None if row.limit == "-" else float(row.limit)))
    return rows


def run(program, output, rounds):
    """Runs one program with the platform as it stands by default; returns its results."""
    environment = dict(os.environ, G_SLICE="always-malloc") if "allocations" in program else dict(os.environ)
    for name in ("PVR_LOG", "PVR_LOG_LEVEL", "PVR_PLATFORM_CONFIG"):
        environment.pop(name, None)
    command = [program, f"--json={output}"] + ([f"--rounds={rounds}"] if rounds else [])
    if subprocess.run(command, env=environment, check=False).returncode != 0:
        raise CannotMeasure(f"{os.path.basename(program)} failed")
    with open(output, encoding="utf-8") as file:
        return json.load(file)


def series(results):
    """One value per round for each subject: times in ns, counts as they are."""
    values = collections.defaultdict(dict)
    for run_ in results["benchmarks"]:
        counters = ("allocations", "bytes", "cpu_ns", "elapsed_ns")
        value = next((run_[name] for name in counters if name in run_), run_["real_time"])
        values[run_["name"]][run_["repetition_index"]] = value
    return {name: [of_round[index] for index in sorted(of_round)] for name, of_round in values.items()}


def stripped_size(library):
    with tempfile.TemporaryDirectory() as folder:
        stripped = os.path.join(folder, "stripped")
        subprocess.run(["strip", "--strip-all", "-o", stripped, library], check=True)
        return os.path.getsize(stripped)


def interval_of_median(values):
    """The 95 % interval that the order statistics give, whatever the distribution; of fewer than six values all of
    them."""
    ordered = sorted(values)
    count = len(ordered)
    if count == 1:
        return ordered[0], ordered[0]  # not sampled: a size
    # The greatest rank with P(fewer than rank of the values lie below the true median) <= 2.5 %, in
    # whole numbers: each of the 2**count ways to lie above or below is as likely as any other.
    rank, below, exactly = 0, 0, 1
    while 40 * (below + exactly) <= 2**count:
        below += exactly
        exactly = exactly * (count - rank) // (rank + 1)
        rank += 1
    rank = max(rank, 1)
    return ordered[rank - 1], ordered[count - rank]


def compared(row, measured):
    """What the row is about, round by round."""
    subject = measured[row.subject]
    if row.kind == "value":
        return subject
    pairs = zip(subject, measured[row.baseline], strict=True)
    return [a / b if row.kind == "ratio" else a - b for a, b in pairs]


def judged(row, low, high):
    if row.limit is None:
        return "-"
    if low > row.limit:
        return "BEYOND"
    return "within" if high <= row.limit else "unclear"


def as_quantity(name, value):
    if name.startswith(("size/", "memory/", "load/dirty")):
        return f"{value:.0f} bytes"
    if name.startswith("allocations/"):
        return f"{value:g} blocks"
    if name.startswith("clients/"):
        return f"{1e9 / value:.0f} calls/s"
    for unit, size in (("ms", 1e6), ("us", 1e3)):
        if value >= size:
            return f"{value / size:.2f} {unit}"
    return f"{value:.2f} ns"


def evaluate(rows, measured, not_measured):
    """The table as data, one entry per row."""
    entries = []
    for row in rows:
        names = [name for name in (row.subject, row.baseline) if name != "-"]
        if any(prefix and name.startswith(prefix) for name in names for prefix in not_measured):
            entries.append({"name": row.name, "verdict": "not measured: one CPU only"})
            continue
        missing = [name for name in names if name not in measured]
        if missing:
            raise CannotMeasure(f"'{row.name}': nothing measured under the name {missing[0]}")
        values = compared(row, measured)
        low, high = interval_of_median(values)
        entries.append({
            "name": row.name, "kind": row.kind, "rounds": len(values), "limit": row.limit, "why": row.why,
            "medians": {name: statistics.median(measured[name]) for name in names},
            "median": statistics.median(values), "interval": [low, high], "verdict": judged(row, low, high)})
    return entries


def formatted(entry):
    """One line of the table."""
    if "kind" not in entry:
        return [entry["name"], "", "", "", "", "", entry["verdict"]]
    names = list(entry["medians"])
    is_ratio = entry["kind"] == "ratio"

    def result(value):
        if is_ratio:
            return f"{value:.4f}"
        return as_quantity(names[0], value) if entry["kind"] == "value" else f"{value:+g}"

    low, high = entry["interval"]
    is_sampled = entry["rounds"] > 1
    return [entry["name"], as_quantity(names[0], entry["medians"][names[0]]),
            as_quantity(names[1], entry["medians"][names[1]]) if len(names) > 1 else "",
            "" if entry["kind"] == "value" else result(entry["median"]),
            f"{result(low)} .. {result(high)}" if is_sampled else "",
            "" if entry["limit"] is None else f"{entry['limit']:g}", entry["verdict"]]


def print_table(entries):
    lines = [["", "subject", "baseline", "result", "95 % interval", "limit", "verdict"]]
    lines += [formatted(entry) for entry in entries]
    widths = [max(len(line[column]) for line in lines) for column in range(len(lines[0]))]
    for line in lines:
        cells = [line[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(line[1:-1], widths[1:-1])]
        print("  ".join(cells + [line[-1]]).rstrip())


def markdown_table(entries, machine):
    """The table as a page shows it."""
    def cells(row):
        return "| " + " | ".join(row) + " |"

    lines = [f"Measured in {machine['seconds']:.0f} s on {machine['cpus']} CPUs, of which other programs took "
             f"{machine['others_share']:.0%} and the host {machine['stolen_share']:.0%}.", "",
             cells(["", "library", "beside it", "result", "95 % interval", "limit"]), cells(["---"] + ["---:"] * 5)]
    lines += [cells(formatted(entry)[:6]) for entry in entries if "kind" in entry]
    return "\n".join(lines)


def busy_seconds():
    """CPU time spent by everybody, and taken by the host."""
    with open("/proc/stat", encoding="ascii") as file:
        user, nice, system, _, _, irq, softirq, steal = map(int, file.readline().split()[1:9])
    tick = os.sysconf("SC_CLK_TCK")
    return (user + nice + system + irq + softirq) / tick, steal / tick


def own_seconds():
    usage = [resource.getrusage(who) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)]
    return sum(of.ru_utime + of.ru_stime for of in usage)


def measure(build, rounds, rows):
    """What the rows are about by name, what could not be measured, and how busy the machine was with other things."""
    folder = os.path.join(build, "bench")
    started, busy, own = time.monotonic(), busy_seconds(), own_seconds()
    times = run(os.path.join(folder, "pvr-bench-times"), os.path.join(folder, "times.json"), rounds)
    measured = series(times)
    for program in "allocations", "clients", "memory", "load":
        if any(row.subject.startswith(f"{program}/") for row in rows):
            measured |= series(run(os.path.join(folder, f"pvr-bench-{program}"),
                                   os.path.join(folder, f"{program}.json"), None))
    elapsed, busy_after = time.monotonic() - started, busy_seconds()
    capacity = elapsed * os.cpu_count()
    machine = {
        "seconds": elapsed, "cpus": os.cpu_count(),
        "others_share": max(0.0, busy_after[0] - busy[0] - (own_seconds() - own)) / capacity,
        "stolen_share": (busy_after[1] - busy[1]) / capacity}
    measured["size/library"] = [stripped_size(os.path.join(build, "src", "libpvr-service-api.so"))]
    return measured, times["context"].get("not_measured", "").split(), machine


def parse_arguments():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True)
    parser.add_argument("--limits", required=True)
    parser.add_argument("--rounds", type=int)
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--markdown")
    arguments = parser.parse_args()
    if arguments.rounds is not None and arguments.rounds < LEAST_ROUNDS:
        parser.error(f"--rounds takes a number from {LEAST_ROUNDS}")
    return arguments


def main():
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda received, _: sys.exit(128 + received))  # ends the running program, too
    arguments = parse_arguments()
    try:
        rows = read_limits(arguments.limits)
        measured, not_measured, machine = measure(arguments.build, arguments.rounds, rows)
        entries = evaluate(rows, measured, not_measured)
        if arguments.markdown:
            page.refresh(arguments.markdown, "measured", markdown_table(entries, machine))
    except (CannotMeasure, page.NoPlace, OSError, subprocess.CalledProcessError) as problem:
        print(f"bench: {problem}", file=sys.stderr)
        return 2
    report = os.path.join(arguments.build, "bench", "report.json")
    with open(report, "w", encoding="utf-8") as file:
        json.dump({"machine": machine, "rows": entries}, file, indent=2)
        file.write("\n")
    print_table(entries)
    print(f"\n{machine['seconds']:.0f} s on {machine['cpus']} CPUs; other programs took "
          f"{machine['others_share']:.0%} of them and the host {machine['stolen_share']:.0%}. In full: {report}")
    broken = [entry["name"] for entry in entries if entry["verdict"] == "BEYOND"]
    if arguments.check and broken:
        print("bench: beyond the limit: " + "; ".join(broken), file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
