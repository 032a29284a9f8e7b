"""A D-Bus policy file does on a real bus what it is there for: somebody owns a name, and others call it."""
import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

NOBODY = 65534
OPTIONS = argparse.Namespace()
# What the system bus allows before any service's policy file is read, as far as this test needs it.
CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path={folder}/bus</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <deny own="*"/>
    <deny send_type="method_call"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow send_destination="org.freedesktop.DBus"/>
  </policy>
  <include>{policy}</include>
</busconfig>
"""


class Bus:
    """A bus daemon that has read a policy file, or an exception that says why there is none."""

    def __init__(self, policy):
        self.policy = policy

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory()
        os.chmod(self.folder.name, 0o755)
        configuration = pathlib.Path(self.folder.name, "bus.conf")
        configuration.write_text(CONFIGURATION.format(folder=self.folder.name, policy=self.policy), encoding="utf-8")
        self.daemon = subprocess.Popen(["dbus-daemon", f"--config-file={configuration}", "--nofork",
                                        "--print-address"], text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.address = self.daemon.stdout.readline().strip()
        if not self.address:
            complaint = self.daemon.stderr.read()
            self.__exit__()
            raise RuntimeError(complaint)
        return self

    def __exit__(self, *_):
        self.daemon.terminate()
        self.daemon.communicate(timeout=60)
        self.folder.cleanup()

    def start(self, *command, **options):
        return subprocess.Popen([str(word) for word in command], text=True, stdin=subprocess.PIPE,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                env=dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=self.address), **options)

    def owner(self, **options):
        # A copy, since the build folder may be one that only its owner can enter.
        program = shutil.copy(OPTIONS.owner, self.folder.name)
        return self.start(program, OPTIONS.name, **options)

    def call(self, **options):
        """What a client is answered that calls the service."""
        client = self.start("dbus-send", "--system", "--print-reply", f"--dest={OPTIONS.name}", "/any",
                            "org.freedesktop.DBus.Peer.Ping", **options)
        return client.communicate(timeout=30)[0]


@unittest.skipUnless(os.geteuid() == 0, "only root may own the name")
class ServiceOfRoot(unittest.TestCase):
    def test_owns_the_name_and_is_called_by_anyone(self):
        with Bus(OPTIONS.policy) as bus, bus.owner() as service:
            self.assertEqual(service.stdout.readline(), "owned\n")
            self.assertIn("method return", bus.call())
            self.assertIn("method return", bus.call(user=NOBODY, group=NOBODY, extra_groups=[]))
            service.communicate(timeout=60)

    def test_is_called_by_nobody_without_the_policy(self):
        text = pathlib.Path(OPTIONS.policy).read_text(encoding="utf-8")
        rule = f'<allow send_destination="{OPTIONS.name}"/>'
        self.assertIn(rule, text)
        with tempfile.NamedTemporaryFile("w", suffix=".conf") as changed:
            changed.write(text.replace(rule, ""))
            changed.flush()
            with Bus(changed.name) as bus, bus.owner() as service:
                self.assertEqual(service.stdout.readline(), "owned\n")
                self.assertIn("AccessDenied", bus.call(user=NOBODY, group=NOBODY, extra_groups=[]))
                service.communicate(timeout=60)


class Policy(unittest.TestCase):
    def test_is_accepted_by_a_bus(self):
        with Bus(OPTIONS.policy) as bus:
            self.assertTrue(bus.address.startswith("unix:"))
            self.assertIsNone(bus.daemon.poll())

    def test_keeps_everybody_else_from_owning_the_name(self):
        somebody = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
        with Bus(OPTIONS.policy) as bus, bus.owner(**somebody) as service:
            self.assertIn("is not allowed to own the service", service.communicate(timeout=30)[0])

    def test_that_is_broken_keeps_the_bus_from_starting(self):
        with tempfile.NamedTemporaryFile("w", suffix=".conf") as broken:
            broken.write(pathlib.Path(OPTIONS.policy).read_text(encoding="utf-8").replace("</policy>", "", 1))
            broken.flush()
            with self.assertRaises(RuntimeError):
                with Bus(broken.name):
                    pass


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    for option in "policy", "name", "owner":
        parser.add_argument("--" + option, required=True)
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    unittest.main(argv=sys.argv[:1] + rest, verbosity=2)
