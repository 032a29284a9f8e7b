"""What the tests of pvr-sandbox share: a sandbox run from outside, and proof that nothing of it is left."""
import argparse
import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import uuid

OPTIONS = argparse.Namespace()
NAME = "org.vexan.tv.pvr.server"
HANGS = 120  # seconds after which a wait is given up; nothing is measured by it
FAILED = 125
ASK = ("dbus-send --system --print-reply=literal --dest=org.freedesktop.DBus / "
       f"org.freedesktop.DBus.NameHasOwner string:{NAME}")


def wait_until(condition, what):
    """Returns the condition's first value that is true."""
    deadline = time.monotonic() + HANGS
    while not (value := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"{what}: still not so")
        time.sleep(0.01)
    return value


def read(path):
    try:
        return pathlib.Path(path).read_text(encoding="utf-8", errors="replace")
    except OSError:
        return ""


def parent_of(process):
    fields = read(f"/proc/{process}/stat").rpartition(")")[2].split()
    return int(fields[1]) if fields else None


class SandboxTest(unittest.TestCase):
    """Every test ends with the proof that no process and no file of its sandboxes is left."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="pvr-test-")).resolve()
        self.addCleanup(shutil.rmtree, self.folder)
        self.temporary = self.folder / "tmp"
        self.temporary.mkdir()
        self.stderr = self.folder / "stderr"
        self.mark = f"PVR_TEST_MARK={uuid.uuid4()}"
        self.environment = dict(os.environ, TMPDIR=str(self.temporary), STDERR=str(self.stderr))
        self.environment.update([self.mark.split("=")])
        for name in "PVR_PLATFORM_CONFIG", "DBUS_SYSTEM_BUS_ADDRESS", "PVR_SANDBOX":
            self.environment.pop(name, None)
        self.addCleanup(self.end_processes)

    def tearDown(self):
        wait_until(lambda: not self.processes(), "every process has ended")
        self.assertEqual(list(self.temporary.iterdir()), [])

    def end_processes(self):
        """After a failure: what was started here must not outlive the test."""
        for process in self.processes():
            with contextlib.suppress(ProcessLookupError):
                os.kill(process, signal.SIGKILL)

    def processes(self):
        """Those that inherited this test's mark."""
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            try:
                if entry.name.isdigit() and self.mark.encode() in (entry / "environ").read_bytes().split(b"\0"):
                    found.append(int(entry.name))
            except OSError:
                pass
        return found

    def children(self, parent):
        return [process for process in self.processes() if parent_of(process) == parent]

    def keeper(self, sandbox):
        return wait_until(lambda: self.children(sandbox.pid), "the sandbox has a keeper")[0]

    def start(self, *options, command=None, service=True, **popen):
        """A sandbox under way, with the fake service unless the options say otherwise."""
        line = [OPTIONS.sandbox, *(["--service", OPTIONS.service] if service else []), *map(str, options)]
        if command is not None:
            line += ["--", *(["sh", "-c", command] if isinstance(command, str) else command)]
        return self.start_line(line, **popen)

    def start_line(self, line, **popen):
        """Any program; its standard error goes into a file that it may read itself."""
        popen.setdefault("env", self.environment)
        popen.setdefault("stdin", subprocess.PIPE)
        with open(self.stderr, "wb") as stderr:
            popen.setdefault("stderr", stderr)
            started = subprocess.Popen(line, text=True, stdout=subprocess.PIPE, **popen)
        self.addCleanup(started.stdout.close)
        if started.stdin:
            self.addCleanup(started.stdin.close)
        return started

    def finish(self, sandbox, text=None):
        """Waits for the end of a sandbox: exit status, standard output, standard error."""
        output = sandbox.communicate(text, timeout=HANGS)[0]
        return sandbox.returncode, output, read(self.stderr)

    def run_sandbox(self, *options, text=None, **start):
        return self.finish(self.start(*options, **start), text)

    def in_folder(self, name):
        """The content of a file in the sandbox's temporary folder."""
        return "".join(map(read, self.temporary.glob(f"*/{name}")))


def main():
    parser = argparse.ArgumentParser()
    for option in "sandbox", "service":
        parser.add_argument("--" + option, required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
