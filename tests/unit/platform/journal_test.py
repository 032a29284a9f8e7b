"""The log's stand-in and the journal. The test is the journal: it listens at the journal's address, which
a mount of its own hides from everybody else. Where it may not mount, there is nothing to test (77)."""
import os
import socket
import subprocess
import sys

ADDRESS = "/run/systemd/journal/socket"
SKIPPED = 77
IN_OWN_MOUNTS = "--in-own-mounts"


def own_mounts():
    """The command that runs another with mounts of its own, or None where that is not allowed."""
    for options in ["--mount"], ["--mount", "--map-root-user"]:
        command = ["unshare", *options]
        try:
            probe = subprocess.run([*command, "mount", "-t", "tmpfs", "none", "/run"], check=False,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        except FileNotFoundError:
            return None
        if probe.returncode == 0:
            return command
    return None


def entries(program, text, level):
    """What the journal receives while the program logs a text."""
    os.makedirs(os.path.dirname(ADDRESS), exist_ok=True)
    if os.path.exists(ADDRESS):
        os.unlink(ADDRESS)
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as journal:
        journal.bind(ADDRESS)
        journal.setblocking(False)
        done = subprocess.run([program, "text", text], text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              check=True, env=dict(os.environ, PVR_LOG="journal", PVR_LOG_LEVEL=level))
        assert (done.stdout, done.stderr) == ("", ""), done
        received = []
        try:
            while True:
                received.append(journal.recv(65536))
        except BlockingIOError:
            return received


def as_the_journal(program):
    subprocess.run(["mount", "-t", "tmpfs", "none", "/run"], check=True)

    received = entries(program, "two words", "info")
    assert len(received) == 1, received
    fields = dict(line.split("=", 1) for line in received[0].decode().splitlines())
    assert fields == {"MESSAGE": "two words", "PRIORITY": "3", "SYSLOG_IDENTIFIER": "TAG"}, fields

    received = entries(program, "line one\nline two", "error")
    assert len(received) == 1, received
    message = b"line one\nline two"
    expected = b"MESSAGE\n" + len(message).to_bytes(8, "little") + message + b"\n"
    assert expected in received[0], received
    print("the journal received each entry once, with its priority and name")


def main():
    program = sys.argv[-1]
    if IN_OWN_MOUNTS in sys.argv:
        as_the_journal(program)
        return 0
    command = own_mounts()
    if command is None:
        print("skipped: standing in for the journal needs a mount namespace, which is not to be had here")
        return SKIPPED
    return subprocess.run([*command, sys.executable, "-B", __file__, IN_OWN_MOUNTS, program], check=False).returncode


if __name__ == "__main__":
    assert __debug__, "do not run with -O"
    sys.exit(main())
