"""Recording and timeshift, seen by a second look at the development service and at the files that it writes."""
import json
import pathlib
import re
import shutil
import signal
import subprocess

from pvrctl_case import (DONE, FAILED, HANGS, NOT_FOUND, NOT_RUNNING, OPTIONS, REFUSED, SandboxedTest, ScriptedTest,
                         lines, main,
                         wait_until)

NORMAL = {"code": 0, "name": "PS_RECORD_TYPE_NORMAL"}
RECORDING = {"code": 2, "name": "PS_RECORD_STATE_REC"}
WATCHED = {"code": 1, "name": "PS_RECORD_TYPE_TIMESHIFT_PLAY"}
ANALOGUE, LOCKED, DARK, SCRAMBLED, UNKNOWN, FAR = 4, 5, 6, 4294967303, 99, 9223372036854775816
INFO_SIZE, DURATION_AT, COMPLETE_AT = 10905, 782, 10627  # of the file beside a recording


class RecordingTest(SandboxedTest):
    def uri_of(self, channel):
        return re.fullmatch(r"\('(.*)',\)",
                            self.ask_service("get_recording_uri_by_service_id", f"uint64 {channel}"))[1]

    def is_running(self, channel):
        return self.ask_service("is_recording", f"uint64 {channel}") == "(1,)"

    def info_of(self, uri):
        """What the info file tells: milliseconds, and whether the recording is complete."""
        info = pathlib.Path(uri).with_suffix(".inf").read_bytes()
        self.assertEqual(len(info), INFO_SIZE)
        return (int.from_bytes(info[DURATION_AT:DURATION_AT + 4], "little"),
                int.from_bytes(info[COMPLETE_AT:COMPLETE_AT + 2], "little"))

    def seconds_of(self, channel):
        return self.succeed("record", "info", channel)["seconds"]


class RecordStart(RecordingTest):
    def test_records_until_it_is_stopped(self):
        started = self.succeed("record", "start", 1)
        self.assertTrue(self.is_running(1))
        self.assertEqual(started, {"service_id": 1, "uri": self.uri_of(1), "type": NORMAL, "duration": 0})
        self.assertEqual(pathlib.Path(started["uri"]).parent, self.device)

    def test_records_for_as_long_as_it_is_told(self):
        self.assertEqual(lines(self.run_pvrctl("record", "start", FAR, "--duration", 3600)[1]),
                         {"channel": str(FAR), "recording": self.uri_of(FAR), "duration": "3600 s",
                          "kind": "normal recording (PS_RECORD_TYPE_NORMAL)"})
        self.assertEqual(self.ask_service("get_recording_duration_by_service_id", f"uint64 {FAR}"), "(3600, 0)")

    def test_tells_the_services_reason_when_it_refuses(self):
        for channel, reason in [(UNKNOWN, 202), (ANALOGUE, 200), (DARK, 102), (SCRAMBLED, 256), (LOCKED, 10)]:
            with self.subTest(channel=channel):
                self.assertEqual(self.fail_with(REFUSED, "record", "start", channel, "--duration", 5),
                                 f"the service does not record channel {channel}; its reason is {reason}")
        self.assertEqual(self.requests("sync_stop_recording"), [])
        self.succeed("record", "start", 1)
        self.succeed("record", "start", 2)
        self.assertIn("its reason is 4", self.fail_with(REFUSED, "record", "start", 3))

    def test_of_a_channel_that_is_being_recorded_is_refused(self):
        self.succeed("record", "start", 1)
        for options in [], ["--wait"]:
            self.assertEqual(self.fail_with(REFUSED, "record", "start", 1, *options),
                             "channel 1 is being recorded already")
        self.assertEqual(len(self.requests("call_app")), 1)
        self.assertTrue(self.is_running(1))

    def test_leaves_nothing_running_when_it_fails(self):
        self.control("FailMethod", "set_recording_duration_by_service_id", "org.example.Planted", "planted", 1)
        self.assertIn("planted", self.fail_with(FAILED, "record", "start", 1, "--duration", 5))
        self.assertFalse(self.is_running(1))
        with open("/dev/full", "w", encoding="utf-8") as full:
            self.assertEqual(self.run_pvrctl("record", "start", 1, stdout=full)[0], FAILED)
        self.assertFalse(self.is_running(1))
        self.assertEqual(len(self.requests("sync_stop_recording")), 2)


class RecordWait(RecordingTest):
    def begin_recording(self, *options, **popen):
        """A command that waits, and what it has said so far."""
        waiting = self.begin("record", "start", 1, "--wait", "--json", *options, **popen)
        return waiting, json.loads(waiting.stdout.readline())

    def ended(self, waiting, started):
        """Exit code and what is said of the end."""
        code, output, errors = self.finish(waiting)
        self.assertEqual(errors, "")
        ended = json.loads(output)
        self.assertEqual((ended.pop("service_id"), ended.pop("uri")), (1, started["uri"]))
        return code, ended

    def test_stays_until_the_recording_has_ended(self):
        waiting, started = self.begin_recording("--duration", 2)
        self.assertEqual(started["duration"], 2)
        self.assertEqual(self.ended(waiting, started),
                         (DONE, {"seconds": 2, "complete": True, "stopped_by": None}))
        self.assertEqual(self.info_of(started["uri"]), (2000, 1))
        self.assertFalse(self.is_running(1))
        self.assertEqual(self.requests("sync_stop_recording"), [])

    def test_signals_stop_the_recording(self):
        for number in signal.SIGINT, signal.SIGTERM:
            with self.subTest(signal=number):
                waiting, started = self.begin_recording()
                waiting.send_signal(number)
                code, ended = self.ended(waiting, started)
                self.assertEqual((code, ended.pop("stopped_by")), (128 + number, number.name))
                length, is_complete = self.info_of(started["uri"])
                self.assertEqual(ended, {"seconds": length // 1000, "complete": True})
                self.assertEqual(is_complete, 1)
                self.assertFalse(self.is_running(1))

    def test_a_signal_before_it_has_started_counts(self):
        self.control("DelayMethod", "call_app", 500, 1)
        waiting = self.begin("record", "start", 1, "--wait")
        wait_until(lambda: self.requests("call_app"), "the recording is asked for")
        waiting.send_signal(signal.SIGTERM)
        code, output, errors = self.finish(waiting)
        self.assertEqual((code, errors), (128 + signal.SIGTERM, ""))
        self.assertEqual(lines(output)["stopped by"], "SIGTERM")
        self.assertFalse(self.is_running(1))

    def test_a_signal_that_is_ignored_stays_so(self):
        with subprocess.Popen([OPTIONS.pvrctl, "record", "start", "1", "--wait", "--json"], env=self.environment,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN)) as waiting:
            started = json.loads(waiting.stdout.readline())
            waiting.send_signal(signal.SIGINT)
            looks = len(self.requests("get_progress_by_service_id"))
            wait_until(lambda: len(self.requests("get_progress_by_service_id")) > looks + 1, "it goes on")
            waiting.send_signal(signal.SIGTERM)
            self.assertEqual(self.ended(waiting, started)[0], 128 + signal.SIGTERM)

    def test_a_recording_stopped_by_others_has_ended(self):
        waiting, started = self.begin_recording()
        stopped = self.succeed("record", "stop", 1)
        self.assertEqual((stopped["uri"], stopped["stopped"]), (started["uri"], True))
        code, ended = self.ended(waiting, started)
        self.assertEqual((code, ended["complete"], ended["stopped_by"]), (DONE, True, None))

    def test_a_recording_that_was_cut_off_is_a_failure(self):
        waiting, started = self.begin_recording()
        shutil.rmtree(self.device)
        output, errors = waiting.communicate(timeout=HANGS)
        self.assertEqual(waiting.returncode, FAILED)
        self.assertEqual(json.loads(output)["complete"], False)
        self.assertEqual(json.loads(errors)["error"]["message"], "the recording of channel 1 was cut off")
        self.assertEqual(json.loads(output)["uri"], started["uri"])

    def test_a_service_that_ends_is_told(self):
        waiting, _ = self.begin_recording()
        self.control("Vanish", 0)
        code, output, errors = self.finish(waiting)
        self.assertEqual((code, output), (NOT_RUNNING, ""))
        self.assertIn("is not running", json.loads(errors)["error"]["message"])


class Recordings(RecordingTest):
    def test_none_is_an_answer(self):
        self.assertEqual(self.succeed("record", "list"), {"recordings": [], "count": 0})
        self.assertEqual(lines(self.run_pvrctl("record", "list")[1]), {"recordings": "none"})

    def test_are_listed_with_the_timeshift(self):
        self.succeed("record", "start", 1)
        self.succeed("record", "start", 2)
        self.succeed("timeshift", "start", 1)
        found = self.succeed("record", "list")
        self.assertEqual(found["count"], 3)
        for one, channel in zip(found["recordings"], [1, 2, 1]):
            self.assertGreaterEqual(one.pop("seconds"), 0)
            self.assertEqual((one.pop("service_id"), one.pop("state")), (channel, RECORDING))
        self.assertEqual(found["recordings"], [
            {"timeshift": False, "type": NORMAL, "uri": self.uri_of(1)},
            {"timeshift": False, "type": NORMAL, "uri": self.uri_of(2)},
            {"timeshift": True, "type": WATCHED, "uri": str(self.device / "timeshift.tmp")}])
        self.assertRegex(lines(self.run_pvrctl("record", "list")[1])["2"],
                         r"^normal recording \(PS_RECORD_TYPE_NORMAL\), recording \(PS_RECORD_STATE_REC\), \d+ s, "
                         + re.escape(self.uri_of(2)) + "$")

    def test_are_told_in_full(self):
        self.succeed("record", "start", 1)
        uri = self.succeed("record", "start", FAR, "--duration", 77)["uri"]
        handle = int(re.fullmatch(r"\(\[\d+, (\d+)\], 2\)", self.ask_service("get_handle_for_record"))[1])
        found = self.succeed("record", "info", FAR)
        self.assertEqual(found["recording_info"].pop("opaque_16"), found.pop("seconds"))
        self.assertEqual(found, {
            "service_id": FAR, "timeshift": False, "type": NORMAL, "state": RECORDING, "uri": uri, "handle": handle,
            "duration": 77, "inf_uri": uri[:-4] + ".inf",
            "recording_info": {"low_word": FAR & 0xffffffff, "high_word": FAR >> 32, "opaque_8": 0, "opaque_12": 2}})
        table = lines(self.run_pvrctl("record", "info", FAR)[1])
        self.assertEqual((table["handle"], table["duration"], table["info file"]),
                         (str(handle), "77 s", uri[:-4] + ".inf"))

    def test_go_on_while_they_are_looked_at(self):
        self.succeed("record", "start", 1)
        wait_until(lambda: self.seconds_of(1) >= 1, "a second is recorded")

    def test_are_stopped(self):
        uri = self.succeed("record", "start", 1)["uri"]
        stopped = self.succeed("record", "stop", 1)
        self.assertGreaterEqual(stopped.pop("seconds"), 0)
        self.assertEqual(stopped, {"service_id": 1, "uri": uri, "stopped": True})
        self.assertFalse(self.is_running(1))
        self.assertEqual(self.info_of(uri)[1], 1)

    def test_that_do_not_run_are_not_found(self):
        self.succeed("timeshift", "start", 2)
        for channel in 1, 2:
            self.assertEqual(self.fail_with(NOT_FOUND, "record", "stop", channel),
                             f"channel {channel} is not being recorded")
        for verb in "info", "duration":
            with self.subTest(verb=verb):
                self.assertEqual(self.fail_with(NOT_FOUND, "record", verb, 1), "channel 1 is not being recorded")
        self.assertEqual(self.requests("sync_stop_recording"), [])

    def test_their_duration_is_told_and_changed(self):
        self.succeed("record", "start", 1)
        for arguments, duration, text in [([], 0, "until it is stopped"), ([50], 50, "50 s"), ([], 50, "50 s"),
                                          (["--unlimited"], 0, "until it is stopped")]:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.succeed("record", "duration", 1, *arguments),
                                 {"service_id": 1, "duration": duration})
                self.assertEqual(self.ask_service("get_recording_duration_by_service_id", "uint64 1"),
                                 f"({duration}, 0)")
                self.assertEqual(lines(self.run_pvrctl("record", "duration", 1)[1])["duration"], text)
        self.succeed("record", "duration", 1, 50)
        self.assertIn("its duration stays 50 s", self.fail_with(REFUSED, "record", "duration", 1, -5))


class Timeshift(RecordingTest):
    def test_starts_and_stops(self):
        self.assertEqual(self.succeed("timeshift", "start", 1),
                         {"service_id": 1, "uri": str(self.device / "timeshift.tmp"), "type": WATCHED})
        self.assertEqual(self.ask_service("is_timeshifting", "uint64 1"), "(1,)")
        self.assertEqual(self.succeed("record", "info", 1)["timeshift"], True)
        self.assertEqual(self.succeed("timeshift", "stop", 1), {"service_id": 1, "stopped": True})
        self.assertEqual(self.ask_service("is_timeshifting", "uint64 1"), "(0,)")
        self.assertEqual(list(self.device.iterdir()), [])

    def test_stands_beside_a_recording_of_the_channel(self):
        uri = self.succeed("record", "start", 1)["uri"]
        self.assertEqual(self.succeed("timeshift", "start", 1)["uri"], str(self.device / "timeshift.tmp"))
        self.succeed("timeshift", "stop", 1)
        self.assertEqual(self.uri_of(1), uri)

    def test_is_refused_with_the_services_reason(self):
        for channel, reason in (UNKNOWN, 202), (ANALOGUE, 200):
            self.assertEqual(self.fail_with(REFUSED, "timeshift", "start", channel),
                             f"the service does not timeshift channel {channel}; its reason is {reason}")
        self.succeed("timeshift", "start", 1)
        self.assertIn("its reason is 3", self.fail_with(REFUSED, "timeshift", "start", 2))
        self.assertEqual(self.fail_with(REFUSED, "timeshift", "start", 1), "channel 1 is being timeshifted already")

    def test_that_does_not_run_is_not_found(self):
        self.succeed("record", "start", 1)
        self.assertEqual(self.fail_with(NOT_FOUND, "timeshift", "stop", 1), "channel 1 is not being timeshifted")
        self.assertTrue(self.is_running(1))


class OtherRecordings(ScriptedTest):
    ONE = {"get_recording_service_id_list": "([uint64 7], 1)", "get_recording_uri_by_service_id": "('/a.srf',)",
           "get_record_state_by_service_id": "(98, 0, 0)", "get_recording_type_by_service_id": "(99,)",
           "get_progress_by_service_id": "(2, int64 5, int64 0, 0)", "is_recording": "(1,)", "is_timeshifting": "(1,)",
           "get_recording_duration_by_service_id": "(9, 0)"}

    def test_a_start_without_effect_is_a_refusal(self):
        for reason, text in (0, ", and gives no reason"), (-2, "; its reason is -2"):
            self.answer(is_recording="(0,)", is_timeshifting="(0,)", call_app="(0,)",
                        precheck_recording_available=f"({reason},)")
            for what, message in ("record", "record channel 7"), ("timeshift", "timeshift channel 7"):
                with self.subTest(reason=reason, what=what):
                    self.assertEqual(self.fail_with(REFUSED, what, "start", 7), f"the service does not {message}{text}")

    def test_a_reason_that_cannot_be_asked_for_is_told(self):
        self.answer(is_recording="(0,)", call_app="(0,)")
        self.assertIn("'precheck_recording_available' failed", self.fail_with(FAILED, "record", "start", 7))

    def test_a_stop_without_effect_is_a_refusal(self):
        self.answer(**self.ONE, sync_stop_recording="(-2,)", call_app="(0,)")
        self.assertEqual(self.fail_with(REFUSED, "record", "stop", 7), "the service did not stop recording channel 7")
        self.assertEqual(self.fail_with(REFUSED, "timeshift", "stop", 7),
                         "the service did not stop the timeshift of channel 7")

    def test_a_duration_that_stays_is_a_refusal(self):
        self.answer(**self.ONE | {"get_handle_for_record": "([3], 1)", "get_recording_uri": "('/a.srf',)"},
                    set_recording_duration_by_service_id="(0,)", change_recording_duration_unlimited="(-2,)")
        self.assertEqual(self.fail_with(REFUSED, "record", "duration", 7, 8),
                         "the service does not record channel 7 for 8 s; its duration stays 9 s")
        self.assertEqual(self.fail_with(REFUSED, "record", "duration", 7, "--unlimited"),
                         "the service does not record channel 7 until it is stopped")

    def test_one_without_a_handle_is_told_all_the_same(self):
        self.answer(**self.ONE | {"get_handle_for_record": "([3], 1)", "get_recording_uri": "('/b.srf',)"})
        found = self.succeed("record", "info", 7)
        self.assertEqual((found["handle"], found["uri"], "inf_uri" in found), (None, "/a.srf", False))
        self.fail_with(NOT_FOUND, "record", "duration", 7, "--unlimited")

    def test_numbers_without_a_name_are_told(self):
        self.answer(**self.ONE)
        self.assertEqual(self.succeed("record", "list"), {"count": 1, "recordings": [
            {"service_id": 7, "timeshift": False, "type": {"code": 99, "name": None},
             "state": {"code": 98, "name": None}, "seconds": 5, "uri": "/a.srf"}]})
        self.assertEqual(self.run_pvrctl("record", "list")[1], "7  type 99, state 98, 5 s, /a.srf\n")

    def test_one_that_has_ended_meanwhile_is_left_out(self):
        for answers in ({"get_recording_uri_by_service_id": "('',)"}, {"get_record_state_by_service_id": "(0, 0, -2)"},
                        {"get_recording_service_id_list": "(@at [], 0)"}):
            self.answer(**self.ONE | answers)
            self.assertEqual(self.succeed("record", "list")["count"], 0)

    def test_a_channel_that_is_listed_twice_is_told_once_without_its_handles(self):
        self.answer(**self.ONE | {"get_recording_service_id_list": "([uint64 7, 7], 2)"})
        self.assertEqual(self.succeed("record", "list")["count"], 1)

    def test_places_are_harmless_to_a_terminal(self):
        self.answer(**self.ONE | {"get_recording_uri_by_service_id": r"('/\u001b[2J.srf',)"})
        self.assertIn(r"/\x1b[2J.srf", self.run_pvrctl("record", "list")[1])
        self.assertEqual(self.succeed("record", "list")["recordings"][0]["uri"], "/\x1b[2J.srf")


if __name__ == "__main__":
    main()
