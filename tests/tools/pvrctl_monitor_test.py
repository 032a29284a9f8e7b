"""What pvrctl monitor tells of the development service, line by line, and how it ends."""
import json
import os
import pathlib
import re
import signal
import subprocess

import jsonschema

from pvrctl_case import (DONE, FAILED, HANGS, NOT_RUNNING, OPTIONS, PAUSE, TIME_OUT, USAGE, PvrctlTest,
                         SandboxedTest, main)

SCHEMA = pathlib.Path(__file__).resolve().parents[2] / "docs" / "monitor.schema.json"
KINDS = {"state", "signal", "result", "other", "service_state", "connected", "disconnected"}


class MonitorTest(SandboxedTest):
    def monitor(self, *arguments):
        """A run under way that has told the state."""
        run = self.begin("--json", "monitor", *arguments)
        self.addCleanup(run.stderr.close)
        self.addCleanup(run.stdout.close)
        self.addCleanup(run.wait, HANGS)
        self.addCleanup(run.kill)
        self.assertEqual(self.next(run)["kind"], "state")
        return run

    def next(self, run):
        """The next line; a line that is not flushed would never come."""
        line = run.stdout.readline()
        self.assertTrue(line.endswith("\n"), line)
        return json.loads(line)

    def until(self, run, kind, **fields):
        """The lines up to the first one of this kind with these fields."""
        found = []
        while not found or found[-1]["kind"] != kind or fields.items() - {
                (name, value) for name, value in found[-1].items() if name in fields}:
            found.append(self.next(run))
        return found

    def emit(self, name, *values):
        self.control("EmitSignal", name, "[" + ", ".join(f"<{value}>" for value in values) + "]")

    def end(self, run):
        code, output, errors = self.finish(run)
        return code, [json.loads(line) for line in output.splitlines()], errors


class Monitor(MonitorTest):
    def test_lines_of_every_kind_follow_the_schema(self):
        schema = json.loads(SCHEMA.read_text(encoding="utf-8"))
        jsonschema.Draft202012Validator.check_schema(schema)
        self.succeed("timeshift", "start", 2)
        run = self.begin("--json", "monitor")
        self.succeed("record", "start", 1)
        self.succeed("record", "stop", 1)
        handle = self.paused()
        self.succeed("play", "stop", handle)
        self.control("Vanish", 1)
        self.addCleanup(run.stderr.close)
        self.addCleanup(run.stdout.close)
        told = self.until(run, "connected")
        run.send_signal(signal.SIGTERM)
        self.assertEqual(self.end(run)[0], 128 + signal.SIGTERM)
        validator = jsonschema.Draft202012Validator(schema)
        for line in told:
            self.assertEqual([error.message for error in validator.iter_errors(line)], [], line)
        self.assertEqual({line["kind"] for line in told}, KINDS)
        self.assertEqual([line["seq"] for line in told], list(range(1, len(told) + 1)))
        times = [line["monotonic_us"] for line in told]
        self.assertEqual(times, sorted(times))
        self.assertFalse(validator.is_valid(told[0] | {"more": 1}))
        self.assertFalse(validator.is_valid({name: told[0][name] for name in told[0] if name != "service"}))

    def test_signals_bring_their_type_and_every_field(self):
        run = self.monitor()
        uri = b"/a\xff\n".ljust(255, b"\0")
        content = ((7).to_bytes(4, "little") + (8).to_bytes(4, "little") + (9).to_bytes(4, "little") +
                   bytes(range(1, 9)) + (10).to_bytes(4, "little") + (11).to_bytes(4, "little") + uri +
                   PAUSE.to_bytes(4, "little") + (12).to_bytes(4, "little"))
        # What the library drops must not lend its type to what follows.
        for number, text in (2, "junk"), (3, content.hex()), (20, content.hex()), (19, content.hex()):
            self.emit("send_pvr_signal_to_apps", number, f"'{text}'")
        first, second = self.next(run), self.next(run)
        fields = {"kind": "signal", "type": {"code": 3, "name": "PS_SIGNAL_TYPE_PLAY_STATE_CHANGE"}, "opaque_0": 7,
                  "result": 8, "handle": 9, "opaque_12": "0102030405060708", "profile_type": 10, "screen_id": 11,
                  "uri": "/a\ufffd\n", "current_state": {"code": 2, "name": "PLAY_STATE_PAUSE"}, "opaque_287": 12}
        self.assertEqual(first, first | fields)
        self.assertEqual(second, second | fields | {"type": {"code": 19, "name": None},
                                                    "current_state": {"code": 2, "name": None}})

    def test_results_and_what_others_learn_come_in_the_librarys_order(self):
        run = self.monitor()
        self.emit("result_to_apps", 8, "<(1, 0, 2, uint64 18446744073709551615, 0, 5)>")
        result, other = self.next(run), self.next(run)
        self.assertEqual(result, result | {
            "kind": "result", "method": {"code": 8, "name": "PS_RECORD_START"}, "result": 0, "handle": 1,
            "mnt_path": "", "detail_result": 5, "duration": 0, "service_id": 2 ** 64 - 1})
        self.assertEqual(other, other | {
            "kind": "other", "third_part_method": {"code": 1, "name": "PS_METHOD_TYPE_RECORD"},
            "third_part_command": {"code": 0, "name": "PS_COMMAND_START"}, "result": 1, "service_result": 0,
            "service_id": 2 ** 64 - 1, "UID": 2})

    def test_people_see_one_line_for_each(self):
        run = self.begin("monitor", "--count", 1)
        self.assertIn("  state  the service runs, as :", run.stdout.readline())
        self.emit("result_to_apps", 102, "<('/mnt\\n\x1b',)>".replace("\x1b", "\\u001b"))
        code, output, errors = self.finish(run)
        self.assertEqual((code, errors), (DONE, ""))
        self.assertRegex(output, r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}  result  PS_REMOVE_DEV  "
                                 r"result 0, /mnt\\x0a\\x1b\n$")


class MonitorRestart(MonitorTest):
    def test_events_arrive_again_after_a_restart(self):
        run = self.monitor()
        for _ in range(2):
            self.control("Vanish", 0)
            left = self.next(run)
            self.control("Return")
            back = self.next(run)
            self.assertEqual((left["kind"], back["kind"]), ("disconnected", "connected"))
            self.emit("result_to_apps", 200, "<(3,)>")
            self.emit("result_to_apps", 101, "<(4,)>")
            self.assertEqual(self.next(run)["state"], 3)
            self.assertEqual(self.next(run)["method"]["name"], "PS_PLAY_END")

    def test_it_waits_for_a_service_that_is_not_running(self):
        self.control("Vanish", 0)
        run = self.begin("--json", "monitor", "--count", 1)
        state = self.next(run)
        self.assertEqual([state[name] for name in ("service", "play_state", "record_state", "recordings")], [None] * 4)
        self.control("Return")
        self.assertEqual(self.next(run)["kind"], "connected")
        self.emit("result_to_apps", 200, "<(1,)>")
        self.assertEqual([line["kind"] for line in self.end(run)[1]], ["service_state"])


class MonitorOptions(MonitorTest):
    def test_types_choose_signals_and_results(self):
        for chosen in (["PS_PLAY_END"], ["101"], ["PS_SIGNAL_TYPE_RECORD_ERROR", "PS_PLAY_END"]):
            with self.subTest(types=chosen):
                run = self.monitor("--count", 1, *(word for text in chosen for word in ("--type", text)))
                self.emit("result_to_apps", 200, "<(1,)>")
                self.emit("result_to_apps", 0, "<(1, 0, 1)>")
                self.emit("result_to_apps", 101, "<(4,)>")
                code, told, errors = self.end(run)
                self.assertEqual((code, errors), (DONE, ""))
                self.assertEqual([(line["seq"], line["kind"], line["method"]["code"]) for line in told],
                                 [(2, "result", 101)])

    def test_a_number_is_that_of_a_type_and_of_a_method(self):
        run = self.monitor("--type", 11, "--count", 2)
        self.emit("send_pvr_signal_to_apps", 10, f"'{'00' * 291}'")
        self.emit("send_pvr_signal_to_apps", 11, f"'{'00' * 291}'")
        self.emit("result_to_apps", 11, "<(1, 0, 2, uint64 3, 0, 5)>")
        self.assertEqual([line["kind"] for line in self.end(run)[1]], ["signal", "result"])

    def test_what_is_wrong_is_told(self):
        for arguments, message in [(["--type", "PS_WOBBLE"], "--type: 'PS_WOBBLE' names no type"),
                                   (["--type", ""], "--type"), (["--type", "1x"], "'1x' is no whole number"),
                                   (["--timeout", -1], "--timeout: '-1' is not between 0"),
                                   (["--count", 0], "--count: '0' is not between 1")]:
            with self.subTest(arguments=arguments):
                self.assertIn(message, self.fail_with(USAGE, "monitor", *arguments))

    def test_the_time_ends_it(self):
        self.assertEqual(self.run_pvrctl("monitor", "--quiet", "--timeout", 0), (DONE, "", ""))
        code, output, errors = self.run_pvrctl("--json", "monitor", "--timeout", 1, "--count", 2)
        self.assertEqual((code, output.count("\n")), (TIME_OUT, 1))
        self.assertEqual(json.loads(errors)["error"]["message"], "0 of 2 events came within 1 s")


class MonitorEnd(MonitorTest):
    def test_signals_end_it_with_whole_lines(self):
        for number in signal.SIGINT, signal.SIGTERM:
            with self.subTest(signal=number):
                run = self.monitor()
                self.emit("result_to_apps", 200, "<(1,)>")
                self.next(run)
                run.send_signal(number)
                self.assertEqual(self.end(run), (128 + number, [], ""))

    def test_a_signal_ends_it_while_its_reader_sleeps(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        os.set_blocking(writer, False)
        run = subprocess.Popen([OPTIONS.pvrctl, "--json", "monitor"], env=self.environment, stdout=writer,
                               stderr=subprocess.DEVNULL)
        self.addCleanup(run.wait, HANGS)
        self.addCleanup(run.kill)
        text = os.read(reader, 65536)
        self.assertTrue(text.endswith(b"\n"))
        try:
            while True:
                os.write(writer, b"\n" * 4096)
        except BlockingIOError:
            os.set_blocking(writer, True)
            os.close(writer)
        self.emit("result_to_apps", 200, "<(1,)>")
        run.send_signal(signal.SIGTERM)
        self.assertEqual(run.wait(HANGS), 128 + signal.SIGTERM)

    def test_a_reader_that_has_gone_ends_it_quietly(self):
        run = self.begin("--json", "monitor")
        run.stdout.readline()
        run.stdout.close()
        self.assertEqual((run.wait(HANGS), run.stderr.read()), (DONE, ""))
        run.stderr.close()

    def test_a_bus_that_ends_is_a_failure(self):
        run = self.monitor()
        daemon = self.ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus.GetConnectionUnixProcessID",
                          "org.freedesktop.DBus")
        os.kill(int(re.fullmatch(r"\(uint32 (\d+),\)", daemon)[1]), signal.SIGKILL)
        code, told, errors = self.end(run)
        self.assertEqual((code, [line["kind"] for line in told]), (NOT_RUNNING, ["disconnected"]))
        self.assertEqual(json.loads(errors)["error"]["message"], "the system bus cannot be reached: it was lost")

    def test_a_full_disk_is_a_failure(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            code, _, errors = self.run_pvrctl("monitor", stdout=full)
        self.assertEqual(code, FAILED)
        self.assertIn("cannot write to standard output", errors)


class MonitorAlone(PvrctlTest):
    def test_a_missing_bus_is_told(self):
        self.assertIn("the system bus cannot be reached", self.fail_with(NOT_RUNNING, "monitor"))


if __name__ == "__main__":
    main()
