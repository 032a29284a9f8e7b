"""Makes the inputs that fuzzing begins with: the files that the tests read, each behind the bytes that choose what
the reader meets, and a few files under every choice; the signals of every kind; the settings that the tree has; the
command lines that its pages show. Those of the replies are made by their target, which has the tests' rows.

usage: make_seeds.py FOLDER    with a folder in it for each target
"""
import itertools
import json
import pathlib
import re
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "tests/data"



def text_of(name):
    return (ROOT / name).read_text(encoding="utf-8")


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


# ---- Signals: which one, the type of its parameters, who listens and the sender come before the parameters' bytes.

RECORDS, RESULTS = 0, 131
ANOTHER_TYPE, NO_PARAMETERS = 133, 255
ALIGNMENTS = {"i": 4, "t": 8, "s": 1}


def packed(signature, number, text):
    """A structure as GVariant lays it out. A text is the last member, so there are no offsets."""
    data, alignment = b"", max(ALIGNMENTS[code] for code in signature)
    for code in signature:
        data += bytes(-len(data) % ALIGNMENTS[code])
        data += {"i": struct.pack("<i", number), "t": struct.pack("<Q", number & 2 ** 64 - 1),
                 "s": text.encode() + b"\0"}[code]
    return data if "s" in signature else data + bytes(-len(data) % alignment)


def of_records():
    record = (ROOT / "fuzz/seeds/hexadecimal/record").read_bytes()[:582]
    for number in range(-1, 22):
        yield f"record-{number}", bytes([RECORDS, 0, 0, 0]) + struct.pack("<i", number) + record + b"\0"
    odd = {"nothing": b"", "too-short": record[:-1], "too-long": record + b"0", "very-long": record * 4,
           "spaces": b" -+x" * 145 + b"0g"}
    for name, content in odd.items():
        yield f"record-{name}", bytes([RECORDS, 0, 0, 0]) + struct.pack("<i", 1) + content + b"\0"
    for listeners in range(256):
        yield f"heard-{listeners}", bytes([RECORDS, 0, listeners, 0]) + struct.pack("<i", 3) + record + b"\0"


def of_results():
    """A result of each method, of a method that nobody knows, and of each with another value."""
    rows = re.findall(r'^    \{(PS_\w+), +(?:"\((\w+)\)"|nullptr),', text_of("src/events/result_rows.h"), re.M)
    methods = dict(re.findall(r"(PS_\w+) = (-?\d+)", text_of("include/pvr_events.h")))
    for name, signature in [*rows, ("PS_UNKNOWN", "i")]:
        method = struct.pack("<i", int(methods.get(name, 9999)))
        for number, text in ((0, "/m/a.srf"), (1, "/m/b.srf"), (-1, "x" * 300), (403, ""), (3, "/m/c.srf")):
            for inner in (signature or "i", "is" if number == 1 else signature or "i"):
                value = method + bytes(4) + packed(inner, number, text) + f"\0({inner})".encode()
                yield f"result-{name}-{number}-{inner}", bytes([RESULTS, 0, 0, 0]) + value
        value = method + bytes(4) + packed(signature or "i", 7, "/m/a.srf") + f"\0({signature or 'i'})".encode()
        for listener in range(8):
            yield f"result-{name}-to-{listener}", bytes([RESULTS, 0, 255 ^ 1 << listener, 0]) + value


def of_signals():
    yield from of_records()
    yield from of_results()
    for name in (*range(128, 133), RECORDS):
        for choice in (0, *range(128, 144)):
            yield f"other-{name}-{choice}", bytes([name, choice, 0, 1]) + struct.pack("<i", 1) + b"x\0\0\0(i)"
        yield f"none-{name}", bytes([name, 0, 0, NO_PARAMETERS])


# ---- Settings, and command lines.

def of_settings(target):
    """What the tree has: whole files, and the blocks of the pages."""
    place = {"configuration": "simulator/*.toml", "scenario": "simulator/scenarios/*.toml"}[target]
    for path in sorted(ROOT.glob(place)):
        yield path.name, path.read_bytes()
    for page in sorted((ROOT / "docs").glob("*.md")):
        blocks = re.findall(r"^```toml[^\n]*\n(.*?)^```", page.read_text(encoding="utf-8"), re.M | re.S)
        for number, block in enumerate(blocks):
            yield f"{page.stem}-{number}", block.encode()
    for path in sorted((ROOT / "fuzz/seeds" / target).iterdir()):
        yield path.name, path.read_bytes()


def of_lines():
    pages = [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]
    text = "\n".join(page.read_text(encoding="utf-8") for page in pages)
    sources = "\n".join(path.read_text(encoding="utf-8") for path in sorted((ROOT / "tools/pvrctl").glob("*.cpp")))
    lines = re.findall(r"pvrctl ([^\n`|<>]+)", text) + re.findall(r'[{ ]"([a-z][a-z-]+ [^"\\]+)"[,}]', sources)
    lines += [f"call {name}" + " 7" * len([word for word in names.split(",") if word])
              for name, names in re.findall(r'(?:FUNCTION|ADAPTED|LIST_OF)\((?:[\w:]+, )?(\w+),.*?"([^"]*)"', sources)]
    for number, line in enumerate(dict.fromkeys(lines)):
        try:
            words = shlex.split(line, comments=True)
        except ValueError:  # a quotation mark of the sentence
            continue
        yield str(number), "\n".join(words).encode()
    for path in sorted((ROOT / "fuzz/seeds/arguments").iterdir()):
        yield path.name, path.read_bytes()


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
    seeds["signals"] = dict(of_signals())
    seeds["configuration"] = dict(of_settings("configuration"))
    seeds["scenario"] = dict(of_settings("scenario"))
    seeds["arguments"] = dict(of_lines())
    for target, content in seeds.items():
        if not content:
            raise SystemExit(f"make_seeds.py: nothing to begin {target} with")
        shutil.rmtree(folder / target, ignore_errors=True)
        (folder / target).mkdir(parents=True)
        for name, data in content.items():
            (folder / target / name).write_bytes(data)


if __name__ == "__main__":
    main()
