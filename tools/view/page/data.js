// The captures, from the JSON in the page. What its fields mean stands in docs/page-data.md.

/* exported readSession */

const LANE_KINDS = ["capture", "stage", "node"];
const VALUE_GROUPS = ["frame", "request", "user interface", "3A"];
const WEIGHTS = ["failed", "no-effect", "note"];

function sum(list, toNumber) {
  return list.reduce((total, each) => total + toNumber(each), 0);
}

// How many calls the findings of that weight stand for.
function callsOf(findings, weight) {
  return sum(findings, finding => finding[1] === weight ? finding[6] : 0);
}

// One capture, with all texts in place of their numbers. What is seldom looked at is made when it
// is asked for.
class Capture {
  constructor(raw, session) {
    this.raw = raw;
    this.session = session;
    this.number = raw.number;
    this.name = raw.name;
    this.searchText = raw.name.toLowerCase();
    this.hasFailed = raw.failed;
    this.ms = typeof raw.ms === "number" ? raw.ms : null;
    this.mode = this.modeOf();
    this.slowest = this.slowestNode();
    this.failures = callsOf(this.raw.findings, 0);
    this.noEffects = callsOf(this.raw.findings, 1);
    // Microseconds on the session's clock, or on the nodes'.
    this.isOnSessionClock = raw.start !== undefined;
    this.start = this.isOnSessionClock ? raw.start : raw.nodesStart;
    this.hasTimes = this.start !== undefined;
    this.begin = null; // microseconds since the beginning of the overview
  }

  text(value) {
    return typeof value === "number" ? this.session.names[value] : value;
  }

  modeOf() {
    const mode = this.raw.values.find(value => this.text(value[1]) === "camMode");
    return mode === undefined ? null : mode[2];
  }

  slowestNode() {
    let slowest = null;
    for (const [name, start, , completion] of this.raw.nodes) {
      const ms = typeof start === "number" && typeof completion === "number" ? completion - start : NaN;
      if (isFinite(ms) && (slowest === null || ms > slowest.ms)) {
        slowest = {name: this.text(name), ms};
      }
    }
    return slowest;
  }

  get cameras() {
    return this.raw.cameras === undefined ? null : this.raw.cameras.join(", ");
  }

  get values() {
    return this.raw.values.map(([group, name, text]) =>
      ({group: VALUE_GROUPS[group], name: this.text(name), text}));
  }

  get stages() {
    return (this.raw.stages || []).map(([number, name, ms]) => ({number, name: this.text(name), ms}));
  }

  get results() {
    return (this.raw.results || []).map(([id, text, place]) =>
      ({id, text: this.text(text), place: this.session.placeText(place)}));
  }

  get nodes() {
    return this.raw.nodes.map(([name, start, second, completion, state, isListed, place]) => ({
      name: this.text(name), start, second, completion, state: this.text(state),
      isListed: isListed === 1, place: this.session.placeText(place),
      ms: typeof start === "number" && typeof completion === "number" ? completion - start : null,
    }));
  }

  get calls() {
    const threads = this.raw.threads.map(([name, tid]) => ({thread: this.text(name), tid}));
    return this.raw.calls.map(([operation, thread, at, place, effect]) => ({
      ...threads[thread], operation: this.text(operation), at,
      place: this.session.placeText(place), hadEffect: effect !== 0,
    }));
  }

  get reports() {
    return this.raw.reports.map(([at, place, parameters, events, closing]) => ({
      at, place: this.session.placeText(place), events, closing,
      parameters: parameters.map(([name, text]) => [this.text(name), text]),
    }));
  }

  get findings() {
    return this.raw.findings.map(finding => this.session.finding(finding));
  }

  get algorithms() {
    return this.raw.algorithms === undefined ? null : this.raw.algorithms.map(name => this.text(name));
  }

  get marks() {
    return (this.raw.marks || []).map(([at, name, isFailure]) =>
      ({at, name: this.text(name), isFailure: isFailure === 1}));
  }

  // Rows to be drawn: what the data has as lanes, then a row for each thread that has made calls.
  get lanes() {
    const lanes = (this.raw.lanes || []).map(([kind, name, spans]) => ({
      kind: LANE_KINDS[kind],
      name: kind === 2 ? this.text(name) : kind === 1 ? "stages" : "capture",
      spans: spans.map(([begin, end, failed, spanName]) =>
        ({begin, end, failed: failed === 1, name: this.text(spanName === undefined ? name : spanName)})),
    }));
    return lanes.concat(this.threadLanes());
  }

  threadLanes() {
    const lanes = new Map();
    for (const call of this.calls) {
      if (call.at === null || call.at < 0 || call.at > this.raw.length) {
        continue;
      }
      const key = call.tid === 0 ? `name ${call.thread}` : `tid ${call.tid}`;
      if (!lanes.has(key)) {
        lanes.set(key, {kind: "call", thread: "", tid: call.tid, spans: []});
      }
      const lane = lanes.get(key);
      lane.thread = lane.thread || call.thread;
      lane.spans.push({begin: call.at, end: call.at, failed: !call.hadEffect, name: call.operation});
    }
    const sorted = Array.from(lanes.values());
    for (const lane of sorted) {
      lane.name = ["calls", lane.thread && `of ${lane.thread}`, lane.tid && `(${lane.tid})`]
        .filter(part => part).join(" ");
      lane.spans.sort((one, other) => one.begin - other.begin);
    }
    return sorted.sort((one, other) => one.spans[0].begin - other.spans[0].begin);
  }
}

class Session {
  constructor(data) {
    const raw = data.session;
    this.names = data.names;
    this.sources = raw.sources;
    // Lines are told with the file's own name; the header has the paths.
    this.files = raw.sources.map(source => source.slice(source.lastIndexOf("/") + 1));
    this.switches = raw.switches;
    this.notes = raw.notes;
    this.calls = raw.calls;
    this.toReal = raw.toReal;
    this.findings = raw.findings.map(finding => this.finding(finding));
    this.failures = callsOf(raw.findings, 0);
    this.noEffects = callsOf(raw.findings, 1);
    this.captures = data.captures.map(capture => new Capture(capture, this));
    this.captures.sort((one, other) => one.number - other.number);
    this.length = 0; // microseconds, of all captures
    this.layOut();
  }

  // Captures of which only nodes have told times have another clock: theirs begins there too.
  layOut() {
    const origin = {};
    const timed = this.captures.filter(capture => capture.hasTimes);
    for (const {isOnSessionClock, start} of timed) {
      const key = String(isOnSessionClock);
      origin[key] = Math.min(start, key in origin ? origin[key] : start);
    }
    for (const capture of timed) {
      capture.begin = capture.start - origin[String(capture.isOnSessionClock)];
      this.length = Math.max(this.length, capture.begin + capture.raw.length);
    }
    this.origin = "true" in origin ? origin.true : null;
  }

  // "night.jsonl:17"; empty if the line is not known.
  placeText(place) {
    const [source, line] = Array.isArray(place) ? place : [0, place];
    const name = source < this.files.length ? this.files[source] : "?";
    return line === 0 ? "" : `${name}:${line}`;
  }

  finding([kind, weight, text, subject, place, at]) {
    return {kind, weight: WEIGHTS[weight], text, subject, place: this.placeText(place), at};
  }
}

function readSession() {
  const element = document.getElementById("data");
  const session = new Session(JSON.parse(element.textContent));
  element.remove();
  return session;
}
