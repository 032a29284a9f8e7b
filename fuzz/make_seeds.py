"""Makes the inputs that fuzzing begins with: the files that the tests read, each behind the bytes that choose what
the reader meets, and a few files under every choice.

usage: make_seeds.py FOLDER    with a folder in it for each target
"""
import itertools
import json
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "tests/data"

# How many bytes come before the file, and at which of them the disk is chosen; its parameter is the next.
HEADERS = {"info": (7, 4), "info_lean": (5, 2), "colour_format": (5, 2), "fingerprint": (15, 12)}
SUFFIXES = {"info": ".inf", "info_lean": ".inf", "colour_format": ".cft", "fingerprint": ".sas"}
# The files that are shown under every choice.
VARIED = {
    "info": ("vexan-television.inf", "vexan-unfinished.inf", "ardel-television.inf", "selk-television.inf"),
    "info_lean": ("vexan-television.inf", "selk-television.inf"),
    "colour_format": ("picture.cft",),
    "fingerprint": ("one-block.sas", "several-blocks.sas", "empty-blocks.sas"),
}
# From 128 on a byte chooses something unusual; no table has more rows than this.
CHOICES = range(128, 128 + 16)
FAILING = 128 + 3
ANOTHER_TIME = 255


def headers(target):
    """All of them: one choice at a time, and a disk that fails early, in the middle, late and not at all."""
    size, disk = HEADERS[target]
    plain = bytes(size)
    yield plain
    for place in range(size):
        for choice in CHOICES:
            yield plain[:place] + bytes([choice]) + plain[place + 1:]
    for part in (20, 100, 200, 255):
        yield plain[:disk] + bytes([FAILING, part]) + plain[disk + 2:]


def of_files(target, files, reads):
    """The seeds of a target that reads files, as bytes by name."""
    for name, image in files.items():
        if not name.endswith(SUFFIXES[target]):
            continue
        some = headers(target) if name in VARIED[target] else [bytes(HEADERS[target][0])]
        for number, header in enumerate(some):
            yield f"{name}-{number}", header + image
        for number, (time, hole) in enumerate(itertools.product(reads.get(name, ()), (0, *CHOICES[:3]))):
            if target == "fingerprint":
                header = bytes([0, 0, ANOTHER_TIME]) + struct.pack("<q", time) + bytes([hole, 0, 0, 0])
                yield f"{name}-read-{number}", header + image


def of_images(files):
    for name, image in files.items():
        if name.startswith(("ardel", "selk")) and name.endswith(".inf"):
            yield name, bytes([0 if name.startswith("ardel") else 129]) + image


def main():
    folder = pathlib.Path(sys.argv[1])
    with tempfile.TemporaryDirectory() as made:
        broken = pathlib.Path(made)
        subprocess.run([sys.executable, "-B", DATA / "make_side_files.py", "broken", broken], check=True,
                       stdout=subprocess.DEVNULL)
        files = {path.name: path.read_bytes() for place in (DATA / "golden", broken) for path in sorted(place.iterdir())
                 if path.suffix != ".json"}
        listed = json.loads((broken / "broken.json").read_text(encoding="utf-8"))["files"]
    reads = {row["file"]: [read["time"] for read in row["reads"]] for row in listed if "reads" in row}

    seeds = {target: dict(of_files(target, files, reads)) for target in HEADERS}
    seeds["older_generations"] = dict(of_images(files))
    seeds["hexadecimal"] = {path.name: path.read_bytes() for path in (ROOT / "fuzz/seeds/hexadecimal").iterdir()}
    for target, content in seeds.items():
        if not content:
            raise SystemExit(f"make_seeds.py: nothing to begin {target} with")
        shutil.rmtree(folder / target, ignore_errors=True)
        (folder / target).mkdir(parents=True)
        for name, data in content.items():
            (folder / target / name).write_bytes(data)


if __name__ == "__main__":
    main()
