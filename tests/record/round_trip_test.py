"""Holds that what eight threads tell the library while they are recorded is played as it was.

The command is the program's. Of the environment:

    PLAYER    the library that plays, infosync-player
    PLAYING   the command of another build's program, which plays instead; PLAYER is of that build
    SEEDS     how many times
    CAPTURES  how many captures each time
    DIFF      infosync-diff, which is to find nothing; left out where it cannot be run
    HAL, HAL_ROOT, REPLAY  the recorder's test program, its host root and infosync-replay
"""

import json
import os
import shlex
import subprocess
import sys
import tempfile
import unittest

COMMAND = PLAYING = []
PLAYER = os.environ["PLAYER"]
HAL = os.environ.get("HAL")
HAL_ROOT = os.environ.get("HAL_ROOT")
REPLAY = os.environ.get("REPLAY")
DIFF = os.environ.get("DIFF")


def run(command, arguments, record=None, limit=1 << 30, **more):
    """What the program says on standard error."""
    environment = {**os.environ, **more}
    environment.pop("INFOSYNC_RECORD", None)
    if record is not None:
        environment["INFOSYNC_RECORD"] = record
        environment["INFOSYNC_RECORD_LIMIT"] = str(limit)
    done = subprocess.run(command + arguments, env=environment, capture_output=True, timeout=300)
    said = done.stderr.decode(errors="replace")
    if done.returncode != 0:
        raise AssertionError(said[-2000:])
    return said


# How another program of the same build is run.
def instead(program):
    return COMMAND[:-1] + [program]


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
            run(COMMAND, ["take", str(seed), captures, taken], record=taken)
            log = recording_in(taken)
            run(PLAYING, ["play", log, played, PLAYER], record=played)
            self.assertEqual(calls_by_image(taken), calls_by_image(played))
            self.assertEqual(read(taken, "left.cbor"), read(played, "left.cbor"))

            # A recording of the playing is the recording again, but for its own identity.
            lines = read(log).splitlines()
            again = read(recording_in(played)).splitlines()
            self.assertEqual(lines[1:], again[1:])
            header, header_again = json.loads(lines[0]), json.loads(again[0])
            for of, command in ((header, COMMAND), (header_again, PLAYING)):
                self.assertEqual(command[-1], of.pop("process"))
                for name in ("pid", "startMonotonic", "startReal"):
                    self.assertIsInstance(of.pop(name), int)
            self.assertEqual(header, header_again)
            if DIFF:
                run([DIFF], [log, recording_in(played)])
            self.assertIn(b'"answered"', b"".join(lines))

    def test_each_part_plays_by_itself(self):
        with tempfile.TemporaryDirectory() as taken:
            run(instead(HAL), ["parts"], taken, limit=65536, INFOSYNC_HOST_ROOT=HAL_ROOT)
            found = {}
            for name in os.listdir(taken):
                header, *lines = map(json.loads, read(taken, name).splitlines())
                calls = os.path.join(taken, "calls.jsonl")
                said = run(instead(REPLAY), ["--json", calls, os.path.join(taken, name)])
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

    def test_without_a_call_there_is_no_file(self):
        with tempfile.TemporaryDirectory() as taken:
            run(COMMAND, ["take", "1", "0", taken], record=taken)
            self.assertEqual(["calls.jsonl", "left.cbor"], sorted(os.listdir(taken)))


if __name__ == "__main__":
    COMMAND = sys.argv[2:]
    PLAYING = shlex.split(os.environ.get("PLAYING", "")) or COMMAND
    unittest.main(argv=sys.argv[:2])
