"""Devices and files on them, seen by a second look at the development service, and with services that behave
otherwise."""
import re
import shutil
import stat

from pvrctl_case import (DONE, FAILED, NOT_FOUND, NOT_RUNNING, REFUSED, SandboxedTest, ScriptedTest, lines, main,
                         wait_until)

ONE_DEVICE = {"get_device_list": "([5], 1, 0)", "get_rec_device_list": "(@ai [], 0, 0)",
              "get_device_info": "((1, 0, 'disk', 'Disk', '/disk', int64 200, int64 100), 0)"}


class Devices(SandboxedTest):
    def described(self):
        answer = self.ask_service("get_device_info", 1)
        kind, form, name, product, path, total, available = re.fullmatch(
            r"\(\((\d+), (\d+), '(.*)', '(.*)', '(.*)', int64 (\d+), (?:int64 )?(\d+)\), 0\)", answer).groups()
        return {"handle": 1, "name": name, "product": product, "mount_path": path, "device_type": int(kind),
                "file_format": int(form), "total_size": int(total)}, int(available)

    def test_are_listed_and_described(self):
        described, _ = self.described()
        listed = self.succeed("device", "list")
        self.assertEqual(listed["count"], 1)
        self.assertGreater(listed["devices"][0].pop("avail_size"), 0)
        described |= {"recordable": True, "default": True}
        self.assertEqual(listed["devices"], [described])
        info = self.succeed("device", "info", 1)
        info.pop("avail_size")
        self.assertEqual(info, described | {"performance": -2})
        self.assertEqual(info["mount_path"], str(self.device))

    def test_are_a_table_for_people(self):
        line = lines(self.run_pvrctl("device", "list")[1])["1"]
        self.assertRegex(line, rf"^usb1, {re.escape(str(self.device))}, \d+ MiB free of \d+ MiB, the default$")
        table = lines(self.run_pvrctl("device", "info", 1)[1])
        self.assertRegex(table.pop("space"), r"^\d+ MiB free of \d+ MiB$")
        self.assertEqual(table, {
            "handle": "1", "name": "usb1", "product": "Development storage usb1", "mounted at": str(self.device),
            "device type": "1", "file system": "0", "recordable": "yes", "default": "yes",
            "performance": "not measured"})

    def test_the_default_one_is_told_and_chosen(self):
        self.assertEqual(self.succeed("device", "default")["handle"], 1)
        self.assertEqual(self.requests("set_default_rec_device"), [])
        self.assertEqual(self.succeed("device", "default", 1)["default"], True)
        self.assertEqual(self.requests("set_default_rec_device"), [[1]])

    def test_are_counted(self):
        found = self.succeed("device", "total")
        capacity = re.fullmatch(r"\(int64 \d+, int64 (\d+)\)", self.ask_service("get_rec_dev_capacity"))
        self.assertGreater(found.pop("available_size"), 0)
        self.assertEqual(found, {"devices": 1, "recordable": 1, "available": True, "total_size": int(capacity[1])})

    def test_that_are_gone_are_not_found(self):
        self.device.rmdir()
        self.assertEqual(self.succeed("device", "list"), {"devices": [], "count": 0})
        self.assertEqual(self.succeed("device", "total")["devices"], 0)
        self.assertEqual(self.fail_with(NOT_FOUND, "device", "default"), "there is no device to record to")
        for verb in "info", "default", "check", "format", "test":
            with self.subTest(verb=verb):
                self.assertEqual(self.fail_with(NOT_FOUND, "device", verb, 1), "there is no device 1")
        methods = set(re.findall(r"'(\w+)', ", self.control("ListCalls", 0)))
        self.assertTrue(methods.isdisjoint({"set_default_rec_device", "check_device", "format",
                                            "start_performance_test"}))

    def test_are_checked(self):
        self.assertEqual(self.succeed("device", "check", 1), {"handle": 1, "checked": True})
        self.assertEqual(self.requests("check_device"), [[1]])

    def test_are_formatted(self):
        (self.device / "old.srf").touch()
        self.assertEqual(self.succeed("device", "format", 1), {"handle": 1, "formatted": False})
        self.assertEqual(self.requests("format"), [[1, 1]])
        wait_until(lambda: not (self.device / "old.srf").exists(), "the device is formatted")

    def test_are_formatted_before_the_command_ends_when_it_waits(self):
        (self.device / "old.srf").touch()
        self.assertEqual(self.succeed("device", "format", 1, "--wait"), {"handle": 1, "formatted": True})
        self.assertEqual(list(self.device.iterdir()), [])

    def test_are_measured_anew_each_time(self):
        for _ in range(2):
            self.assertEqual(self.succeed("device", "test", 1, "--wait"), {"handle": 1, "performance": 1})
        # While it is being measured, another measurement would be refused.
        self.assertEqual(self.succeed("device", "test", 1), {"handle": 1, "performance": None})
        self.assertEqual(self.requests("start_performance_test"), [[1]] * 3)
        self.assertEqual(lines(self.run_pvrctl("device", "info", 1)[1])["performance"], "fast enough")

    def test_that_leave_while_they_are_measured_are_told(self):
        waiting = self.begin("device", "test", 1, "--wait")
        wait_until(lambda: self.requests("start_performance_test"), "the measurement has begun")
        shutil.rmtree(self.device)
        code, output, errors = self.finish(waiting)
        self.assertEqual((code, output), (FAILED, ""))
        self.assertIn("device 1 was not measured; the service says -2", " ".join(errors.split()))


class OtherDevices(ScriptedTest):
    def test_one_that_does_not_become_the_default_is_refused(self):
        self.answer(**ONE_DEVICE, set_default_rec_device="(0,)")
        self.assertIn("does not record to device 5", self.fail_with(REFUSED, "device", "default", 5))

    def test_what_is_not_begun_is_refused(self):
        self.answer(**ONE_DEVICE, format="(-2,)", start_performance_test="(1,)", get_performance_test_result="(-2,)")
        for options in [], ["--wait"]:
            self.assertEqual(self.fail_with(REFUSED, "device", "format", 5, *options),
                             "the service does not format device 5")
            self.assertEqual(self.fail_with(REFUSED, "device", "test", 5, *options),
                             "the service does not measure device 5")

    def test_a_measurement_is_noticed_without_news(self):
        self.answer(**ONE_DEVICE, start_performance_test="(0,)", get_performance_test_result="(-2,)")
        waiting = self.begin("device", "test", 5, "--wait")
        self.steer("wait start_performance_test")
        self.steer("answer get_performance_test_result=(0,)")
        self.assertEqual(self.finish(waiting), (DONE, "handle       5\nperformance  too slow\n", ""))

    def test_that_cannot_be_recorded_to_say_so(self):
        self.answer(**ONE_DEVICE)
        self.assertEqual(lines(self.run_pvrctl("device", "list")[1]),
                         {"5": "disk, /disk, 100 MiB free of 200 MiB, not recordable"})

    def test_whose_list_cannot_be_are_an_error(self):
        self.answer(get_device_list="([5], 2147483647, 0)")
        self.assertIn("lists 2147483647 elements", self.fail_with(FAILED, "device", "list"))

    def test_their_texts_are_harmless_to_a_terminal(self):
        self.answer(**ONE_DEVICE | {"get_device_info": r"((1, 0, 'a\u001bb', '\u0007', '/\n', int64 2, int64 1), 0)"},
                    get_performance_test_result="(7,)")
        self.assertIn(r"a\x1bb, /\x0a, ", self.run_pvrctl("device", "list")[1])
        table = lines(self.run_pvrctl("device", "info", 5)[1])
        self.assertEqual((table["product"], table["performance"]), (r"\x07", "unknown, the service answers 7"))

    def begin_to_format(self):
        self.answer(**ONE_DEVICE, format="(0,)")
        waiting = self.begin("device", "format", 5, "--wait")
        self.steer("wait format")
        return waiting

    def test_why_a_format_failed_is_told(self):
        for error, text in (30, "30, Read-only file system"), (-7, "-7"), (99, "99"):
            with self.subTest(error=error):
                waiting = self.begin_to_format()
                # News of something else, and of another form.
                self.steer("emit result_to_apps (15, <(1,)>)")
                self.steer("emit result_to_apps (14, <('disk',)>)")
                self.steer(f"emit result_to_apps (14, <({error},)>)")
                code, output, errors = self.finish(waiting)
                self.assertEqual((code, output), (FAILED, ""))
                self.assertEqual(" ".join(errors.split()),
                                 f"pvrctl: device 5 was not formatted; the service says {text}")

    def test_a_service_that_ends_during_a_format_is_told(self):
        waiting = self.begin_to_format()
        self.succeed("device", "list")  # the format is answered before it
        self.steer("vanish")
        code, output, errors = self.finish(waiting)
        self.assertEqual((code, output), (NOT_RUNNING, ""))
        self.assertIn("has ended before it told how the format went", " ".join(errors.split()))


class Files(SandboxedTest):
    def record(self):
        return self.succeed("record", "start", 1)["uri"]

    def test_tell_whether_they_are_recorded_to(self):
        uri = self.record()
        self.assertEqual(self.succeed("file", "is-recording", uri), {"uri": uri, "recording": True})
        self.succeed("record", "stop", 1)
        self.assertEqual(lines(self.run_pvrctl("file", "is-recording", uri)[1]), {"file": uri, "being recorded": "no"})

    def test_are_deleted_with_those_beside_them(self):
        uri = self.record()
        self.assertIn("did not delete", self.fail_with(REFUSED, "file", "delete", uri))
        self.succeed("record", "stop", 1)
        self.assertEqual(len(list(self.device.iterdir())), 2)
        name = uri.rpartition("/")[2]
        self.assertEqual(self.succeed("file", "delete", name, cwd=self.device), {"uri": uri, "deleted": True})
        self.assertEqual(list(self.device.iterdir()), [])
        self.assertIn("it answered -2", self.fail_with(REFUSED, "file", "delete", self.recording))
        self.assertTrue(self.recording.exists())

    def test_folders_are_made(self):
        made = self.succeed("file", "mkdir", "films/", "--mode", "0700", cwd=self.device)
        self.assertEqual(made, {"path": str(self.device / "films"), "mode": "0700", "made": True})
        self.assertEqual(stat.S_IMODE((self.device / "films").stat().st_mode), 0o700)
        self.assertEqual(self.succeed("file", "mkdir", self.device / "more")["mode"], "0755")
        for path, options in [(self.device / "more", []), (self.folder / "new", []),
                              (self.device / "a", ["--mode", 7777])]:
            with self.subTest(path=path):
                self.assertEqual(self.fail_with(REFUSED, "file", "mkdir", path, *options),
                                 f"the service did not make {path}")
        self.assertFalse((self.folder / "new").exists())


if __name__ == "__main__":
    main()
