"""Rows that the compiler alone reads: no switch can stand in them, so each is changed by itself."""
import re
import subprocess

from mutants import Mutant

ROWS = [("src/client/call.h", "parameter",
         re.compile(r"^template (?P<row>.* struct Taken<.*?>) +\{ using Type = (?P<type>.*); \};", re.M)),
        ("src/client/wire_format.h", "mark of a container",
         re.compile(r"^template .* char (?P<row>received<GVariant \*\*.*>) = '(?P<type>\?)';", re.M))]


def rows_of(tree):
    """The mutants of a planted tree, each with its file, the text of its row and the text that takes its place."""
    found = []
    for file, column, pattern in ROWS:
        rows = list(pattern.finditer((tree / file).read_text(encoding="utf-8")))
        assert rows, f"{file} has no {column} any more"
        types = [row["type"] for row in rows]
        for index, row in enumerate(rows):
            new = next((other for other in types[index + 1:] + types[:index] if other != row["type"]), "s")
            changed = row[0][:row.start("type") - row.start()] + new + row[0][row.end("type") - row.start():]
            name = " ".join(row["row"].split())
            found.append((Mutant(file.rpartition("/")[2], name, column, f"{row['type']} -> {new}", []),
                          tree / file, row[0], changed))
    return found


def is_refused(command, folder):
    return subprocess.run([*command, "-fsyntax-only", "-ferror-limit=1"], cwd=folder, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, check=False).returncode != 0


def refused(rows, commands, build):
    """Those of the mutants that a source does not compile with. What it does compile with changes nothing that a test
    could see, and so survives."""
    found = {}
    for mutant, file, row, changed in rows:
        plain = file.read_text(encoding="utf-8")
        assert plain.count(row) == 1, f"{row} has been changed already"
        file.write_text(plain.replace(row, changed), encoding="utf-8")
        try:
            if any(is_refused(command, build) for command in commands):
                found[mutant.number] = "a source does not compile"
        finally:
            file.write_text(plain, encoding="utf-8")
    return found
