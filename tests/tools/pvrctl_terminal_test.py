"""What pvrctl does on a terminal alone: colours and a bar, both on standard error, and neither elsewhere."""
import json
import os
import pty
import subprocess

from pvrctl_case import DONE, FAILED, HANGS, NOT_RUNNING, OPTIONS, USAGE, PvrctlTest, SandboxedTest, main

RED, PLAIN = "\x1b[1;31m", "\x1b[0m"
CLEARED = "\r\x1b[K"


class TerminalTest(PvrctlTest):
    def on_terminal(self, *arguments, **environment):
        """Exit code, standard output, and what a terminal gets as standard error."""
        terminal, its_end = pty.openpty()
        environment = {name: value for name, value in (self.environment | {"TERM": "xterm"} | environment).items()
                       if value is not None}
        run = subprocess.Popen([OPTIONS.pvrctl, *map(str, arguments)], env=environment, cwd=self.folder, text=True,
                               stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=its_end)
        os.close(its_end)
        shown = b""
        with open(terminal, "rb", buffering=0) as screen:
            try:
                while piece := screen.read(65536):
                    shown += piece
            except OSError:  # the other end is closed
                pass
        output, _ = run.communicate(timeout=HANGS)
        return run.returncode, output, shown.decode().replace("\r\n", "\n")

    def setUp(self):
        super().setUp()
        for name in "NO_COLOR", "CLICOLOR", "CLICOLOR_FORCE":
            self.environment.pop(name, None)


class Colours(TerminalTest):
    def test_mark_errors_on_a_terminal_unless_forbidden(self):
        for environment, has_colours in [
                ({}, True), ({"NO_COLOR": "1"}, False), ({"NO_COLOR": ""}, True), ({"CLICOLOR": "0"}, False),
                ({"CLICOLOR": "1"}, True), ({"TERM": "dumb"}, False), ({"TERM": "dumb", "CLICOLOR_FORCE": "1"}, True),
                ({"CLICOLOR": "0", "CLICOLOR_FORCE": "1"}, True), ({"CLICOLOR": "0", "CLICOLOR_FORCE": "0"}, False),
                ({"NO_COLOR": "1", "CLICOLOR_FORCE": "1"}, False)]:
            with self.subTest(environment=environment):
                code, output, shown = self.on_terminal("handle", "get", **environment)
                self.assertEqual((code, output), (NOT_RUNNING, ""))
                self.assertTrue(shown.startswith(f"{RED}pvrctl:{PLAIN} the" if has_colours else "pvrctl: the"), shown)

    def test_are_nowhere_else_unless_forced(self):
        self.assertTrue(self.run_pvrctl("wobble")[2].startswith("pvrctl: '"))
        self.environment["CLICOLOR_FORCE"] = "1"
        self.assertTrue(self.run_pvrctl("wobble")[2].startswith(f"{RED}pvrctl:{PLAIN} '"))

    def test_are_not_in_json(self):
        for name, arguments in [("not-running", ["handle", "get"]), ("usage", ["wobble"])]:
            _, _, shown = self.on_terminal("--json", *arguments, CLICOLOR_FORCE="1")
            self.assertEqual(json.loads(shown)["error"]["name"], name)


class Follow(SandboxedTest, TerminalTest):
    def test_shows_a_bar_on_a_terminal_and_clears_it(self):
        code, output, shown = self.on_terminal("record", "start", 1, "--duration", 2, "--follow")
        self.assertEqual((code, output.splitlines()[-1]), (DONE, "complete  yes"))
        self.assertRegex(shown, r"^\rchannel 1  \[\.{30}\]  0 s of 2 s\x1b\[K\r")
        self.assertTrue(shown.endswith(CLEARED), shown)
        self.assertEqual(shown.count("\n"), 0)

    def test_is_as_wait_in_a_pipe(self):
        code, output, errors = self.run_pvrctl("record", "start", 1, "--duration", 1, "--follow")
        self.assertEqual((code, errors), (DONE, ""))
        self.assertNotIn("\x1b", output)
        self.assertEqual(output.splitlines()[-2:], ["recorded  1 s", "complete  yes"])

    def test_shows_no_bar_with_json_quiet_or_wait_alone(self):
        for arguments in ["--json", "--follow"], ["--quiet", "--follow"], ["--wait"]:
            with self.subTest(arguments=arguments):
                code, _, shown = self.on_terminal("record", "start", 1, "--duration", 1, *arguments)
                self.assertEqual((code, shown), (DONE, ""))

    def test_the_bar_gives_way_to_the_error(self):
        self.succeed("sim", "fault", "add", "error", "get_progress_by_service_id", "--error", "org.example.Planted")
        code, _, shown = self.on_terminal("record", "start", 1, "--duration", 60, "--follow")
        self.assertEqual(code, FAILED)
        self.assertIn("org.example.Planted", " ".join(shown.split()))


class EveryCommand(PvrctlTest):
    """Without a bus."""

    def test_tells_what_is_wrong_with_its_line_as_json(self):
        def commands(*words):
            text = self.run_pvrctl(*words, "--help")[1].partition("\nCommands:\n")[2].partition("\n\n")[0]
            names = [line.split()[0] for line in text.splitlines() if line.startswith("  ") and line[2] != " "]
            return [words, *(found for name in names for found in commands(*words, name))]

        found = commands()
        self.assertGreater(len(found), 60)
        for command in found:
            with self.subTest(command=command):
                self.assertIn("See 'pvrctl", self.fail_with(USAGE, *command, "--no-such-option"))

    def test_json_with_a_value_is_json_too(self):
        for value, code in ("true", NOT_RUNNING), ("false", USAGE), ("wobble", USAGE):
            found, output, errors = self.run_pvrctl(f"--json={value}", "handle", "get")
            self.assertEqual((found, output, json.loads(errors)["error"]["code"]), (code, "", code))

    def test_the_help_leads_through_a_recordings_life(self):
        steps = self.run_pvrctl("--help")[1].partition("First steps")[2].partition("\n\n")[0]
        order = [steps.index(f"  pvrctl {step}") for step in
                 ("record start 1", "monitor", "play start", "inf show", "file delete")]
        self.assertEqual(order, sorted(order))


if __name__ == "__main__":
    main()
