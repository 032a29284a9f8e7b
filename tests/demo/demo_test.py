"""scripts/demo tells its story with the development service, and fails with any that does not do its work."""
import argparse
import os
import pathlib
import pty
import re
import shlex
import signal
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()

# Beginnings of lines, in their order; others stand between them. Events and the service's log come by two ways, so
# only what the demo waits for has a place among the other lines.
STORY = """\
The service is process NUMBER, pvr-simulator.
The bus is unix:path=/
$ pvrctl monitor
event   | state  the service runs
1. The service runs, and nothing plays.
$ pvrctl status
checked: nothing plays
$ pvrctl record start 1 --duration 8 --wait
service | call_app(command 0, param1 1, param2
service | signal: recording 1 of 1 is PS_RECORD_STATE_REC
duration   8 s
checked: there is such a file
NUMBER bytes
recording |
NUMBER bytes
service | signal: recording 1 of 1 is PS_RECORD_STATE_STOP
recorded  8 s
complete  yes
recording |FULL| 8 of 8 s
4. The recording is complete.
checked: NUMBER bytes in 8 s, at 4 Mbit/s
checked: the info file beside it has 10905 bytes
checked: nothing records any more
checked: the events have told it
$ pvrctl play start
service | play_start(handle 2, uri
service | signal: playback 2 is PLAY_STATE_PLAY at 0.0 s
state      playing (PLAY_STATE_PLAY)
checked: the events have told it
checked: it plays
$ pvrctl status 2
checked: it has come to NUMBER s
$ pvrctl play pause 2
service | play_pause(handle 2)  ok
service | signal: playback 2 is PLAY_STATE_PAUSE
state      paused (PLAY_STATE_PAUSE)
checked: the events have told it
checked: still at NUMBER s
$ pvrctl play skip 2 --to 1
service | play_skip(handle 2, skip_type 0, skip_pos 1, rate 0)  ok
checked: the events have told it
checked: it waits at 1 s
$ pvrctl play step 2
service | step_frame(handle 2)  ok
service | signal: playback 2 is PLAY_STATE_FRAME_STEP
checked: the events have told it
checked: it stands at NUMBER s
$ pvrctl play forward 2 --speed 1/2
service | play_forward(handle 2, forward_type 8)  ok
service | signal: playback 2 is PLAY_STATE_FF_1_2
checked: the events have told it
checked: from NUMBER s it has come to NUMBER s
$ pvrctl play rewind 2 --speed 2
service | play_rewind(handle 2, rewind_type 1)  ok
service | signal: playback 2 is PLAY_STATE_REW_1
service | signal: playback 2, PS_PLAY_BEGIN
checked: the events have told it
checked: it has been at the beginning, and is at NUMBER s
$ pvrctl play stop 2
service | play_stop(handle 2)  ok
service | signal: playback 2 is PLAY_STATE_STOP
service | release_handle(handle 2)  ok
checked: the events have told it
checked: nothing plays on handle 2
13. Nothing plays any more.
$ pvrctl status
checked: nothing plays
$ pvrctl inf show
checked: it is complete, and as long as it was asked to be
checked: the monitor has listened to the end
This was the library at work.
""".splitlines()

# The same of the events alone, and the step under which they stand.
EVENTS = """\
event   | state  the service runs
2. Record
event   | result  PS_RECORD_START  handle 1, result 0, channel 1
event   | signal  PS_SIGNAL_TYPE_RECORD_STATE_CHANGE  handle 1, recording
event   | signal  PS_SIGNAL_TYPE_RECORD_STATE_CHANGE  handle 1, no recording
event   | result  PS_UPLOAD_RECORD_DURATION  handle 1, result 0, duration 8,
event   | result  PS_RECORD_STOP  handle 1, result 0, channel 1
5. Play it back.
event   | result  PS_PLAY_START  handle 2, result 0, playing (PLAY_STATE_PLAY)
event   | signal  PS_SIGNAL_TYPE_PLAY_STATE_CHANGE  handle 2, playing
7. Pause
event   | result  PS_PLAY_PAUSE  handle 2, result 0, paused (PLAY_STATE_PAUSE)
event   | signal  PS_SIGNAL_TYPE_PLAY_STATE_CHANGE  handle 2, paused
8. Skip
event   | result  PS_PLAY_SKIP  handle 2, result 0
9. Step
event   | result  PS_STEP_FRAME  handle 2, result 0
event   | signal  PS_SIGNAL_TYPE_PLAY_STATE_CHANGE  handle 2, stepping
10. Forward
event   | result  PS_PLAY_FORWARD  handle 2, result 0
event   | signal  PS_SIGNAL_TYPE_PLAY_STATE_CHANGE  handle 2, slow motion, 1/2
11. Rewind
event   | result  PS_PLAY_REWIND  handle 2, result 0
event   | signal  PS_SIGNAL_TYPE_PLAY_STATE_CHANGE  handle 2, winding back
event   | result  PS_PLAY_BEGIN  handle 2, result 0
event   | signal  PS_SIGNAL_TYPE_PLAY_STATE_CHANGE  handle 2, playing
12. Stop
event   | result  PS_PLAY_STOP  handle 2, result 0, stopped (PLAY_STATE_STOP)
event   | signal  PS_SIGNAL_TYPE_PLAY_STATE_CHANGE  handle 2, stopped
""".splitlines()

PLACEHOLDERS = {"NUMBER": r"\d+", "FULL": "#+"}

# What a service says that claims to record.
CLAIMS = {
    "is_support_pvr": ["(1,)"],
    "is_recording": ["(0,)", "(1,)"],
    "get_record_state_by_service_id": ["(2, 0, 0)"],
    "get_recording_service_id_list": ["([1], 1)"],
    "get_recording_duration_by_service_id": ["(8, 0)"],
}


def missing(story, output):
    """The part of the story that is missing from some point on."""
    lines = iter(output.splitlines())
    for number, beginning in enumerate(story):
        pattern = re.escape(beginning)
        for name, meaning in PLACEHOLDERS.items():
            pattern = pattern.replace(name, meaning)
        if not any(re.match(pattern, line) for line in lines):
            return story[number:]
    return []


class Demo(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="pvr-demo-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "tmp").mkdir()
        self.environment = {**os.environ, "TMPDIR": str(self.folder / "tmp"), "TERM": "xterm"}
        self.environment.pop("NO_COLOR", None)

    def tearDown(self):
        self.assertEqual(os.listdir(self.folder / "tmp"), [], "left behind")

    def assert_no_process_is_left(self, output):
        """Of those that the demo has told of."""
        processes = re.findall(r"process (\d+)", output)
        self.assertEqual([process for process in processes if pathlib.Path("/proc", process).exists()], [])

    def run_demo(self, *options):
        done = subprocess.run([OPTIONS.demo, "--build", OPTIONS.build, *options], text=True, stdin=subprocess.DEVNULL,
                              capture_output=True, check=False, env=self.environment)
        self.assert_no_process_is_left(done.stdout)
        return done.returncode, done.stdout, done.stderr

    def service(self, *command):
        script = self.folder / "service"
        script.write_text(f"#!/bin/sh\nexec {shlex.join(command)}\n", encoding="utf-8")
        script.chmod(0o755)
        return "--service", str(script)

    def idle_service(self, answers):
        return self.service(OPTIONS.idle_service,
                            *(f"{method}={values}" for method, turns in answers.items() for values in turns))


class WithTheDevelopmentService(Demo):
    def test_tells_the_whole_story_in_plain_text_of_80_columns(self):
        status, output, complaint = self.run_demo()
        self.assertEqual((status, complaint), (0, ""), output)
        self.assertEqual(missing(STORY, output), [], output)
        self.assertEqual(missing(EVENTS, output), [], output)
        self.assertEqual([line for line in output.splitlines() if len(line) > 80 or not line.isprintable()], [])
        # Every command is a process of its own, and none is the service.
        processes = re.findall(r"process (\d+)", output)
        self.assertEqual(len(processes), 1 + output.count("\n$ "))
        self.assertEqual(len(set(processes)), len(processes))

    def run_at_a_terminal_until(self, pattern):
        """What the demo shows at a terminal, where Ctrl-C is typed when it has shown this."""
        demo, terminal = pty.fork()
        if demo == 0:
            os.execve(OPTIONS.demo, [OPTIONS.demo, "--build", OPTIONS.build], self.environment)
        output = b""
        is_interrupted = False
        while True:
            try:
                output += os.read(terminal, 4096)
            except OSError:  # nobody has the terminal open any more
                break
            if not is_interrupted and re.search(pattern, output):
                os.write(terminal, b"\x03")
                is_interrupted = True
        os.close(terminal)
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(demo, 0)[1]), 128 + signal.SIGINT)
        self.assertTrue(output.endswith(b"demo: interrupted\r\n"), output)
        self.assert_no_process_is_left(output.decode())
        return output.decode()

    def test_leaves_nothing_behind_when_a_recording_is_interrupted(self):
        self.assertNotIn("8 of 8 s", self.run_at_a_terminal_until(rb"\| [1-7] of 8 s"))

    def test_redraws_the_bar_in_place_at_a_terminal_and_leaves_nothing_behind_when_it_is_interrupted(self):
        output = self.run_at_a_terminal_until(b"play pause 2")
        bars = re.findall(r"\rrecording \|(#*) *\| (\d) of 8 s", output)
        self.assertGreater(len(set(bars)), 2, output)
        self.assertEqual(bars, sorted(bars), output)
        self.assertEqual(bars[-1][1], "8", output)
        # What stays on the screen of a line is behind its last carriage return.
        lines = [line.rpartition("\r")[2] for line in output.split("\r\n")]
        self.assertEqual(len([line for line in lines if line.startswith("recording |")]), 1, output)


class WithAServiceThatDoesNotDoItsWork(Demo):
    def assert_told(self, options, status, text):
        found, output, complaint = self.run_demo(*options)
        self.assertEqual(found, status, output)
        self.assertIn(text, re.sub(r"\s+", " ", complaint))
        self.assertNotIn("This was the library at work", output)

    def test_fails_when_the_service_ends_at_once(self):
        self.assert_told(("--service", "/bin/true"), 125, "the service /bin/true ended before it owned")

    def test_fails_when_the_service_never_comes(self):
        self.assert_told((*self.service("sleep", "infinity"), "--wait", "1"), 125,
                         "does not own org.vexan.tv.pvr.server after 1 s")

    def test_fails_when_the_service_answers_everything_with_nothing(self):
        self.assert_told(self.idle_service({"is_support_pvr": ["(1,)"]}), 1,
                         "expected 'pvrctl record start 1 --duration 8 --wait' to end with status 0 "
                         "but it ended with 7")

    def test_fails_when_the_service_records_to_no_file(self):
        claims = {**CLAIMS, "get_recording_uri_by_service_id": ["('/claimed.srf',)"]}
        self.assert_told(self.idle_service(claims), 1,
                         "expected a recording at '/claimed.srf' but there is no such file")

    def test_fails_when_the_service_says_that_it_records_and_does_not(self):
        recording = self.folder / "claimed.srf"
        recording.write_bytes(b"content")
        claims = {**CLAIMS, "get_recording_uri_by_service_id": [f"('{recording}',)"]}
        self.assert_told(self.idle_service(claims), 1, "expected the file to grow but it has 7 bytes, as before")

    def test_fails_when_the_service_does_its_work_and_sends_no_signals(self):
        self.assert_told(("--service", OPTIONS.silent_service), 1,
                         "expected an event 'PS_RECORD_START .*result 0' but none has come")


class Options(Demo):
    def test_that_are_wrong_are_refused(self):
        for options, message in {
            ("--nonsense",): "demo: '--nonsense' is no option; see --help\n",
            ("--wait",): "demo: --wait needs a value; see --help\n",
        }.items():
            with self.subTest(options=options):
                self.assertEqual(self.run_demo(*options), (2, "", message))

    def test_help_tells_every_option(self):
        status, output, complaint = self.run_demo("--help")
        self.assertEqual((status, complaint), (0, ""))
        for option in "--build FOLDER", "--service PROGRAM", "--wait SECONDS":
            self.assertIn(option, output)

    def test_a_build_without_the_programs_is_refused(self):
        status, output, complaint = self.run_demo("--build", str(self.folder))
        self.assertEqual((status, output), (1, ""))
        self.assertEqual(complaint, f"demo: there is no {self.folder}/bin/pvr-sandbox\n")


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for option in "demo", "build", "idle-service", "silent-service":
        parser.add_argument("--" + option, required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
