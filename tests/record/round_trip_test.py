"""Holds that what eight threads tell the library while they are recorded is played as it was.

The command is the program's; SEEDS is how many times it is run, and CAPTURES how long each time.
"""

import json
import os
import subprocess
import sys
import tempfile
import unittest

COMMAND = []
PLAYER = os.environ["PLAYER"]
HAL = os.environ["HAL"]
HAL_ROOT = os.environ["HAL_ROOT"]
REPLAY = os.environ["REPLAY"]


def run(arguments, record=None, program=None, limit=1 << 30, **more):
    """What the program says on standard error."""
    environment = {**os.environ, **more}
    environment.pop("INFOSYNC_RECORD", None)
    if record is not None:
        environment["INFOSYNC_RECORD"] = record
        environment["INFOSYNC_RECORD_LIMIT"] = str(limit)
    command = COMMAND[:-1] + [program or COMMAND[-1]]
    done = subprocess.run(command + arguments, env=environment, capture_output=True, timeout=300)
    said = done.stderr.decode(errors="replace")
    if done.returncode != 0:
        raise AssertionError(said[-2000:])
    return said


def read(*path):
    with open(os.path.join(*path), "rb") as file:
        return file.read()


def recording_in(folder):
    (name,) = (name for name in os.listdir(folder) if name.startswith("capture-"))
    return os.path.join(folder, name)


# Reports of different images may lie in each other where several are requested directly.
def calls_by_image(folder):
    calls = read(folder, "calls.jsonl").splitlines()
    return sorted(calls, key=lambda line: json.loads(line, strict=False)["id"])


class RoundTrip(unittest.TestCase):
    def check(self, seed, captures):
        with tempfile.TemporaryDirectory() as taken, tempfile.TemporaryDirectory() as played:
            run(["take", str(seed), captures, taken], record=taken)
            log = recording_in(taken)
            run(["play", log, played, PLAYER], record=played)
            self.assertEqual(calls_by_image(taken), calls_by_image(played))
            self.assertEqual(read(taken, "left.txt"), read(played, "left.txt"))

            # A recording of the playing is the recording again, but for its own identity.
            lines = read(log).splitlines()
            again = read(recording_in(played)).splitlines()
            self.assertEqual(lines[1:], again[1:])
            header, header_again = json.loads(lines[0]), json.loads(again[0])
            for name in ("pid", "startMonotonic", "startReal"):
                self.assertIsInstance(header.pop(name), int)
                header_again.pop(name)
            self.assertEqual(header, header_again)
            self.assertIn(b'"answered"', b"".join(lines))

    def test_each_part_plays_by_itself(self):
        with tempfile.TemporaryDirectory() as taken:
            run(["parts"], record=taken, program=HAL, limit=65536, INFOSYNC_HOST_ROOT=HAL_ROOT)
            found = {}
            for name in os.listdir(taken):
                header, *lines = map(json.loads, read(taken, name).splitlines())
                calls = os.path.join(taken, "calls.jsonl")
                said = run(["--json", calls, os.path.join(taken, name)], program=REPLAY)
                reported = {json.loads(line)["id"] for line in read(calls).splitlines()}
                found[header["part"]] = (header["cut"], lines[0]["image"], lines[-1], reported,
                                         "may not have returned" in said)
            self.assertEqual({
                2: (["kept", "nobody saw the answer"], "A",
                    {"end": True, "calls": 21, "next": 3}, {"A"}, False),
                3: (["A", "kept", "nobody saw the answer"], "kept",
                    {"end": True, "calls": 28}, {"B"}, False)}, found)

    def test_round_trip(self):
        for seed in range(int(os.environ.get("SEEDS", "1"))):
            self.check(seed, os.environ.get("CAPTURES", "1000"))


if __name__ == "__main__":
    COMMAND = sys.argv[2:]
    unittest.main(argv=sys.argv[:2])
