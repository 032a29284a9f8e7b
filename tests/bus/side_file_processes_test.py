"""Several processes use the same side files at once: nothing that one of them writes is lost or read in half."""
import argparse
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest

OPTIONS = argparse.Namespace()
HEADER = struct.Struct("<Ii300q300I300I")
RECORD_SIZE = 10905


class Processes(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.recording = pathlib.Path(folder.name, "a.srf")

    def work(self, *works):
        """Runs one process for each (work, number, rounds), all at the same time."""
        workers = [subprocess.Popen([OPTIONS.worker, work, self.recording, str(number), str(rounds)], text=True,
                                    stdin=subprocess.PIPE, stdout=subprocess.PIPE) for work, number, rounds in works]
        for worker in workers:
            self.assertEqual(worker.stdout.readline(), "ready\n")
        for worker in workers:
            worker.stdin.write("\n")
            worker.stdin.flush()
        self.assertEqual([(worker.communicate()[0], worker.returncode) for worker in workers], [("", 0)] * len(works))

    def test_lose_no_block_of_a_fingerprint_file(self):
        """Not even while the file is made."""
        rounds = 70
        self.work(*[("write-blocks", number, rounds) for number in range(4)])
        content = self.recording.with_suffix(".sas").read_bytes()
        fields = HEADER.unpack_from(content)
        count, times, sizes, offsets = fields[1], fields[2:302], fields[302:602], fields[602:902]
        self.assertEqual(count, 4 * rounds)
        self.assertEqual(sorted(times[:count]), [number * 1000 + i for number in range(4) for i in range(rounds)])
        for time, size, offset in zip(times[:count], sizes, offsets):
            number = time // 1000
            self.assertEqual(content[offset:offset + size], bytes([ord("a") + number]) * number * 100)
        self.assertEqual(len(content), offsets[count - 1] + sizes[count - 1])

    def test_read_no_info_file_in_half(self):
        self.recording.with_suffix(".inf").write_bytes(b"\1" * RECORD_SIZE)
        self.work(("write-info", 2, 300), ("write-info", 3, 300), ("read-info", 0, 3000), ("read-info", 0, 3000))
        content = self.recording.with_suffix(".inf").read_bytes()
        self.assertEqual(len(content), RECORD_SIZE)
        self.assertIn(content[2], (2, 3))
        self.assertEqual(content[2:], content[2:3] * (RECORD_SIZE - 2))


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--worker", required=True)
    OPTIONS, remaining = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], "--verbose", *remaining])
