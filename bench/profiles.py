"""Counts where the instructions of a call, of a signal and of reading an info file go, by library and by function.

Called by scripts/bench --profile. A client does the thing under callgrind, on a real bus, few times and many times: the
difference is what once takes, in all of the process's threads, without what starting takes. Instructions are not time:
they leave out the kernel, the bus, the service, and waiting for them.
"""
import argparse
import collections
import os
import pathlib
import re
import socket
import struct
import subprocess
import sys
import tempfile

import page

SIGNALS_AT_ONCE = 100  # for one wish
TOP = 6

Thing = collections.namedtuple("Thing", "title kind few many at_once")
THINGS = [Thing("`svc_pvr_play_start`", "library", 20, 120, 1),
          Thing("the same through GDBus alone", "bare", 20, 120, 1),
          Thing("a signal to a callback", "signals", 2, 12, SIGNALS_AT_ONCE),
          Thing("an info file", "reading", 20, 120, 1)]

OBJECTS = {"libpvr-service-api": "library", "libgio": "GIO", "libglib": "GLib", "libgobject": "GObject",
           "libc.so": "C library", "libstdc++": "C++ library"}


def plain_object(path):
    name = os.path.basename(path)
    return next((plain for part, plain in OBJECTS.items() if name.startswith(part)), "rest")


def plain_function(name):
    """Without its parameters, what its template was made for, and the type of its result."""
    name = re.sub(r"<.*>", "", name.replace("(anonymous namespace)::", "")).partition("(")[0]
    return name.split()[-1].removeprefix("pvr::")


def costs(path):
    """Instructions by object and function, each without what it calls, of a file of callgrind with names in full."""
    counted = collections.Counter()
    where, function = "rest", ""
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            key, separator, value = line.rstrip("\n").partition("=")
            if separator and key == "ob":
                where = plain_object(value)
            elif separator and key == "fn":
                function = value
            elif separator and key == "calls":
                next(lines)  # what was called
            elif line[:1].isdigit():
                counted[where, function] += int(line.split()[-1])
    return counted


def run(build, kind, times, folder):
    """What the client takes from its start to its end."""
    ours, theirs = socket.socketpair()
    output = os.path.join(folder, f"{kind}.{times}")
    with ours, theirs:
        client = subprocess.Popen(
            ["valgrind", "--tool=callgrind", "--quiet", "--compress-strings=no", "--compress-pos=no",
             f"--callgrind-out-file={output}", os.path.join(build, "bench", "pvr-bench-client"), kind,
             str(theirs.fileno())], pass_fds=[theirs.fileno()], stdout=subprocess.DEVNULL)
        ours.sendall(struct.pack("=i", times))
        theirs.close()
        is_done = ours.recv(1) == b"y"
    if client.wait() != 0 or not is_done:
        raise subprocess.CalledProcessError(client.returncode, f"pvr-bench-client {kind}")
    return costs(output)


def of_one(build, thing, folder):
    few, many = (run(build, thing.kind, times, folder) for times in (thing.few, thing.many))
    many.subtract(few)
    return {name: count / (thing.many - thing.few) / thing.at_once for name, count in many.items()}


def by_object(counted):
    sums = collections.Counter()
    for (where, _), count in counted.items():
        sums[where] += count
    return sums


def tables(profiles):
    """One table by library, and one of the library's own functions."""
    columns = [*OBJECTS.values(), "rest"]
    lines = ["| instructions | all | " + " | ".join(columns) + " |", "| --- |" + " ---: |" * (len(columns) + 1)]
    for thing, counted in profiles:
        sums = by_object(counted)
        cells = [f"{sums[column]:.0f}" for column in columns]
        lines.append(f"| {thing.title} | {sum(sums.values()):.0f} | " + " | ".join(cells) + " |")
    lines += ["", "| | the library's own, by function |", "| --- | --- |"]
    for thing, counted in profiles:
        own = sorted(((count, function) for (where, function), count in counted.items() if where == "library"),
                     reverse=True)[:TOP]
        if own and own[0][0] > 1:
            functions = [f"`{plain_function(function)}` {count:.0f}" for count, function in own if count >= 1]
            lines.append(f"| {thing.title} | " + ", ".join(functions) + " |")
    return "\n".join(lines)


def on_a_bus(build):
    """Profiles on a bus of its own with the service on it."""
    with tempfile.TemporaryDirectory(prefix="pvr-profile-") as folder:
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address",
                                f"--address=unix:path={folder}/bus"], stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True)
        service = None
        try:
            os.environ["DBUS_SYSTEM_BUS_ADDRESS"] = bus.stdout.readline().strip()
            service = subprocess.Popen([os.path.join(build, "bench", "pvr-bench-service")], stdout=subprocess.PIPE,
                                       text=True)
            service.stdout.readline()
            return [(thing, of_one(build, thing, folder)) for thing in THINGS]
        finally:
            for process in service, bus:
                if process is not None:
                    process.terminate()
                    process.wait()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--markdown")
    arguments = parser.parse_args()
    for name in ("PVR_LOG", "PVR_PLATFORM_CONFIG"):
        os.environ.pop(name, None)
    try:
        text = tables(on_a_bus(arguments.build))
        if arguments.markdown:
            page.refresh(arguments.markdown, "profile", text)
    except (page.NoPlace, OSError, subprocess.CalledProcessError) as problem:
        print(f"bench: {problem}", file=sys.stderr)
        return 2
    print(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
