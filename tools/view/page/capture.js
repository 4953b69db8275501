// All that is known of one capture.

/* global Chart, Table, element, shortText, timeText */
/* exported CaptureView, findingList */

const NOT_KNOWN = "not known";

function msText(ms) {
  return typeof ms === "number" ? String(Math.round(ms * 1000) / 1000) : NOT_KNOWN;
}

// A node's time as it was told: a number, or "inf" or "nan".
function toldText(time) {
  return time === null ? NOT_KNOWN : String(time);
}

function momentText(time) {
  return time === null ? NOT_KNOWN : timeText(time, 1e3);
}

function findingList(findings) {
  const items = findings.map(({weight, text, subject, place, kind}) => element("li", {class: weight}, [
    element("span", {class: "text"}, text || kind), " ",
    element("span", {class: "place"}, [subject, place].filter(part => part !== "").join(" · ")),
  ]));
  return element("ul", {class: "findings"}, items);
}

class CaptureView {
  constructor(section, title, content) {
    this.section = section;
    this.title = title;
    this.content = content;
    this.parts = [];
  }

  show(capture) {
    for (const part of this.parts) {
      part.destroy();
    }
    this.parts = [];
    this.content.replaceChildren();
    this.section.hidden = false;
    this.title.textContent = capture.name || "(no name)";
    this.content.append(this.facts(capture));
    this.addFindings(capture);
    this.addTimeLine(capture);
    const tables = element("div", {class: "tables"});
    this.content.append(tables);
    this.addTables(tables, capture);
  }

  facts(capture) {
    const facts = [
      ["Number", String(capture.number)],
      ["Cameras", capture.cameras === null ? NOT_KNOWN : capture.cameras || "none"],
      ["Algorithms", capture.algorithms === null ? NOT_KNOWN : capture.algorithms.join(", ") || "none"],
      ["Registered", this.eventText(capture.raw.registered)],
      ["Flushed", this.eventText(capture.raw.flushed)],
      ["Removed", this.eventText(capture.raw.removed)],
      ["To the flush", capture.ms === null ? NOT_KNOWN : `${msText(capture.ms)} ms`],
    ];
    if (capture.raw.process !== undefined) {
      facts.unshift(["Process", capture.text(capture.raw.process)]);
    }
    return element("dl", {}, facts.map(([name, text]) =>
      element("div", {}, [element("dt", {}, name), element("dd", {}, text)])));
  }

  // True is an event whose time is not known. One that the log does not tell may have happened.
  eventText(event) {
    return event === false ? "not in the log"
      : event === true ? "yes, when is not known" : `at ${momentText(event)}`;
  }

  addFindings(capture) {
    this.content.append(element("h3", {}, "Findings"));
    this.content.append(capture.findings.length > 0 ? findingList(capture.findings)
      : element("p", {class: "faint"}, "None."));
  }

  addTimeLine(capture) {
    this.content.append(element("h3", {}, "Time line"));
    if (!capture.hasTimes) {
      this.content.append(element("p", {class: "faint"}, "No times are known."));
      return;
    }
    if (capture.raw.nodesStandApart) {
      this.content.append(element("p", {class: "faint"},
        "The nodes' times are of another clock: the first of them begins with the time line."));
    }
    const label = `Time line of ${shortText(capture.name, 200)}`;
    const chart = new Chart(this.content, {label, hasLabels: true});
    const rows = capture.lanes.map(lane => ({
      name: lane.name,
      spans: lane.spans.map((span, index) => ({...span, kind: this.kindOf(lane, index)})),
    }));
    chart.show(rows, capture.marks, capture.raw.length);
    this.parts.push(chart);
  }

  // What a span is drawn as. Stages touch, so neighbours differ.
  kindOf(lane, index) {
    const isSecond = index % 2 === 1;
    return lane.kind === "stage" && isSecond ? "stage-other"
      : lane.kind === "capture" && isSecond ? "after" : lane.kind;
  }

  add(parent, caption, columns, rows, isKnown, isWide) {
    if (rows.length === 0) {
      parent.append(element("p", {class: "faint"}, `${caption}: ${isKnown ? "none" : NOT_KNOWN}.`));
      return;
    }
    const holder = element("div", {class: isWide ? "wide" : ""});
    parent.append(holder);
    const table = new Table(holder, columns, {caption});
    this.parts.push(table);
    table.show(rows);
  }

  addTables(parent, capture) {
    const text = (title, get, className) => ({title, text: get, className});
    const number = (title, get, className) => ({title, text: get, className, isNumber: true});
    const place = text("Line", row => row.place);
    this.add(parent, "Nodes", [
      text("Node", row => row.name),
      number("Start", row => toldText(row.start)),
      number("Second", row => row.second === -1 ? "-1 (timed out)" : toldText(row.second),
        row => row.second === -1 ? "failed" : ""),
      number("Completion", row => toldText(row.completion)),
      number("ms", row => row.ms === null ? NOT_KNOWN : msText(row.ms)),
      text("State", row => row.state || NOT_KNOWN),
      text("Listed", row => row.isListed ? "yes" : "no"),
      place,
    ], capture.nodes, true, true);
    this.add(parent, "Stages", [
      number("Stage", row => row.number),
      text("Name", row => row.name),
      number("ms", row => row.ms === null ? NOT_KNOWN : row.number === 0 && row.ms === -1 ? "" : row.ms),
    ], capture.stages, capture.raw.stages !== undefined);
    this.add(parent, "Values", [
      text("Of", row => row.group), text("Name", row => row.name), text("Value", row => row.text),
    ], capture.values, false);
    this.add(parent, "Vendor results", [
      number("Id", row => row.id), text("Result", row => row.text || NOT_KNOWN), place,
    ], capture.results, capture.raw.results !== undefined);
    this.add(parent, "Reports", [
      text("At", row => momentText(row.at)),
      text("Parameters", row => row.parameters.map(([name, value]) => `${name}=${value}`).join(", ")),
      number("Events", row => row.events),
      text("Closing", row => row.closing === null ? NOT_KNOWN : row.closing.join(", ")),
      place,
    ], capture.reports, true, true);
    this.add(parent, "Calls", [
      text("At", row => momentText(row.at)),
      text("Call", row => row.operation),
      text("Thread", row => `${row.thread} ${row.tid === 0 ? "" : `(${row.tid})`}`.trim()),
      text("Effect", row => row.hadEffect ? "" : "none", () => "no-effect"),
      place,
    ], capture.calls, false, true);
  }
}
