"""What the tests of the files beside a recording share: golden and broken ones, with recordings beside them."""
import json
import pathlib
import shutil
import subprocess
import sys

from pvrctl_case import PvrctlTest

DATA = pathlib.Path(__file__).resolve().parent.parent / "data"
GOLDEN = DATA / "golden"
RECORD_SIZE = 10905
TELEVISION = "vexan-television"
MISSING = "No such file or directory"


class SideFilesTest(PvrctlTest):
    def take(self, name, recording=True):
        """A golden file, with a recording beside it unless that is to be missing."""
        source = next(GOLDEN.glob(name + ".???"))
        shutil.copyfile(source, self.folder / source.name)
        if recording:
            (self.folder / (name + ".srf")).touch()
        return name + ".srf"

    def take_broken(self):
        """The broken files, with recordings, and the rows of their list."""
        subprocess.run([sys.executable, "-B", DATA / "make_side_files.py", "broken", self.folder], check=True,
                       stdout=subprocess.DEVNULL)
        rows = json.loads((self.folder / "broken.json").read_text(encoding="utf-8"))["files"]
        for row in rows:
            (self.folder / row["file"]).with_suffix(".srf").touch()
        return rows

    def info(self, name):
        return (self.folder / name).with_suffix(".inf").read_bytes()


def bytes_of(row):
    """A field of a dump, as the record has it."""
    if "hex" in row:
        return bytes.fromhex("".join(row["hex"])).ljust(row["size"], b"\0")
    if "text" in row:
        return row["text"].encode().ljust(row["size"], b"\0")
    values = row["value"] if isinstance(row["value"], list) else [row["value"]]
    width = row["size"] // len(values)
    return b"".join((value % 2 ** (8 * width)).to_bytes(width, "little") for value in values)
