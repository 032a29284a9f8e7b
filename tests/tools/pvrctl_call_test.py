"""pvrctl call: that every function of the library can be called, and that what it sends reaches the service."""
import json
import pathlib
import re
import signal
import xml.etree.ElementTree

from pvrctl_case import (DONE, FAILED, HANGS, NOT_FOUND, NOT_RECORDING, NOT_RUNNING, REFUSED, TIME_OUT, USAGE,
                         PvrctlTest, SandboxedTest, ScriptedTest, lines, main)

TREE = pathlib.Path(__file__).resolve().parents[2]
WIDE = "is not between -2147483648 and 2147483647"
# What is sent under another name or with other arguments than the function's own, which are A to E here.
SENT = {
    "svc_pvr_stop_playing_sync": ["sync_stop_playing", "A", 1],
    "svc_pvr_stop_playing_sync_ex": ["sync_stop_playing", "A", "B"],
    "svc_pvr_start_recording": ["call_app", 0, "A", "B", "C", 0],
    "svc_pvr_start_recording_ex": ["call_app", 0, "A", "B", "C", "D"],
    "svc_pvr_start_timeshift": ["call_app", 1, "A", "B", "C", 0],
    "svc_pvr_stop_recording": ["call_app", 2, "A", 0, "C", 0],
    "svc_pvr_stop_timeshift": ["call_app", 3, "A", 0, "C", 0],
    "svc_pvr_stop_timeshift_without_service_id": ["call_app", 7, 0, 0, "B", 0],
    "svc_pvr_set_record_duration": ["call_app", 4, "A", "B", "", 0],
    "svc_pvr_stop_pvr_sync": ["sync_stop_pvr", "A", "B"],
    "svc_pvr_stop_reocrding_sync": ["sync_stop_recording", "A", "B"],
    "svc_pvr_get_remaining_time": ["get_default_rec_device"],
    "svc_pvr_get_recording_no_ts_service_id_list": ["get_recording_service_id_list"],
    "svc_pvr_pre_channel_change_on_recording": ["is_change_available_on_recording", "A"],
    "svc_pvr_is_ch_change_available_on_recording": ["is_change_available_on_recording", "A"],
    "svc_pvr_set_change_channel_result": ["set_change_channel_flag", "A"],
    "svc_pvr_inform_third_part_result": ["inform_third_part", "B", "C", "D", "A", "E"],
    "svc_pvr_get_rec_dev_total": ["get_record_dev_total"],
    "svc_pvr_get_default_rec_dev_name": ["get_rec_device_name"],
    "svc_pvr_get_rec_product_name": ["get_product_name", "A"],
    "svc_pvr_get_rec_dev_capacity": ["get_rec_dev_capacity"],
    "svc_pvr_is_need_performance_test": ["is_need_performance_test", 0],
    "svc_pvr_delete_segment_file": ["delete_segment_record", "A"],
    "svc_pvr_make_thumbnail_file": ["make_thumbnail_file", "A", "B", "D", "C"],
    "svc_pvr_set_pvr_file_info_ex": ["set_pvr_file_info", "A.inf", "", 1],
    "svc_pvr_write_sas_file": ["set_fp_rec_time", "A", "B"],
}
for lists in "get_handle_for_record", "get_recording_service_id_list":
    SENT["svc_pvr_" + lists] = [lists]
# What the library answers by itself, although the service has a method of that name or might have.
SILENT = re.compile(r"get_size_of_|Is|Get[A-Z]|svc_pvr_(service_|register_|unregister_|read_sas_file|get_yuv_info|"
                    r"get_pvr_file_info|is_audio_only$|is_file_recorded_local|get_err_text|play_stop_all|record_pause|"
                    r"record_resume|get_handle_for_sportsmode|is_available_device|is_blocked_by|is_this_whole_file|"
                    r"get_expired|is_thumbnail_valid|get_ci_thumb_type|get_content_info|\w*highlight|is_notify_game|"
                    r"get_sports_type|is_sports_mode|send_thumbnail_request|\w*bookmark|get_mls_|can_show_|"
                    r"is_show_record_banner)|svr_pvr_clear_thumbnail_callback")


def without_comments(text):
    return re.sub(r"/\*.*?\*/", " ", text, flags=re.DOTALL)


def declared():
    """The functions of the public headers: name and prototype, as pvrctl spells types."""
    found = {}
    for header in sorted((TREE / "include").glob("*.h")):
        text = without_comments(header.read_text())
        for result, name, parameters in re.findall(
                r"PVR_API\s+(?:PVR_RETIRED\s+)?(\w[\w\s]*?)\s*\b(\w+)\(([^)]*)\)", text):
            parameters = re.sub(r"\b(long )?long\b", "int64_t", " ".join(parameters.split()))
            found[name] = f"{result} {name}({parameters})"
    return found


class CallList(PvrctlTest):
    """Without a bus."""

    def functions(self, *part):
        found = self.succeed("call", "--list", *part)
        self.assertEqual(found["count"], len(found["functions"]))
        return found["functions"]

    def test_has_every_function_that_the_headers_declare_as_they_declare_it(self):
        functions = declared()
        self.assertGreater(len(functions), 150)
        self.assertEqual({one["name"]: one["prototype"] for one in self.functions()}, functions)

    def test_has_every_symbol_that_the_library_exports(self):
        exported = (TREE / "tests" / "abi" / "exported-symbols.txt").read_text().split()
        self.assertEqual(sorted(one["symbol"] for one in self.functions()), exported)

    def test_knows_what_is_retired(self):
        headers = " ".join(header.read_text() for header in (TREE / "include").glob("*.h"))
        self.assertEqual(sorted(one["name"] for one in self.functions() if one["retired"]),
                         sorted(re.findall(r"PVR_RETIRED int (\w+)\(", headers)))

    def test_is_one_prototype_a_line_for_people(self):
        code, output, errors = self.run_pvrctl("call", "--list")
        self.assertEqual((code, errors), (DONE, ""))
        self.assertEqual(sorted(output.splitlines()), sorted(declared().values()))

    def test_is_narrowed_by_a_part_of_names(self):
        self.assertEqual([one["name"] for one in self.functions("play_skip")], ["svc_pvr_play_skip"])
        self.assertIn("'wobble'", self.fail_with(NOT_FOUND, "call", "--list", "wobble"))

    def test_tells_what_is_given_and_what_is_handed_out(self):
        function, = self.functions("get_share_data")
        self.assertEqual((function["arguments"], function["outputs"]),
                         ([{"name": "share_data_type", "type": "int"}], [{"name": "value", "type": "int64_t *"}]))

    def test_help_behind_a_name_explains_the_function(self):
        code, output, errors = self.run_pvrctl("call", "svc_pvr_get_share_data", "--help")
        self.assertEqual((code, errors), (DONE, ""))
        for line in ["  int svc_pvr_get_share_data(int share_data_type, int64_t *value)",
                     "  pvrctl call svc_pvr_get_share_data share_data_type", "  hands out: value"]:
            self.assertIn(line, output.splitlines())


class CallLine(PvrctlTest):
    """Without a bus: a line that is right ends with 4, one that is wrong with 2."""

    def test_what_is_wrong_is_told_with_what_is_expected(self):
        start, usage = "svc_pvr_play_start", "It goes 'pvrctl call svc_pvr_play_start handle uri start_pos', for int"
        for arguments, message in [
                ([], "NAME is required"),
                (["svc_pvr_wobble"], "'svc_pvr_wobble' is no function of the library"),
                ([start], "svc_pvr_play_start takes 3 arguments, not 0. " + usage),
                ([start, 1, "a"], "takes 3 arguments, not 2. " + usage),
                ([start, 1, "a", 2, 3], "takes 3 arguments, not 4. " + usage),
                ([start, "x", "a", 2], "handle: 'x' is no whole number, in decimal or with 0x. " + usage),
                *(([start, 1, "a", bad], f"start_pos: '{bad}' is no whole number") for bad in
                  ("", "0x", "1.0", " 1", "1 ", "+-1", "0xg", "one")),
                ([start, 2147483648, "a", 2], f"handle: '2147483648' {WIDE}"),
                ([start, -2147483649, "a", 2], f"handle: '-2147483649' {WIDE}"),
                ([start, "0xffffffff", "a", 2], f"handle: '0xffffffff' {WIDE}"),
                (["svc_pvr_is_recording", -1], "'-1' is not between 0 and 18446744073709551615"),
                (["svc_pvr_is_recording", 2 ** 64], "is not between 0 and 18446744073709551615"),
                (["svc_pvr_set_share_data", 1, 2 ** 63], "'9223372036854775808' is not between -9223372036854775808"),
                (["svc_pvr_get_handle", 1], "svc_pvr_get_handle takes 0 arguments, not 1"),
                (["svc_pvr_write_sas_file", "a.srf", 1, "0g"], "buf: '0g' is not two hexadecimal digits for each byte"),
                (["svc_pvr_write_sas_file", "a.srf", 1, "012"], "buf: '012' is not two hexadecimal digits"),
                (["svc_pvr_set_pvr_file_info_ex"], "takes 1 argument or more, not 0"),
                (["svc_pvr_set_pvr_file_info_ex", "a.srf", "major"], "info: CHANGE: 'major' is not FIELD=VALUE"),
                (["svc_pvr_set_pvr_file_info_ex", "a.srf", "wobble=1"], "'wobble' is no field"),
                (["svc_pvr_set_pvr_file_info_ex", "a.srf", "major=65536"], "'65536' is not between 0 and 65535"),
                (["svc_pvr_set_pvr_file_info_ex", "a.srf", '{"major":'], "info: what begins with { is not JSON"),
                *((["svc_pvr_set_pvr_file_info_ex", "a.srf", '{"major":' + opened * depth + "1" + closed * depth + "}"],
                   "info: major takes a number, a text or a list of numbers, not what is in lists or in an object")
                  for opened, closed, depth in
                  [("[", "]", 2), ("[", "]", 65000), ('{"a":', "}", 1), ('{"a":', "}", 20000)]),
                (["svc_pvr_get_handle", "--timeout", 1], "--timeout and --count are for what registers a callback"),
                (["svc_pvr_register_signal_cb", "--count", 0], "--count: '0' is not between 1 and 2147483647"),
                (["--list", "a", "--wobble"], "--wobble")]:
            with self.subTest(arguments=arguments):
                self.assertIn(message, self.fail_with(USAGE, "call", *arguments))

    def test_numbers_are_taken_over_their_whole_width(self):
        for number in -2147483648, "+2147483647", "0x7fffffff", "-0x80000000", "-0", "007":
            self.fail_with(NOT_RUNNING, "call", "svc_pvr_play_pause", number)
        for number in 2 ** 64 - 1, "0xFFFFFFFFFFFFFFFF", "-0":
            self.fail_with(NOT_RUNNING, "call", "svc_pvr_is_recording", number)

    def test_what_needs_no_service_is_answered_without_a_bus(self):
        for name, arguments, returned in [("get_size_of_pvr_file_info", [], 10905), ("svc_pvr_is_sports_mode", [], 0),
                                          ("IsFileRecordedLocal", ["[a,b]"], 7), ("IsATSC3Url", ["a.srf"], 0),
                                          ("_Z10IsATSC3UrlPKc", ["a.srf"], 0), ("svc_pvr_get_recording_time", [], 0),
                                          ("svc_pvr_get_last_bookmark", [""], 0)]:
            with self.subTest(name=name):
                self.assertEqual(self.succeed("call", name, *arguments)["returned"], returned)

    def test_a_function_that_says_it_failed_fails(self):
        shown = '{"function":"svc_pvr_get_highlight_player_flag","returned":-2,"outputs":{"flag":0}}\n'
        self.assertIn("returned -2", self.fail_with(FAILED, "call", "svc_pvr_get_highlight_player_flag", data=shown))

    def test_what_is_not_written_is_told_from_zero(self):
        self.assertEqual(self.succeed("call", "svc_pvr_get_handle_for_sportsmode", 1, 2)["outputs"], {"handle": None})
        table = lines(self.run_pvrctl("call", "svc_pvr_get_handle_for_sportsmode", 1, 2)[1])
        self.assertEqual(table["handle"], "not written")

    def test_a_product_that_does_not_record_is_told(self):
        platform = self.folder / "platform.conf"
        platform.write_text("[custom-bool]\ncom.brimmel/featureconf/pvr.pvr_support=false\n")
        self.environment["PVR_PLATFORM_CONFIG"] = str(platform)
        shown = '{"function":"svc_pvr_unregister_signal_cb","returned":-2,"outputs":{}}\n'
        self.fail_with(NOT_RECORDING, "call", "svc_pvr_unregister_signal_cb", data=shown)


class CallEveryFunction(SandboxedTest):
    def file(self, name):
        """A path that no other function is given, with the info file of a recording that is finished."""
        info = bytearray(10905)
        info[0], info[10627] = 20, 1
        (self.folder / (name + ".inf")).write_bytes(info)
        return f"{self.folder}/{name}.srf"

    def arguments(self, function):
        """One of the right type for each parameter that is given, all of them different."""
        made = {"const char *": lambda place: self.file(f"{function['name']}{place}"), "const void *": lambda _: "00ff",
                "pvr_file_info_s *": lambda _: "major=3"}
        return [made.get(parameter["type"], lambda place: 100 + place)(place)
                for place, parameter in enumerate(function["arguments"])]

    def expected(self, name, arguments):
        method, *values = SENT.get(name, [name.removeprefix("svc_pvr_"), *arguments])
        given = dict(zip("ABCDE", arguments)) | {"A.inf": str(arguments[:1]).strip("[']").replace(".srf", ".inf")}
        return method, [given.get(value, value) if name in SENT else value for value in values]

    def test_arrives_with_its_arguments_or_sends_nothing(self):
        methods = {method.get("name") for method in
                   xml.etree.ElementTree.parse(TREE / "interface" / "org.vexan.tv.pvr.xml").iter("method")}
        number, arrived = 0, set()
        for function in self.succeed("call", "--list")["functions"]:
            name = function["name"]
            with self.subTest(name=name):
                arguments = self.arguments(function)
                code, output, errors = self.run_pvrctl("--json", "call", name, *arguments)
                self.assertIn(code, (DONE, FAILED, REFUSED), errors)
                told = json.loads(output)
                self.assertEqual(told["function"], name)
                self.assertEqual(list(told["outputs"]), [one["name"] for one in function["outputs"]])
                calls = self.succeed("sim", "calls", "--after", number)["calls"]
                number = calls[-1]["number"] if calls else number
                if function["retired"] or SILENT.match(name):
                    self.assertEqual(calls, [])
                    continue
                self.assertTrue(calls, "nothing arrived")
                self.assertEqual((calls[0]["method"], calls[0]["arguments"]), self.expected(name, arguments))
                arrived |= {call["method"] for call in calls}
        self.assertEqual(arrived, methods)


class Call(SandboxedTest):
    def test_prints_what_is_returned_and_handed_out(self):
        self.assertEqual(self.succeed("call", "svc_pvr_get_default_rec_dev_name"),
                         {"function": "svc_pvr_get_default_rec_dev_name", "returned": 0,
                          "outputs": {"dev_name": "usb1"}})
        code, output, errors = self.run_pvrctl("call", "svc_pvr_get_channel_info", 1)
        self.assertEqual((code, errors), (DONE, ""))
        table = lines(output)
        self.assertEqual((table["function"], table["returned"], table["info.channel_name"]),
                         ("svc_pvr_get_channel_info", "0", "First"))

    def test_numbers_of_64_bits_keep_their_sign_and_all_digits(self):
        for value in -2 ** 63, 2 ** 63 - 1, -1:
            self.succeed("call", "svc_pvr_set_share_data", 5, value)
            self.assertEqual(self.succeed("call", "svc_pvr_get_share_data", 5)["outputs"], {"value": value})

    def test_a_list_has_as_many_elements_as_there_is_room_for(self):
        self.succeed("record", "start", 1)
        self.succeed("record", "start", 2)
        for room, found in (0, []), (1, [1]), (5, [1, 2]), (-1, []):
            with self.subTest(room=room):
                self.assertEqual(self.succeed("call", "svc_pvr_get_recording_service_id_list", room)["outputs"],
                                 {"list": found, "count": 2})
        self.fail_with(USAGE, "call", "svc_pvr_get_recording_service_id_list", 65537)

    def test_records_are_told_field_by_field_and_taken_back(self):
        self.succeed("record", "start", 1)
        recording = self.succeed("record", "stop", 1)["uri"]
        record = self.succeed("call", "svc_pvr_get_pvr_file_info", recording)["outputs"]["info"]
        self.assertEqual((record["channel_name"], record["version"]), ("First", 20))
        changed = record | {"channel_name": "Änderung", "resume_play_pos": 7000}
        self.succeed("call", "svc_pvr_set_pvr_file_info_ex", recording, json.dumps(changed))
        self.assertEqual(self.succeed("call", "svc_pvr_get_pvr_file_info", recording)["outputs"]["info"], changed)
        self.succeed("call", "svc_pvr_set_pvr_file_info_ex", recording, "channel_name=a=b", "major=0x10")
        record = self.succeed("call", "svc_pvr_get_pvr_file_info", recording)["outputs"]["info"]
        self.assertEqual((record["channel_name"], record["major"], record["resume_play_pos"]), ("a=b", 16, 0))

    def test_bytes_are_hexadecimal(self):
        self.succeed("call", "svc_pvr_write_sas_file", self.recording, 5, "00ff7A")
        self.assertEqual(self.succeed("call", "svc_pvr_read_sas_file", self.recording, 5)["outputs"],
                         {"bufSize": 3, "buf": "00ff7a"})
        self.fail_with(FAILED, "call", "svc_pvr_read_sas_file", self.recording, 6,
                       data='{"function":"svc_pvr_read_sas_file","returned":-1,"outputs":{"bufSize":0,"buf":""}}\n')

    def test_exit_codes_are_those_of_the_documented_success(self):
        for code, name, *arguments in [
                (REFUSED, "svc_pvr_get_share_data", 77), (REFUSED, "svc_pvr_set_recording_duration", 77, 1),
                (DONE, "svc_pvr_play_stop", 77), (DONE, "svc_pvr_precheck_recording_available", 77, 0),
                (DONE, "svc_pvr_service_init"), (DONE, "svc_pvr_service_destroy"),
                (DONE, "svc_pvr_is_support_pvr"), (FAILED, "svc_pvr_remove_inf", "a.txt", 0)]:
            with self.subTest(name=name):
                self.assertEqual(self.run_pvrctl("call", name, *arguments)[0], code)
        self.control("FailMethod", "play_stop", "org.example.Planted", "planted", 1)
        shown = '{"function":"svc_pvr_play_stop","returned":-2,"outputs":{}}\n'
        self.assertIn("org.example.Planted", self.fail_with(FAILED, "call", "svc_pvr_play_stop", 77, data=shown))
        self.control("Vanish", 0)
        self.fail_with(NOT_RUNNING, "call", "svc_pvr_play_stop", 77, data=shown)
        self.fail_with(NOT_RUNNING, "call", "svc_pvr_stop_pvr_sync", 1, "a",
                       data='{"function":"svc_pvr_stop_pvr_sync","returned":0,"outputs":{}}\n')


class CallEvents(SandboxedTest):
    CALLBACKS = {"result_pvr_cb": "result", "result_pvr_point_cb": "result", "to_other_apps_cb": "other",
                 "get_pvr_state_cb": "service_state", "signal_cb": "signal", "signal_pointer_cb": "signal",
                 "signal_cb_in_list": "signal"}

    def begin_events(self, name, *arguments):
        run = self.begin("--json", "call", "svc_pvr_register_" + name, *arguments)
        self.addCleanup(run.wait, HANGS)
        self.addCleanup(run.kill)
        self.addCleanup(run.stderr.close)
        self.addCleanup(run.stdout.close)
        self.assertEqual(json.loads(run.stdout.readline())["returned"], 0)
        return run

    def test_every_callback_prints_what_it_gets(self):
        for name, kind in self.CALLBACKS.items():
            with self.subTest(name=name):
                run = self.begin_events(name, "--count", 1)
                self.start()
                self.succeed("play", "stop", "--all")
                self.control("EmitSignal", "result_to_apps", "[<200>, <<(1,)>>]")
                code, output, errors = self.finish(run)
                self.assertEqual((code, errors), (DONE, ""))
                event, = map(json.loads, output.splitlines())
                self.assertEqual((event["seq"], event["kind"]), (1, kind))
                self.assertNotIn("type", event)

    def test_a_run_ends_with_its_time(self):
        self.assertEqual(self.run_pvrctl("call", "svc_pvr_register_signal_cb", "--timeout", 0)[0], DONE)
        code, output, errors = self.run_pvrctl("--json", "call", "svc_pvr_register_signal_cb", "--timeout", 0,
                                               "--count", 2)
        self.assertEqual((code, output.count("\n")), (TIME_OUT, 1))
        self.assertIn("0 of 2 events came within 0 s", errors)

    def test_ctrl_c_ends_it(self):
        for number in signal.SIGINT, signal.SIGTERM:
            run = self.begin_events("signal_cb", "--count", 99)
            run.send_signal(number)
            self.assertEqual(self.finish(run), (128 + number, "", ""))


class CallOfOtherServices(ScriptedTest):
    def test_a_service_that_does_not_record_is_told(self):
        self.answer(is_support_pvr="(0,)")
        shown = '{"function":"svc_pvr_is_support_pvr","returned":-4,"outputs":{"supported":0}}\n'
        self.fail_with(NOT_RECORDING, "call", "svc_pvr_is_support_pvr", data=shown)

    def test_the_services_own_result_decides(self):
        self.answer(sync_stop_playing="(-2,)")
        shown = '{"function":"svc_pvr_stop_playing_sync","returned":-2,"outputs":{}}\n'
        self.assertIn("it answered -2", self.fail_with(REFUSED, "call", "svc_pvr_stop_playing_sync", "a", data=shown))

    def test_a_list_may_be_shorter_than_its_count(self):
        self.answer(get_handle_for_record="([3, 4], 9)")
        self.assertEqual(self.succeed("call", "svc_pvr_get_handle_for_record", 1)["outputs"],
                         {"handle_list": [3], "num_of_list": 9})


if __name__ == "__main__":
    main()
