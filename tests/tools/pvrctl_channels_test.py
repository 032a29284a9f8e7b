"""Channels and shared values, seen by a second look at the development service, and with services that behave
otherwise."""
import re

from pvrctl_case import DONE, FAILED, NOT_FOUND, REFUSED, SandboxedTest, ScriptedTest, lines, main

SCRAMBLED, FAR = 4294967303, 9223372036854775816
UNKNOWN = {method: "(-2,)" for method in ("is_no_signal_channel", "is_child_lock_channel", "is_analog_channel",
                                          "is_audio_only_channel", "is_recording", "is_timeshifting", "get_av_status")}


class Channels(SandboxedTest):
    FIRST = {"service_id": 1, "name": "First", "major": 1, "minor": 1, "kind": "television", "signal": True,
             "locked": False, "analogue": False, "audio_only": False, "recorded": False, "timeshifted": False,
             "av_status": 3, "watched": True}

    def test_are_described(self):
        # The programme may change between the two looks.
        told = {self.ask_service("get_channel_info", "uint64 1")}
        found = self.succeed("channel", "info", 1)
        told.add(self.ask_service("get_channel_info", "uint64 1"))
        programme = found.pop("programme")
        self.assertEqual(found, self.FIRST)
        self.assertIn(programme, [{"title": match[3], "start_time": int(match[1]), "end_time": int(match[2])}
                                  for match in (re.search(r"<uint32 (\d+)>,\), \(<uint32 (\d+)>,\), .*, \(<'(.*)'>,\)",
                                                          text) for text in told)])

    def test_are_a_table_for_people(self):
        self.succeed("record", "start", 1)
        table = lines(self.run_pvrctl("channel", "info", 1)[1])
        self.assertRegex(table.pop("programme"), r"^\w[\w ]+(, \d{4}-\d\d-\d\d \d\d:\d[05]:00){2}$")
        self.assertEqual(table, {"channel": "1", "name": "First", "number": "1-1", "kind": "television",
                                 "signal": "yes", "locked": "no", "recorded": "yes", "timeshifted": "no",
                                 "watched": "yes"})

    def test_that_tell_no_programme_say_so(self):
        self.assertEqual(lines(self.run_pvrctl("channel", "info", 4)[1])["programme"], "none")

    def test_are_listed_with_what_is_special(self):
        code, output, errors = self.run_pvrctl("channel", "list", 1, 3, 4, 5, 6, SCRAMBLED, FAR)
        self.assertEqual((code, errors), (DONE, ""))
        self.assertEqual(lines(output), {
            "1": "First, 1-1, television, watched", "3": "Radio Three, 3-1, radio",
            "4": "Analogue Four, 4-0, analogue", "5": "Locked Five, 5-1, television, locked",
            "6": "Dark Six, 6-1, television, no signal", str(SCRAMBLED): "Scrambled Seven, 7-1, television",
            str(FAR): "Far Eight, 8-2, television"})
        self.assertEqual(self.succeed("channel", "list", FAR)["channels"][0]["service_id"], FAR)

    def test_without_service_ids_are_those_watched_and_recorded(self):
        self.assertEqual([one["service_id"] for one in self.succeed("channel", "list")["channels"]], [1])
        self.succeed("record", "start", 1)
        self.succeed("record", "start", 2)
        self.succeed("timeshift", "start", 2)
        self.assertEqual([(one["service_id"], one["recorded"], one["timeshifted"])
                          for one in self.succeed("channel", "list")["channels"]], [(1, True, False), (2, True, True)])
        self.succeed("record", "stop", 1)
        self.succeed("record", "stop", 2)
        self.succeed("timeshift", "stop", 2)
        self.start()  # a playback: no channel is watched
        self.assertEqual(self.succeed("channel", "list"), {"channels": [], "count": 0})
        self.assertEqual(lines(self.run_pvrctl("channel", "list")[1]), {"channels": "none is watched or recorded"})

    def test_that_are_not_there_are_not_found(self):
        self.assertEqual(self.fail_with(NOT_FOUND, "channel", "info", 99), "there is no channel 99")
        self.assertEqual(self.fail_with(NOT_FOUND, "channel", "list", 1, 99, 2), "there is no channel 99")


class OtherChannels(ScriptedTest):
    def told(self, name, title):
        self.answer(**UNKNOWN, get_channel_info=f"([(<7>,), (<0>,), (<uint32 0>,), (<uint32 0>,), (<'{name}'>,), "
                                                f"(<'{title}'>,)], 0)")

    def test_texts_are_harmless_to_a_terminal(self):
        self.told(r"a\nb", r"\u001b[31m")
        table = lines(self.run_pvrctl("channel", "info", 7)[1])
        self.assertEqual((table["name"], table["programme"], table["signal"]),
                         (r"a\x0ab", r"\x1b[31m", "unknown, the service answers -2"))
        self.assertEqual(lines(self.run_pvrctl("channel", "list", 7)[1]), {"7": r"a\x0ab, 7-0, television"})

    def test_a_text_cut_within_a_character_is_still_json(self):
        self.told("x" + "ä" * 200, "ä" * 200)
        found = self.succeed("channel", "info", 7)
        self.assertEqual((found["name"], found["programme"]["title"]), ("x" + "ä" * 126 + "\ufffd", "ä" * 127))

    def test_answers_that_are_neither_yes_nor_no_are_kept(self):
        self.answer(**UNKNOWN | {"is_no_signal_channel": "(5,)"}, get_channel_info="(@a(v) [], 0)")
        found = self.succeed("channel", "info", 7)
        self.assertEqual((found["signal"], found["locked"], found["name"]), (5, -2, ""))

    def test_a_call_that_fails_ends_the_list(self):
        self.answer()
        self.assertIn("'get_channel_info' failed", self.fail_with(FAILED, "channel", "list", 1, 2))


class SharedValues(SandboxedTest):
    def test_keep_all_64_bits(self):
        for value in -2 ** 63, -1, 0, 2 ** 63 - 1:
            self.assertEqual(self.succeed("share", "set", -5, value), {"type": -5, "value": value})
            self.assertEqual(self.succeed("share", "get", -5), {"type": -5, "value": value})
        self.assertEqual(self.ask_service("get_share_data", "int32 -5"), f"(int64 {2 ** 63 - 1}, 1)")
        self.assertEqual(lines(self.run_pvrctl("share", "get", -5)[1]), {"type": "-5", "value": str(2 ** 63 - 1)})

    def test_that_nobody_has_set_are_not_found(self):
        self.assertEqual(self.fail_with(NOT_FOUND, "share", "get", 3), "the service has no value of type 3")


class OtherSharedValues(ScriptedTest):
    def test_only_1_is_success(self):
        for result in 0, -2, 2:
            self.answer(set_share_data=f"({result},)", get_share_data=f"(int64 4, {result})")
            self.assertEqual(self.fail_with(REFUSED, "share", "set", 3, 4),
                             "the service did not take the value of type 3")
            self.fail_with(NOT_FOUND, "share", "get", 3)

    def test_a_call_that_fails_is_no_refusal(self):
        self.answer()
        self.assertIn("'set_share_data' failed", self.fail_with(FAILED, "share", "set", 3, 4))


if __name__ == "__main__":
    main()
