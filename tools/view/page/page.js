// The page: all captures on one time axis and in a table, filters, and the capture that was chosen.

/* global CaptureView, Chart, Table, element, findingList, readSession, shortText */

const OVERVIEW_HEIGHT = 160;

function byId(id) {
  return document.getElementById(id);
}

function counted(number, noun) {
  return `${number} ${noun}${number === 1 ? "" : "s"}`;
}

// Captures that overlap go into rows of their own; a row holds those that follow each other.
function packed(captures) {
  const rows = [];
  const sorted = captures.filter(capture => capture.hasTimes)
    .sort((one, other) => one.begin - other.begin || one.number - other.number);
  for (const capture of sorted) {
    const end = capture.begin + capture.raw.length;
    let row = rows.find(each => each.end <= capture.begin);
    if (row === undefined) {
      row = {name: "", end: 0, spans: []};
      rows.push(row);
    }
    row.end = Math.max(end, capture.begin + 1);
    row.spans.push({begin: capture.begin, end, name: capture.name, kind: "capture",
      failed: capture.hasFailed, capture});
  }
  return rows;
}

function compare(one, other) {
  if (one === null || other === null) {
    return one === other ? 0 : one === null ? 1 : -1;
  }
  return typeof one === "number" ? one - other : one.localeCompare(other);
}

class Page {
  constructor(session) {
    this.session = session;
    this.shown = new Set(session.captures);
    this.order = {column: null, direction: 1};
    this.view = new CaptureView(byId("capture"), byId("capture-title"), byId("capture-content"));
    this.addTotals();
    this.addModes();
    this.addOverview();
    this.addTable();
    byId("filters").addEventListener("input", () => this.filter());
    byId("filters").addEventListener("change", () => this.filter());
    byId("filters").addEventListener("submit", event => event.preventDefault());
    byId("filters").addEventListener("reset", () => setTimeout(() => this.filter()));
    this.filter();
  }

  addTotals() {
    const {captures, switches, notes, findings} = this.session;
    const failed = captures.filter(capture => capture.hasFailed).length;
    const noEffects = captures.reduce((total, capture) => total + capture.noEffects,
      this.session.noEffects);
    const texts = [counted(captures.length, "capture"), `${failed} failed`,
      `${counted(noEffects, "call")} without effect`, this.otherFailures(), this.startText()];
    byId("totals").textContent = texts.filter(text => text !== "").join(" · ");
    const lists = [
      element("p", {class: "text"},
        `From ${this.session.sources.join(", ")}; ${counted(this.session.calls, "call")}.`),
      findingList(findings),
      element("ul", {}, notes.map(note => element("li", {class: "text"}, note))),
      element("ul", {}, switches.map(([name, state]) => element("li", {class: "text"}, `${name}: ${state}`))),
    ];
    byId("session").lastElementChild.append(...lists);
    byId("session").open = findings.length > 0;
  }

  otherFailures() {
    const {failures} = this.session;
    return failures === 0 ? "" : `${counted(failures, "failure")} of no known capture`;
  }

  startText() {
    const {origin, toReal} = this.session;
    if (origin === null) {
      return "";
    }
    const ms = toReal === null ? NaN : (origin + toReal) / 1000;
    return Math.abs(ms) < 8.64e15 ? `from ${new Date(ms).toISOString()}`
      : `from ${Math.round(origin / 1000) / 1000} s since the start of the phone`;
  }

  addModes() {
    const modes = new Set(this.session.captures.map(capture => capture.mode));
    for (const mode of Array.from(modes).filter(each => each !== null).sort(compare)) {
      byId("mode").append(element("option", {value: mode}, shortText(mode, 40)));
    }
    if (modes.has(null)) {
      byId("mode").append(element("option", {value: "\u0000"}, "not known"));
    }
  }

  addOverview() {
    this.overview = new Chart(byId("overview"), {
      label: "All captures on one time axis",
      mostHeight: OVERVIEW_HEIGHT,
      isDim: span => !this.shown.has(span.capture),
      onPick: span => this.choose(span.capture),
    });
    this.overview.show(packed(this.session.captures), [], this.session.length);
    const without = this.session.captures.filter(capture => !capture.hasTimes).length;
    if (without > 0) {
      byId("overview").append(element("p", {class: "faint"},
        `${counted(without, "capture")} without times: in the table only.`));
    }
  }

  addTable() {
    const number = (title, text, sort) => ({title, text, sort, isNumber: true});
    const orUnknown = value => value === null ? "not known" : value;
    const rounded = ms => ms === null ? "not known" : String(Math.round(ms * 1000) / 1000);
    const columns = [
      number("Number", row => row.number, row => row.number),
      {title: "Name", text: row => row.name, sort: row => row.name, onPick: row => this.choose(row)},
      {title: "Result", text: row => row.hasFailed ? "failed" : "", sort: row => row.hasFailed ? 0 : 1,
        className: row => row.hasFailed ? "failed" : ""},
      {title: "Cameras", text: row => orUnknown(row.cameras), sort: row => row.cameras},
      {title: "Mode", text: row => orUnknown(row.mode), sort: row => row.mode},
      number("To the flush, ms", row => rounded(row.ms), row => row.ms),
      number("Nodes", row => row.raw.nodes.length, row => row.raw.nodes.length),
      {title: "Slowest node", text: row => row.slowest === null ? "not known" : row.slowest.name,
        sort: row => row.slowest === null ? null : row.slowest.name},
      number("Its ms", row => rounded(row.slowest === null ? null : row.slowest.ms),
        row => row.slowest === null ? null : row.slowest.ms),
      number("Failures", row => row.failures, row => row.failures),
      number("Without effect", row => row.noEffects, row => row.noEffects),
    ];
    this.table = new Table(byId("list"), columns,
      {caption: "Captures", onSort: column => this.sortBy(column)});
  }

  sortBy(column) {
    // Numbers and times: the largest first.
    const first = column.isNumber && column.title !== "Number" ? -1 : 1;
    const isSame = this.order.column === column;
    this.order = {column, direction: isSame ? -this.order.direction : first};
    this.table.showOrder(column, this.order.direction);
    this.filter();
  }

  wanted() {
    const name = byId("name").value.toLowerCase();
    const mode = byId("mode").value;
    const slowCapture = parseFloat(byId("slow-capture").value);
    const slowNode = parseFloat(byId("slow-node").value);
    const failed = byId("failed").checked;
    const noEffect = byId("no-effect").checked;
    return this.session.captures.filter(capture =>
      (name === "" || capture.searchText.includes(name)) &&
      (mode === "" || (capture.mode === null ? "\u0000" : capture.mode) === mode) &&
      (isNaN(slowCapture) || (capture.ms !== null && capture.ms >= slowCapture)) &&
      (isNaN(slowNode) || (capture.slowest !== null && capture.slowest.ms >= slowNode)) &&
      (!failed || capture.hasFailed) &&
      (!noEffect || capture.noEffects > 0));
  }

  filter() {
    performance.mark("filter begins");
    const rows = this.wanted();
    const {column, direction} = this.order;
    if (column !== null) {
      rows.sort((one, other) => {
        const [first, second] = [column.sort(one), column.sort(other)];
        return first === null || second === null ? compare(first, second)
          : direction * compare(first, second);
      });
    }
    this.shown = new Set(rows);
    this.table.show(rows);
    this.overview.draw();
    byId("shown").textContent = `${rows.length} of ${this.session.captures.length} shown`;
    performance.measure("filter", "filter begins");
  }

  choose(capture) {
    this.table.choose(capture);
    this.view.show(capture);
    byId("capture-title").focus();
    byId("capture").scrollIntoView({block: "nearest"});
  }
}

new Page(readSession());
performance.measure("first draw");
