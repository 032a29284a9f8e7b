"""Plants all mutants at once in a copy of the sources, each behind a switch, and asks the compiler which it refuses."""
import json
import pathlib
import re
import shlex
import subprocess
from concurrent.futures import ThreadPoolExecutor

import call_rows
import shapes
import tables
import type_rows
from cpp_text import closing, without_comments

HEADER = "mutation/switched.h"
# What the library itself does not include, or not so that a mutant shows: the compiler is asked about it here.
TESTS_WITH_MUTANTS = {"golden_files_test.cpp", "log_test.cpp"}


class Source:
    """A file that mutants are planted in: pieces of text, some of which belong to a mutant."""

    def __init__(self, text):
        self.original = text
        self.edits = []  # (start, end, [(text, mutant number or 0)])

    def replace(self, start, end, pieces):
        self.edits.append((start, end, pieces))

    def planted(self, refused):
        """The text without the refused mutants, and the mutant of each line that has one."""
        parts, position = [(f'#include "{HEADER}"\n', 0)], 0
        for start, end, pieces in sorted(self.edits):
            assert start >= position, "two plants in one place"
            parts += [(self.original[position:start], 0), *pieces]
            position = end
        parts.append((self.original[position:], 0))
        text, owners = "", {}
        for part, number in parts:
            if number in refused:
                continue
            first = text.count("\n") + 1
            text += part
            if number:
                owners.update(dict.fromkeys(range(first, text.count("\n") + 2), number))
        return text, owners


def switched(mutants, body, is_void):
    """A function's body behind a switch. The plain one comes last, for the compiler to see that all ways return."""
    leave = " return;" if is_void else ""
    pieces = [("\nswitch (::mutation::active()) {\n", 0)]
    for mutant in mutants:
        pieces += [(f"case {mutant.number}: {{{mutant.text}}}{leave}\n", mutant.number), ("\n", 0)]
    return pieces + [("default: break;\n}\n" + body, 0)]


class Planter:
    """Collects the mutants of the sources in tree/src; numbers are given in the order of their planting."""

    def __init__(self, tree):
        self.tree = tree
        self.sources = {}
        self.mutants = []

    def source(self, file):
        if file not in self.sources:
            self.sources[file] = Source((self.tree / file).read_text(encoding="utf-8"))
        return self.sources[file]

    def number(self, mutants):
        for mutant in mutants:
            self.mutants.append(mutant)
            mutant.number = len(self.mutants)
        return mutants

    def plant_functions(self, file, found):
        source = self.source(file)
        for (start, end), result, mutants in found:
            self.number(mutants)
            source.replace(start, end, switched(mutants, source.original[start:end], result == "void"))

    def plant_codes(self, table):
        source = self.source(table.file)
        bare = without_comments(source.original)
        (start, _), spans = tables.rows_of(bare, table)
        source.replace(start, start + len("constinit "), [("", 0)])
        mutants = self.number(tables.mutants_of(table, source.original))
        for index, (row_start, row_end) in enumerate(spans):
            chosen = "".join(f"::mutation::told() == {mutant.number} ? NamedCode{mutant.cell[1]} : "
                             for mutant in mutants if mutant.cell[0] == index)
            code = bare[row_start + len("NAMED("):row_end - 1]
            source.replace(row_start, row_end, [(f'{chosen}NamedCode{{{code}, "{code}"}}', 0)])

    def plant_tables(self, file, group):
        """Each table as it is, the rows that take the place of one of its own, and a check of it with each of them."""
        source = self.source(file)
        bare = without_comments(source.original)
        found = {}
        for table in group:
            (start, end), spans = tables.rows_of(bare, table)
            mutants = self.number(tables.mutants_of(table, source.original))
            found[table] = (len(spans), mutants)
            plain = ", ".join(bare[slice(*span)] for span in spans)
            store = "inline " if "inline" in bare[start:spans[0][0]] else ""
            pieces = [(f"{store}constexpr {table.element} {table.name}_plain[] = {{{plain}}};\n"
                       f"{store}constexpr ::mutation::Change<{table.element}> {table.name}_changes[] = {{\n", 0)]
            pieces += [(f"{{{mutant.number}, {mutant.cell[0]}, {mutant.cell[1]}}},\n", mutant.number)
                       for mutant in mutants]
            pieces += [(f"{{}}}};\n{store}{table.element} const (&{table.name})[{len(spans)}] = "
                        f"::mutation::changed({table.name}_plain, {table.name}_changes);", 0)]
            source.replace(start, end, pieces)
        self.plant_checks(source, bare, found)
        for match in re.finditer(r"^(?:inline )?(constexpr )[^;{}]*\([^;{}]*\{", bare, re.M):
            body = bare[match.end():closing(bare, match.end() - 1)]
            if any(re.search(rf"\b{table.name}\b", body) for table in group):
                source.replace(match.start(1), match.end(1), [("" if "inline" in match[0] else "inline ", 0)])

    @staticmethod
    def plant_checks(source, bare, found):
        """The compile-time check of the tables as they are, and with each of the rows."""
        if not (match := re.search(r"consteval bool sound\(\)\n\{", bare)):
            return
        end = closing(bare, match.end() - 1)
        body = bare[match.end():end]
        for table, (count, _) in found.items():
            body = re.sub(rf"std::size\({table.name}\)", str(count), body)
        body = " ".join(body.split())

        def check(name, mutant=None):
            tables_of_it = ""
            for table in found:
                if mutant and mutant.table == table.name:
                    tables_of_it += (f"const auto now = ::mutation::with_row({table.name}_plain, {mutant.cell[0]}, "
                                     f"{table.element}{mutant.cell[1]}); const auto &{table.name} = now.rows; ")
                elif table.check:
                    tables_of_it += f"const auto &{table.name} = {table.name}_plain; "
            return f"consteval bool {name}() {{ {tables_of_it}{body} }}"

        pieces = [(check("sound") + "\n", 0)]
        for table, (_, mutants) in found.items():
            if table.check:
                pieces += [(f"{check(f'sound_{mutant.number}', mutant)} static_assert(sound_{mutant.number}());\n",
                            mutant.number) for mutant in mutants]
        source.replace(match.start(), end + 1, pieces)

    def planted(self, refused):
        """Writes the files, and says which lines belong to which mutant."""
        owners = {}
        for file, source in self.sources.items():
            text, owners[str(self.tree / file)] = source.planted(refused)
            path = self.tree / file
            if path.read_text(encoding="utf-8") != text:
                path.write_text(text, encoding="utf-8")
        return owners


def family_tests(file):
    """What is likely to notice a change in a function of a file, besides the tests that bear the function's name."""
    return {"retired.cpp": "Retired",
            "local_answers.cpp": "LocalCalls|Autohighlight|BrowserQueue|SessionCalls",
            "rights.cpp": "EachRight|ViewingRights|Rights|OwnQuery|OwnSections",
            "error_texts.cpp": "ErrorTexts|SupportCheck",
            "recording.cpp": "RemainingTime|StopPvrSync",
            "channels.cpp": "ChannelInfo|svc_pvr_get_channel_info",
            "status.cpp": "IsSupportPvr",
            "recording_state.cpp": "RecordingsWithoutTimeshift",
            "devices.cpp": "LocalCalls|from_c",
            "playback.cpp": "LocalCalls",
            "recording_files.cpp": "RemoveInf",
            "callbacks.cpp": "FirstRegistration|Regist|Callbacks|Handler|SignalList|EachSlot|Signals|Library|Sizes",
            }.get(file, file)


def collected(tree):
    """All mutants, planted."""
    planter = Planter(tree)
    wire = (tree / "src/client/wire.h").read_text(encoding="utf-8")
    interface = (tree / "interface/org.vexan.tv.pvr.xml").read_text(encoding="utf-8")
    neighbours = shapes.neighbours(wire, interface)
    for file in [*sorted((tree / "src/client").glob("*.cpp")), tree / "src/events/callbacks.cpp"]:
        relative = file.relative_to(tree)
        text = file.read_text(encoding="utf-8")
        if "\nint svc_pvr_" not in text or file.name == "session.cpp":
            continue  # no rows
        family = family_tests(file.name)
        wanted = (r"(svc|svr)_pvr_|get_size_of_|store_channel_info$|retired$|"
                  r"register_checked|unregister_|store_in_list|remove_from_list")
        planter.plant_functions(str(relative), call_rows.mutants_of(
            file, text, wanted, neighbours,
            lambda name: [rf"SendItsRequest.*/{name}(?![a-z_])", rf"/{name}(?![a-z_])", family]))
    for table in tables.CODES:
        planter.plant_codes(table)
    for file in dict.fromkeys(table.file for table in tables.TABLES if table not in tables.CODES):
        planter.plant_tables(file, [table for table in tables.TABLES if table.file == file])
    shapes.plant(planter)
    return planter


def complaints(command, folder):
    """Places that the compiler complains of: each a list of lines, the first likelier than the next."""
    outcome = subprocess.run([*command, "-fsyntax-only", "-ferror-limit=0", "-ftemplate-backtrace-limit=0",
                              "-fno-caret-diagnostics"], cwd=folder, capture_output=True, text=True, check=False)
    found = []
    for line in outcome.stderr.splitlines():
        if match := re.match(r"(.+?):(\d+):\d+: (fatal error|error|note): (.*)", line):
            if match[3] != "note":
                found.append((match[4], []))
            if found:
                found[-1][1].append((match[1], int(match[2])))
    if outcome.returncode != 0 and not found:
        raise SystemExit(f"mutate: the compiler fails: {outcome.stderr[-2000:]}")
    return found


def plant(tree, build, jobs):
    """All mutants, and which of them the compiler refuses; the tree holds the others."""
    planter = collected(tree)
    commands = {}
    for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
        file = pathlib.Path(entry["file"])
        is_source = "pvr-service-api-objects.dir" in entry["command"] and file.is_relative_to(tree / "src")
        if is_source or file.name in TESTS_WITH_MUTANTS:
            command = shlex.split(entry["command"])
            output = command.index("-o")
            commands[file] = command[:output] + command[output + 2:]
    refused = {}
    asked = list(commands)
    while asked:
        owners = planter.planted(refused)
        fresh, complaining = {}, []
        with ThreadPoolExecutor(jobs) as pool:
            for file, found in zip(asked, pool.map(lambda file: complaints(commands[file], build), asked)):
                if found:
                    complaining.append(file)
                for message, places in found:
                    number = next((owners[file][line] for file, line in places if owners.get(file, {}).get(line)), None)
                    if number is None:
                        raise SystemExit(f"mutate: the compiler refuses what is no mutant's: {message} at {places[0]}")
                    fresh.setdefault(number, message)
        refused |= fresh
        asked = complaining
    rows = type_rows.rows_of(tree)
    planter.number([mutant for mutant, *_ in rows])
    callers = [command for file, command in commands.items() if "wire::" in file.read_text(encoding="utf-8")]
    return planter.mutants, refused | type_rows.refused(rows, callers, build)
