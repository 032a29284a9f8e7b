"""How pvrctl ends when something is wrong: exit codes, messages, forms, and services that behave otherwise."""
import itertools
import json
import os
import re
import signal
import socket
import subprocess

from pvrctl_case import (DONE, FAILED, HANGS, NOT_FOUND, NOT_RECORDING, NOT_RUNNING, OPTIONS, REFUSED, TIME_OUT,
                         USAGE, PvrctlTest, SandboxedTest, ScriptedTest, lines, main)

HOSTILE = "not recording\n\x1b[31m.srf"


class Failures(SandboxedTest):
    def test_of_the_service_are_told_with_its_own_words(self):
        self.control("FailMethod", "get_handle", "org.example.Planted", "it is planted", 2)
        message = "'get_handle' failed: org.example.Planted: it is planted. PVR_LOG=stderr tells more"
        self.assertEqual(self.fail_with(FAILED, "handle", "get"), message)
        code, output, errors = self.run_pvrctl("handle", "get")
        self.assertEqual((code, output, " ".join(errors.split())), (FAILED, "", "pvrctl: " + message))

    def test_tell_when_the_service_is_not_running(self):
        self.control("Vanish", 0)
        for arguments in [["handle", "list"], ["handle", "release", 1], ["play", "start", self.recording],
                          ["play", "stop", "--all"], ["play", "stop", "--file", "first.srf"]]:
            with self.subTest(arguments=arguments):
                self.assertIn("is not running", self.fail_with(NOT_RUNNING, *arguments))
        self.assertIn("is not running", self.fail_with(NOT_RUNNING, "status", data='{"bus":true,"service":null}\n'))
        self.control("Return")
        self.succeed("handle", "list")

    def test_tell_when_the_bus_ends_during_a_call(self):
        self.control("DelayMethod", "get_handle", 1000 * HANGS, 1)
        with subprocess.Popen([OPTIONS.pvrctl, "handle", "get"], env=self.environment, stderr=subprocess.PIPE,
                              text=True) as waiting:
            while "'get_handle'" not in self.control("ListCalls", 0):
                pass
            daemon = self.ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus.GetConnectionUnixProcessID",
                              "org.freedesktop.DBus")
            os.kill(int(re.fullmatch(r"\(uint32 (\d+),\)", daemon)[1]), signal.SIGKILL)
            errors = waiting.communicate(timeout=HANGS)[1]
        self.assertEqual((waiting.returncode, " ".join(errors.split())), (
            NOT_RUNNING, "pvrctl: the system bus cannot be reached: it was lost during the call"))

    def test_tell_when_the_product_does_not_record(self):
        settings = self.folder / "platform.conf"
        settings.write_text("[custom-bool]\ncom.brimmel/featureconf/pvr.pvr_support=false\n", encoding="utf-8")
        self.environment["PVR_PLATFORM_CONFIG"] = str(settings)
        for arguments in ["handle", "get"], ["play", "start", self.recording], ["play", "stop", "--all"]:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.fail_with(NOT_RECORDING, *arguments), "this product does not record")
        code, output, errors = self.run_pvrctl("status", "--json")
        self.assertEqual((code, json.loads(output)["records"]), (NOT_RECORDING, False))
        self.assertEqual(json.loads(errors)["error"]["code"], NOT_RECORDING)

    def test_to_write_are_errors(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            self.assert_not_written("No space left on device", stdout=full)
        reader, writer = os.pipe()
        os.close(reader)
        self.assert_not_written("Broken pipe", stdout=writer)
        os.close(writer)
        self.assert_not_written("Bad file descriptor", preexec_fn=lambda: os.close(1))

    def assert_not_written(self, reason, **popen):
        for arguments in ["status"], ["status", "--json"], ["--help"], ["--version"]:
            with self.subTest(reason=reason, arguments=arguments):
                code, _, errors = self.run_pvrctl(*arguments, **popen)
                self.assertEqual(code, FAILED)
                self.assertIn("cannot write to standard output: " + reason, " ".join(errors.split()))


class Forms(SandboxedTest):
    def test_json_may_be_asked_for_anywhere(self):
        self.paused()
        wanted = self.succeed("status", 1)
        for arguments in ["status", "--json", 1], ["status", 1, "--json"]:
            self.assertEqual(json.loads(self.run_pvrctl(*arguments)[1]), wanted)

    def test_quiet_says_nothing_but_errors(self):
        self.assertEqual(self.run_pvrctl("--quiet", "play", "start", self.recording), (DONE, "", ""))
        self.assertEqual(self.run_pvrctl("play", "stop", 77, "--quiet"),
                         (REFUSED, "", "pvrctl: nothing plays on handle 77\n"))

    def test_names_are_harmless_to_a_terminal_and_whole_in_json(self):
        hostile = self.recording.rename(self.folder / HOSTILE)
        self.assertEqual(lines(self.run_pvrctl("play", "start", HOSTILE)[1])["recording"],
                         str(self.folder / r"not recording\x0a\x1b[31m.srf"))
        self.assertEqual(self.succeed("status", 1)["playback"]["uri"], str(hostile))

    def test_the_librarys_log_does_not_mix_with_the_data(self):
        self.environment["PVR_LOG"] = "stderr"
        code, output, errors = self.run_pvrctl("status", "--json")
        self.assertEqual((code, json.loads(output)["bus"]), (DONE, True))
        self.assertIn("svc_pvr_get_pvr_state", errors)


class OtherServices(ScriptedTest):
    def test_all_handles_of_recordings_are_listed(self):
        handles = list(range(1000, 0, -1))
        self.answer(get_handle_for_record=f"({handles}, {len(handles)})")
        self.assertEqual(self.succeed("handle", "list"), {"handles": handles, "count": len(handles)})
        self.assertEqual(self.run_pvrctl("handle", "list")[1].splitlines()[:2], ["handle  1000", "handle  999"])

    def test_an_answer_of_another_type_is_told_from_none(self):
        self.answer(get_handle="('one', 0)")
        self.assertIn("the answer to 'get_handle' cannot be understood", self.fail_with(FAILED, "handle", "get"))

    def test_no_handle_is_a_refusal(self):
        self.answer(get_handle="(-1, 0)", get_handle_for_playback="(-5, 0)")
        self.assertIn("it answered -1", self.fail_with(REFUSED, "handle", "get"))
        self.assertIn("it answered -5", self.fail_with(REFUSED, "play", "start", "/dev/null"))

    def test_a_service_that_does_not_record_says_so(self):
        for answer in 0, 2:
            self.answer(is_support_pvr=f"({answer},)")
            code, output, errors = self.run_pvrctl("status", "--json")
            self.assertEqual((code, json.loads(output)["records"]), (NOT_RECORDING, False))
            self.assertIn("says that it does not record", json.loads(errors)["error"]["message"])

    def test_the_result_of_stopping_all_is_judged(self):
        for result in -2, 1:
            self.answer(sync_stop_playing=f"({result},)")
            self.assertIn(f"it answered {result}", self.fail_with(REFUSED, "play", "stop", "--all"))

    def test_states_with_another_meaning_are_not_judged(self):
        self.answer(get_playback_uri_by_handle="('/a.srf',)", get_progress="(900, int64 7, int64 0, 0)",
                    play_pause="(0,)", play_forward="(0,)", play_stop="(0,)", release_handle="(0,)")
        for arguments in ["pause", 3], ["forward", 3, "--type", 44]:
            self.assertEqual(self.succeed("play", *arguments)["state"], {"code": 900, "name": None})
        self.assertEqual(lines(self.run_pvrctl("play", "pause", 3)[1]),
                         {"handle": "3", "recording": "/a.srf", "state": "state 900", "position": "7 s"})
        self.assertEqual(self.succeed("play", "stop", 3)["stopped"], True)

    def test_a_service_that_does_nothing_is_noticed(self):
        self.answer(get_playback_uri_by_handle="('/a.srf',)", get_progress="(1, int64 7, int64 0, 0)",
                    play_pause="(0,)", step_frame="(0,)", play_forward="(0,)", play_rewind="(0,)", play_stop="(0,)")
        for verb in "pause", "step", "forward", "rewind", "stop":
            with self.subTest(verb=verb):
                self.assertIn("did not", self.fail_with(REFUSED, "play", verb, 3))

    def test_a_text_cut_within_a_character_is_still_json(self):
        self.answer(get_playback_uri_by_handle=f"('{'ä' * 127}.srf',)", get_progress="(1, int64 7, int64 0, 0)",
                    is_support_pvr="(1,)", get_pvr_state="(1, 0)")
        self.assertEqual(self.succeed("status", 3)["playback"]["uri"], "ä" * 127)
        self.answer(get_playback_uri_by_handle=f"('{'x' + 'ä' * 127}',)", get_progress="(1, int64 7, int64 0, 0)",
                    is_support_pvr="(1,)", get_pvr_state="(1, 0)")
        self.assertEqual(self.succeed("status", 3)["playback"]["uri"], "x" + "ä" * 126 + "\ufffd")


class CommandLine(PvrctlTest):
    """Without a bus: a line that is right ends with 4, one that is wrong with 2."""

    def commands(self, *words):
        """Every command there is, as its help lists them."""
        text = self.run_pvrctl(*words, "--help")[1]
        found = re.findall(r"^  ([\w-]+)  ", text.partition("\nCommands:\n")[2].partition("\n\n")[0], re.MULTILINE)
        return [words, *itertools.chain(*(self.commands(*words, name) for name in found))]

    def test_every_command_has_help_with_examples_and_exit_codes(self):
        commands = self.commands()
        self.assertLessEqual({(), ("play", "start"), ("handle", "list"), ("file", "is-recording"), ("status",)},
                             set(commands))
        for command in commands:
            with self.subTest(command=command):
                code, text, errors = self.run_pvrctl(*command, "--help")
                self.assertEqual((code, errors), (DONE, ""))
                self.assertLessEqual(max(map(len, text.splitlines())), 80)
                self.assertEqual(re.findall(r"^  (\d)  ", text.partition("Exit codes:\n")[2], re.MULTILINE),
                                 [str(number) for number in range(8)])
                for example in re.findall(r"^  pvrctl (.+)$", text.partition("Examples:\n")[2], re.MULTILINE):
                    code = self.run_pvrctl(*example.split())[0]
                    self.assertIn(code, [DONE] if "error-text" in example else [NOT_RUNNING, NOT_FOUND], example)
                    self.assertEqual(example.split()[:len(command)], list(command))

    def test_what_is_wrong_is_told(self):
        pause, skip = ["play", "pause"], ["play", "skip", 3]
        wide = "is not between -2147483648 and 2147483647"
        for arguments, message in [
                ([], "a command is missing. See 'pvrctl --help'"),
                (["play"], "a command is missing. See 'pvrctl play --help'"),
                (["wobble"], "'wobble' is not known here. See 'pvrctl --help'"),
                (["play", "wobble", 3], "'wobble' is not known here. See 'pvrctl play --help'"),
                (["play", "start"], "FILE is required"),
                (pause, "HANDLE is required. See 'pvrctl play pause --help'"),
                ([*pause, 3, 4], "The following argument was not expected: 4"),
                ([*pause, 3, "--speed"], "The following argument was not expected: --speed"),
                ([*pause, ""], "HANDLE: '' is no whole number"),
                ([*pause, "x"], "HANDLE: 'x' is no whole number"),
                ([*pause, "1x"], "HANDLE: '1x' is no whole number"),
                ([*pause, "0x1"], "HANDLE: '0x1' is no whole number"),
                ([*pause, "1.0"], "HANDLE: '1.0' is no whole number"),
                ([*pause, " 1"], "HANDLE: ' 1' is no whole number"),
                ([*pause, "+-1"], "HANDLE: '+-1' is no whole number"),
                ([*pause, 2147483648], f"HANDLE: '2147483648' {wide}"),
                ([*pause, -2147483649], f"HANDLE: '-2147483649' {wide}"),
                ([*pause, "9" * 99], f"HANDLE: '{'9' * 99}' {wide}"),
                (["status", "x"], "HANDLE: 'x' is no whole number"),
                (["play", "start", "/dev/null", "--from", "x"], "--from: 'x' is no whole number"),
                (["play", "start", "/dev/null", "--handle", 2147483648], f"--handle: '2147483648' {wide}"),
                (["play", "forward", 3, "--speed", 3],
                 "--speed: '3' is none of 2, 4, 8, 16, 32, 64, 128, 1/2, 1/4, 1/8"),
                (["play", "rewind", 3, "--speed", 2, "--type", 1], "excludes"),
                (["play", "rewind", 3, "--type", "fast"], "--type: 'fast' is no whole number"),
                (skip, "takes one of --to, --by and --percent"),
                ([*skip, "--to", 1, "--by", 1], "takes one of --to, --by and --percent"),
                ([*skip, "--to", 1, "--to", 2], "--to"),
                ([*skip, "--by", -2147483648], "--by: '-2147483648' is not between -2147483647 and 2147483647"),
                (["record", "start", -1], "SERVICE_ID: '-1' is not between 0 and 18446744073709551615"),
                (["record", "start", 2 ** 64], "is not between 0 and 18446744073709551615"),
                (["record", "start", 1, "--duration", 0], "--duration: '0' is not between 1 and 2147483647"),
                (["record", "stop", "x"], "SERVICE_ID: 'x' is no whole number"),
                (["record", "stop", "--", "--1"], "SERVICE_ID: '--1' is no whole number"),
                (["record", "duration", 1, 5, "--unlimited"], "excludes"),
                (["timeshift", "stop"], "SERVICE_ID is required"),
                (["device", "info"], "HANDLE is required"),
                (["channel", "list", 1, "x", 2], "SERVICE_ID: 'x' is no whole number"),
                (["share", "set", 1], "VALUE is required"),
                (["share", "set", 1, 2 ** 63], "VALUE: '9223372036854775808' is not between"),
                (["share", "get", 2 ** 31], f"TYPE: '2147483648' {wide}"),
                (["file", "mkdir", "films", "--mode", 8], "--mode: '8' is no octal number"),
                (["file", "mkdir", "films", "--mode", ""], "--mode: '' is no"),
                (["file", "mkdir", "films", "--mode", "-1"], "--mode: '-1' is no octal number"),
                (["file", "mkdir", "films", "--mode", "7" * 12], "is not between 0 and 2147483647"),
                (["rights"], "FILE is required"),
                (["rights", "first.srf", "--position", "x"], "--position: 'x' is no whole number"),
                (["rights", "first.srf", "--position", 2147483648], f"--position: '2147483648' {wide}"),
                (["error-text"], "takes one of CODE and --all"),
                (["error-text", 257, "--all"], "takes one of CODE and --all"),
                (["error-text", "x"], "CODE: 'x' is no whole number"),
                (["error-text", 2147483648], f"CODE: '2147483648' {wide}"),
                (["error-text", "--all", "--all=x"], "--all"),
                (["error-text", 257, "--lang"], "--lang"),
                *((["error-text", 257, "--lang", name], f"--lang: '{name}' is no name of a language")
                  for name in ("", "de:en", "../de", "/de", "d e", "ä", "*")),
                (["play", "stop"], "takes one of HANDLE, --all and --file"),
                (["play", "stop", 3, "--all"], "takes one of HANDLE, --all and --file"),
                (["status", "--quiet"], "--json excludes --quiet")]:
            with self.subTest(arguments=arguments):
                self.assertIn(message, self.fail_with(USAGE, *arguments))

    def test_the_whole_range_of_numbers_is_taken(self):
        for number in -2147483648, "+2147483647", "-0", "007":
            for arguments in [["play", "pause", number], ["play", "skip", 3, "--to", number],
                              ["play", "forward", number, "--type", number],
                              ["play", "start", "/dev/null", "--from", number, "--handle", number],
                              ["device", "default", number], ["share", "get", number],
                              ["record", "duration", 1, number]]:
                with self.subTest(arguments=arguments):
                    self.fail_with(NOT_RUNNING, *arguments)
        for number in 0, "-0", "+1", 2 ** 64 - 1:
            self.fail_with(NOT_RUNNING, "channel", "list", number, number)
        for number in -2 ** 63, 2 ** 63 - 1:
            self.fail_with(NOT_RUNNING, "share", "set", 1, number)

    def test_a_missing_bus_is_told(self):
        self.assertIn("the system bus cannot be reached", self.fail_with(NOT_RUNNING, "handle", "list"))
        self.assertIn("the system bus cannot be reached",
                      self.fail_with(NOT_RUNNING, "status", data='{"bus":false}\n'))

    def test_a_missing_file_is_told(self):
        for name in "missing.srf", "/nowhere/missing.srf", "/dev/null/missing.srf", "", "--", HOSTILE:
            with self.subTest(name=name):
                self.assertIn(f"'{name}': ", self.fail_with(NOT_FOUND, "play", "start", f"--from={1}", "--", name))
        self.assertIn("'': ", self.fail_with(NOT_FOUND, "play", "stop", "--file", ""))
        for verb in "delete", "is-recording":
            self.assertIn("'missing.srf': ", self.fail_with(NOT_FOUND, "file", verb, "missing.srf"))
        self.assertIn("'': ", self.fail_with(NOT_FOUND, "file", "mkdir", ""))

    def test_a_path_that_is_not_utf_8_is_refused(self):
        name = os.fsdecode(b"no\xfftext.srf")
        (self.folder / name).touch()
        for arguments in [["play", "start", name], ["play", "stop", "--file", name], ["file", "delete", name],
                          ["file", "mkdir", name]]:
            self.assertEqual(self.fail_with(USAGE, *arguments),
                             f"the path of the file is not UTF-8: {self.folder}/no\ufffdtext.srf")

    def test_the_version_is_the_librarys(self):
        self.assertRegex(self.run_pvrctl("--version")[1], r"^pvrctl \d+\.\d+\.\d+\n$")


class Silence(SandboxedTest):
    """Each wait takes the 25 s that the library waits, so they run side by side."""

    def test_ends_with_a_time_out(self):
        handle = self.start()
        self.control("DelayMethod", "play_pause", 1000 * HANGS, 1)
        pausing = self.begin("play", "pause", handle, "--json")
        with socket.socket(socket.AF_UNIX) as mute:  # accepts connections, and never says anything
            mute.bind(str(self.folder / "mute"))
            mute.listen()
            listing = self.begin("handle", "list", DBUS_SYSTEM_BUS_ADDRESS=f"unix:path={self.folder}/mute")
            output, errors = pausing.communicate(timeout=HANGS)
            self.assertEqual((pausing.returncode, output), (TIME_OUT, ""))
            self.assertEqual(json.loads(errors)["error"]["name"], "time-out")
            self.assertIn("did not answer 'play_pause' in time; it runs, as :", errors)
            output, errors = listing.communicate(timeout=HANGS)
            self.assertEqual((listing.returncode, output), (NOT_RUNNING, ""))
            self.assertIn("said nothing for 25 s", " ".join(errors.split()))


if __name__ == "__main__":
    main()
