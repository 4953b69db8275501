"""Where infosync-replay writes, and what it reads while it does: output_test.py Class.test_name COMMAND...

COMMAND is the tool, behind an emulator if it needs one."""

import os
import subprocess
import sys
import unittest

from replay_case import COMMAND, SECONDS, ReplayTest, register


class Outputs(ReplayTest):
    def test_unusable_output(self):
        self.refuse("plain-shot.jsonl", "--json", "absent/calls.jsonl",
                    says="absent/calls.jsonl: cannot be opened for writing: No such file")
        for one, other in (("--trace", "--html"), ("--json", "--html"), ("--json", "--trace")):
            self.refuse("plain-shot.jsonl", one, "a", other, "./a", says="a: cannot be both")
        before = (self.folder / "plain-shot.jsonl").read_bytes()
        self.refuse("plain-shot.jsonl", "--json", "./plain-shot.jsonl",
                    says="./plain-shot.jsonl: is the log itself, which would be overwritten")
        self.assertEqual(before, (self.folder / "plain-shot.jsonl").read_bytes())

    def test_full_disk(self):
        full = "cannot write the output: No space left on device"
        self.refuse("plain-shot.jsonl", "--quiet", "--json", "/dev/full", says=full)
        with open("/dev/full", "wb") as file:
            self.refuse("plain-shot.jsonl", stdout=file, says=full)
            self.refuse("plain-shot.jsonl", "--json", "-", stdout=file, says=full)
            self.refuse("burst-of-eight.jsonl", "--repeat", "9", stdout=file, says="cannot write")

    def test_closed_streams(self):
        def close(*streams):
            return {"preexec_fn": lambda: [os.close(stream) for stream in streams]}
        self.run_tool("plain-shot.jsonl", "--json", "calls.jsonl", status=2, **close(1))
        self.assertIn("cannot write the output", self.err)
        self.expect_calls("plain-shot.calls.jsonl")
        self.run_tool("plain-shot.jsonl", "--json", "calls.jsonl", status=2, **close(0, 1, 2))
        self.expect_calls("plain-shot.calls.jsonl")
        self.run_tool("bad.jsonl", "--json", "calls.jsonl", status=2, **close(2))
        self.run_tool("-", **close(0))
        self.assertEqual("0", self.total("calls made"))


class ChangedLogs(ReplayTest):
    def change(self, edit, line):
        """Edits the log while the tool, which says much, waits for its reader. A line has 64
        bytes, so that what the tool has read ahead ends with a line: the 1024th."""
        log = self.folder / self.write(*[register("A" * 12).replace(" ", "")] * 20000)
        with subprocess.Popen([*COMMAND, log.name, "--quiet", "--log-level", "info"],
                              stderr=subprocess.PIPE, **self.options()) as tool:
            said = b""
            while b"register image" not in said:
                chunk = os.read(tool.stderr.fileno(), 4096)
                self.assertTrue(chunk, said)
                said += chunk
            edit(log)
            err = tool.communicate(timeout=SECONDS)[1].decode()
        self.assertEqual(1, tool.returncode)
        self.assertEqual(f"infosync-replay: log.jsonl:{line}: the log has changed since it was "
                         "checked", err.splitlines()[-1])

    def test_emptied_log(self):
        self.change(lambda log: os.truncate(log, 0), 1024)

    def test_longer_log(self):
        def append(log):
            with open(log, "ab") as file:
                file.write(b"\n")
        self.change(append, 20001)

    def test_log_of_the_same_length(self):
        def spoil(log):
            with open(log, "rb+") as file:
                file.seek(64 * 10000)
                file.write(b"x")
        self.change(spoil, 10001)


class ProgressBar(ReplayTest):
    """The bar is looked at every 256 lines: the 212th of the first round, the 168th of the next."""

    def draw(self, *options, **streams):
        log = self.write('{"sleepMs":1200}', *["             "] * 299)
        said = self.run_on_terminal(log, *options, **streams)
        self.assertIn("log.jsonl: has no calls\r\n", said)
        return said.replace("log.jsonl: has no calls\r\n", "")

    def test_bar(self):
        self.assertEqual("\r[######################..................]  56%"
                         "\r[##################################......]  85%\r\033[K",
                         self.draw("--repeat", "2"))
        self.assertTrue(self.draw("--json", "-", stdout=None).endswith("%\r\033[K"))

    def test_no_bar(self):
        self.assertEqual("", self.draw("--quiet"))
        self.assertNotIn("%", self.draw(stdout=None))
        self.run_tool(self.write(*[""] * 1000, '{"sleepMs":1200}', *[""] * 1000))
        self.assertEqual("log.jsonl: has no calls\n", self.err)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:2])
