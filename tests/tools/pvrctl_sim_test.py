"""pvrctl sim: steers the development service through its control interface, and nothing of it takes the library."""
import json
import os
import signal
import subprocess

from pvrctl_case import (DONE, FAILED, HANGS, NOT_FOUND, NOT_RUNNING, OPTIONS, REFUSED, USAGE, PvrctlTest,
                         SandboxedTest, ScriptedTest, lines, main)

KINDS = ("delay, no-answer, error, result, wrong-type, crash, hold, drop, duplicate, short-record, no-digits, "
         "wrong-variant, device-full and device-pulled")
NO_SERVICE = "the development service is not running: nobody owns org.vexan.tv.pvr.Simulator1 on the bus"
VERBS = [["calls"], ["calls", "--follow"], ["calls", "--clear"], ["fault", "list"], ["fault", "clear"],
         ["fault", "remove", 1], ["fault", "add", "crash", "get_handle"], ["emit", "result_to_apps", 200], ["tune", 1],
         ["date", "set"], ["step", 1], ["timer", "add", 1, "--in", 60], ["timer", "remove", 1], ["vanish"], ["return"],
         ["crash"]]


class SimFaults(SandboxedTest):
    def add(self, *arguments):
        return self.succeed("sim", "fault", "add", *arguments)

    def faults(self):
        return self.succeed("sim", "fault", "list")["faults"]

    def test_are_added_with_their_options(self):
        for arguments, kind, target, options in [
                (["--milliseconds", 5], "delay", "get_handle", {"milliseconds": 5}),
                (["--error", "org.example.Planted", "--message", "it is planted"], "error", "get_handle",
                 {"error": "org.example.Planted", "message": "it is planted"}),
                (["--result", -3, "--times", 2], "result", "get_handle", {"result": -3, "times": 2}),
                (["--code", 11], "drop", "result_to_apps", {"code": 11}),
                (["--code", "PS_RECORD_STOP"], "drop", "result_to_apps", {"code": 11}),
                (["--code", "PS_SIGNAL_TYPE_PLAY_ERROR"], "hold", "send_pvr_signal_to_apps", {"code": 4}),
                (["--probability", 0.25, "--seed", 2 ** 64 - 1], "device-full", "usb1",
                 {"probability": 0.25, "seed": 2 ** 64 - 1}),
                ([], "device-pulled", "usb1", {})]:
            with self.subTest(kind=kind, arguments=arguments):
                added = self.add(kind, target, *arguments)
                self.assertEqual((added["kind"], added["target"]), (kind, target))
                fault = self.faults()[-1]
                self.assertEqual({name: fault[name] for name in ("kind", "target", "options")},
                                 {"kind": kind, "target": target, "options": options})
                self.assertEqual(fault["id"], added["id"])
                self.assertEqual(self.succeed("sim", "fault", "clear"), {"cleared": True})
        self.assertEqual(self.succeed("sim", "fault", "list"), {"faults": [], "count": 0})

    def test_are_listed_with_how_often_they_struck(self):
        self.add("error", "get_handle", "--error", "org.example.Planted", "--times", 1)
        self.fail_with(FAILED, "handle", "get")
        self.succeed("handle", "get")
        self.assertEqual(self.succeed("sim", "fault", "list"), {"faults": [
            {"id": 1, "kind": "error", "target": "get_handle", "options": {"error": "org.example.Planted", "times": 1},
             "met": 1, "struck": 1}], "count": 1})
        self.assertEqual(self.run_pvrctl("sim", "fault", "list"),
                         (DONE, "1  error get_handle, error org.example.Planted, times 1; struck 1 of 1\n", ""))

    def test_are_removed_one_by_one(self):
        self.add("no-answer", "play_start")
        self.add("wrong-type", "get_handle")
        self.assertIn("cannot be understood", self.fail_with(FAILED, "handle", "get"))
        self.assertEqual(self.succeed("sim", "fault", "remove", 2), {"id": 2, "removed": True})
        self.succeed("handle", "get")
        self.assertEqual([fault["id"] for fault in self.faults()], [1])
        self.assertEqual(self.fail_with(NOT_FOUND, "sim", "fault", "remove", 2), "there is no fault 2")

    def test_are_told_to_people(self):
        self.assertEqual(lines(self.run_pvrctl("sim", "fault", "add", "crash", "get_handle")[1]),
                         {"fault": "1", "kind": "crash", "target": "get_handle"})
        self.assertEqual(lines(self.run_pvrctl("sim", "fault", "remove", 1)[1]), {"removed": "1"})
        self.assertEqual(lines(self.run_pvrctl("sim", "fault", "clear")[1]), {"faults": "none"})

    def test_that_make_no_sense_are_refused_with_what_is_expected(self):
        for arguments, message in [
                (["wobble", "get_handle"], f"there is no fault 'wobble', but {KINDS}"),
                (["crash", "wobble"], "org.vexan.tv.pvr has no method 'wobble'"),
                (["drop", "wobble"], "has no signal 'wobble', but result_to_apps and send_pvr_signal_to_apps"),
                (["device-full", "usb9"], "there is no device 'usb9', but usb1"),
                (["delay", "get_handle"], "the fault 'delay' needs the option 'milliseconds'"),
                (["result", "record_start", "--result", 1], "the method 'record_start' answers no result"),
                (["drop", "result_to_apps", "--result", 1],
                 "the fault 'drop' has no option 'result', but code, times, probability and seed"),
                (["error", "get_handle", "--error", "x"], "'x' cannot be the name of an error"),
                (["crash", "get_handle", "--probability", 2], "the option 'probability' is from 0 to 1"),
                (["crash", "get_handle", "--probability", "nan"], "the option 'probability' is from 0 to 1"),
                (["crash", "get_handle", "--seed", 1], "the option 'seed' goes with a 'probability'")]:
            with self.subTest(arguments=arguments):
                self.assertIn(message, self.fail_with(USAGE, "sim", "fault", "add", *arguments))
        self.assertEqual(self.faults(), [])

    def test_of_a_device_are_seen_by_other_commands(self):
        self.add("device-pulled", "usb1")
        self.assertEqual(self.succeed("device", "list")["count"], 0)
        self.succeed("sim", "fault", "clear")
        self.assertEqual(self.succeed("device", "list")["count"], 1)
        self.add("device-full", "usb1")
        self.assertIn("160", self.fail_with(REFUSED, "record", "start", 1))


class SimCalls(SandboxedTest):
    def test_are_listed_with_times_and_arguments(self):
        self.ask_service("get_handle")
        self.ask_service("set_share_data", 1, "uint64 18446744073709551615")
        self.ask_service("play_start", 1, "'/a\x1b.srf'", -3)
        listed = self.succeed("sim", "calls")
        self.assertEqual(listed["count"], 3)
        self.assertEqual([(call["number"], call["method"], call["arguments"]) for call in listed["calls"]],
                         [(1, "get_handle", []), (2, "set_share_data", [1, 2 ** 64 - 1]),
                          (3, "play_start", [1, "/a\x1b.srf", -3])])
        for call in listed["calls"]:
            self.assertRegex(call["wall"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z$")
            self.assertRegex(call["sender"], r"^:1\.\d+$")
        times = [call["monotonic_us"] for call in listed["calls"]]
        self.assertEqual(times, sorted(times))
        table = self.run_pvrctl("sim", "calls")[1].splitlines()
        self.assertRegex(table[2], r"^3  \d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}  :1\.\d+  "
                                   r"play_start\(1, '/a\\u001b\.srf', -3\)$")

    def test_may_begin_behind_a_number_and_be_forgotten(self):
        for _ in range(3):
            self.ask_service("get_handle")
        self.assertEqual([call["number"] for call in self.succeed("sim", "calls", "--after", 1)["calls"]], [2, 3])
        self.assertEqual(self.succeed("sim", "calls", "--clear"), {"cleared": True})
        self.assertEqual(self.succeed("sim", "calls"), {"calls": [], "count": 0})

    def test_are_told_as_they_arrive(self):
        self.ask_service("get_handle")
        self.ask_service("is_support_pvr")
        run = self.begin("sim", "calls", "--follow", "--json", "--after", 1)
        self.assertEqual(json.loads(run.stdout.readline())["number"], 2)
        for number in range(3, 8):
            self.ask_service("play_pause", number)
            call = json.loads(run.stdout.readline())
            self.assertEqual((call["number"], call["method"], call["arguments"]), (number, "play_pause", [number]))
        run.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(run), (128 + signal.SIGINT, "", ""))

    def test_that_fail_on_purpose_are_told_too(self):
        run = self.begin("sim", "calls", "--follow")
        self.succeed("sim", "fault", "add", "error", "get_handle", "--error", "org.example.Planted")
        self.fail_with(FAILED, "handle", "get")
        self.assertRegex(run.stdout.readline(), r"^1  .*  get_handle\(\)$")
        run.send_signal(signal.SIGTERM)
        self.assertEqual(self.finish(run), (128 + signal.SIGTERM, "", ""))

    def test_end_when_nobody_reads(self):
        reader, writer = os.pipe()
        with subprocess.Popen([OPTIONS.pvrctl, "--json", "sim", "calls", "--follow"], env=self.environment,
                              stdout=writer, stderr=subprocess.DEVNULL) as run:
            os.close(writer)
            with os.fdopen(reader) as output:
                self.ask_service("get_handle")
                self.assertEqual(json.loads(output.readline())["number"], 1)
            self.assertEqual(run.wait(HANGS), DONE)


class Sim(SandboxedTest):
    def test_emits_signals(self):
        monitor = self.begin("--json", "monitor", "--count", 1, "--type", "PS_PVR_STATE_CHANGE")
        self.assertEqual(json.loads(monitor.stdout.readline())["kind"], "state")
        self.assertEqual(self.succeed("sim", "emit", "result_to_apps", 200, "<(7,)>"),
                         {"signal": "result_to_apps", "emitted": True})
        told = json.loads(monitor.stdout.readline())
        self.assertEqual((told["kind"], told["state"]), ("service_state", 7))
        self.assertEqual(self.finish(monitor), (DONE, "", ""))
        for values in [], ["'a text'", "true", -5, "{'a': <1>}", "@as []"]:
            self.succeed("sim", "emit", "something", *values)
        self.assertIn("'text' is no value as GVariant writes it", self.fail_with(USAGE, "sim", "emit", "x", "text"))
        self.assertEqual(self.fail_with(USAGE, "sim", "emit", "no name"), "'no name' cannot be the name of a signal")

    def test_tunes(self):
        self.assertEqual(self.succeed("sim", "tune", 3), {"service_id": 3, "tuned": True})
        self.assertEqual(self.succeed("status")["watched_channel"], 3)
        self.assertEqual(self.fail_with(NOT_FOUND, "sim", "tune", 99), "no such channel")
        self.succeed("sim", "tune", 1)
        for channel in 1, 2:
            self.succeed("record", "start", channel)
        self.assertIn("recordings are in the way", self.fail_with(REFUSED, "sim", "tune", 3))

    def test_sets_and_unsets_the_date(self):
        for state, answer in ("unset", "(0,)"), ("set", "(1,)"):
            self.assertEqual(self.succeed("sim", "date", state), {"date_set": state == "set"})
            self.assertEqual(self.ask_service("is_date_set"), answer)
        self.assertIn("maybe not in {set,unset}", self.fail_with(USAGE, "sim", "date", "maybe"))

    def recorded(self):
        return [recording["service_id"] for recording in self.succeed("record", "list")["recordings"]]

    def test_has_time_pass_at_once(self):
        self.succeed("record", "start", 3, "--duration", 600)
        self.assertEqual(self.succeed("sim", "step", 300), {"seconds": 300, "passed": True})
        self.assertEqual(self.recorded(), [3])
        self.succeed("sim", "step", 300)
        self.assertEqual(self.recorded(), [])
        self.assertEqual(self.fail_with(USAGE, "sim", "step", 31 * 86400 + 1), "more than 31 days")

    def test_sets_recordings_for_later(self):
        self.assertEqual(self.succeed("sim", "timer", "add", 3, "--in", 3600, "--duration", 600),
                         {"id": 1, "service_id": 3, "in_seconds": 3600, "duration": 600})
        self.assertEqual(self.succeed("sim", "timer", "add", 1, "--in", 3600)["duration"], 0)
        self.succeed("sim", "timer", "remove", 2)
        self.succeed("sim", "step", 3600)
        self.assertEqual(self.recorded(), [3])
        self.succeed("sim", "step", 600)
        self.assertEqual(self.recorded(), [])

    def test_ends_a_timer_recording_that_runs(self):
        self.succeed("sim", "timer", "add", 3, "--in", 0)
        self.assertEqual(self.recorded(), [3])
        self.assertEqual(self.succeed("sim", "timer", "remove", 1), {"id": 1, "removed": True})
        self.assertEqual(self.recorded(), [])

    def test_tells_which_timer_recordings_cannot_be(self):
        too_far = 366 * 86400 + 1
        for code, arguments, message in [
                (NOT_FOUND, ["add", 99, "--in", 1], "no such channel"),
                (USAGE, ["add", 1, "--in", too_far], f"--in: {too_far} s are more than 366 days"),
                (USAGE, ["add", 1, "--in", 1, "--duration", too_far],
                 f"--duration: {too_far} s are more than 366 days"),
                (NOT_FOUND, ["remove", 7], "no such timer recording")]:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.fail_with(code, "sim", "timer", *arguments), message)

    def test_has_the_service_vanish_and_return(self):
        self.assertEqual(self.succeed("sim", "vanish"), {"away": True, "milliseconds": None})
        self.assertIn("is not running", self.fail_with(NOT_RUNNING, "handle", "get"))
        self.assertEqual(self.fail_with(REFUSED, "sim", "emit", "something"), "the service is away")
        self.assertEqual(self.succeed("sim", "return"), {"away": False})
        self.succeed("handle", "get")
        self.assertEqual(self.succeed("sim", "vanish", "--for", 1), {"away": True, "milliseconds": 1})
        self.ask_until_it_is_back()

    def ask_until_it_is_back(self):
        while "true" not in self.ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus.NameHasOwner",
                                     "org.vexan.tv.pvr.server"):
            pass
        self.succeed("handle", "get")

    def test_does_without_the_library(self):
        settings = self.folder / "platform.conf"
        settings.write_text("[custom-bool]\ncom.brimmel/featureconf/pvr.pvr_support=false\n", encoding="utf-8")
        self.environment["PVR_PLATFORM_CONFIG"] = str(settings)
        self.succeed("sim", "fault", "list")

    def test_speaks_to_people(self):
        for arguments, text in [(["emit", "x"], "emitted  x\n"), (["tune", 2], "tuned to  2\n"),
                                (["date", "unset"], "date  unset\n"), (["calls", "--clear"], "calls  none\n"),
                                (["step", 5], "passed  5 s\n"), (["timer", "add", 3, "--in", 9], "timer  1\n"),
                                (["timer", "remove", 1], "removed  1\n"),
                                (["vanish"], "away  until it is told to return\n"),
                                (["vanish", "--for", 100000], "away  for 100000 ms\n"),
                                (["return"], "service  is there\n")]:
            self.assertEqual(self.run_pvrctl("sim", *arguments), (DONE, text, ""))
        self.assertEqual(self.run_pvrctl("sim", "tune", 1, "--quiet"), (DONE, "", ""))


class SimCrash(SandboxedTest):
    """The sandbox ends with its service."""

    def test_ends_the_service(self):
        follower = self.begin("sim", "calls", "--follow")
        self.ask_service("get_handle")
        self.assertRegex(follower.stdout.readline(), r"^1  .*  get_handle\(\)$")
        code, output, errors = self.run_pvrctl("--json", "sim", "crash")
        self.assertEqual((code, json.loads(output), errors), (DONE, {"crashed": True}, ""))
        code, _, errors = self.finish(follower)
        self.assertEqual(code, NOT_RUNNING)
        self.assertRegex(" ".join(errors.split()), r"^pvrctl: (the development service has left the bus|"
                                                   r"the system bus cannot be reached: it was lost)$")


class SimAlone(ScriptedTest):
    """A bus with a service, which is not the development service."""

    def test_tells_that_there_is_no_development_service(self):
        self.answer()
        for arguments in VERBS:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.fail_with(NOT_RUNNING, "sim", *arguments), NO_SERVICE)


class SimCommandLine(PvrctlTest):
    """Without a bus: a line that is right ends with 4, one that is wrong with 2."""

    def test_a_line_that_is_right_misses_the_bus(self):
        for arguments in VERBS + [["fault", "add", "delay", "x", "--times", 1, "--milliseconds", 0],
                                  ["fault", "add", "drop", "x", "--code", -1]]:
            with self.subTest(arguments=arguments):
                self.assertIn("the system bus cannot be reached", self.fail_with(NOT_RUNNING, "sim", *arguments))

    def test_what_is_wrong_is_told(self):
        add = ["fault", "add", "drop", "result_to_apps"]
        for arguments, message in [
                ([], "a command is missing. See 'pvrctl sim --help'"),
                (["wobble"], "'wobble' is not known here"),
                (["fault"], "a command is missing. See 'pvrctl sim fault --help'"),
                (["fault", "add"], "KIND is required"),
                (["fault", "add", "crash"], "TARGET is required"),
                (["fault", "remove"], "ID is required"),
                (["fault", "remove", "x"], "ID: 'x' is no whole number"),
                (["fault", "remove", -1], "ID: '-1' is not between 0 and 2147483647"),
                ([*add, "--times", 0], "--times: '0' is not between 1 and 2147483647"),
                ([*add, "--milliseconds", -1], "--milliseconds: '-1' is not between 0 and 2147483647"),
                ([*add, "--result", "x"], "--result: 'x' is no whole number"),
                ([*add, "--code", "PS_WOBBLE"], "--code: 'PS_WOBBLE' is no whole number"),
                ([*add, "--code", "PS_SIGNAL_TYPE_PLAY_ERROR"], "is no whole number"),
                ([*add, "--probability", "often"], "--probability"),
                ([*add, "--seed", -1], "--seed: '-1' is not between 0 and 18446744073709551615"),
                (["calls", "--after", "x"], "--after: 'x' is no whole number"),
                (["calls", "--clear", "--follow"], "excludes"),
                (["calls", "--clear", "--after", 1], "excludes"),
                (["emit"], "NAME is required"),
                (["tune"], "SERVICE_ID is required"),
                (["tune", -1], "SERVICE_ID: '-1' is not between 0 and 18446744073709551615"),
                (["date"], "STATE is required"),
                (["step"], "SECONDS is required"),
                (["step", -1], "SECONDS: '-1' is not between 0 and 18446744073709551615"),
                (["timer"], "a command is missing. See 'pvrctl sim timer --help'"),
                (["timer", "add", 1], "--in is required"),
                (["timer", "add", "--in", 1], "SERVICE_ID is required"),
                (["timer", "add", 1, "--in", "soon"], "--in: 'soon' is no whole number"),
                (["timer", "remove"], "ID is required"),
                (["vanish", "--for", 0], "--for: '0' is not between 1 and 2147483647"),
                (["return", "now"], "The following argument was not expected: now"),
                (["crash", 1], "The following argument was not expected: 1")]:
            with self.subTest(arguments=arguments):
                self.assertIn(message, self.fail_with(USAGE, "sim", *arguments))


if __name__ == "__main__":
    main()
