"""What the tests of pvrctl share: a run of it, and a second look at the service by other means."""
import argparse
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

OPTIONS = argparse.Namespace()
HANGS = 120  # seconds after which a wait is given up; nothing is measured by it
DONE, FAILED, USAGE, TIME_OUT, NOT_RUNNING, NOT_RECORDING, NOT_FOUND, REFUSED = range(8)
NAMES = ["done", "failed", "usage", "time-out", "not-running", "not-recording", "not-found", "refused"]
PLAY, PAUSE, FRAME_STEP, FF_1, REW_1 = 1, 2, 3, 4, 14
NO_BUS = "unix:path=/nonexistent/pvr-test-bus"
# Tells the environment that the sandbox gives its command, and stays until it is let go.
TELL = "import json, os, sys; print(json.dumps(dict(os.environ)), flush=True); sys.stdin.read()"
RECORDED = 1700000000  # the end of the recording, in seconds since 1970 UTC


def plain_environment():
    ours = {"DBUS_SYSTEM_BUS_ADDRESS", "PVR_PLATFORM_CONFIG", "PVR_SANDBOX", "PVR_LOG", "PVR_LOG_LEVEL"}
    return {name: value for name, value in os.environ.items() if name not in ours}


def lines(output):
    """The table that people see, as a dictionary."""
    return dict(re.split(r"  +", line, maxsplit=1) for line in output.splitlines())


def wait_until(condition, what):
    """Returns the condition's first value that is true."""
    deadline = time.monotonic() + HANGS
    while not (value := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"{what}: still not so")
        time.sleep(0.01)
    return value


class PvrctlTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="pvr-test-")).resolve()
        self.addCleanup(shutil.rmtree, self.folder)
        self.environment = dict(plain_environment(), DBUS_SYSTEM_BUS_ADDRESS=NO_BUS)

    def keep(self, command, **popen):
        """A helper that prints a line when it is ready, and ends with its standard input."""
        helper = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, **popen)
        self.addCleanup(helper.stdout.close)
        self.addCleanup(helper.wait, HANGS)
        self.addCleanup(helper.stdin.close)
        return helper, helper.stdout.readline()

    def run_pvrctl(self, *arguments, **popen):
        """Exit code, standard output, standard error."""
        popen = {"env": self.environment, "cwd": self.folder, "stdout": subprocess.PIPE} | popen
        done = subprocess.run([OPTIONS.pvrctl, *map(str, arguments)], stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
                              text=True, timeout=HANGS, check=False, **popen)
        return done.returncode, done.stdout, done.stderr

    def begin(self, *arguments, **environment):
        """A run under way, which Ctrl-C may end, whoever started the tests."""
        return subprocess.Popen([OPTIONS.pvrctl, *map(str, arguments)], env=self.environment | environment, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))

    def finish(self, run):
        """Exit code, standard output, standard error of a run that was begun."""
        output, errors = run.communicate(timeout=HANGS)
        return run.returncode, output, errors

    def succeed(self, *arguments, **popen):
        """The JSON of a command that must succeed."""
        code, output, errors = self.run_pvrctl("--json", *arguments, **popen)
        self.assertEqual((code, errors), (DONE, ""))
        self.assertEqual(output.count("\n"), 1)
        return json.loads(output)

    def fail_with(self, code, *arguments, data="", **popen):
        """The message of a command that must fail."""
        found, output, errors = self.run_pvrctl("--json", *arguments, **popen)
        self.assertEqual((found, output), (code, data), errors)
        error = json.loads(errors)["error"]
        self.assertEqual((error["code"], error["name"]), (code, NAMES[code]))
        return error["message"]


class ScriptedTest(PvrctlTest):
    """Every test has a service that says what the development service never says."""
    NOTHING_RUNS = {"get_recording_service_id_list": "(@at [], 0)", "get_handle_for_record": "(@ai [], 0)",
                    "get_current_livetv_service_id": "(uint64 0,)", "get_default_rec_device": "(0, -2)",
                    "get_rec_device_name": "('', -2)"}

    def answer(self, **answers):
        script = [f"{method}={values}" for method, values in (self.NOTHING_RUNS | answers).items()]
        self.service, address = self.keep([OPTIONS.scripted_bus, *script], env=plain_environment())
        self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = address.strip()

    def steer(self, line):
        """Has the service do something, and returns when it is done."""
        self.service.stdin.write(line + "\n")
        self.service.stdin.flush()
        self.assertEqual(self.service.stdout.readline(), "done\n")


class SandboxedTest(PvrctlTest):
    """Every test has a sandbox of its own, with the development service in it."""

    def setUp(self):
        super().setUp()
        self.recording = self.folder / "first.srf"
        subprocess.run([OPTIONS.make_stream, "--seconds", "300", self.recording], check=True)
        os.utime(self.recording, (RECORDED, RECORDED))
        _, line = self.keep([OPTIONS.sandbox, "--", sys.executable, "-c", TELL], env=plain_environment())
        self.environment = json.loads(line)
        self.device = pathlib.Path(self.environment["PVR_SANDBOX"], "devices", "usb1")

    def ask(self, name, path, method, *arguments):
        """Calls by other means than the library, and gives the answer as text."""
        done = subprocess.run(["gdbus", "call", "--system", "--dest", name, "--object-path", path, "--method", method,
                               "--", *map(str, arguments)], env=self.environment, stdout=subprocess.PIPE, text=True,
                              timeout=HANGS, check=True)
        return done.stdout.strip()

    def ask_service(self, method, *arguments):
        return self.ask("org.vexan.tv.pvr.server", "/org/vexan/tv/pvr", "org.vexan.tv.pvr." + method, *arguments)

    def control(self, method, *arguments):
        # Numbers bring their types: gdbus asks for them, and guesses when a slow service does not answer in time.
        kind = "uint64" if method in ("ListCalls", "Tune") else "uint32"
        arguments = [f"{kind} {value}" if isinstance(value, int) else value for value in arguments]
        return self.ask("org.vexan.tv.pvr.Simulator1", "/org/vexan/tv/pvr_simulator",
                        "org.vexan.tv.pvr.Simulator1." + method, *arguments)

    def requests(self, method):
        """The arguments of each such call that the service has received, as lists of numbers."""
        calls = re.findall(rf"'{method}', (.*?)\)(?=, \(|\],\)$)", self.control("ListCalls", 0))
        return [[int(number) for number in re.findall(r"-?\b\d+\b(?![^<]*')", call)] for call in calls]

    def state(self, handle):
        """State and position of a playback as the service itself tells them."""
        answer = re.fullmatch(r"\((-?\d+), int64 (-?\d+), int64 -?\d+, -?\d+\)",
                              self.ask_service("get_progress", handle))
        return int(answer[1]), int(answer[2])

    def uri(self, handle):
        return re.fullmatch(r"\('(.*)',\)", self.ask_service("get_playback_uri_by_handle", handle))[1]

    def start(self, *arguments):
        return self.succeed("play", "start", self.recording, *arguments)["handle"]

    def paused(self):
        """A playback that holds still at 100 s."""
        handle = self.start()
        self.succeed("play", "pause", handle)
        self.succeed("play", "skip", handle, "--to", 100)
        return handle


def main(*more):
    """Runs the tests. More options are those that not every class of a file takes."""
    parser = argparse.ArgumentParser()
    for option in "pvrctl", "sandbox", "make-stream", "scripted-bus":
        parser.add_argument("--" + option, required=True)
    for option in more:
        parser.add_argument("--" + option)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
