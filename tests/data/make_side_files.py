"""Makes the small binary files that lie beside recordings, from what content/ says.

golden         writes golden/ anew: the files, and beside each what a reader must find in it (.json)
check          says whether golden/ is what this program makes
broken FOLDER  makes files with something wrong or unusual, and broken.json with what each is and how reading it ends
"""
import argparse
import pathlib
import struct
import sys
import tomllib

from side_files import broken
from side_files.formats import BY_EXTENSION, dump_text

HERE = pathlib.Path(__file__).resolve().parent
CONTENT = HERE / "content"
GOLDEN = HERE / "golden"


def golden_files(content=CONTENT):
    """Every file of golden/, as bytes by its name."""
    made = {}
    for path in sorted(content.glob("*.toml")):
        kind = BY_EXTENSION[pathlib.Path(path.stem).suffix]
        try:
            image = kind.make(tomllib.loads(path.read_text(encoding="utf-8")))
        except (KeyError, ValueError, struct.error) as problem:
            raise SystemExit(f"{path}: {problem!r}") from problem
        made[path.stem] = image
        made[path.stem + ".json"] = dump_text(kind.dump(path.stem, image)).encode()
    return made


def write_golden(folder=GOLDEN):
    folder.mkdir(exist_ok=True)
    made = golden_files()
    for path in folder.iterdir():
        if path.name not in made:
            path.unlink()
    for name, data in made.items():
        (folder / name).write_bytes(data)
    print(f"wrote {len(made)} files, {sum(map(len, made.values()))} bytes, to {folder}")


def differences(folder=GOLDEN):
    """One line for each file of a folder that is not as it should be."""
    made = golden_files()
    found = {path.name: path.read_bytes() for path in folder.iterdir()}
    report = [f"{name}: missing" for name in made if name not in found]
    report += [f"{name}: nothing under {CONTENT.name}/ makes it" for name in sorted(found) if name not in made]
    for name in sorted(set(found) & set(made)):
        if found[name] != made[name]:
            pairs = enumerate(zip(found[name], made[name]))
            at = next((index for index, (one, other) in pairs if one != other), min(len(found[name]), len(made[name])))
            report.append(f"{name}: {len(found[name])} bytes instead of {len(made[name])}, different from {at} on")
    return report


def check():
    report = differences()
    for line in report:
        print(line)
    if report:
        print(f"If that is meant, rewrite them: {sys.argv[0]} golden")
    return 1 if report else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    commands.add_parser("golden")
    commands.add_parser("check")
    commands.add_parser("broken").add_argument("folder", type=pathlib.Path)
    options = parser.parse_args()
    if options.command == "check":
        return check()
    if options.command == "golden":
        write_golden()
    else:
        broken.write(options.folder)
    return 0


if __name__ == "__main__":
    sys.exit(main())
