"""What pvrctl doctor finds: each fault is planted, and has to be told by the check that is there for it."""
import json
import os
import pathlib
import pwd
import shutil
import signal
import socket
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "abi"))
import policy_test  # noqa: E402
from pvrctl_case import (DONE, FAILED, HANGS, NAMES, NOT_FOUND, NOT_RECORDING, NOT_RUNNING, OPTIONS, REFUSED, TIME_OUT,
                         PvrctlTest, SandboxedTest, ScriptedTest, lines, main)

CHECKS = ["library", "product", "bus", "service", "policy", "answer", "records", "interface", "device", "folder",
          "room", "catalogues"]
INSTALLED_CATALOGUES = "/usr/lib/org.vexan.pvr-service-api/res/locale"
INTERFACE = pathlib.Path(__file__).resolve().parents[2] / "interface/org.vexan.tv.pvr.xml"
POLICY = pathlib.Path(__file__).resolve().parents[2] / "interface/org.vexan.tv.pvr.conf"


class Examining(PvrctlTest):
    def setUp(self):
        super().setUp()
        self.environment["LC_ALL"] = "C"

    def examine(self, code, *arguments, **popen):
        """Every check's finding by its name, of a run that ends with a code."""
        found, output, errors = self.run_pvrctl("--json", "doctor", *arguments, **popen)
        self.assertEqual(found, code, output + errors)
        report = json.loads(output)
        self.assertEqual([check["check"] for check in report["checks"]], CHECKS)
        verdicts = [check["verdict"] for check in report["checks"]]
        self.assertEqual((report["wrong"], report["warnings"], report["skipped"], report["sound"]),
                         (verdicts.count("wrong"), verdicts.count("warning"), verdicts.count("skipped"), code == DONE))
        if code == DONE:
            self.assertEqual(errors, "")
        else:
            self.assertEqual(json.loads(errors)["error"]["name"], NAMES[code])
        return {check["check"]: check for check in report["checks"]}

    def assert_only(self, findings, verdict, *names):
        """Nothing else is wrong, or to be warned of."""
        self.assertEqual([name for name in CHECKS if findings[name]["verdict"] == verdict], list(names), findings)

    def assert_wrong(self, findings, name, text, *skipped):
        self.assert_only(findings, "wrong", name)
        self.assertIn(text, findings[name]["finding"])
        self.assertTrue(findings[name]["advice"])
        self.assert_only(findings, "skipped", *skipped)
        self.assertEqual({findings[other]["because_of"] for other in skipped}, {name} if skipped else set())

    def a_library(self, name):
        """The installed library under another name; the loader is told to take it."""
        shutil.copy(OPTIONS.installed_library, self.folder / name)
        (self.folder / "libpvr-service-api.so.1").symlink_to(name)
        # It looks for the platform beside where it was built.
        self.environment["LD_LIBRARY_PATH"] = f"{self.folder}:{OPTIONS.stand_ins}"


class DoctorSound(SandboxedTest, Examining):
    def setUp(self):
        super().setUp()
        self.environment["LC_ALL"] = "C"

    def test_finds_nothing_wrong_in_a_sandbox(self):
        self.assert_only(self.examine(DONE), "ok", *CHECKS)
        code, output, errors = self.run_pvrctl("doctor")
        self.assertEqual((code, errors), (DONE, ""))
        self.assertEqual(list(lines(output)), CHECKS)
        self.assertEqual(lines(output)["bus"],
                         f"ok: {self.environment['DBUS_SYSTEM_BUS_ADDRESS']}, as DBUS_SYSTEM_BUS_ADDRESS says")
        self.assertEqual(list(self.device.iterdir()), [])
        self.assertEqual(self.run_pvrctl("doctor", "--quiet"), (DONE, "", ""))

    def test_warns_of_a_users_language_without_texts(self):
        self.environment |= {"LC_ALL": "", "LANG": "pt_BR.UTF-8"}
        findings = self.examine(DONE)
        self.assert_only(findings, "warning", "catalogues")
        self.assertIn("not in pt_BR.UTF-8", findings["catalogues"]["finding"])
        self.environment["LANGUAGE"] = "pt:de"
        self.assert_only(self.examine(DONE), "warning")

    def test_finds_a_service_that_never_answers(self):
        self.succeed("sim", "fault", "add", "no-answer", "is_support_pvr")
        self.assert_wrong(self.examine(TIME_OUT, "--limit", 1), "answer", "did not answer 'is_support_pvr' within 1 s",
                          "records", "interface", "device", "folder", "room")

    def test_finds_a_service_that_stands_still(self):
        owner = self.ask("org.freedesktop.DBus", "/", "org.freedesktop.DBus.GetConnectionUnixProcessID",
                         "org.vexan.tv.pvr.server")
        process = int(owner.split()[1].rstrip(",)"))
        os.kill(process, signal.SIGSTOP)
        self.addCleanup(os.kill, process, signal.SIGCONT)
        findings = self.examine(TIME_OUT, "--limit", 1)
        self.assert_wrong(findings, "answer", "did not answer", "records", "interface", "device", "folder", "room")
        self.assertIn(f"process {process}", findings["service"]["finding"])

    def test_finds_a_service_that_answers_with_an_error(self):
        self.control("FailMethod", "is_support_pvr", "org.example.Planted", "it is planted", 1)
        self.assert_wrong(self.examine(FAILED), "answer", "with org.example.Planted: it is planted",
                          "records", "interface", "device", "folder", "room")

    def test_finds_that_the_service_is_gone(self):
        self.control("Vanish", 0)
        self.assert_wrong(self.examine(NOT_RUNNING), "service", "nobody owns org.vexan.tv.pvr.server",
                          "policy", "answer", "records", "interface", "device", "folder", "room")

    def test_finds_that_the_product_does_not_record(self):
        settings = self.folder / "platform.conf"
        settings.write_text("[custom-bool]\ncom.brimmel/featureconf/pvr.pvr_support=false\n", encoding="utf-8")
        self.environment["PVR_PLATFORM_CONFIG"] = str(settings)
        self.assert_wrong(self.examine(NOT_RECORDING), "product", f"as PVR_PLATFORM_CONFIG names {settings}",
                          "device", "folder", "room", "catalogues")

    def test_finds_a_full_device(self):
        self.succeed("sim", "fault", "add", "device-full", "usb1")
        self.assert_wrong(self.examine(REFUSED), "room", "no room to record: 0 MiB")

    def test_finds_that_there_is_no_device(self):
        self.succeed("sim", "fault", "add", "device-pulled", "usb1")
        self.assert_wrong(self.examine(NOT_FOUND), "device", "knows no storage device", "folder", "room")

    def test_finds_a_library_of_another_version(self):
        self.a_library("libpvr-service-api.so.1.10.9.0")
        findings = self.examine(FAILED)
        self.assertEqual(findings["library"]["verdict"], "wrong")
        self.assertIn("is version 10.9.0, and pvrctl was built for", findings["library"]["finding"])
        self.assertEqual(findings["room"]["verdict"], "ok")

    @unittest.skipIf(os.path.exists(INSTALLED_CATALOGUES), "this machine has the library's catalogues installed")
    def test_finds_that_there_are_no_catalogues(self):
        version = self.run_pvrctl("--version")[1].split()[1]
        self.a_library(f"libpvr-service-api.so.1.{version}")
        self.assert_wrong(self.examine(NOT_FOUND), "catalogues",
                          f"no message catalogue in {INSTALLED_CATALOGUES}: users read ids such as SID_")


class DoctorAlone(Examining):
    def test_finds_an_address_with_nothing_behind(self):
        findings = self.examine(NOT_RUNNING)
        self.assert_wrong(findings, "bus", "unix:path=/nonexistent/pvr-test-bus, as DBUS_SYSTEM_BUS_ADDRESS says",
                          "service", "policy", "answer", "records", "interface", "device", "folder", "room")
        code, output, errors = self.run_pvrctl("doctor")
        self.assertEqual((code, " ".join(errors.split())),
                         (NOT_RUNNING, "pvrctl: 1 of 12 checks found something wrong, first 'bus'"))
        self.assertEqual(lines(output)["room"], "skipped: because of 'bus'")

    def test_finds_a_bus_that_says_nothing(self):
        with socket.socket(socket.AF_UNIX) as mute:
            mute.bind(str(self.folder / "mute"))
            mute.listen(1)
            self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.folder}/mute"
            self.assertIn("said nothing for 1 s", self.examine(NOT_RUNNING, "--limit", 1)["bus"]["finding"])

    def test_warns_of_a_description_of_the_product_that_is_not_there(self):
        self.environment["PVR_PLATFORM_CONFIG"] = "/nonexistent/platform.conf"
        code, output, _ = self.run_pvrctl("--json", "doctor")
        product = json.loads(output)["checks"][1]
        self.assertEqual((code, product["verdict"]), (NOT_RUNNING, "warning"))
        self.assertIn("/nonexistent/platform.conf, which cannot be read: No such file", product["finding"])


class DoctorRecords(Examining):
    def test_finds_records_of_another_size(self):
        self.environment["LD_PRELOAD"] = OPTIONS.other_records
        findings = self.examine(FAILED)
        self.assertIn("a device_info has 788 bytes in", findings["library"]["finding"])


@unittest.skipUnless(os.geteuid() == 0, "only root may own the name on such a bus")
class DoctorPolicy(Examining):
    """A bus with the rules of a system bus, and a service that owns the name and answers pings alone."""

    def examine_on(self, policy, code, **popen):
        policy_test.OPTIONS.owner, policy_test.OPTIONS.name = OPTIONS.bus_owner, "org.vexan.tv.pvr.server"
        with policy_test.Bus(policy) as bus, bus.owner() as service:
            self.assertEqual(service.stdout.readline(), "owned\n")
            self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = bus.address
            findings = self.examine(code, **popen)
            service.communicate(timeout=HANGS)
        return findings

    def test_that_allows_calls_is_in_order(self):
        findings = self.examine_on(POLICY, FAILED)
        self.assertEqual(findings["policy"]["verdict"], "ok")
        self.assertEqual(findings["answer"]["verdict"], "wrong")  # it has no such interface

    def test_that_denies_calls_is_told(self):
        changed = self.folder / "org.vexan.tv.pvr.conf"
        rule = '<allow send_destination="org.vexan.tv.pvr.server"/>'
        text = POLICY.read_text(encoding="utf-8")
        self.assertIn(rule, text)
        changed.write_text(text.replace(rule, ""), encoding="utf-8")
        self.assert_wrong(self.examine_on(changed, FAILED), "policy", "the bus refuses calls of the service: ",
                          "answer", "records", "interface", "device", "folder", "room")


class DoctorActivation(Examining):
    """A bus that can start a service by itself."""

    def test_of_a_service_that_does_not_come_is_told(self):
        services = self.folder / "services"
        services.mkdir()
        (services / "org.vexan.tv.pvr.server.service").write_text(
            "[D-BUS Service]\nName=org.vexan.tv.pvr.server\nExec=/bin/false\n", encoding="utf-8")
        configuration = self.folder / "bus.conf"
        configuration.write_text(f"""<busconfig><type>session</type><listen>unix:path={self.folder}/bus</listen>
            <servicedir>{services}</servicedir><policy context="default"><allow send_destination="*"/><allow own="*"/>
            <allow receive_sender="*"/></policy></busconfig>""", encoding="utf-8")
        daemon = subprocess.Popen(["dbus-daemon", f"--config-file={configuration}", "--nofork", "--print-address"],
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(daemon.communicate)
        self.addCleanup(daemon.terminate)
        self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = daemon.stdout.readline().strip()
        findings = self.examine(FAILED)
        self.assertEqual(findings["service"]["verdict"], "warning")
        self.assertIn("the bus starts a service at the first call", findings["service"]["finding"])
        self.assertIn("org.freedesktop.DBus.Error.Spawn", findings["answer"]["finding"])


class DoctorOtherServices(ScriptedTest, Examining):
    DEVICE = {"get_device_list": "([7], 1, 0)", "get_rec_device_list": "([7], 1, 0)",
              "get_default_rec_device": "(7, 0)", "is_available": "(1,)", "is_support_pvr": "(1,)"}

    def setUp(self):
        super().setUp()
        self.environment["LC_ALL"] = "C"

    def answer_device(self, folder, **answers):
        record = f"((1, 0, 'disk', 'product', '{folder}', int64 9, int64 8), 0)"
        self.answer(**self.DEVICE | {"get_device_info": record} | answers)

    def examine_device(self, folder, code, **answers):
        self.answer_device(folder, **answers)
        return self.examine(code)

    def test_of_their_device_nothing_is_wrong(self):
        findings = self.examine_device(self.folder, DONE)
        self.assert_only(findings, "skipped", "interface")
        self.assertIn("does not describe itself", findings["interface"]["finding"])
        self.assertEqual(findings["room"]["finding"], "8 MiB are free of 9 MiB")

    def test_that_cannot_record_to_the_device(self):
        self.assert_device_wrong(self.examine_device(self.folder, REFUSED, get_rec_device_list="(@ai [], 0, 0)"),
                                 "cannot be recorded to")

    def test_that_record_to_none_of_the_devices(self):
        self.assert_device_wrong(self.examine_device(self.folder, NOT_FOUND, get_default_rec_device="(0, -2)"),
                                 "recordings go to none of the 1 storage devices")

    def assert_device_wrong(self, findings, text):
        self.assert_only(findings, "wrong", "device")
        self.assertIn(text, findings["device"]["finding"])

    def test_whose_device_cannot_be_written_to(self):
        # No file can be made among processes, whoever asks: /proc is as good as a device that is read-only.
        findings = self.examine_device("/proc", FAILED)
        self.assert_only(findings, "wrong", "folder")
        self.assertIn("no file can be made in /proc", findings["folder"]["finding"])

    def test_whose_device_is_not_mounted(self):
        findings = self.examine_device(self.folder / "missing", NOT_FOUND)
        self.assert_only(findings, "wrong", "folder")
        self.assertIn("is not there", findings["folder"]["finding"])

    @unittest.skipUnless(os.geteuid() == 0, "takes another user")
    def test_whose_device_only_the_service_can_write_to(self):
        nobody = pwd.getpwnam("nobody")
        as_nobody = {"user": nobody.pw_uid, "group": nobody.pw_gid, "extra_groups": [], "cwd": "/"}
        device = self.folder / "device"
        device.mkdir(mode=0o755)
        self.folder.chmod(0o755)
        self.answer_device(device)
        try:
            findings = self.examine(DONE, **as_nobody)
        except PermissionError:
            self.skipTest("another user cannot enter the build folder")
        self.assert_only(findings, "warning", "folder")
        self.assertIn("Permission denied", findings["folder"]["finding"])

    def test_that_say_they_do_not_record(self):
        self.answer(is_support_pvr="(0,)")
        findings = self.examine(NOT_RECORDING)
        self.assert_only(findings, "wrong", "records")
        self.assertIn("it answers 0", findings["records"]["finding"])

    def test_that_answer_another_type(self):
        self.answer(is_support_pvr="('yes',)")
        findings = self.examine(FAILED)
        self.assert_only(findings, "wrong", "answer")
        self.assertIn("is no number", findings["answer"]["finding"])

    def test_with_another_interface(self):
        description = INTERFACE.read_text(encoding="utf-8")
        self.assertIn('<method name="play_stop">', description)
        for planted, name in [('<method name="play_halt">', "play_stop"),
                              ('<method name="play_stop"><arg name="more" type="i" direction="in"/>', "play_stop")]:
            described = description.replace('<method name="play_stop">', planted).replace("\n", " ")
            findings = self.examine_device(self.folder, FAILED, Introspect=f"({json.dumps(described)},)")
            self.assert_only(findings, "wrong", "interface")
            self.assertIn(f"lacks 1 of the library's 106 methods, or has them with other types: {name}",
                          findings["interface"]["finding"])
        self.assertEqual(self.examine_device(self.folder, DONE, Introspect=f"({json.dumps(description)},)")
                         ["interface"]["verdict"], "ok")


if __name__ == "__main__":
    main("installed-library", "stand-ins", "bus-owner", "other-records")
