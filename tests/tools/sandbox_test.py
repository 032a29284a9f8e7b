"""pvr-sandbox from outside: what the command finds, every way in which it ends, and what is left then."""
import configparser
import os
import pathlib
import shutil
import signal
import subprocess
import unittest

import sandboxed
from sandboxed import ASK, FAILED, NAME, OPTIONS, SandboxTest, read, wait_until


class ExitStatus(SandboxTest):
    def test_is_that_of_the_command(self):
        unusable = self.folder / "unusable"
        unusable.write_text("#!/bin/sh\n")
        commands = {
            "exit 0": (0, ""),
            "exit 3": (3, ""),
            "exit 125": (125, ""),
            "kill -TERM $$": (128 + signal.SIGTERM, ""),
            "kill -SEGV $$": (128 + signal.SIGSEGV, ""),
            "kill -KILL $$": (128 + signal.SIGKILL, ""),
            ("no-such-program",): (127, "pvr-sandbox: no-such-program: No such file or directory\n"),
            ("",): (127, "pvr-sandbox: : No such file or directory\n"),
            (str(unusable),): (126, f"pvr-sandbox: {unusable}: Permission denied\n"),
            ("/",): (126, "pvr-sandbox: /: Permission denied\n"),
        }
        for command, (status, complaint) in commands.items():
            with self.subTest(command=command):
                self.assertEqual(self.run_sandbox("--no-service", service=False, command=command),
                                 (status, "", complaint))

    def test_is_125_when_the_bus_is_killed(self):
        status, _, complaint = self.run_sandbox(
            "--no-service", service=False,
            command="trap 'echo asked; exit' TERM; "
                    "kill -KILL $(dbus-send --system --print-reply=literal --dest=org.freedesktop.DBus / "
                    "org.freedesktop.DBus.GetConnectionUnixProcessID string:org.freedesktop.DBus | "
                    "sed 's/.* //'); sleep infinity & wait")
        self.assertEqual(status, FAILED)
        self.assertIn("the bus ended, killed by SIGKILL", complaint)


class Command(SandboxTest):
    def test_finds_the_service_on_its_system_bus_and_soon_nobody_else(self):
        names = ("dbus-send --system --print-reply=literal --dest=org.freedesktop.DBus / "
                 "org.freedesktop.DBus.ListNames | tr -d '[]' | sed s/array//")
        # The bus, the service by both its names, and the one that asks.
        command = f"{ASK}; until [ $({names} | wc -w) = 4 ]; do :; done"
        self.assertEqual(self.run_sandbox(command=command), (0, "   boolean true\n", ""))

    def test_runs_without_a_service_when_there_is_to_be_none(self):
        self.assertEqual(self.run_sandbox("--no-service", service=False, command=ASK), (0, "   boolean false\n", ""))

    def test_gets_the_environment_that_is_documented(self):
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/the/users"
        command = 'env -0; printf "CONFIG="; cat "$PVR_PLATFORM_CONFIG"'
        status, output, _ = self.run_sandbox(command=command)
        entries, _, configuration = output.rpartition("CONFIG=")
        found = dict(entry.split("=", 1) for entry in entries.split("\0") if entry)
        folder = found["PVR_SANDBOX"]
        self.assertEqual(status, 0)
        self.assertEqual(pathlib.Path(folder).parent, self.temporary)
        self.assertEqual(found["DBUS_SYSTEM_BUS_ADDRESS"], f"unix:path={folder}/bus")
        self.assertEqual(found["DBUS_SESSION_BUS_ADDRESS"], "unix:path=/the/users")
        own = pathlib.Path(OPTIONS.sandbox).resolve().parent
        self.assertEqual(found["PATH"], f"{own}:{self.environment['PATH']}")
        product = configparser.ConfigParser()
        product.read_string(configuration)
        self.assertEqual(product["custom-bool"]["com.brimmel/featureconf/pvr.pvr_support"], "true")
        others = set(found) - {"PVR_SANDBOX", "DBUS_SYSTEM_BUS_ADDRESS", "PVR_PLATFORM_CONFIG", "PWD", "_", "SHLVL"}
        self.assertLessEqual(others, set(self.environment))

    def test_keeps_the_platform_configuration_that_is_set(self):
        self.environment["PVR_PLATFORM_CONFIG"] = "/the/users"
        command = 'echo "$PVR_PLATFORM_CONFIG"; ls "$PVR_SANDBOX"'
        _, output, _ = self.run_sandbox("--no-service", service=False, command=command)
        self.assertEqual(output.split(), ["/the/users", "bus", "bus.conf", "bus.log"])

    def test_reads_standard_input(self):
        self.assertEqual(self.run_sandbox(command=("cat",), text="through\n"), (0, "through\n", ""))

    def test_is_the_users_shell_when_none_is_given(self):
        self.environment["SHELL"] = "/bin/cat"
        self.assertEqual(self.run_sandbox(text="exit 6\n"), (0, "exit 6\n", ""))
        del self.environment["SHELL"]
        self.assertEqual(self.run_sandbox(text="exit 6\n"), (6, "", ""))

    def test_finds_descriptors_and_signals_as_without_a_sandbox(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)

        def prepare():
            os.close(0)
            signal.signal(signal.SIGHUP, signal.SIG_IGN)
            signal.signal(signal.SIGCHLD, signal.SIG_IGN)
            signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGUSR1])

        look = ["sh", "-c", "ls /proc/self/fd; grep -E '^Sig(Blk|Ign)' /proc/self/status"]
        ways = {"pass_fds": (reader, writer), "preexec_fn": prepare, "stdin": None}
        alone = subprocess.run(look, env=self.environment, text=True, stdout=subprocess.PIPE, check=True, **ways)
        self.assertIn(f"\n{writer}\n", alone.stdout)
        self.assertEqual(self.run_sandbox(command=look, **ways), (0, alone.stdout, ""))

    def test_is_in_the_sandboxs_session_and_process_group(self):
        sandbox = self.start(command="cut -d' ' -f5,6 /proc/$$/stat")
        expected = f"{os.getpgid(sandbox.pid)} {os.getsid(sandbox.pid)}\n"
        self.assertEqual(self.finish(sandbox), (0, expected, ""))

    def test_leaves_no_process_behind(self):
        obedient = "setsid sh -c 'sleep infinity & sleep infinity'"
        stubborn = "setsid sh -c 'trap \"\" TERM HUP; echo up >&3; sleep infinity; sleep infinity'"
        for left in obedient, stubborn:
            with self.subTest(left=left):
                command = f"mkfifo $PVR_SANDBOX/up; exec 3<>$PVR_SANDBOX/up; ({left} &) ; "
                command += "read line <&3; exit 4" if left == stubborn else "exit 4"
                self.assertEqual(self.run_sandbox(command=command), (4, "", ""))
                self.assertEqual(self.processes(), [])


class Service(SandboxTest):
    def script(self, text):
        path = self.folder / "service"
        path.write_text("#!/bin/sh\n" + text)
        path.chmod(0o755)
        return path

    def test_that_does_not_come_up_keeps_the_command_from_running(self):
        failing = self.script("i=0; while [ $i -lt 20 ]; do i=$((i+1)); echo line $i; done; "
                              "echo the reason >&2; exit 9")
        dying = self.script("kill -ABRT $$")
        services = {
            ("sleep", "--service-option=infinity", "--wait=1"):
                f"the service sleep does not own {NAME} after 1 s; it wrote nothing",
            ("true",): f"the service true ended before it owned {NAME}, exit status 0; it wrote nothing",
            (failing,): f"the service {failing} ended before it owned {NAME}, exit status 9; its last lines:\n"
                        + "".join(f"    line {i}\n" for i in range(12, 21)) + "    the reason",
            (dying,): f"the service {dying} ended before it owned {NAME}, killed by SIGABRT (Aborted); "
                      "it wrote nothing",
            ("no-such-service",): "the service no-such-service cannot be started: No such file or directory",
            (self.folder,): f"the service {self.folder} cannot be started: Permission denied",
        }
        for service, complaint in services.items():
            with self.subTest(service=service):
                done = self.run_sandbox("--service", *service, service=False, command="echo ran")
                self.assertEqual(done, (FAILED, "", f"pvr-sandbox: {complaint}\n"))

    def test_lies_beside_the_sandbox_when_none_is_given(self):
        own = pathlib.Path(OPTIONS.sandbox).resolve().parent
        call = (f"dbus-send --system --print-reply=literal --dest={NAME} /org/vexan/tv/pvr "
                "org.vexan.tv.pvr.is_support_pvr")
        command = f"readlink /proc/$(dbus-send --system --print-reply=literal --dest=org.freedesktop.DBus / " \
                  f"org.freedesktop.DBus.GetConnectionUnixProcessID string:{NAME} | sed 's/.* //')/exe; {call}"
        status, output, complaint = self.run_sandbox(service=False, command=command)
        self.assertEqual((status, complaint), (0, ""))
        self.assertEqual(output.splitlines()[0], str(own / "pvr-simulator"))
        self.assertIn("int32 1", output)

    def test_gets_its_options_and_the_commands_environment_but_no_descriptor(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        sandbox = self.start("--service-option=--quiet", "--service-option", "two words",
                             command="echo up; env -0; read line", pass_fds=(writer,))
        self.assertEqual(sandbox.stdout.readline(), "up\n")
        service = pathlib.Path("/proc", self.in_folder("service.pid").strip())
        self.assertEqual(self.in_folder("service.log"), "starting\nargument --quiet\nargument two words\n")
        environment = set(read(service / "environ").split("\0"))
        links = {os.readlink(link) for link in (service / "fd").iterdir()}
        pipe = os.readlink(f"/proc/self/fd/{writer}")
        self.assertNotIn(pipe, links)
        self.assertEqual(os.readlink(service / "fd/0"), "/dev/null")
        self.assertEqual(os.getsid(int(service.name)), int(service.name))
        _, output, _ = self.finish(sandbox, "\n")
        own = {"PWD", "OLDPWD", "SHLVL", "_"}
        self.assertLessEqual({entry for entry in output.split("\0") if entry.split("=")[0] not in own}, environment)

    def test_that_ends_ends_the_command(self):
        command = ("trap 'echo asked; exit 0' TERM; echo up; kill -KILL $(cat $PVR_SANDBOX/service.pid); "
                   "sleep infinity & wait")
        status, output, complaint = self.run_sandbox(command=command)
        self.assertEqual((status, output), (FAILED, "up\nasked\n"))
        self.assertEqual(complaint, "pvr-sandbox: the service ended, killed by SIGKILL (Killed); its last lines:\n"
                                    "    starting\n")

    def test_that_ends_ends_even_a_command_that_does_not_want_to(self):
        command = "trap '' TERM; kill -ABRT $(cat $PVR_SANDBOX/service.pid); while :; do sleep infinity; done"
        status, _, complaint = self.run_sandbox("--on-service-exit", "stop", command=command)
        self.assertEqual(status, FAILED)
        self.assertIn("the service ended, killed by SIGABRT", complaint)

    def test_that_ends_may_stay_away(self):
        sandbox = self.start("--on-service-exit=keep",
                             command=f"kill -KILL $(cat $PVR_SANDBOX/service.pid); read line; {ASK}; exit 4")
        wait_until(lambda: read(self.stderr).endswith("\n"), "the sandbox says so")
        done = self.finish(sandbox, "\n")
        self.assertEqual(done, (4, "   boolean false\n",
                                "pvr-sandbox: the service ended, killed by SIGKILL (Killed)\n"))

    def test_that_ends_is_started_again_as_often_as_it_ends(self):
        sandbox = self.start("--on-service-exit=restart", "--verbose", command=f"read line; {ASK}; exit 4")
        for times in range(1, 4):
            wait_until(lambda: read(self.stderr).count("is ready") == times, "the service is ready")
            if times < 3:
                os.kill(int(self.in_folder("service.pid")), signal.SIGKILL)
        status, output, told = self.finish(sandbox, "\n")
        self.assertEqual((status, output), (4, "   boolean true\n"))
        self.assertEqual(told.count("the service ended, killed by SIGKILL (Killed); it is started again\n"), 2)

    def test_that_does_not_come_up_again_ends_the_command(self):
        service = self.script(f"[ ! -e {self.folder}/once ] || exit 9; touch {self.folder}/once; "
                              f"exec {OPTIONS.service}")
        sandbox = self.start("--service", service, "--on-service-exit=restart", service=False,
                             command="trap 'echo asked; exit 0' TERM; kill -KILL $(cat $PVR_SANDBOX/service.pid); "
                                     "sleep infinity & wait")
        status, output, complaint = self.finish(sandbox)
        self.assertEqual((status, output), (FAILED, "asked\n"))
        self.assertIn(f"ended before it owned {NAME}, exit status 9", complaint)


class ServiceLog(SandboxTest):
    def test_is_a_file_in_the_folder(self):
        self.assertEqual(self.run_sandbox(command="cat $PVR_SANDBOX/service.log"), (0, "starting\n", ""))

    def test_may_be_standard_error(self):
        self.assertEqual(self.run_sandbox("--service-log=-", command="exit 3"), (3, "", "starting\n"))
        status, _, complaint = self.run_sandbox("--service-log", "-", "--service", "false", service=False)
        self.assertEqual(status, FAILED)
        self.assertIn("exit status 1; what it wrote is above\n", complaint)

    def test_may_be_any_file_which_is_kept_and_appended_to(self):
        log = self.folder / "log"
        log.write_text("earlier\n")
        self.assertEqual(self.run_sandbox("--service-log", log, command="exit 3"), (3, "", ""))
        self.assertEqual(log.read_text(), "earlier\nstarting\n")
        log.write_text("earlier\n")
        status, _, complaint = self.run_sandbox("--service-log", log, "--service", "false", service=False)
        self.assertEqual(status, FAILED)
        self.assertIn("exit status 1; it wrote nothing\n", complaint)

    def test_that_cannot_be_opened_is_refused(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        for log, reason in {pipe: "No such device or address", self.folder: "Is a directory"}.items():
            with self.subTest(log=log):
                done = self.run_sandbox("--service-log", log, command="echo ran")
                self.assertEqual(done,
                                 (FAILED, "", f"pvr-sandbox: the service's log {log} cannot be opened: {reason}\n"))


class Signal(SandboxTest):
    def test_is_passed_on_to_the_command(self):
        for number in signal.SIGTERM, signal.SIGHUP:
            with self.subTest(number=number):
                command = f"trap 'exit 5' {number.name[3:]}; echo up; sleep infinity & wait"
                sandbox = self.start(command=command)
                self.assertEqual(sandbox.stdout.readline(), "up\n")
                sandbox.send_signal(number)
                self.assertEqual(self.finish(sandbox), (5, "", ""))
                sandbox = self.start(command="echo up; exec sleep infinity")
                self.assertEqual(sandbox.stdout.readline(), "up\n")
                sandbox.send_signal(number)
                self.assertEqual(self.finish(sandbox), (128 + number, "", ""))

    def test_of_the_keyboard_is_left_to_the_command(self):
        sandbox = self.start(command="echo up; read line; exit 5")
        self.assertEqual(sandbox.stdout.readline(), "up\n")
        for number in signal.SIGINT, signal.SIGQUIT:
            sandbox.send_signal(number)
        self.assertEqual(self.finish(sandbox, "\n"), (5, "", ""))

    def test_before_the_command_runs_ends_the_sandbox(self):
        for number in signal.SIGTERM, signal.SIGHUP, signal.SIGINT, signal.SIGQUIT:
            with self.subTest(number=number):
                sandbox = self.start("--service=sleep", "--service-option=infinity", service=False, command="echo ran")
                wait_until(lambda: any(read(f"/proc/{process}/comm") == "sleep\n" for process in self.processes()),
                           "the service runs")
                sandbox.send_signal(number)
                self.assertEqual(self.finish(sandbox), (128 + number, "", ""))

    def test_that_was_ignored_stays_ignored(self):
        sandbox = self.start(command="echo up; read line; exit 5",
                             preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.assertEqual(sandbox.stdout.readline(), "up\n")
        sandbox.send_signal(signal.SIGHUP)
        self.assertEqual(self.finish(sandbox, "\n"), (5, "", ""))

    def test_that_kills_the_sandbox_or_its_keeper_leaves_nothing_behind(self):
        command = ("mkfifo $PVR_SANDBOX/up; exec 3<>$PVR_SANDBOX/up; "
                   "(setsid sh -c 'trap \"\" TERM HUP; echo up >&3; exec >&- 3>&-; sleep infinity; sleep infinity' &); "
                   "read line <&3; echo up; sleep infinity")
        for victim in "sandbox", "keeper":
            with self.subTest(victim=victim):
                sandbox = self.start(command=command)
                self.assertEqual(sandbox.stdout.readline(), "up\n")
                self.assertGreaterEqual(len(self.processes()), 6)
                os.kill(sandbox.pid if victim == "sandbox" else self.keeper(sandbox), signal.SIGKILL)
                status, _, complaint = self.finish(sandbox)
                expected = {
                    "sandbox": (-signal.SIGKILL, ""),
                    "keeper": (FAILED, "pvr-sandbox: the sandbox's keeper was killed by SIGKILL (Killed)\n"),
                }
                self.assertEqual((status, complaint), expected[victim])
                wait_until(lambda: not self.processes(), "every process has ended")
                self.assertEqual(list(self.temporary.iterdir()), [])

    def test_that_kills_the_sandbox_and_its_keeper_ends_what_they_started(self):
        sandbox = self.start(command="echo $PVR_SANDBOX; exec sleep infinity")
        place = pathlib.Path(sandbox.stdout.readline().strip())
        keeper = self.keeper(sandbox)
        # A keeper that is stopped cannot clean up before it is killed.
        os.kill(keeper, signal.SIGSTOP)
        sandbox.kill()
        os.kill(keeper, signal.SIGKILL)
        self.finish(sandbox)
        wait_until(lambda: not self.processes(), "every process has ended")
        # Only the folder is left, as documented.
        shutil.rmtree(place)

    def test_that_kills_the_sandbox_ends_it_even_when_nobody_reads_what_it_says(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        os.set_blocking(writer, False)
        with self.assertRaises(BlockingIOError):
            while True:
                os.write(writer, bytes(1))
        os.set_blocking(writer, True)
        sandbox = self.start("--on-service-exit=keep", stderr=writer,
                             command="cat $PVR_SANDBOX/service.pid; exec sleep infinity")
        service = int(sandbox.stdout.readline())
        os.kill(service, signal.SIGKILL)
        wait_until(lambda: service not in self.processes(), "the service has ended")
        sandbox.kill()
        self.finish(sandbox)

    def test_that_kills_the_sandbox_at_any_moment_of_its_start_leaves_nothing_behind(self):
        for moment in range(12):
            sandbox = self.start(command="sleep infinity")
            wait_until(lambda: len(self.processes()) > min(moment // 2, 4), "the sandbox is being started")
            sandbox.kill()
            self.finish(sandbox)
            wait_until(lambda: not self.processes(), "every process has ended")
            self.assertEqual(list(self.temporary.iterdir()), [])


class Start(SandboxTest):
    def test_is_refused_with_the_reason(self):
        self.environment["SHELL"] = "/bin/sh"
        wrong = {
            ("--unknown",): "The following argument was not expected: --unknown; a command goes behind --; see --help",
            ("ls",): "The following argument was not expected: ls; a command goes behind --; see --help",
            ("--wait=0",): "--wait: Value 0 not in range 1 to 3600; see --help",
            ("--wait=soon",): None,
            ("--wait",): None,
            ("--on-service-exit=explode",): None,
            ("--no-service", "--service=x"): "--service excludes --no-service; see --help",
            ("--folder=",): None,
            ("--service=",): None,
        }
        for options, complaint in wrong.items():
            with self.subTest(options=options):
                status, output, found = self.run_sandbox(*options, service=False)
                self.assertEqual((status, output), (FAILED, ""))
                self.assertRegex(found, r"^pvr-sandbox: .*; see --help\n$")
                if complaint:
                    self.assertEqual(found, f"pvr-sandbox: {complaint}\n")

    def test_explains_itself_without_starting_anything(self):
        status, output, _ = self.run_sandbox("--help", service=False, command="exit 3")
        self.assertEqual(status, 0)
        for option in ("--service", "--service-option", "--no-service", "--on-service-exit", "--folder", "--keep",
                       "--service-log", "--wait", "--verbose", "--version", "125", "126", "127", "128+n"):
            self.assertIn(option, output)
        status, output, _ = self.run_sandbox("--version", service=False, command="exit 3")
        self.assertEqual(status, 0)
        self.assertRegex(output, r"^pvr-sandbox \d+\.\d+\.\d+\n$")

    def test_needs_a_bus_daemon(self):
        self.environment["PATH"] = str(self.temporary)
        status, output, complaint = self.run_sandbox("--no-service", service=False, command=["/bin/echo", "ran"])
        self.assertEqual((status, output), (FAILED, ""))
        self.assertEqual(complaint, "pvr-sandbox: dbus-daemon is not found in PATH (Debian has it in the package "
                                    "dbus-daemon)\n")

    def test_says_why_the_bus_daemon_ends(self):
        programs = self.folder / "bin"
        programs.mkdir()
        (programs / "dbus-daemon").write_text("#!/bin/sh\necho the reason >&2\nexit 9\n")
        (programs / "dbus-daemon").chmod(0o755)
        self.environment["PATH"] = f"{programs}:{self.environment['PATH']}"
        done = self.run_sandbox(command="echo ran")
        self.assertEqual(done, (FAILED, "", "pvr-sandbox: the bus ended, exit status 9; its last lines:\n"
                                            "    the reason\n"))

    def test_tells_what_it_does_when_asked(self):
        status, _, told = self.run_sandbox("--verbose", command="exit 3")
        self.assertEqual(status, 3)
        for what in "the folder is", "the bus is", "the service is ready", "the command is", "the command ended":
            self.assertIn(f"pvr-sandbox: {what}", told)


if __name__ == "__main__":
    unittest.TestCase.maxDiff = None
    sandboxed.main()
