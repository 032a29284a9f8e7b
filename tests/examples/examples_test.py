"""The examples, run against the development service, and compiled with nothing but what is installed."""
import argparse
import os
import pathlib
import re
import shlex
import signal
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()
SIMULATOR = "gdbus call --system --dest org.vexan.tv.pvr.Simulator1 --object-path /org/vexan/tv/pvr_simulator --method"
# Numbers bring their types: gdbus asks the service for them, and guesses when a slow one does not answer in time.
DELAY = (f"{SIMULATOR} org.vexan.tv.pvr.Simulator1.DelayMethod get_handle_for_playback 'uint32 1000' 'uint32 1' "
         ">/dev/null && ")
LIST = f"{SIMULATOR} org.vexan.tv.pvr.Simulator1.ListCalls 'uint64 0'"
NO_SERVICE = "the service gives no handle; does it run? (PVR_LOG=stderr tells more)\n"
REFUSED = "the service does not play this recording (PVR_LOG=stderr tells more)\n"
START = ["get_handle_for_playback", "play_start", "get_playback_uri_by_handle"]
STOP = ["play_stop", "release_handle"]


def run(*command):
    done = subprocess.run([str(word) for word in command], text=True, capture_output=True, check=False)
    return done.returncode, done.stdout, done.stderr


def run_with_service(script):
    """What a shell script does in a sandbox, and which methods the service was asked for meanwhile."""
    done = subprocess.run([OPTIONS.sandbox, "--", "sh", "-c", f"{script}; status=$?; {LIST}; exit $status"],
                          text=True, capture_output=True, check=False)
    *lines, calls = done.stdout.splitlines()
    return (done.returncode, lines, done.stderr), re.findall(r" ':[\d.]+', '(\w+)'", calls)


class ExamplesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.recording = pathlib.Path(folder.name, "first.srf")
        cls.garbage = pathlib.Path(folder.name, "garbage.srf")
        cls.garbage.write_bytes(b"no transport stream" * 1000)
        status, _, complaint = run(OPTIONS.make_stream, "--seconds", 600, cls.recording)
        if status != 0:
            raise AssertionError(complaint)


class Sources(ExamplesTest):
    def test_compile_as_c_and_as_cpp_with_only_the_installed_headers(self):
        glib = run("pkg-config", "--cflags", "gio-2.0")[1].split()
        as_cpp = (OPTIONS.cxx, "-x", "c++", "-std=c++17")
        languages = {
            ".c": {"C99": (OPTIONS.cc, "-std=c99", "-pedantic"), "C++": as_cpp},
            ".cpp": {"C++": as_cpp},
        }
        sources = sorted(pathlib.Path(OPTIONS.sources).glob("*.c*"))
        self.assertEqual([source.name for source in sources],
                         ["record_and_listen.c", "smallest.c", "tutorial.c", "watch.cpp", "worker_thread.c"])
        for source in sources:
            for language, compiler in languages[source.suffix].items():
                with self.subTest(source=source.name, language=language):
                    done = run(*compiler, "-Wall", "-Wextra", "-Werror", "-fsyntax-only", "-I", OPTIONS.include, *glib,
                               source)
                    self.assertEqual(done, (0, "", ""))


class EveryExampleThatPlays(ExamplesTest):
    def test_tells_why_it_cannot_do_its_work(self):
        for name, program in {"smallest": OPTIONS.smallest, "worker_thread": OPTIONS.worker_thread}.items():
            in_sandbox = (OPTIONS.sandbox, "--", program)
            failures = {
                (program,): f"usage: {name} RECORDING\n",
                (program, "nowhere.srf"): "nowhere.srf: No such file or directory\n",
                ("env", "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent", program, self.recording):
                    f"{name}: {NO_SERVICE}",
                (OPTIONS.sandbox, "--no-service", "--", program, self.recording): f"{name}: {NO_SERVICE}",
                (*in_sandbox, self.garbage): f"{name}: {REFUSED}",
            }
            for command, message in failures.items():
                with self.subTest(command=command):
                    status, _, complaint = run(*command)
                    self.assertEqual((status, complaint), (1, message))

    def test_gives_the_handle_back_when_the_service_does_not_play(self):
        for program in OPTIONS.smallest, OPTIONS.worker_thread:
            with self.subTest(program=program):
                _, calls = run_with_service(f"{shlex.join([program, str(self.garbage)])}")
                self.assertEqual((calls[:3], calls[-1]), (START, "release_handle"))


class Smallest(ExamplesTest):
    def test_plays_tells_the_position_and_stops(self):
        (status, lines, complaint), calls = run_with_service(shlex.join([OPTIONS.smallest, str(self.recording)]))
        self.assertEqual((status, complaint), (0, ""))
        self.assertEqual(calls, START + ["get_progress"] * 3 + STOP)
        positions = [int(re.fullmatch(r"position (\d+) s", line)[1]) for line in lines]
        self.assertEqual(len(positions), 3)
        for seconds_at_least, position in enumerate(positions, 1):
            self.assertGreaterEqual(position, seconds_at_least)


class WorkerThread(ExamplesTest):
    def setUp(self):
        self.command = shlex.join([OPTIONS.worker_thread, str(self.recording)])

    def test_keeps_its_main_loop_alive_while_a_call_waits(self):
        (status, lines, complaint), _ = run_with_service(DELAY + self.command)
        self.assertEqual((status, complaint), (0, ""))
        waiting = lines[lines.index("request: start") + 1:lines.index(f"answer to start: plays {self.recording}")]
        self.assertGreaterEqual(len(waiting), 1)
        self.assertEqual(set(waiting), {"tick: the main loop is alive"})

    def test_makes_its_calls_in_their_order_and_loses_none(self):
        (status, lines, complaint), calls = run_with_service(self.command)
        self.assertEqual((status, complaint), (0, ""))
        self.assertEqual(calls, START + ["get_progress"] * 3 + STOP)
        told = {kind: re.findall(f"^{kind} (\\w+)", "\n".join(lines), re.MULTILINE)
                for kind in ("request:", "answer to")}
        self.assertEqual(told["request:"], ["start"] + ["position"] * 3 + ["stop"])
        self.assertEqual(told["answer to"], told["request:"])

    def test_stops_what_it_started_when_it_is_interrupted_while_a_call_waits(self):
        script = f"{DELAY} echo $$ && exec {self.command}"
        with subprocess.Popen([OPTIONS.sandbox, "--", "sh", "-c", script], text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE) as sandbox:
            process = int(sandbox.stdout.readline())
            self.assertEqual(sandbox.stdout.readline(), "request: start\n")
            os.kill(process, signal.SIGINT)
            output, complaint = sandbox.communicate()
        lines = [line for line in output.splitlines() if not line.startswith("tick")]
        self.assertEqual((sandbox.returncode, lines, complaint), (0, [
            "request: stop",
            f"answer to start: plays {self.recording}",
            "answer to stop: stopped",
        ], ""))


class RecordAndListen(ExamplesTest):
    def test_hears_of_its_recording_from_its_start_to_its_end(self):
        status, output, complaint = run(OPTIONS.sandbox, "--", OPTIONS.record_and_listen, 1, 1)
        self.assertEqual((status, complaint), (0, ""), output)
        lines = [re.sub(r": /.*/\d+-\d+-", ": ", line) for line in output.splitlines()]
        del lines[lines.index("stop: result 0") + 1:]  # what had come already when the main loop was told to end
        self.assertEqual(lines, [
            "handle 1 is in state 0: First.srf",  # about to start
            "handle 1 is in state 1: First.srf",
            "start: result 0",
            "handle 1 is in state 2: First.srf",
            "handle 1 is in state 2: First.srf",  # about to end
            "handle 1 is in state 0: First.srf",
            "stop: result 0",
        ])

    def test_hears_why_nothing_is_recorded(self):
        status, output, _ = run(OPTIONS.sandbox, "--", OPTIONS.record_and_listen, 5, 1)
        self.assertEqual((status, output), (1, "start: result 10\n"))

    def test_tells_why_it_cannot_do_its_work(self):
        program = OPTIONS.record_and_listen
        usage = "usage: record_and_listen SERVICE_ID SECONDS\n"
        for arguments in (), ("1",), ("one", "1"), ("1", "0"), ("1", "1", "1"):
            self.assertEqual(run(program, *arguments), (1, "", usage))
        self.assertEqual(run(OPTIONS.sandbox, "--no-service", "--", program, 1, 1),
                         (1, "", "record_and_listen: the service does not answer; does it run? "
                                 "(PVR_LOG=stderr tells more)\n"))
        self.assertEqual(run("env", "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent", program, 1, 1),
                         (1, "", "record_and_listen: there is no session (PVR_LOG=stderr tells more)\n"))


class Tutorial(ExamplesTest):
    def test_shows_how_far_the_recording_is_and_where_it_lies(self):
        status, output, complaint = run(OPTIONS.sandbox, "--", OPTIONS.tutorial, 1, 2)
        self.assertEqual((status, complaint), (0, ""))
        *progress, end = output.splitlines()
        self.assertRegex(end, r"^recorded /.*First\.srf$")
        for line in progress:
            self.assertRegex(line, r"^\[##########          \] 1 of 2 s$|^\[####################\] 2 of 2 s$")

    def test_stops_the_recording_when_it_is_interrupted(self):
        with subprocess.Popen([OPTIONS.sandbox, "--", "sh", "-c", f"echo $$; exec {OPTIONS.tutorial} 1 600"], text=True,
                              stdout=subprocess.PIPE) as sandbox:
            process = int(sandbox.stdout.readline())
            self.assertRegex(sandbox.stdout.readline(), " of 600 s")
            os.kill(process, signal.SIGINT)
            self.assertRegex(sandbox.communicate()[0].splitlines()[-1], r"^recorded /.*First\.srf$")
        self.assertEqual(sandbox.returncode, 0)

    def test_tells_why_it_cannot_do_its_work(self):
        program = OPTIONS.tutorial
        for arguments in (), ("1",), ("one", "1"), ("1", "0"), ("1", "1", "1"):
            self.assertEqual(run(program, *arguments), (1, "", "usage: tutorial SERVICE_ID SECONDS\n"))
        self.assertEqual(run(OPTIONS.sandbox, "--", program, 5, 1), (1, "", "tutorial: refused, with code 10\n"))
        self.assertEqual(run(OPTIONS.sandbox, "--no-service", "--", program, 1, 1),
                         (1, "", "tutorial: the service does not answer; does it run? (PVR_LOG=stderr tells more)\n"))
        self.assertEqual(run("env", "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent", program, 1, 1),
                         (1, "", "tutorial: there is no session (PVR_LOG=stderr tells more)\n"))


class Watch(ExamplesTest):
    def test_watches_another_application_until_the_service_is_idle(self):
        script = f": > watched; {OPTIONS.watch} > watched & while ! grep -q watching watched; do sleep 0.1; done; " \
                 f"{OPTIONS.record_and_listen} 1 1 > /dev/null; wait; cat watched"
        status, output, complaint = run(OPTIONS.sandbox, "--", "sh", "-c", f"cd $PVR_SANDBOX; {script}")
        self.assertEqual((status, complaint), (0, ""))
        lines = [re.sub(r": /.*/\d+-\d+-", ": ", line) for line in output.splitlines()]
        self.assertEqual(lines, ["watching", "the service is in state 2"] + ["handle 1: First.srf"] * 6 +
                         ["the service is in state 0"])

    def test_tells_why_it_cannot_watch(self):
        self.assertEqual(run("env", "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent", OPTIONS.watch),
                         (1, "", "watch: there is no session (PVR_LOG=stderr tells more)\n"))


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for option in "sandbox", "make-stream", "smallest", "worker-thread", "record-and-listen", "tutorial", "watch", \
            "sources", "include", "cc", "cxx":
        parser.add_argument("--" + option, required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
