// A time line on a canvas, to be zoomed and moved with mouse, touch and keys.

/* global d3, element, shortText */
/* exported Chart, timeText */

const LABEL_WIDTH = 150;
const AXIS_HEIGHT = 22;
const SHORTEST_VIEW = 10; // microseconds

// Microseconds with the unit that fits `step`.
function timeText(time, step) {
  const [size, unit] = step >= 1e6 ? [1e6, "s"] : step >= 1e3 ? [1e3, "ms"] : [1, "µs"];
  return `${d3.format(",.12~g")(time / size)} ${unit}`;
}

// The first span of a row that ends at or after `time`. Spans of a row do not overlap.
function firstVisible(spans, time) {
  return d3.bisector(span => span.end).left(spans, time);
}

class Chart {
  // `parent` gets the canvas. `options`: label, and perhaps mostHeight, hasLabels, isDim(span) and
  // onPick(span).
  constructor(parent, options) {
    this.options = options;
    this.rows = [];
    this.marks = [];
    this.length = 1;
    this.current = null; // the span that the keys are at
    this.build(parent);
    this.zoom = d3.zoom().on("zoom", () => this.draw())
      .filter(() => d3.event.type === "wheel"
        ? d3.event.ctrlKey || d3.event.metaKey || d3.event.shiftKey : !d3.event.button);
    d3.select(this.canvas).call(this.zoom).on("dblclick.zoom", null);
    this.canvas.addEventListener("mousemove", event => this.point(event));
    this.canvas.addEventListener("mouseleave", () => this.tell(null));
    this.canvas.addEventListener("click", event => this.pick(this.spanAt(event)));
    this.canvas.addEventListener("keydown", event => this.press(event));
    this.observer = new ResizeObserver(() => this.resize());
    this.observer.observe(this.canvas);
    this.scheme = matchMedia("(prefers-color-scheme: dark)");
    this.redraw = () => this.draw();
    this.scheme.addEventListener("change", this.redraw);
    addEventListener("beforeprint", this.redraw);
  }

  build(parent) {
    this.canvas = element("canvas", {tabindex: "0", role: "application", "aria-label": this.options.label});
    this.about = element("p", {class: "about", "aria-live": "polite"});
    const button = (text, label, act) => {
      const made = element("button", {type: "button", "aria-label": label}, text);
      made.addEventListener("click", act);
      return made;
    };
    const tools = element("div", {class: "tools"}, [
      button("−", "Show more time", () => this.scaleBy(1 / 1.6)),
      button("+", "Show less time", () => this.scaleBy(1.6)),
      button("All", "Show all the time", () => this.showAll()),
      element("span", {class: "hint"},
        "Drag or ← →: move · Ctrl+wheel, pinch or + −: zoom · ↑ ↓: next bar · Enter: open · 0: all"),
    ]);
    this.root = element("div", {class: "chart"}, [this.canvas, tools, this.about]);
    parent.append(this.root);
  }

  destroy() {
    this.observer.disconnect();
    this.scheme.removeEventListener("change", this.redraw);
    removeEventListener("beforeprint", this.redraw);
    this.root.remove();
  }

  // `rows`: name and spans, which are sorted and do not overlap; a span has begin, end, kind, name.
  show(rows, marks, length) {
    this.rows = rows;
    this.marks = marks;
    this.length = Math.max(length, SHORTEST_VIEW);
    this.sorted = null;
    this.current = null;
    const names = rows.map(row => shortText(row.name, 80)).join(", ");
    this.canvas.setAttribute("aria-label",
      this.options.hasLabels ? `${this.options.label}: ${names}` : this.options.label);
    this.resize();
    this.showAll();
  }

  resize() {
    const ratio = devicePixelRatio || 1;
    const height = AXIS_HEIGHT + Math.min(this.options.mostHeight || Infinity,
      Math.max(1, this.rows.length) * 20 + 4);
    this.width = this.canvas.clientWidth || 600;
    this.height = height;
    this.canvas.width = Math.round(this.width * ratio);
    this.canvas.height = Math.round(height * ratio);
    this.canvas.style.height = `${height}px`;
    this.ratio = ratio;
    this.left = this.options.hasLabels ? Math.min(LABEL_WIDTH, this.width / 3) : 0;
    this.scale = d3.scaleLinear().domain([0, this.length]).range([this.left + 4, this.width - 8]);
    this.zoom.scaleExtent([1, Math.max(1, this.length / SHORTEST_VIEW)])
      .extent([[this.left, 0], [this.width, height]])
      .translateExtent([[this.left, 0], [this.width, height]]);
    this.draw();
  }

  get x() {
    return d3.zoomTransform(this.canvas).rescaleX(this.scale);
  }

  scaleBy(factor) {
    d3.select(this.canvas).call(this.zoom.scaleBy, factor);
  }

  moveBy(part) {
    const transform = d3.zoomTransform(this.canvas);
    d3.select(this.canvas).call(this.zoom.translateBy, part * (this.width - this.left) / transform.k, 0);
  }

  showAll() {
    d3.select(this.canvas).call(this.zoom.transform, d3.zoomIdentity);
  }

  rowHeight() {
    return Math.min(20, (this.height - AXIS_HEIGHT) / Math.max(1, this.rows.length));
  }

  colours() {
    const style = getComputedStyle(document.documentElement);
    const known = new Map();
    return name => {
      if (!known.has(name)) {
        known.set(name, style.getPropertyValue(`--${name}`).trim());
      }
      return known.get(name);
    };
  }

  draw() {
    const context = this.canvas.getContext("2d");
    const colour = this.colours();
    const x = this.x;
    context.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    context.clearRect(0, 0, this.width, this.height);
    context.font = "12px system-ui, sans-serif";
    context.textBaseline = "middle";
    this.drawAxis(context, colour, x);
    context.save();
    context.beginPath();
    context.rect(this.left, AXIS_HEIGHT, this.width - this.left, this.height);
    context.clip();
    this.rows.forEach((row, index) => this.drawSpans(context, colour, x, row, index));
    this.drawMarks(context, colour, x);
    context.restore();
    this.drawLabels(context, colour);
  }

  drawAxis(context, colour, x) {
    const ticks = x.ticks(Math.max(2, Math.floor((this.width - this.left) / 110)));
    const step = ticks.length > 1 ? ticks[1] - ticks[0] : this.length;
    context.strokeStyle = colour("line");
    context.fillStyle = colour("faint");
    context.beginPath();
    for (const tick of ticks) {
      const at = Math.round(x(tick)) + 0.5;
      context.moveTo(at, AXIS_HEIGHT - 4);
      context.lineTo(at, this.height);
      context.fillText(timeText(tick, step), at + 3, AXIS_HEIGHT / 2);
    }
    context.stroke();
  }

  drawSpans(context, colour, x, row, index) {
    const height = this.rowHeight();
    const top = AXIS_HEIGHT + index * height;
    const [from, to] = [x.invert(this.left), x.invert(this.width)];
    for (let i = firstVisible(row.spans, from); i < row.spans.length && row.spans[i].begin <= to; ++i) {
      const span = row.spans[i];
      const begin = Math.max(x(span.begin), this.left - 2);
      const width = Math.max(Math.min(x(span.end), this.width + 2) - begin, span.end > span.begin ? 1 : 2);
      const isDim = this.options.isDim !== undefined && this.options.isDim(span);
      context.fillStyle = colour(isDim ? "hidden" : this.kindOf(span));
      const gap = height > 6 ? 2 : 0;
      context.fillRect(begin, top + gap, width, gap > 0 ? height - 2 * gap : Math.max(height - 0.5, 1));
      if (span === this.current) {
        context.strokeStyle = colour("focus");
        context.lineWidth = 2;
        context.strokeRect(begin - 1, top + 1, width + 2, Math.max(height - 2, 2));
        context.lineWidth = 1;
      }
      if (width > 40 && height > 14) {
        this.drawName(context, colour("paper"), span.name, begin + 4, width - 8, top + height / 2);
      }
    }
  }

  kindOf({failed, kind}) {
    return !failed ? kind : kind === "call" ? "no-effect" : "failed";
  }

  drawName(context, colour, name, left, width, middle) {
    context.save();
    context.beginPath();
    context.rect(left, middle - 10, width, 20);
    context.clip();
    context.fillStyle = colour;
    context.fillText(shortText(name, 80), left, middle);
    context.restore();
  }

  drawMarks(context, colour, x) {
    for (const mark of this.marks) {
      const at = Math.round(x(mark.at)) + 0.5;
      context.strokeStyle = colour(mark.isFailure ? "failed" : "ink");
      context.setLineDash(mark.isFailure ? [] : [4, 3]);
      context.beginPath();
      context.moveTo(at, AXIS_HEIGHT);
      context.lineTo(at, this.height);
      context.stroke();
    }
    context.setLineDash([]);
  }

  drawLabels(context, colour) {
    if (!this.options.hasLabels) {
      return;
    }
    this.rows.forEach((row, index) => this.drawName(context, colour("ink"), row.name, 4, this.left - 8,
      AXIS_HEIGHT + (index + 0.5) * this.rowHeight()));
  }

  // The span at the pointer, or a narrow one beside it.
  spanAt(event) {
    const x = this.x;
    const row = this.rows[Math.floor((event.offsetY - AXIS_HEIGHT) / this.rowHeight())];
    if (row === undefined || event.offsetX < this.left) {
      return null;
    }
    const first = firstVisible(row.spans, x.invert(event.offsetX - 3));
    const last = x.invert(event.offsetX + 3);
    const spans = [];
    for (let i = first; i < row.spans.length && row.spans[i].begin <= last && spans.length < 20; ++i) {
      spans.push(row.spans[i]);
    }
    const distance = span => Math.max(x(span.begin) - event.offsetX, event.offsetX - x(span.end), 0);
    return spans.sort((one, other) => distance(one) - distance(other))[0] || null;
  }

  point(event) {
    this.tell(this.spanAt(event));
  }

  tell(span) {
    const shown = span || this.current;
    this.about.textContent = shown === null ? "" : this.spanText(shown);
  }

  spanText(span) {
    const length = span.end - span.begin;
    return `${shortText(span.name, 200)}: at ${timeText(span.begin, 1e3)}` +
      `${length > 0 ? `, ${timeText(length, 1e3)}` : ""}${span.failed ? ", failed" : ""}`;
  }

  pick(span) {
    if (span !== null && this.options.onPick !== undefined) {
      this.options.onPick(span);
    }
  }

  // Makes the next or the one before the current span, and moves to it.
  step(offset) {
    if (this.sorted === null) {
      this.sorted = this.rows.reduce((all, row) => all.concat(row.spans), [])
        .sort((one, other) => one.begin - other.begin);
    }
    const spans = this.options.isDim === undefined ? this.sorted
      : this.sorted.filter(span => !this.options.isDim(span));
    const index = spans.indexOf(this.current);
    const next = index < 0 ? (offset > 0 ? 0 : spans.length - 1) : index + offset;
    if (next < 0 || next >= spans.length) {
      return;
    }
    this.current = spans[next];
    const at = this.x(this.current.begin);
    if (at < this.left || at > this.width - 20) {
      this.moveBy(0.5 - (at - this.left) / (this.width - this.left));
    }
    this.draw();
    this.tell(null);
  }

  press(event) {
    const actions = {
      ArrowLeft: () => this.moveBy(0.1),
      ArrowRight: () => this.moveBy(-0.1),
      ArrowUp: () => this.step(-1),
      ArrowDown: () => this.step(1),
      "+": () => this.scaleBy(1.6),
      "-": () => this.scaleBy(1 / 1.6),
      0: () => this.showAll(),
      Enter: () => this.pick(this.current),
    };
    if (event.ctrlKey || event.metaKey || event.altKey || !(event.key in actions)) {
      return;
    }
    event.preventDefault();
    actions[event.key]();
  }
}
