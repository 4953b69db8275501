"""What a HAL's recorder writes, and what it must not do: record_test.py Class.test_name COMMAND...

COMMAND is the HAL that is linked to the recorder, behind an emulator if it needs one."""

import json
import os
import pathlib
import random
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time
import unittest

*EMULATOR, AHEAD = sys.argv[2:]
E = os.environ
IN_PLACE = {"LD_LIBRARY_PATH": os.path.dirname(E["IN_PLACE"])}
PRELOAD = {"LD_PRELOAD": E["RECORDER"]}
LOADED = [E["LOADER"], "libc.so.6"]
WAYS = [([AHEAD], {}), ([E["HAL_PLAIN"]], IN_PLACE), ([E["HAL_PLAIN"]], PRELOAD),
        (LOADED + [E["MODULE_AHEAD"]], {}), (LOADED + [E["MODULE_PLAIN"]], IN_PLACE),
        (LOADED + [E["MODULE_PLAIN"]], PRELOAD)]


def environment(folder, more):
    # A sanitizer's runtime wants to come first, but works behind a library that is preloaded.
    variables = {**E, "ASAN_OPTIONS": "verify_asan_link_order=0", "INFOSYNC_RECORD": str(folder),
                 **more}
    if "LD_LIBRARY_PATH" in E and "LD_LIBRARY_PATH" in more:
        variables["LD_LIBRARY_PATH"] += ":" + E["LD_LIBRARY_PATH"]
    return {name: value for name, value in variables.items() if value is not None}


class RecordTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name) / "record"
        self.folder.mkdir()

    def run_hal(self, *what, command=(AHEAD,), before=None, **more):
        """What a HAL prints. What it logs of the recorder is in `said`."""
        done = subprocess.run(
            [*EMULATOR, *command, *what], timeout=50, encoding="utf-8", check=False,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=self.folder.parent,
            env=environment(self.folder, more), preexec_fn=before)
        self.assertEqual(0, done.returncode, done.stdout + done.stderr)
        self.said = [line for line in done.stderr.splitlines() if "InfoSyncRecord" in line]
        return [line for line in done.stdout.splitlines() if not line.startswith("features_mgr")]

    def parts(self):
        """The files, oldest first."""
        names = sorted((int((re.search(r"\.(\d+)\.jsonl", path.name) or [0, 1])[1]), path)
                       for path in self.folder.iterdir())
        return [path for _, path in names]

    def empty_folder(self):
        for part in self.parts():
            part.unlink()

    def lines(self):
        """All lines but headers."""
        return [json.loads(line) for part in self.parts()
                for line in part.read_bytes().split(b"\n")[1:-1]]

    def calls(self, field="anchorFrame"):
        return [line[field] for line in self.lines() if field in line]

    def expect_warnings(self, *patterns):
        found = [line for line in self.said if re.match(r"InfoSyncRecord [WE]", line)]
        self.assertEqual(len(patterns), len(found), self.said)
        for pattern, line in zip(patterns, found):
            self.assertRegex(line, pattern)


class Record(RecordTest):
    def test_every_operation_by_every_way_in(self):
        for command, more in WAYS:
            with self.subTest(command=command, more=more):
                self.run_hal("everything", command=command, **more)
                [part] = self.parts()
                self.assertRegex(part.name, r"^capture-\d{8}T\d{6}Z-\d+\.jsonl$")
                self.assertEqual(0o600, part.stat().st_mode & 0o7777)
                self.expect_warnings("manager of the caller's own")
                self.assertRegex(self.said[0], " I .*recording to " + re.escape(str(part)))
                text = part.read_text()
                pid = re.search(r"-(\d+)\.jsonl", part.name)[1]
                text = re.sub(r'"(at|startMonotonic|startReal)":[1-9]\d*', r'"\1":0', text)
                text = re.sub(rf'"(tid|pid)":{pid}', r'"\1":0', text)
                text = re.sub(r'"(thread|process)":"[^"]+"', r'"\1":"x"', text)
                self.assertEqual(pathlib.Path(E["EXPECTED"]).read_text(), text)
                self.empty_folder()

    def test_moments_and_names(self):
        before = time.time_ns()
        self.run_hal("tenCalls")
        [part] = self.parts()
        header = json.loads(part.read_text().splitlines()[0])
        ours = json.loads(subprocess.check_output(
            [sys.executable, "-c", "import time; print(time.monotonic_ns())"]))
        times = self.calls("at")
        self.assertEqual(sorted(times), times)
        self.assertTrue(ours - (time.time_ns() - before) <= times[0] <= times[-1] <= ours)
        self.assertTrue(before <= header["startReal"] <= time.time_ns())
        self.assertTrue(times[0] <= header["startMonotonic"] <= times[1])
        self.assertEqual(header["process"].split("/")[-1], os.path.basename(AHEAD))
        self.assertEqual([{"hex": "ff206669727374"}] + 9 * ["then"], self.calls("thread"))
        self.assertEqual({header["pid"]}, set(self.calls("tid")))

    def test_exports_all_operations_and_nothing_else(self):
        def exported(library):
            names = subprocess.check_output([E["NM"], "-D", "--defined-only", library], text=True)
            return {line.split()[-1] for line in names.splitlines()}
        manager = "_ZN11camInfosync23InfoSynchronizerManager"
        operations = {name for name in exported(E["LIBRARY"]) if name == "GetInstance" or
                      name.startswith(manager) and not re.match(manager + "[CD][12]E", name)}
        self.assertEqual(22, len(operations))
        self.assertEqual(operations, exported(E["RECORDER"]))
        self.assertEqual(operations, exported(E["IN_PLACE"]))

    def test_library_without_operations(self):
        folder = self.folder.parent
        for name, library in (("", E["IN_PLACE"]), ("_real", E["NO_LIBRARY"])):
            (folder / f"libcaminfosync{name}.so").symlink_to(library)
        self.run_hal(E["EARLY"], command=[E["LOADER"]], LD_LIBRARY_PATH=str(folder))
        self.expect_warnings("the library has no .*getInstance.*; calls of it do nothing")
        self.assertEqual(["A"], self.calls("image"))

    def test_off(self):
        name = os.path.basename(AHEAD)
        by_property = {"INFOSYNC_RECORD": None, "INFOSYNC_HOST_PROPERTIES":
                       f"debug.infosync.record={self.folder}\ndebug.infosync.record.process={name}"}
        for more, is_on in [
                ({"INFOSYNC_RECORD": None}, False),
                ({**by_property, "INFOSYNC_RECORD": ""}, False),
                (by_property, True),
                ({**by_property, "INFOSYNC_RECORD_PROCESS": "another"}, False),
                ({"INFOSYNC_RECORD_PROCESS": name[1:]}, False),
                ({"INFOSYNC_RECORD_PROCESS": AHEAD}, True),
                ({"INFOSYNC_RECORD": self.folder.name}, True)]:
            with self.subTest(more=more):
                said = self.run_hal("untouched", **more)
                self.assertEqual(["ten", "touched" if is_on else "untouched"], said)
                self.assertEqual(int(is_on), len(self.parts()))
                self.empty_folder()

    def test_order_of_lines_is_that_of_effects(self):
        said = self.run_hal("order", FAULT="late", LD_PRELOAD=E["FAULTS"])
        lines = self.lines()
        answered = set(self.calls("answered"))
        waiting, errors, last = {}, {}, {}
        for line in lines:
            # A call that has asked goes on where it was answered, if that is noted.
            if line.get("n") in answered:
                waiting[line["n"]] = line
                continue
            line = waiting.get(line.get("answered"), line)
            call, image = line.get("call"), line.get("image")
            if call == "registerSnapshotRequestRecord":
                errors.setdefault(image, "")
            elif call == "unregisterSnapshotRequestRecord":
                errors.pop(image, None)
            elif call == "updateSnapshotErrorInfo" and image in errors:
                errors[image] += line["text"]
            elif call == "updatePostProcInfo":
                last.update(line["postProcInfo"])
        images = [f"image-{i}" for i in range(400)]
        self.assertEqual([f"{errors.get(image, 'none')} {last[image]}" for image in images], said)

    def test_calls_wait_for_each_other(self):
        self.run_hal("held")
        self.assertEqual([("registerSnapshotRequestRecord", None), ("updateFrameInfo", None),
                          ("snapshotRequestInfoFlush", None), ("updateAnchorFrame", "GetInstance")],
                         [(line["call"], line.get("manager")) for line in self.lines()
                          if "call" in line and "unordered" not in line])

    def test_service_that_calls_the_library(self):
        self.assertEqual(["thrown", "5"], self.run_hal("nested"))
        found = []
        for line in self.lines():
            if "answered" in line:
                found.append(f'{line["answered"]} {line.get("answer", line.get("threw"))}')
            else:
                found.append(" ".join(str(line[field]) for field in ("n", "image", "anchorFrame")
                                      if field in line) or f'end {line["calls"]}')
            self.assertNotIn("unordered", line)
        self.assertEqual(["1 A", "1 enabled", "2 B", "3 A 1", "2 enabled", "4 C", "5 A 2",
                          "4 enabled", "6 D", "6 disabled", "7 E", "7 enabled", "8 F", "8 True",
                          "9 A", "10 A", "11 A", "12 A 3", "13", "14 A 4", "end 14"], found)

    def test_report_that_waits_for_a_call(self, **more):
        self.run_hal("stuck", **more)
        self.assertEqual([*3 * [False], *100 * [True], False],
                         [line.get("unordered", False) for line in self.lines() if "call" in line])

    def test_report_that_waits_while_the_time_is_set(self):
        self.test_report_that_waits_for_a_call(FAULT="ahead", LD_PRELOAD=E["FAULTS"])

    def test_two_files_by_turns(self):
        self.assertEqual([], self.run_hal("turns", INFOSYNC_RECORD_LIMIT="65536"))
        self.expect_warnings()
        first, second = self.parts()
        part = int(re.search(r"\.(\d+)\.jsonl", first.name)[1])
        self.assertEqual(first.name.replace(f".{part}.", f".{part + 1}."), second.name)
        numbers = self.calls("n")
        self.assertEqual(list(range(numbers[0], 1 + 1 + 900 + 890)), numbers)
        self.assertLess(24576, second.stat().st_size + first.stat().st_size)
        for path in (first, second):
            header, call = (json.loads(line) for line in path.read_text().splitlines()[:2])
            self.assertEqual({"snapshotInfoCollectEnable": "enabled"}, header["answers"])
            registered = int(call["image"].split("-")[1].rstrip("x")) + ("un" not in call["call"])
            cut = {f"image-{i}" + "x" * (100 if i < 300 else 0) for i in range(0, registered, 90)}
            self.assertEqual(sorted(cut | ({call["image"]} if "un" in call["call"] else set())),
                             header["cut"])
        self.assertEqual([part, part + 1], [json.loads(path.read_text().split("\n")[0])["part"]
                                            for path in (first, second)])

    def test_limit_by_property(self):
        for supported, forced, named in ((1, 0, 0), (1, 1, 1), (0, 1, 0)):
            self.run_hal("turns", INFOSYNC_HOST_NO_SERVICE="1", INFOSYNC_HOST_PROPERTIES=
                         "debug.infosync.record.limit=65536\n"
                         f"persist.vendor.camera.camquill.supported={supported}\n"
                         f"persist.vendor.camera.infoSyncCollect.forceEnabled={forced}")
            cut = [json.loads(path.read_text().split("\n")[0])["cut"] for path in self.parts()]
            self.assertEqual([named, named], [min(len(names), 1) for names in cut])
            self.empty_folder()

    def test_limit_of_the_process(self):
        sizes = resource.getrlimit(resource.RLIMIT_FSIZE)
        self.addCleanup(resource.setrlimit, resource.RLIMIT_FSIZE, sizes)
        for limit, parts, warnings in ((300, 0, ["its header does not fit"]), (20000, 2, [])):
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, sizes[1]))
            self.run_hal("turns", INFOSYNC_RECORD_LIMIT="65536")
            self.expect_warnings(*warnings)
            self.assertEqual(parts, len(self.parts()))
        self.assertLess(15000, self.parts()[0].stat().st_size)

    def test_more_than_fits(self):
        self.run_hal("many", INFOSYNC_RECORD_LIMIT="65536")
        omitted = [line for line in self.lines() if "omitted" in line]
        self.expect_warnings("an answer does not fit")
        self.assertEqual([("updateSnapshotErrorInfo", "A"), ("updateAnchorFrame", None)],
                         [(line["call"], line.get("image")) for line in omitted])
        self.assertEqual([20000 < omitted[0]["omitted"] < 20200, "text" in omitted[0]],
                         [True, False])
        header = json.loads(self.parts()[-1].read_text().split("\n")[0])
        self.assertLess(len(json.dumps(header["cut"])), 8192 + 100)
        later = self.parts()[-1].read_text().count('"registerSnapshotRequestRecord"')
        self.assertEqual(302, len(header["cut"]) + header["cutMore"] + later)

    def test_more_than_the_replay_reads(self):
        self.run_hal("huge", INFOSYNC_RECORD_LIMIT="1000000000")
        self.assertEqual([True, False], [(1 << 26) < self.lines()[0]["omitted"] < (1 << 26) + 200,
                                         "text" in self.lines()[0]])

    def test_limit_that_is_none(self):
        for limit in ("65535", "1e9", "-1"):
            self.run_hal("turns", INFOSYNC_RECORD_LIMIT=limit)
            self.expect_warnings(f'limit "{limit}" is no number of bytes from 65536')
            self.assertEqual(1, len(self.parts()))
            self.empty_folder()

    def test_faults(self):
        another = self.folder.parent / "another"
        for fault, recorded, warning in [
                ("interrupted", 10, None), ("short", 10, None), ("rename", 10, None),
                ("full 6", 4, "No space left on device"),
                ("full 1", 0, "No space left on device"),
                ("closed 5", 4, "closed by somebody else"),
                ("reused 5", 4, "closed by somebody else"),
                ("same place 5", 4, "closed by somebody else"),
                ("refused", 0, "Permission denied")]:
            with self.subTest(fault=fault):
                self.assertEqual(["ten"], self.run_hal(
                    "tenCalls", FAULT=fault, LD_PRELOAD=E["FAULTS"]))
                if another.exists():
                    self.assertEqual(b"", another.read_bytes())
                    another.unlink()
                self.assertEqual(list(range(1, recorded + 1)), self.calls())
                if warning:
                    self.expect_warnings(f"{self.folder}/capture-.*: .*{warning}|{warning}")
                    self.assertNotIn(b'"end"', b"".join(p.read_bytes() for p in self.parts()))
                else:
                    self.expect_warnings()
                self.assertTrue(all(p.read_bytes().endswith(b"\n") for p in self.parts()))
                self.empty_folder()
        self.folder = self.folder / "missing"
        self.assertEqual(["ten"], self.run_hal("tenCalls"))
        self.expect_warnings(f"{self.folder}/capture-.*No such file or directory")

    def test_names_that_are_taken(self):
        def take(suffix):
            for second in range(30):
                start = time.strftime("%Y%m%dT%H%M%SZ", time.gmtime(time.time() + second))
                path = self.folder / f"capture-{start}-{os.getpid()}.jsonl{suffix}"
                path.write_text("taken\n", encoding="utf-8")
        for suffix, recorded, warnings in (("", 1, []), (".new", 0, ["File exists"])):
            self.run_hal("tenCalls", before=lambda suffix=suffix: take(suffix))
            self.expect_warnings(*warnings)
            texts = [path.read_text() for path in self.parts()]
            self.assertEqual([30, recorded], [texts.count("taken\n"), len(texts) - 30])
            self.empty_folder()

    def test_forked_child_does_not_write(self):
        self.assertEqual(["0"], self.run_hal("forked"))
        self.assertEqual([1, 3], self.calls())
        self.assertEqual([{"end": True, "calls": 2}], self.lines()[-1:])

    def test_memory(self):
        [off, *_] = self.run_hal("memory", INFOSYNC_RECORD=None)
        self.assertEqual([off, "bad_alloc"], self.run_hal("memory"))
        self.expect_warnings("capture-.*Cannot allocate memory; recording ends")
        self.assertEqual("short", self.lines()[-1]["image"])

    def test_call_before_the_recorder_is_ready(self):
        preload = f'{E["RECORDER"]} {E["EARLY"]}'
        for folder in (self.folder, None):
            said = self.run_hal("tenCalls", command=[E["HAL_PLAIN"]], LD_PRELOAD=preload,
                                INFOSYNC_RECORD=folder)
            self.assertEqual(["ten"], said)
            self.expect_warnings()
        self.assertEqual(["registerSnapshotRequestRecord", *10 * ["updateAnchorFrame"]],
                         self.calls("call"))
        self.assertEqual([1], self.calls("answered"))

    def test_ends(self):
        self.assertEqual(["ten", "late"], self.run_hal("late"))
        self.assertEqual({"end": True, "calls": 10}, self.lines()[-1])
        self.empty_folder()
        self.assertEqual(["ten", "closed"], self.run_hal(
            "tenCalls", command=(E["LOADER"], E["LIBRARY"], E["MODULE_AHEAD"])))
        self.assertEqual({"end": True, "calls": 10}, self.lines()[-1])

    def test_nothing_after_the_end(self):
        for _ in range(5):
            self.run_hal("exiting")
            *lines, last = self.lines()
            self.assertEqual({"end": True, "calls": len(lines)}, last)
            self.empty_folder()

    def test_errno_is_kept(self):
        for fault in ("interrupted", "full 3", "refused"):
            said = self.run_hal("failing", FAULT=fault, LD_PRELOAD=E["FAULTS"])
            self.assertEqual(10 * ["1"], said, fault)
            self.empty_folder()

    def test_killed_at_any_instant(self):
        for _ in range(int(E.get("KILLS", "12"))):
            hal = subprocess.Popen(
                [*EMULATOR, AHEAD, "load"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                env=environment(self.folder, {"INFOSYNC_RECORD_LIMIT": "65536"}))
            while hal.stdout.readline() != b"begun\n":
                pass
            time.sleep(random.uniform(0, 0.05))
            hal.send_signal(signal.SIGKILL)
            hal.communicate()
            numbers = []
            for part in self.parts():
                if part.name.endswith(".new"):
                    continue
                header, *lines = part.read_bytes().split(b"\n")
                self.assertIn("cut", json.loads(header))
                # The first calls of a part may be those that the one before has left open.
                numbers += [number for number in (json.loads(line).get("n", 0)
                                                  for line in lines[:-1])
                            if number > json.loads(header)["calls"]]
            self.assertTrue(numbers)
            self.assertEqual(list(range(numbers[0], numbers[0] + len(numbers))), numbers)
            self.empty_folder()


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:2])
