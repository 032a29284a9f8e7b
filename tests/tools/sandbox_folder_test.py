"""The folder of pvr-sandbox: where it is, what is in it, and that its removal takes nothing else along."""
import os
import resource
import stat
import sys
import unittest

import sandboxed
from sandboxed import FAILED, SandboxTest, read

# Without its privileges, root is kept out by modes like everybody else.
UNPRIVILEGED = ["setpriv", "--bounding-set=-all", "--inh-caps=-all"] if os.geteuid() == 0 else []


class BusOnly(SandboxTest):
    """Tests that have no need of a service."""

    def run_sandbox(self, *options, **start):
        return super().run_sandbox("--no-service", *options, service=False, **start)


class TemporaryFolder(BusOnly):
    def test_is_its_users_alone(self):
        _, output, _ = self.run_sandbox(command="stat -c %a $PVR_SANDBOX")
        self.assertEqual(output, "700\n")

    def test_is_in_tmp_when_nothing_else_is_said(self):
        for value in None, "":
            with self.subTest(TMPDIR=value):
                self.environment.pop("TMPDIR")
                if value is not None:
                    self.environment["TMPDIR"] = value
                status, output, complaint = self.run_sandbox(command="echo $PVR_SANDBOX")
                self.assertEqual((status, complaint), (0, ""))
                self.assertRegex(output, "^/tmp/pvr-sandbox-......\n$")
                self.assertFalse(os.path.lexists(output.strip()))
                self.environment["TMPDIR"] = value or ""

    def test_is_refused_where_it_cannot_be(self):
        closed = self.folder / "closed"
        closed.mkdir(mode=0o500)
        long = self.folder / ("x" * 99)
        long.mkdir()
        reasons = {
            str(self.folder / "missing"): "No such file or directory",
            str(self.stderr): "Not a directory",
            str(closed): "Permission denied",
            str(long): "the bus's socket in it may have 99 bytes; set TMPDIR to a folder with a shorter one",
        }
        for place, reason in reasons.items():
            with self.subTest(place=place):
                self.environment["TMPDIR"] = place
                line = [*UNPRIVILEGED, sandboxed.OPTIONS.sandbox, "--no-service", "--", "echo", "ran"]
                status, output, complaint = self.finish(self.start_line(line))
                self.assertEqual((status, output), (FAILED, ""))
                self.assertRegex(complaint, f"^pvr-sandbox: .*{place}.*{reason}\n$")
        self.assertEqual([*closed.iterdir(), *long.iterdir()], [])

    def test_may_have_any_name(self):
        place = self.folder / "a, b;c=\u00e4 <&>'%"
        place.mkdir()
        self.environment["TMPDIR"] = str(place)
        command = ("dbus-send --system --print-reply=literal --dest=org.freedesktop.DBus / "
                   "org.freedesktop.DBus.NameHasOwner string:org.freedesktop.DBus")
        self.assertEqual(self.run_sandbox(command=command), (0, "   boolean true\n", ""))
        self.assertEqual(list(place.iterdir()), [])

    def test_may_be_relative_to_where_the_sandbox_is_started(self):
        self.environment["TMPDIR"] = "tmp"
        command = "cd /; test -S $PVR_SANDBOX/bus; echo $? ${PVR_SANDBOX%/*}"
        self.assertEqual(self.run_sandbox(command=command, cwd=self.folder), (0, f"0 {self.temporary}\n", ""))

    def test_is_kept_when_asked(self):
        status, output, complaint = self.run_sandbox("--keep",
                                                     command="echo text >$PVR_SANDBOX/file; echo $PVR_SANDBOX")
        place = self.temporary / output.strip()
        self.assertEqual((status, complaint), (0, f"pvr-sandbox: the folder is kept: {place}\n"))
        self.assertEqual(read(place / "file"), "text\n")
        for entry in place.iterdir():
            entry.unlink()
        place.rmdir()


class Removal(BusOnly):
    def remove_after(self, commands, descriptors=None, **environment):
        self.environment.update(environment)
        limit = descriptors and (lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (descriptors, descriptors)))
        line = [*UNPRIVILEGED, sandboxed.OPTIONS.sandbox, "--no-service", "--",
                "sh", "-ec", f"cd $PVR_SANDBOX; {commands}"]
        done = self.finish(self.start_line(line, preexec_fn=limit))
        self.assertEqual(done, (0, "", ""))
        self.assertEqual(list(self.temporary.iterdir()), [])

    def test_follows_no_link(self):
        outside = self.folder / "outside"
        outside.mkdir()
        (outside / "file").write_text("text")
        self.remove_after(f"ln -s {outside} link; mkdir deep; ln -s {outside} deep/link; ln -s / deep/root; "
                          f"ln {outside}/file hard; ln -s missing dangling")
        self.assertEqual((outside / "file").read_text(), "text")

    def test_does_not_follow_the_folder_itself_when_it_became_a_link(self):
        outside = self.folder / "outside"
        outside.mkdir()
        (outside / "file").write_text("text")
        moved = self.folder / "moved"
        self.remove_after(f"mv $PVR_SANDBOX {moved}; ln -s {outside} $PVR_SANDBOX")
        self.assertEqual((outside / "file").read_text(), "text")
        self.assertTrue((moved / "bus.conf").exists())

    def test_opens_what_is_closed(self):
        self.remove_after("mkdir -p a/b/c; touch a/file a/b/file a/b/c/file; chmod 400 a/b/c/file; chmod 0 a/b/c; "
                          "chmod 500 a/b; chmod 0 a; chmod 500 .")

    def test_takes_any_name(self):
        self.remove_after("mkdir -- 0 1 2 ' ' '-rf' '\n' ...; mkdir 0/0 0/1 1/0 2/2 .../...; touch 0/0/5 5")

    def test_takes_a_tree_deeper_than_a_path_or_the_descriptors_reach(self):
        make = ("import os\n"
                "for level in range(100):\n"
                "    os.mkdir(level % 10 * 20 * 'x' + 'y')\n"
                "    os.chdir(level % 10 * 20 * 'x' + 'y')\n"
                "    open('file', 'w').close()\n")
        self.remove_after(f'{sys.executable} -c "$MAKE"', descriptors=40, MAKE=make)

    def test_takes_sockets_and_pipes(self):
        self.remove_after("mkfifo pipe; mkdir deep; mkfifo deep/pipe")

    def test_is_no_fault_when_the_command_removed_the_folder(self):
        self.remove_after("rm -r $PVR_SANDBOX")


class GivenFolder(BusOnly):
    def test_is_made_and_stays_without_what_the_sandbox_put_there(self):
        place = self.folder / "new" / "box"
        status, output, complaint = self.run_sandbox(
            "--folder", f"{place}//", command="echo $PVR_SANDBOX; cd $PVR_SANDBOX; ls; echo text >of-the-command")
        self.assertEqual((status, complaint), (0, ""))
        self.assertEqual(output.split(), [str(place), "bus", "bus.conf", "bus.log", "platform.conf"])
        self.assertEqual(stat.S_IMODE(place.stat().st_mode), 0o700)
        self.assertEqual([entry.name for entry in place.iterdir()], ["of-the-command"])

    def test_keeps_what_was_there(self):
        place = self.folder / "box"
        (place / "sub").mkdir(parents=True)
        (place / "sub/file").write_text("text")
        (self.folder / "link").symlink_to("box")
        status, output, complaint = self.run_sandbox("--folder", "link", command="echo $PVR_SANDBOX", cwd=self.folder)
        self.assertEqual((status, output, complaint), (0, f"{place}\n", ""))
        self.assertEqual([entry.name for entry in place.iterdir()], ["sub"])
        self.assertEqual((place / "sub/file").read_text(), "text")

    def test_loses_the_sandboxs_files_even_when_the_keeper_is_killed(self):
        place = self.folder / "box"
        place.mkdir()
        (place / "file").write_text("text")
        for victim in "$PPID", "$(cut -d' ' -f4 /proc/$PPID/stat)":
            with self.subTest(victim=victim):
                sandbox = self.start("--no-service", "--folder", place, service=False,
                                     command=f"kill -KILL {victim}; sleep infinity")
                self.finish(sandbox)
                sandboxed.wait_until(lambda: not self.processes(), "every process has ended")
                self.assertEqual([entry.name for entry in place.iterdir()], ["file"])

    def test_keeps_the_sandboxs_files_when_asked(self):
        place = self.folder / "box"
        status, _, complaint = self.run_sandbox("--keep", "--folder", place, command="true")
        self.assertEqual((status, complaint), (0, f"pvr-sandbox: the folder is kept: {place}\n"))
        self.assertLessEqual({"bus.conf", "bus.log", "platform.conf"}, {entry.name for entry in place.iterdir()})

    def test_is_refused_when_a_file_of_that_name_is_there(self):
        place = self.folder / "box"
        place.mkdir()
        for name in "bus", "bus.conf", "bus.log", "platform.conf":
            with self.subTest(name=name):
                (place / name).write_text("the user's")
                done = self.run_sandbox("--folder", place, command="echo ran")
                self.assertEqual(done, (FAILED, "", f"pvr-sandbox: {place}/{name} is there already: another sandbox "
                                                    "uses this folder, or left it behind\n"))
                self.assertEqual([entry.name for entry in place.iterdir()], [name])
                self.assertEqual((place / name).read_text(), "the user's")
                (place / name).unlink()

    def test_is_refused_when_it_is_none_or_its_path_is_too_long(self):
        long = self.folder / ("x" * 99)
        reasons = {
            self.stderr: f"{self.stderr} is no folder: Not a directory",
            self.stderr / "deeper": f"the folder {self.stderr}/deeper cannot be made: Not a directory",
            long: f"the path {long} is too long: the bus's socket in it may have 99 bytes; "
                  "choose a folder with a shorter one",
        }
        for place, reason in reasons.items():
            with self.subTest(place=place):
                done = self.run_sandbox("--folder", place, command="echo ran")
                self.assertEqual(done, (FAILED, "", f"pvr-sandbox: {reason}\n"))
        self.assertFalse(long.exists())


if __name__ == "__main__":
    unittest.TestCase.maxDiff = None
    sandboxed.main()
