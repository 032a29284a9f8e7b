"""pvr-sandbox on a terminal: keys, job control and hanging up are as without a sandbox."""
import fcntl
import os
import pty
import re
import select
import signal
import termios
import unittest

import sandboxed
from sandboxed import FAILED, OPTIONS, SandboxTest, wait_until

CTRL_C, CTRL_Z, CTRL_BACKSLASH = "\x03", "\x1a", "\x1c"
SHELL = ["bash", "--norc", "--noprofile", "-i"]


class Terminal:
    """A terminal's far end: types, and reads what appears."""

    def __init__(self, test):
        self.test = test
        self.master, self.slave = pty.openpty()
        self.text = ""

    def run(self, line):
        """Starts a program as the leader of a session that the terminal belongs to."""
        def prepare():
            os.setsid()
            fcntl.ioctl(0, termios.TIOCSCTTY, 0)

        test = self.test
        test.environment.update(PS1="prompt> ", TERM="dumb", HISTFILE="/dev/null")
        started = sandboxed.subprocess.Popen(line, env=test.environment, stdin=self.slave, stdout=self.slave,
                                             stderr=self.slave, preexec_fn=prepare)
        os.close(self.slave)
        return started

    def type(self, keys):
        os.write(self.master, keys.encode())

    def expect(self, pattern):
        """Reads until the pattern appears, and forgets what was up to there."""
        def found():
            if match := re.search(pattern, self.text):
                self.text = self.text[match.end():]
                return match
            if select.select([self.master], [], [], 0.05)[0]:
                try:
                    self.text += os.read(self.master, 4096).decode(errors="replace")
                except OSError:  # what a terminal says when nobody has it open any more
                    pass
            return None

        try:
            return wait_until(found, f"{pattern!r} appears")
        except AssertionError as late:
            raise AssertionError(f"{late}; the terminal shows {self.text!r}") from late

    def hang_up(self):
        os.close(self.master)
        self.master = None


class OnATerminal(SandboxTest):
    def setUp(self):
        super().setUp()
        self.terminal = Terminal(self)
        self.addCleanup(lambda: self.terminal.master and os.close(self.terminal.master))

    def sandbox(self, *command):
        return [OPTIONS.sandbox, "--service", OPTIONS.service, "--", *command]

    def assert_ends_with(self, started, status):
        self.assertEqual(started.wait(timeout=sandboxed.HANGS), status)

    def test_a_key_that_interrupts_reaches_the_command_alone(self):
        for key, name in (CTRL_C, "INT"), (CTRL_BACKSLASH, "QUIT"):
            with self.subTest(key=name):
                self.terminal = Terminal(self)
                command = (f"trap 'kill -0 $(cat $PVR_SANDBOX/service.pid) && echo it lives; exit 9' {name}; "
                           "echo up; while read line; do :; done")
                started = self.terminal.run(self.sandbox("sh", "-c", command))
                self.terminal.expect("up")
                self.terminal.type(key)
                self.terminal.expect("it lives")
                self.assert_ends_with(started, 9)

    def test_a_key_that_interrupts_kills_a_command_that_does_not_mind(self):
        started = self.terminal.run(self.sandbox("sh", "-c", "echo up; exec sleep infinity"))
        self.terminal.expect("up")
        self.terminal.type(CTRL_C)
        self.assert_ends_with(started, 128 + signal.SIGINT)

    def test_a_shell_controls_its_jobs(self):
        started = self.terminal.run(self.sandbox(*SHELL))
        self.terminal.expect("prompt> ")
        self.terminal.type("cat\n")
        self.terminal.expect("cat\r\n")
        # What cat repeats shows that it is in the foreground.
        self.terminal.type("one\n")
        self.terminal.expect("one\r\none\r\n")
        self.terminal.type(CTRL_C)
        self.terminal.expect("prompt> ")
        self.terminal.type("cat\n")
        self.terminal.expect("cat\r\n")
        self.terminal.type("two\n")
        self.terminal.expect("two\r\ntwo\r\n")
        self.terminal.type(CTRL_Z)
        self.terminal.expect("Stopped(.|\r|\n)*prompt> ")
        self.terminal.type("fg\n")
        self.terminal.expect("fg\r\ncat\r\n")
        self.terminal.type("three\n")
        self.terminal.expect("three\r\nthree\r\n")
        self.terminal.type(CTRL_C)
        self.terminal.expect("prompt> ")
        self.terminal.type("kill -0 $(cat $PVR_SANDBOX/service.pid) && echo it li''ves; exit 7\n")
        self.terminal.expect("it lives\r\n")
        self.assert_ends_with(started, 7)

    def test_a_shell_has_no_background_job_left_when_it_ends(self):
        started = self.terminal.run(self.sandbox(*SHELL))
        self.terminal.expect("prompt> ")
        self.terminal.type("sleep infinity & disown\n")
        self.terminal.expect("prompt> ")
        self.terminal.type("exit 7\n")
        self.assert_ends_with(started, 7)
        self.assertEqual(self.processes(), [])

    def test_a_job_that_is_the_sandbox_is_stopped_and_continued(self):
        outer = self.terminal.run(SHELL)
        self.terminal.expect("prompt> ")
        line = self.sandbox("sh", "-c", "'echo u\"\"p; read line; echo got $line; exit 5'")
        self.terminal.type(" ".join(line) + "\n")
        self.terminal.expect("up\r\n")
        self.terminal.type(CTRL_Z)
        self.terminal.expect("Stopped(.|\r|\n)*prompt> ")
        self.terminal.type("fg\n")
        self.terminal.expect("fg\r\n.*exit 5'\r\n")
        self.terminal.type("text\n")
        self.terminal.expect("got text\r\n")
        self.terminal.expect("prompt> ")
        self.terminal.type("exit $?\n")
        self.assert_ends_with(outer, 5)

    def test_a_shell_that_suspends_itself_suspends_the_sandbox(self):
        outer = self.terminal.run(SHELL)
        self.terminal.expect("prompt> ")
        self.terminal.type("PS1='inner> ' " + " ".join(self.sandbox(*SHELL)) + "\n")
        for _ in range(2):
            self.terminal.expect("inner> ")
            self.terminal.type("suspend\n")
            self.terminal.expect("Stopped(.|\r|\n)*prompt> ")
            self.terminal.type("fg\n")
            self.terminal.expect("fg\r\n.*-i\r\n")
            self.terminal.type("\n")
        self.terminal.expect("inner> ")
        self.terminal.type("exit 5\n")
        self.terminal.expect("prompt> ")
        self.terminal.type("exit $?\n")
        self.assert_ends_with(outer, 5)

    def test_a_suspended_sandbox_ends_when_its_service_does(self):
        outer = self.terminal.run(SHELL)
        self.terminal.expect("prompt> ")
        self.terminal.type("PS1='inner> ' " + " ".join(self.sandbox(*SHELL)) + "\n")
        self.terminal.expect("inner> ")
        self.terminal.type("suspend\n")
        self.terminal.expect("Stopped(.|\r|\n)*prompt> ")
        os.kill(int(self.in_folder("service.pid")), signal.SIGKILL)
        wait_until(lambda: set(self.processes()) <= {outer.pid}, "at most the outer shell is left")
        # A shell that is continued in the background takes the terminal along when it ends.
        self.terminal.hang_up()
        outer.wait(timeout=sandboxed.HANGS)

    def test_the_modes_are_put_back_after_a_command_that_was_killed(self):
        before = termios.tcgetattr(self.terminal.master)
        for change in "stty raw -echo", "exec " + " ".join(SHELL):
            with self.subTest(change=change):
                self.terminal = Terminal(self)
                started = self.terminal.run(self.sandbox("sh", "-c", f"echo up; {change}; kill -KILL $$"))
                if "bash" in change:
                    self.terminal.expect("prompt> ")
                    self.assertNotEqual(termios.tcgetattr(self.terminal.master), before)
                    self.terminal.type("kill -KILL $$\n")
                self.assert_ends_with(started, 128 + signal.SIGKILL)
                self.assertEqual(termios.tcgetattr(self.terminal.master), before)

    def test_a_service_that_ends_gives_the_terminal_back(self):
        outer = self.terminal.run(SHELL)
        self.terminal.expect("prompt> ")
        self.terminal.type("PS1='inner> ' " + " ".join(self.sandbox(*SHELL)) + "\n")
        self.terminal.expect("inner> ")
        self.terminal.type("kill -KILL $(cat $PVR_SANDBOX/service.pid)\n")
        self.terminal.expect("the service ended, killed by SIGKILL")
        self.terminal.expect("prompt> ")
        self.terminal.type("exit $?\n")
        self.assert_ends_with(outer, FAILED)

    def test_hanging_up_ends_everything(self):
        for command in ["sh", "-c", "echo 'prompt> '; exec sleep infinity"], SHELL:
            with self.subTest(command=command):
                self.terminal = Terminal(self)
                started = self.terminal.run(self.sandbox(*command))
                self.terminal.expect("prompt> ")
                self.terminal.hang_up()
                started.wait(timeout=sandboxed.HANGS)
                wait_until(lambda: not self.processes(), "every process has ended")
                self.assertEqual(list(self.temporary.iterdir()), [])


if __name__ == "__main__":
    unittest.TestCase.maxDiff = None
    sandboxed.main()
