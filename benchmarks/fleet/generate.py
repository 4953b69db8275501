"""Capture logs of phones that nobody has: GENERATE.PY DEVICE BUILD CAPTURES > LOG.

Always the same for the same arguments. The second build has faults to be found: its node hdr takes
a quarter longer, and three times as many of its captures fail.
"""

import random
import sys

BUILDS = ("build-41", "build-42")
MODES = {1: ("merge", "sharpen"), 7: ("merge", "beauty", "sharpen"), 12: ("hdr", "merge", "sharpen"),
         15: ("depth", "bokeh", "beauty")}
TYPICAL_MS = {"merge": 30, "sharpen": 6, "beauty": 9, "hdr": 60, "depth": 25, "bokeh": 40}
MS = 1_000_000
GAP = 400 * MS  # from one registration to the next
START_REAL = 1_790_000_000_000_000_000
OUTLIER = 500  # one capture in so many waits ten times as long


class Capture:
    """The lines of one capture; `at` moves on with each."""

    def __init__(self, randomness, is_second_build, name, at):
        self.random = randomness
        self.is_second_build = is_second_build
        self.name = name
        self.at = at
        self.lines = []

    def call(self, operation, fields=""):
        self.at += self.random.randrange(20_000, 60_000)
        self.lines.append('{"at":%d,"call":"%s","image":"%s"%s}\n'
                          % (self.at, operation, self.name, fields))

    def describe(self, number, mode):
        choose = self.random.choice
        self.call("registerSnapshotRequestRecord")
        self.call("updateFrameInfo",
                  ',"frameNumber":%d,"timestamp":"%d","camIds":[%s],"frameExtra":0'
                  % (number, self.at, choose(("0", "0,3", "2"))))
        self.call("updateUIInfo",
                  ',"requestType":2,"camMode":%d,"faceDetect":%d,"zoomRatio":%s,"uiExtra":""'
                  % (mode, self.random.randrange(3), choose(("1", "1.25", "2", "5"))))
        self.call("updateRequestInfo",
                  ',"reqValueA":1,"reqValueB":0,"reqFlag":true,"reqValue64":%d,"reqIdsA":[1,2],'
                  '"expectedResultIds":[61,62]' % self.at)
        self.call("updateAnchor3aInfo", ',"fstop":1.8,"iso":%d,"lux":%d.5,"exposureTime":%d'
                  % (choose((50, 100, 400, 1600)), self.random.randrange(2000), 8_333_333))
        self.call("updateZuAlgoInfo",
                  ',"algoList":[%s]' % ",".join('"%s"' % node for node in MODES[mode]))

    def run(self, node, slowness, times_out):
        took = TYPICAL_MS[node] * self.random.lognormvariate(0, 0.25) * slowness
        if self.is_second_build and node == "hdr":
            took *= 1.25
        start = self.at / MS
        self.at += int(took * MS)
        second = "-1" if times_out else "%.4f" % (start + took / 4)
        self.call("updateNodeProcTime", ',"node":"%s","first":%.4f,"second":%s,"third":%.4f'
                  % (node, start, second, start + took))
        self.call("updateNodeProcState", ',"node":"%s","state":%d' % (node, 4 if times_out else 0))

    def finish(self, begin, results):
        for number, code in results:
            self.call("updateVndResultInfo", ',"resultId":%d,"errorCode":%d' % (number, code))
        ms = (self.at - begin) // MS
        self.call("updateSnapshotTimeInfo",
                  ',"timeInfo":{"3result_from_vendor":%d,"6request_to_algo":%d,'
                  '"13shot_2_shot":%d,"15shot_2_view":%d}'
                  % (ms // 3, ms // 2, GAP // MS + self.random.randrange(20), ms))
        self.call("snapshotRequestInfoFlush")
        self.call("unregisterSnapshotRequestRecord")


def failure(randomness, is_second_build):
    rate = 0.015 if is_second_build else 0.005
    if randomness.random() >= rate:
        return None
    return randomness.choice(("time-out", "result", "missing", "text"))


def capture_lines(randomness, is_second_build, device, number, begin):
    """The lines of a phone's capture of that number, which begins then."""
    mode = randomness.choice(tuple(MODES))
    wrong = failure(randomness, is_second_build)
    slowness = 10 if number % OUTLIER == OUTLIER // 2 else 1
    capture = Capture(randomness, is_second_build, "IMG_%s_%07d" % (device, number), begin)
    capture.describe(number, mode)
    for i, node in enumerate(MODES[mode]):
        capture.run(node, slowness, wrong == "time-out" and i == 0)
    if wrong == "text":
        capture.call("updateSnapshotErrorInfo", ',"text":"thermal limit"')
    results = [(61, 3 if wrong == "result" else 0)]
    capture.finish(begin, results if wrong == "missing" else results + [(62, 0)])
    return capture.lines


def write_log(file, device, build, captures):
    is_second_build = build == BUILDS[1]
    randomness = random.Random("%s %s" % (device, build))
    start = randomness.randrange(10**14)
    days = 7 if is_second_build else 0
    file.write('{"format":"camInfosync capture log","version":"1.0","device":"%s","build":"%s",'
               '"pid":%d,"process":"camera","startMonotonic":%d,"startReal":%d}\n'
               % (device, build, randomness.randrange(300, 30000), start,
                  START_REAL + days * 86_400 * 1000 * MS + randomness.randrange(10**12)))
    for number in range(1, captures + 1):
        file.writelines(capture_lines(randomness, is_second_build, device, number,
                                      start + number * GAP))


if __name__ == "__main__":
    write_log(sys.stdout, sys.argv[1], sys.argv[2], int(sys.argv[3]))
