"""Runs what a page tells its reader to type, in the reader's folder, on the reader's bus."""
import contextlib
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time

MOMENT = 0.3  # seconds that a command has to end by itself, once it has printed something
HANGS = 60  # seconds after which a command is given up; nothing is measured by it
MARK = "\x1dends with "


class Failure(Exception):
    """A block does not keep what it says. The text tells why."""


def _start(script, output, **popen):
    # A file takes the output, not a pipe: what a command leaves in the background may keep it open.
    return subprocess.Popen(["bash", "-c", script], stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                            start_new_session=True, **popen)


def _read(output):
    output.seek(0)
    return output.read().decode("utf-8", errors="replace")


def _wait(process, output):
    try:
        return process.wait(HANGS)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        raise Failure(f"does not end within {HANGS} s; so far it printed\n{_read(output)}") from None


def run(script):
    """All that a script prints. It has to end with 0, and so has each of its commands."""
    with tempfile.TemporaryFile() as output:
        status = _wait(_start(f"set -e -o pipefail\n{script}", output), output)
        if status != 0:
            raise Failure(f"ends with {status} after it printed\n{_read(output)}")
        return _read(output)


def run_each(commands):
    """What each command prints, in one shell. Each has to end with 0."""
    script = "".join(f"{{ {command}\n}}\nprintf '\\n{MARK}%s\\n' $?\n" for command in commands)
    with tempfile.TemporaryFile() as output:
        _wait(_start(script, output), output)
        printed = re.split(rf"\n{MARK}(\d+)\n", _read(output))
    answers = dict(zip(range(len(commands)), zip(printed[::2], printed[1::2])))
    for index, command in enumerate(commands):
        text, status = answers.get(index, (printed[-1], "a syntax error or exit"))
        if status != "0":
            raise Failure(f"$ {command}\nends with {status} after it printed\n{text}")
        yield command, text


def interrupt(command):
    """Runs a command until it has printed a line; then Ctrl-C has to end it with 0 or 130."""
    def take_interrupts():
        signal.signal(signal.SIGINT, signal.SIG_DFL)  # whoever started the tests may have them ignored

    with tempfile.NamedTemporaryFile() as output:
        process = _start(f"exec {command}", output, preexec_fn=take_interrupts)
        deadline = time.monotonic() + HANGS
        while b"\n" not in pathlib.Path(output.name).read_bytes() and process.poll() is None:
            if time.monotonic() > deadline:
                os.killpg(process.pid, signal.SIGKILL)
                raise Failure(f"{command}\nprints nothing within {HANGS} s")
            time.sleep(0.01)
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(MOMENT)  # what it printed may have been its last words
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGINT)
        status = _wait(process, output)
        if status not in (0, 130, -signal.SIGINT):
            raise Failure(f"{command}\nends with {status} after it printed\n{_read(output)}")
