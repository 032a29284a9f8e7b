"""Judges the tests by the mutants that they notice. See scripts/mutate, which builds what this runs.

usage: mutate.py plant TREE BUILD JOBS              plants all mutants in the tree
       mutate.py judge TREE BUILD JOBS SAMPLE SEED ONLY   runs the tests; all mutants when SAMPLE is 0
"""
import collections
import pathlib
import pickle
import random
import re
import sys
import time

import judge
import plant

REPORT = "mutants.pickle"  # between the two steps, which the build stands between


def shown(mutants, refused, found, chosen):
    """A line for each table."""
    rows = collections.defaultdict(lambda: [0, 0, 0, 0])
    for mutant in mutants:
        row = rows[mutant.table]
        row[0] += 1
        row[1] += mutant.number in refused
        row[2] += found.get(mutant.number) is not None
        row[3] += mutant.number in found and found[mutant.number] is None
    print(f"{'':<32} {'mutants':>8} {'refused by the compiler':>24} {'killed':>8} {'survived':>9}")
    for table, row in [*rows.items(), ("all", [sum(column) for column in zip(*rows.values())])]:
        print(f"{table:<32} {row[0]:>8} {row[1]:>24} {row[2]:>8} {row[3]:>9}")
    asked = len(mutants) - len(refused)
    if len(chosen) < asked:
        print(f"{len(chosen)} of {asked} were asked about, by chance")


def main():
    step, tree, build, jobs = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3]), int(sys.argv[4])
    if step == "plant":
        mutants, refused = plant.plant(tree, build, jobs)
        (build / REPORT).write_bytes(pickle.dumps((mutants, refused)))
        print(f"{len(mutants)} mutants, {len(refused)} refused by the compiler", flush=True)
        return 0
    mutants, refused = pickle.loads((build / REPORT).read_bytes())
    sample, seed, only = int(sys.argv[5]), int(sys.argv[6]), sys.argv[7]
    chosen = [mutant for mutant in mutants if mutant.number not in refused and re.search(only, str(mutant))]
    if sample:
        chosen = sorted(random.Random(seed).sample(chosen, min(sample, len(chosen))), key=lambda mutant: mutant.number)
        print(f"seed {seed}", flush=True)
    began = time.monotonic()
    with (build / "kills.txt").open("w", encoding="utf-8") as kills:
        def tell(mutant, name):
            print(f"{mutant}  by {name or 'NOBODY'}", file=kills, flush=True)
            if name is None:
                print(f"SURVIVED  {mutant}", flush=True)

        found = judge.judged(judge.Tests(build), chosen, jobs, tell)
    shown(mutants, refused, found, chosen)
    print(f"in {time.monotonic() - began:.0f} seconds; what killed each stands in {build.name}/kills.txt")
    return 1 if None in found.values() else 0


if __name__ == "__main__":
    sys.exit(main())
