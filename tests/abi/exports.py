"""Compares the four places that name the exported functions, and says where each name is missing.

library: nm -D of what was built        map:  the linker's version script
headers: the functions marked PVR_API   list: the committed names, one a line
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

NODE = "PVR_SERVICE_API_1"


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, text=True, stdout=subprocess.PIPE,
                          **options).stdout


def in_library(nm, library):
    """Every exported symbol, and what is wrong with the way it is exported."""
    names, faults = set(), []
    for line in run(nm, "-D", "--defined-only", "--format=posix", library).splitlines():
        symbol, kind = line.split()[:2]
        name, _, version = symbol.partition("@")
        if kind == "A" and name == NODE:
            continue
        names.add(name)
        if version.lstrip("@") != NODE:
            faults.append(f"{name}: exported by the library without the version {NODE}: '{symbol}'")
        if kind != "T":
            faults.append(f"{name}: exported by the library as '{kind}', not as a plain function (T)")
    if not names:
        faults.append(f"{library}: exports nothing at all")
    return names, faults


def functions_declared(text):
    """The functions that preprocessed declarations name, as two lists: marked PVR_API, and not marked."""
    text = text.replace('visibility("default")', "exported")
    text = re.sub(r'"(\\.|[^"\\])*"', '""', text)
    marked, unmarked = [], []
    for statement in re.split(r"[;{}]", text):
        is_marked = "exported" in statement
        statement = re.sub(r"__attribute__\s*\(\((?:[^()]|\([^()]*\))*\)\)", " ", statement)
        function = re.match(r'\s*(?:extern\s+"")?[\w\s*&:]*?\b(\w+)\s*\(', statement)
        if function and "typedef" not in statement.split():
            (marked if is_marked else unmarked).append(function[1])
    return marked, unmarked


def in_headers(compiler, include):
    """The symbols that a C++ program asks the linker for when it uses every function of the headers."""
    headers = sorted(include.glob("*.h"))
    source = "".join(f'#include "{header.name}"\n' for header in headers)
    options = ["-std=c++17", "-I", include, "-x", "c++", "-"]
    ours, lines = False, []
    for line in run(compiler, "-E", *options, input=source).splitlines():
        marker = re.match(r'# \d+ "(.*?)"', line)
        if marker:
            ours = pathlib.Path(marker[1]).parent == include
        elif ours:
            lines.append(line)
    marked, unmarked = functions_declared("\n".join(lines))

    faults = [f"{name}: declared in a header without PVR_API" for name in unmarked]
    faults += [f"{name}: declared {marked.count(name)} times" for name in set(marked) if marked.count(name) > 1]
    if not marked:
        return set(), faults + [f"{include}: no header declares a function with PVR_API"]
    with tempfile.TemporaryDirectory() as folder:
        uses = ",\n".join(f"reinterpret_cast<const void *>(&{name})" for name in marked)
        source += f"extern const void *const uses[];\nconst void *const uses[] = {{\n{uses}}};\n"
        run(compiler, *options, "-Wno-deprecated-declarations", "-c", "-o", f"{folder}/uses.o", input=source)
        symbols = {line.split()[0] for line in run("nm", "-u", "--format=posix", f"{folder}/uses.o").splitlines()}
    if len(symbols) != len(set(marked)):
        faults.append(f"headers: {len(set(marked))} functions became {len(symbols)} symbols")
    return symbols, faults


def in_map(path):
    text = re.sub(r"/\*.*?\*/", " ", path.read_text(), flags=re.DOTALL)
    whole = re.fullmatch(r"\s*(\w+)\s*\{\s*global\s*:(.*?)\blocal\s*:\s*\*\s*;\s*\}\s*;\s*", text, re.DOTALL)
    if not whole:
        return set(), [f"{path.name}: is not one node with names under 'global:' and '*' under 'local:'"]
    names = [name.strip() for name in whole[2].split(";") if name.strip()]
    faults = [f"{path.name}: '{name}' is no plain name" for name in names if not re.fullmatch(r"\w+", name)]
    faults += [f"{path.name}: names {name} twice" for name in set(names) if names.count(name) > 1]
    if whole[1] != NODE:
        faults.append(f"{path.name}: the node is {whole[1]}, not {NODE}")
    return set(names), faults


def in_list(path):
    names = [line for line in path.read_text().splitlines() if line and not line.startswith("#")]
    faults = []
    if names != sorted(set(names)):
        faults.append(f"{path.name}: is not sorted by bytes (LC_ALL=C sort -u)")
    return set(names), faults


def differences(places):
    """One line for each name that some place lacks."""
    found = []
    for name in sorted(set().union(*places.values())):
        lacking = [place for place, names in places.items() if name not in names]
        if lacking:
            having = [place for place in places if place not in lacking]
            found.append(f"{name}: in {', '.join(having)}, but not in {', '.join(lacking)}")
    return found


def check(nm, compiler, library, include, version_map, names):
    sources = {
        "library": in_library(nm, library),
        "headers": in_headers(compiler, include),
        version_map.name: in_map(version_map),
        names.name: in_list(names),
    }
    places = {place: found for place, (found, _) in sources.items()}
    faults = [fault for _, found in sources.values() for fault in found]
    return differences(places) + faults, places


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--compiler", required=True, help="a C++ compiler")
    for place in "library", "include", "map", "list":
        parser.add_argument("--" + place, required=True, type=lambda path: pathlib.Path(path).resolve())
    options = parser.parse_args()
    faults, places = check(options.nm, options.compiler, options.library, options.include, options.map, options.list)
    for fault in faults:
        print(fault)
    print(f"{len(faults)} differences;", ", ".join(f"{place}: {len(names)}" for place, names in places.items()))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
