"""What each command of pvrctl does, seen by a second look at the development service."""
import itertools
import os
import pty
import re

from pvrctl_case import (DONE, FAILED, FF_1, FRAME_STEP, PAUSE, PLAY, RECORDED, REFUSED, REW_1, SandboxedTest, lines,
                         main)

TYPES = {"2": 1, "4": 2, "8": 3, "16": 4, "32": 5, "64": 6, "128": 7, "1/2": 8, "1/4": 9, "1/8": 10}


class PlayStart(SandboxedTest):
    def test_plays_a_recording_on_a_handle_of_its_own(self):
        started = self.succeed("play", "start", self.recording)
        self.assertEqual(self.uri(started["handle"]), str(self.recording))
        self.assertEqual(self.state(started["handle"])[0], PLAY)
        self.assertEqual(started.pop("absolute_second") - started.pop("relative_second"), RECORDED - 300)
        self.assertEqual(started, {"handle": 1, "uri": str(self.recording),
                                   "state": {"code": 1, "name": "PLAY_STATE_PLAY"}})

    def test_starts_where_it_is_told(self):
        handle = self.start("--from", 123)
        self.assertEqual(self.requests("play_start"), [[handle, 123]])
        self.assertGreaterEqual(self.state(handle)[1], 123)

    def test_plays_on_the_handle_it_is_told(self):
        first = self.succeed("handle", "get")["handle"]
        self.assertEqual(self.start("--handle", first), first)
        self.assertEqual(self.requests("get_handle_for_playback"), [])
        self.assertEqual(self.uri(first), str(self.recording))

    def test_makes_the_path_absolute_and_resolves_links(self):
        (self.folder / "link").symlink_to("first.srf")
        started = self.succeed("play", "start", "./link")
        self.assertEqual((started["uri"], self.uri(1)), (str(self.recording),) * 2)

    def test_takes_the_name_of_a_verb_for_a_file(self):
        self.recording.rename(self.folder / "pause")
        self.assertIn("does not play", self.fail_with(REFUSED, "play", "start", "pause"))

    def test_gives_the_handle_back_when_the_service_refuses(self):
        for arguments in ["/dev/null"], [self.recording, "--from", -1]:
            with self.subTest(arguments=arguments):
                self.assertIn("does not play", self.fail_with(REFUSED, "play", "start", *arguments))
        self.assertEqual(self.requests("release_handle"), [[1], [2]])

    def test_gives_the_handle_back_when_the_call_fails(self):
        self.control("FailMethod", "play_start", "org.example.Planted", "planted", 1)
        self.fail_with(FAILED, "play", "start", self.recording)
        self.assertEqual(self.requests("release_handle"), [[1]])

    def test_keeps_a_handle_that_it_was_given(self):
        handle = self.paused()
        self.fail_with(REFUSED, "play", "start", self.recording, "--handle", handle, "--from", -1)
        self.fail_with(REFUSED, "play", "start", "/dev/null", "--handle", handle)
        self.assertEqual(self.requests("release_handle"), [])
        self.assertEqual(self.state(handle), (PAUSE, 100))

    def test_refuses_an_unknown_handle(self):
        self.fail_with(REFUSED, "play", "start", self.recording, "--handle", 77)


class PlayControls(SandboxedTest):
    def test_each_leads_to_its_state(self):
        handle = self.start("--from", 100)
        for verb, method, state, name in [("pause", "play_pause", PAUSE, "PLAY_STATE_PAUSE"),
                                          ("step", "step_frame", FRAME_STEP, "PLAY_STATE_FRAME_STEP"),
                                          ("resume", "play_resume", PLAY, "PLAY_STATE_PLAY")]:
            with self.subTest(verb=verb):
                self.assertEqual(self.succeed("play", verb, handle)["state"], {"code": state, "name": name})
                self.assertEqual(self.state(handle)[0], state)
                self.assertEqual(self.requests(method), [[handle]])

    def test_winding_takes_every_speed(self):
        handle = self.succeed("handle", "get")["handle"]
        for (verb, first), (speed, number) in itertools.product([("forward", FF_1), ("rewind", REW_1)], TYPES.items()):
            with self.subTest(verb=verb, speed=speed):
                self.start("--from", 150, "--handle", handle)
                found = self.succeed("play", verb, handle, "--speed", speed)
                self.assertEqual(self.requests("play_" + verb)[-1], [handle, number])
                if speed not in ("16", "32", "64", "128"):  # those may have reached an end by now
                    self.assertEqual((found["state"]["code"], self.state(handle)[0]), (first + number - 1,) * 2)

    def test_winding_is_twice_as_fast_unless_told_otherwise(self):
        handle = self.start("--from", 100)
        self.assertEqual(self.succeed("play", "forward", handle)["state"]["name"], "PLAY_STATE_FF_1")
        self.assertEqual(self.succeed("play", "rewind", handle)["state"]["name"], "PLAY_STATE_REW_1")
        self.assertEqual(self.state(handle)[0], REW_1)

    def test_winding_sends_the_services_own_number_as_it_is(self):
        handle = self.start("--from", 100)
        for verb, first in ("forward", FF_1), ("rewind", REW_1):
            self.assertEqual(self.succeed("play", verb, handle, "--type", 3)["state"]["code"], first + 2)
            self.succeed("play", "resume", handle)
            self.assertIn("did not do it", self.fail_with(REFUSED, "play", verb, handle, "--type", 2147483647))
            self.assertEqual(self.requests("play_" + verb), [[handle, 3], [handle, 2147483647]])

    def test_skipping_reaches_its_place(self):
        handle = self.paused()
        for arguments, sent, position in [(["--to", 30], [0, 30, 0], 30), (["--by", 15], [1, 15, 0], 45),
                                          (["--by", "+5"], [1, 5, 0], 50), (["--by", -20], [2, 20, 0], 30),
                                          (["--by=-20"], [2, 20, 0], 10), (["--percent", 50], [3, 0, 50], 150)]:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.succeed("play", "skip", handle, *arguments)["relative_second"], position)
                self.assertEqual(self.requests("play_skip")[-1], [handle, *sent])
                self.assertEqual(self.state(handle)[1], position)

    def test_a_handle_that_plays_nothing_is_refused_and_left_alone(self):
        idle = self.succeed("handle", "get")["handle"]
        verbs = [["pause"], ["resume"], ["step"], ["forward"], ["rewind"], ["skip", "--to", 1], ["stop"]]
        for handle, (verb, *options) in itertools.product((idle, 77), verbs):
            with self.subTest(handle=handle, verb=verb):
                message = self.fail_with(REFUSED, "play", verb, handle, *options)
                self.assertEqual(message, f"nothing plays on handle {handle}")
        methods = set(re.findall(r"'(\w+)', ", self.control("ListCalls", 0)))
        self.assertEqual(methods, {"get_handle", "get_playback_uri_by_handle", "get_progress"})


class PlayStop(SandboxedTest):
    def test_stops_a_playback_and_gives_its_handle_back(self):
        handle = self.start()
        self.assertEqual(self.succeed("play", "stop", handle),
                         {"handle": handle, "uri": str(self.recording), "stopped": True, "released": True})
        self.assertEqual(self.uri(handle), "")
        self.assertEqual((self.requests("play_stop"), self.requests("release_handle")), ([[handle]], [[handle]]))

    def test_stops_whatever_plays(self):
        handle = self.start()
        self.assertEqual(self.succeed("play", "stop", "--all"), {"stopped": True})
        self.assertEqual(self.uri(handle), "")
        self.assertRegex(self.control("ListCalls", 0), r"'sync_stop_playing', .*'pvrctl'>?, <?0\b")

    def test_stops_the_playback_of_a_file_even_when_it_is_gone(self):
        handle = self.start()
        self.fail_with(REFUSED, "play", "stop", "--file", "other.srf")
        self.assertEqual(self.uri(handle), str(self.recording))
        self.recording.unlink()
        self.assertEqual(self.succeed("play", "stop", "--file", "first.srf"),
                         {"uri": str(self.recording), "stopped": True})
        self.assertEqual(self.uri(handle), "")
        self.fail_with(REFUSED, "play", "stop", "--file", "first.srf")


class Handles(SandboxedTest):
    def test_are_issued_and_given_back(self):
        handle = self.succeed("handle", "get")
        self.assertEqual((handle, self.requests("get_handle")), ({"handle": 1}, [[]]))
        self.assertEqual(self.succeed("handle", "release", 1), {"handle": 1, "released": True})
        self.assertEqual(self.requests("release_handle"), [[1]])

    def test_of_recordings_are_listed(self):
        self.assertEqual(self.succeed("handle", "list"), {"handles": [], "count": 0})
        self.succeed("record", "start", 1)
        handle = self.succeed("record", "info", 1)["handle"]
        self.assertEqual(self.succeed("handle", "list"), {"handles": [handle], "count": 1})

    def test_may_be_any_number(self):
        for handle in -2147483648, -1, 0, 2147483647:
            with self.subTest(handle=handle):
                self.succeed("handle", "release", handle)
                self.assertEqual(self.requests("release_handle")[-1], [handle])

    def test_are_given_back_when_they_cannot_be_told(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            self.run_pvrctl("handle", "get", stdout=full)
        self.assertEqual(self.requests("release_handle"), [[1]])


class Status(SandboxedTest):
    IDLE = {"bus": True, "records": True, "play_state": {"code": 0, "name": "PLAY_STATE_NONE"},
            "record_state": {"code": 0, "name": "PS_RECORD_STATE_STOP"}, "recordings": [], "watched_channel": 1,
            "default_device": {"handle": 1, "name": "usb1"}}

    def owner(self):
        answer = self.ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus.GetNameOwner", "org.vexan.tv.pvr.server")
        return re.fullmatch(r"\('(.*)',\)", answer)[1]

    def test_tells_of_the_service(self):
        self.assertEqual(self.succeed("status"), self.IDLE | {"service": self.owner()})

    def test_tells_of_a_playback(self):
        handle = self.paused()
        state = {"code": PAUSE, "name": "PLAY_STATE_PAUSE"}
        found = self.succeed("status", handle)
        self.assertEqual(found, self.IDLE | {
            "service": self.owner(), "play_state": state, "watched_channel": None,
            "playback": {"handle": handle, "uri": str(self.recording), "state": state, "relative_second": 100,
                         "absolute_second": RECORDED - 200}})

    def test_tells_of_recordings(self):
        self.succeed("record", "start", 1)
        self.succeed("timeshift", "start", 1)
        self.control("Tune", 2)
        found = self.succeed("status")
        self.assertEqual(found["record_state"], {"code": 2, "name": "PS_RECORD_STATE_REC"})
        self.assertEqual([(one["service_id"], one["timeshift"]) for one in found["recordings"]],
                         [(1, False), (1, True)])
        self.assertEqual(found["watched_channel"], 2)
        table = lines(self.run_pvrctl("status")[1])
        self.assertEqual((table["recordings"], table["watched"], table["records to"]),
                         ("channel 1, channel 1 as a timeshift", "channel 2", "device 1, usb1"))

    def test_tells_when_there_is_no_device(self):
        self.device.rmdir()
        self.assertIsNone(self.succeed("status")["default_device"])
        self.assertEqual(lines(self.run_pvrctl("status")[1])["records to"], "no device")

    def test_of_a_handle_that_plays_nothing_is_an_answer(self):
        self.assertEqual(self.succeed("status", 77)["playback"]["uri"], "")

    def test_is_a_table_for_people(self):
        handle = self.paused()
        code, output, errors = self.run_pvrctl("status", handle)
        self.assertEqual((code, errors), (DONE, ""))
        table = lines(output)
        self.assertRegex(table.pop("position"), r"^100 s, recorded \d{4}-\d\d-\d\d \d\d:\d\d:\d\d$")
        self.assertEqual(table, {
            "bus": "reachable", "service": "running, as " + self.owner(), "records": "yes",
            "play state": "paused (PLAY_STATE_PAUSE)", "record state": "no recording (PS_RECORD_STATE_STOP)",
            "recordings": "none", "watched": "no channel", "records to": "device 1, usb1",
            "handle": str(handle), "recording": str(self.recording), "state": "paused (PLAY_STATE_PAUSE)"})

    def test_looks_the_same_on_a_terminal(self):
        handle = self.paused()
        for arguments in ["status", str(handle)], ["status", "--json"], ["play", "skip", "--help"]:
            with self.subTest(arguments=arguments):
                piped = self.run_pvrctl(*arguments)[1]
                terminal, its_end = pty.openpty()
                self.assertEqual(self.run_pvrctl(*arguments, stdout=its_end)[0], DONE)
                os.close(its_end)
                with open(terminal, "rb", buffering=0) as screen:
                    shown = screen.read(65536).decode()
                self.assertEqual(shown.replace("\r\n", "\n"), piped)


if __name__ == "__main__":
    main()
