"""What only a process shows that has just loaded the library: fresh_process_test.py
Class.test_name COMMAND...

COMMAND is fresh_process, behind an emulator if it needs one; ROOTS holds root directories with
overlap libraries. What must be printed stands in expected/FreshProcess.txt."""

import os
import pathlib
import re
import subprocess
import sys
import unittest

COMMAND = sys.argv[2:]
ROOTS = os.environ["ROOTS"]
EXPECTED = pathlib.Path(__file__).parent / "expected" / "FreshProcess.txt"


def run(root, *things, **environment):
    """The lines that the program prints under a root; without paths and handles."""
    variables = {name: value for name, value in os.environ.items() if "." not in name}
    done = subprocess.run(
        [*COMMAND, *things], timeout=50, check=True, stdout=subprocess.PIPE, encoding="utf-8",
        env={**variables, "TEST_ECHO": "1", "INFOSYNC_HOST_ROOT": f"{ROOTS}/{root}",
             **environment})
    text = done.stdout.replace(ROOTS, "ROOTS").replace("(nil)", "0")  # not every library's null
    return re.sub(r"(= |Impl is )0x[0-9a-f]+", r"\1HANDLE", text).splitlines()


class FreshTest(unittest.TestCase):
    maxDiff = None

    def expect(self, lines):
        name = self.id().split(".")[-1]
        sections = dict(re.findall(r"^## (\w+)\n(.*?)\n\n", EXPECTED.read_text(), re.M | re.S))
        self.assertEqual(sections[name].splitlines(), lines)


class OverlapClient(FreshTest):
    def expect_loading(self, *runs):
        """Each run is a root, things to do and the environment."""
        lines = []
        for root, things, environment in runs:
            lines += [f"== {root}", *run(root, *things, **environment)]
        self.expect([line for line in lines if not line.startswith("property ")])

    def test_vendor_goes_before_odm(self):
        # In "both", the copy in /odm would give a null instance.
        self.expect_loading(("both", [], {}), ("broken", [], {}))

    def test_loads_once_and_asks_the_instance_once(self):
        self.expect_loading(*[(root, ["client"], {}) for root in ("odm", "null", "neither")])

    def test_loaders_error_is_taken_for_a_format(self):
        self.expect_loading(("100%%", [], {}))

    def test_library_is_bound_at_once(self):
        self.expect_loading(("unresolved", [], {}))

    def test_handle_is_flushed(self):
        self.assertIn("features_mgr_handle = 0", run("neither", "vanish"))

    def test_what_the_overlap_library_throws_ends_there(self):
        self.expect_loading(("throws", [], {}), ("odm", [], {"TEST_THROWS": "start"}),
                            ("odm", [], {"TEST_THROWS": "getObject"}))


class Manager(FreshTest):
    def test_is_built_by_its_first_caller(self):
        lines = [f"== {thing}\n" + "\n".join(run("both", thing)) for thing in
                 ("managers", "stages")]
        self.expect([line for line in "\n".join(lines).splitlines() if "[EC_Overlap]" not in line])

    def test_switch_decides_every_operation_that_it_switches(self):
        for supported in (None, False, True):
            for forced in (None, False, True):
                for service in (True, False):
                    with self.subTest(supported=supported, forced=forced, service=service):
                        self.check_switch(supported, forced, service)

    def check_switch(self, supported, forced, service):
        expected = []
        for answer in ("enabled", "", "enable", "enabled ", "Enabled", "zero"):
            value = "" if not service else "enabled" if answer == "zero" else answer
            enabled = int(bool(forced) or value == "enabled")
            on = int(bool(supported) and enabled)
            expected += ["register image A, queue size: 1"] * on
            expected += [f"camQuillSupported:{int(bool(supported))},  "
                         f"infoSyncCollectEnabled:{enabled}, cmdVal: {value}"]
            expected += ["flush image A  snapshotRequestInfo to infosync module",
                         "unregister image A, queue size: 0"] * on
            expected += [f"answer '{answer}', queries {3 if service else 0}, "
                         f"registered {on}, left {1 - on}"]
        properties = {"camquill.supported": supported, "infoSyncCollect.forceEnabled": forced}
        lines = run("both" if service else "neither", "switch",
                    **{name: str(int(value)) for name, value in properties.items()
                       if value is not None})
        said = [re.sub(r".* kelo-InfoSynchronizer .*?\(\)", "", line) for line in lines
                if line.startswith("answer ") or " kelo-InfoSynchronizer " in line]
        self.assertEqual(expected, [line for line in said if not line.startswith("Construct ")])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:2])
