"""What shells complete on pvrctl's command line: the words that pvrctl offers, and three shells that take them."""
import contextlib
import os
import pathlib
import pty
import select
import socket
import subprocess

from pvrctl_case import DONE, HANGS, OPTIONS, USAGE, PvrctlTest, SandboxedTest, main, wait_until

COMPLETIONS = pathlib.Path(__file__).resolve().parents[2] / "tools/pvrctl/completions"
LOAD_IN_BASH = ". /usr/share/bash-completion/bash_completion"


class Completing(PvrctlTest):
    def offered(self, *words):
        """What may stand in place of the last word: its description by word. What is left to the shell begins with :"""
        code, output, errors = self.run_pvrctl("complete", "--", *words)
        self.assertEqual((code, errors), (DONE, ""))
        return dict(line.partition("\t")[::2] for line in output.splitlines())

    def words(self, *words):
        return list(self.offered(*words))


class Words(Completing):
    """Without a bus."""

    def test_are_the_commands_that_begin_so(self):
        self.assertEqual(self.offered("pla"), {"play": "Play recordings: start, steer, stop"})
        self.assertEqual(self.words("play", "re"), ["resume", "rewind"])
        self.assertEqual(self.words("sim", "fault", ""), ["add", "list", "remove", "clear"])
        self.assertEqual(self.words("play", "wobble", ""), [])
        self.assertNotIn("complete", self.words(""))

    def test_are_options_that_were_not_given_yet(self):
        own, common = {"--duration", "--wait"}, {"--json", "--quiet"}
        self.assertLessEqual(own | common, set(self.words("record", "start", "1", "-")))
        rest = self.words("record", "start", "--duration", "5", "--wait", "--json", "1", "--")
        self.assertIn("--help", rest)
        self.assertEqual(set(rest) & (own | common), set())  # --json excludes --quiet
        self.assertEqual(self.words("play", "forward", "--type", "1", "--s"), [])  # one excludes the other
        self.assertEqual(self.words("monitor", "--type", "PS_PLAY_END", "--ty"), ["--type"])
        self.assertEqual(self.words("--ver"), ["--version"])
        self.assertEqual(self.words("play", "--ver"), [])

    def test_are_no_options_behind_two_dashes(self):
        self.assertEqual(self.words("play", "start", "--", "-"), [":files"])

    def test_are_an_options_values(self):
        self.assertEqual(self.words("play", "forward", "1", "--speed", "1/"), ["1/2", "1/4", "1/8"])
        self.assertEqual(self.words("play", "forward", "1", "--speed=1/"),
                         ["--speed=1/2", "--speed=1/4", "--speed=1/8"])
        self.assertEqual(self.words("record", "start", "--duration", ""), [])
        self.assertEqual(self.words("sas", "get", "first.srf", "1", "--output", ""), [":files"])
        self.assertEqual(self.words("monitor", "--type", "PS_PLAY_E"), ["PS_PLAY_END"])

    def test_are_an_arguments_values(self):
        self.assertEqual(self.words("sim", "date", ""), ["set", "unset"])
        self.assertEqual(self.words("sim", "fault", "add", "device-"), ["device-full", "device-pulled"])
        self.assertEqual(self.words("sim", "fault", "add", "drop", "result"), ["result_to_apps"])
        self.assertEqual(self.words("sim", "fault", "add", "delay", "play_f"), ["play_forward"])
        self.assertEqual(self.words("inf", "set", "first.srf", "resume"), ["resume_play_pos="])
        self.assertEqual(self.words("inf", "set", "first.srf", "rating=1", "record_c"), ["record_complete="])
        self.assertEqual(self.words("inf", "set", "first.srf", "versio"), [])
        self.assertEqual(self.words("file", "mkdir", ""), [":folders"])
        self.assertEqual(self.words("inf", "verify", "a.srf", "b.srf", ""), [":files"])
        self.assertEqual(self.words("thumb", "info", "a.srf", ""), [])  # it takes one

    def test_are_what_the_library_has_texts_for(self):
        self.assertEqual(self.words("error-text", "--lang", ""), ["de", "en", "es", "fr"])
        self.assertEqual(self.offered("error-text", "257"),
                         {"257": "This programme is protected by copyright and cannot be recorded."})
        self.assertNotIn("201", self.words("error-text", "20"))

    def test_are_none_when_nobody_can_tell(self):
        for line in [["device", "info", ""], ["record", "stop", ""], ["play", "pause", ""], ["handle", "release", ""],
                     ["sim", "fault", "remove", ""], ["channel", "list", "1", ""]]:
            with self.subTest(line=line):
                self.assertEqual(self.words(*line), [])

    def test_are_none_and_soon_when_the_bus_is_silent(self):
        with socket.socket(socket.AF_UNIX) as mute:  # accepts connections, and never says anything
            mute.bind(str(self.folder / "mute"))
            mute.listen()
            self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.folder}/mute"
            patient = self.begin("handle", "list")  # waits for 25 s
            self.addCleanup(patient.communicate)
            self.addCleanup(patient.kill)
            self.assertEqual(self.words("device", "info", ""), [])
            self.assertEqual(self.words("play", "start", ""), [":files"])
            self.assertIsNone(patient.poll(), "the completion has waited as long")


class LiveWords(SandboxedTest, Completing):
    def come(self, words, *line):
        """A slow machine may take longer than a shell waits."""
        wait_until(lambda: self.words(*line) == words, f"{line} is completed by {words}")

    def test_are_what_the_service_knows(self):
        uri = self.succeed("record", "start", 2)["uri"]
        self.assertEqual(self.start(), 2)
        fault = self.succeed("sim", "fault", "add", "drop", "result_to_apps", "--times", 1)["id"]
        for words, line in [(["2"], ["record", "stop", ""]),
                            (["2"], ["record", "duration", ""]),
                            (["2"], ["channel", "info", ""]),  # nothing is watched while something plays
                            (["2"], ["play", "pause", ""]),
                            (["2", "1"], ["handle", "release", ""]),
                            (["1"], ["device", "default", ""]),
                            (["usb1"], ["sim", "fault", "add", "device-full", "us"]),
                            ([str(fault)], ["sim", "fault", "remove", ""]),
                            ([":files", uri], ["play", "start", str(self.device)]),
                            ([":files", "--file=" + uri], ["play", "stop", f"--file={self.device}"])]:
            with self.subTest(line=line):
                self.come(words, *line)
        self.assertEqual(self.offered("sim", "fault", "remove", ""), {str(fault): "drop result_to_apps"})

    def test_are_the_faults_that_the_development_service_knows(self):
        expected = self.fail_with(USAGE, "sim", "fault", "add", "wobble", "play_start").partition(", but ")[2]
        kinds = self.words("sim", "fault", "add", "")
        self.assertEqual(sorted(expected.replace(" and ", ", ").split(", ")), sorted(kinds))

    def test_are_none_and_soon_when_the_service_is_silent(self):
        self.succeed("sim", "fault", "add", "no-answer", "get_device_list")
        self.assertEqual(self.words("device", "info", ""), [])

    def test_do_not_come_from_a_service_that_is_away(self):
        self.control("Vanish", 0)
        self.assertEqual(self.words("device", "info", ""), [])


class Terminal:
    """A shell that people sit at."""

    def __init__(self, command, environment, setup):
        self.seen = ""
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.execvpe(command[0], command, environment)
        self.until("set up", setup + "; echo se''t up\n")

    def close(self):
        os.close(self.terminal)  # hangs up
        os.waitpid(self.process, 0)

    def until(self, text, line):
        """Types a line, again if need be, until a text is shown."""
        def is_shown():
            os.write(self.terminal, b"\x15" + line.encode())
            for _ in range(200):
                if not select.select([self.terminal], [], [], 0.05)[0]:
                    continue
                self.seen += os.read(self.terminal, 65536).decode(errors="replace")
                if text in self.seen:
                    return True
            return False
        self.seen = ""
        wait_until(is_shown, f"{text!r} is shown behind {line!r}")


class Shells(SandboxedTest):
    """A TAB completes a command, an option with its value, and what the service knows; the line then runs."""

    def at(self, command, setup):
        path = f"{pathlib.Path(OPTIONS.pvrctl).parent}:{self.environment['PATH']}"
        environment = self.environment | {"PATH": path, "HOME": str(self.folder), "TERM": "xterm", "LC_ALL": "C.UTF-8",
                                          "XDG_CONFIG_HOME": str(self.folder), "XDG_DATA_HOME": str(self.folder)}
        return contextlib.closing(Terminal(command, environment, setup))

    def complete_in(self, command, setup):
        self.succeed("record", "start", 2)
        with self.at(command, setup) as shell:
            shell.until("Usage: pvrctl play forward", "pvrctl play forw\t--speed=1/8 --he\t\n")
            shell.until('"service_id":2,', "pvrctl --json record inf\t\t\n")
            shell.until('"code":257', "pvrctl --js\terror-tex\t257\n")
            shell.until('"recording":false', f"pvrctl --json file is-rec\t{self.folder}/firs\t\n")
            shell.until("does not play", f"pvrctl --json play stop --file={self.folder}/firs\t\n")

    def test_bash(self):
        self.complete_in(["bash", "--norc", "-i"], f"{LOAD_IN_BASH}; . {COMPLETIONS}/pvrctl.bash")

    def test_zsh(self):
        self.complete_in(["zsh", "-f", "-i"], f"fpath=({COMPLETIONS} $fpath); autoload -U compinit; compinit -u -D")

    def test_fish(self):
        self.complete_in(["fish", "--no-config", "-i"], f"source {COMPLETIONS}/pvrctl.fish")

    def test_bash_adds_files_and_goes_on_behind_an_equals_sign(self):
        (self.folder / "a film.srf").touch()
        script = f"""
            {LOAD_IN_BASH}
            . {COMPLETIONS}/pvrctl.bash
            compopt() {{ echo "compopt $*"; }}
            try() {{
                COMP_LINE=$1 COMP_POINT=${{#1}} COMPREPLY=()
                read -ra COMP_WORDS <<< "${{1//=/ = }}" # as readline takes words apart
                COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1))
                _pvrctl {OPTIONS.pvrctl}
                printf '<%s>\\n' "${{COMPREPLY[@]}}"
            }}
            try 'pvrctl play start a'
            try 'pvrctl play forward 1 --speed=1/'
            try 'pvrctl sas get 1 2 --output=a'
            try 'pvrctl inf set first.srf resume'"""
        done = subprocess.run(["bash", "--norc", "-c", script], env=self.environment, cwd=self.folder, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=HANGS, check=True)
        self.assertEqual(done.stdout.splitlines(), [
            "compopt -o filenames", "<a film.srf>",
            "<1/2>", "<1/4>", "<1/8>",
            "compopt -o filenames", "<a film.srf>",
            "compopt -o nospace", "<resume_play_pos=>"])

    def test_fish_adds_files_and_descriptions(self):
        (self.folder / "film.srf").touch()
        for line, words in [("play start fil", ["film.srf"]), ("sas get 1 2 --output=fil", ["--output=film.srf"]),
                            ("play forward 1 --speed=1/4", ["--speed=1/4\tslow motion"])]:
            done = subprocess.run(["fish", "--no-config", "-c",
                                   f"source {COMPLETIONS}/pvrctl.fish; complete -C '{OPTIONS.pvrctl} {line}'"],
                                  env=self.environment | {"HOME": str(self.folder)}, cwd=self.folder, text=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=HANGS, check=True)
            self.assertEqual(done.stdout.splitlines(), words)


if __name__ == "__main__":
    main()
