// Tables, of which only the rows that can be seen are in the page; and elements made of data.

/* exported Table, element, shortText */

const ROW_HEIGHT = 28;
const ROWS_AROUND = 10; // above and below what is seen
const MOST_PRINTED = 1000;

// Texts of a log may be as long as they like; the whole of one is in the page's data.
function shortText(text, longest) {
  return text.length <= longest ? text : `${text.slice(0, longest)}… (${text.length} characters)`;
}

// An element with attributes and either a text or children. Data becomes text only.
function element(name, attributes, content) {
  const made = document.createElement(name);
  for (const key of Object.keys(attributes || {})) {
    made.setAttribute(key, attributes[key]);
  }
  if (Array.isArray(content)) {
    made.append(...content);
  } else if (content !== undefined) {
    made.textContent = content;
  }
  return made;
}

class Table {
  // `columns`: title, text(row), and perhaps isNumber, className(row), sort(row), onPick(row) in the
  // column that is a button. `options`: caption, onSort(column).
  constructor(parent, columns, options) {
    this.columns = columns;
    this.options = options;
    this.rows = [];
    this.current = 0;
    this.chosen = null;
    this.drawn = new Map(); // rows of the page, by index
    this.above = this.space();
    this.below = this.space();
    this.body = element("tbody", {}, [this.above, this.below]);
    this.heads = columns.map(column => this.head(column));
    this.table = element("table", {}, [
      element("caption", {}, options.caption),
      element("thead", {}, [element("tr", {"aria-rowindex": "1"}, this.heads)]),
      this.body,
    ]);
    this.scroll = element("div", {class: "scroll", tabindex: "0", role: "region",
      "aria-label": options.caption}, [this.table]);
    parent.append(this.scroll);
    this.scroll.addEventListener("scroll", () => this.draw());
    this.scroll.addEventListener("keydown", event => this.press(event));
    this.print = () => this.drawRows(0, Math.min(this.rows.length, MOST_PRINTED));
    this.afterPrint = () => this.draw();
    addEventListener("beforeprint", this.print);
    addEventListener("afterprint", this.afterPrint);
  }

  destroy() {
    removeEventListener("beforeprint", this.print);
    removeEventListener("afterprint", this.afterPrint);
    this.scroll.remove();
  }

  head(column) {
    const cell = element("th", {scope: "col"});
    if (column.isNumber) {
      cell.className = "number";
    }
    if (this.options.onSort === undefined) {
      cell.textContent = column.title;
      return cell;
    }
    const button = element("button", {type: "button"}, column.title);
    button.addEventListener("click", () => this.options.onSort(column));
    cell.append(button);
    return cell;
  }

  showOrder(column, direction) {
    this.columns.forEach((each, index) => {
      if (each === column) {
        this.heads[index].setAttribute("aria-sort", direction > 0 ? "ascending" : "descending");
      } else {
        this.heads[index].removeAttribute("aria-sort");
      }
      const arrow = each !== column ? "" : direction > 0 ? " ↑" : " ↓";
      this.heads[index].firstChild.textContent = each.title + arrow;
    });
  }

  show(rows) {
    for (const row of this.drawn.values()) {
      row.remove();
    }
    this.drawn.clear();
    this.rows = rows;
    this.current = Math.max(0, rows.indexOf(this.chosen));
    this.table.setAttribute("aria-rowcount", String(rows.length + 1));
    this.scroll.scrollTop = 0;
    this.draw();
  }

  choose(row) {
    this.chosen = row;
    const index = this.rows.indexOf(row);
    if (index >= 0) {
      this.current = index;
      this.bringIntoView(index);
    }
    this.draw();
  }

  // The rows that can be seen and some around them.
  draw() {
    const height = this.scroll.clientHeight || 400;
    const first = Math.max(0, Math.floor(this.scroll.scrollTop / ROW_HEIGHT) - ROWS_AROUND);
    const last = Math.min(this.rows.length,
      Math.ceil((this.scroll.scrollTop + height) / ROW_HEIGHT) + ROWS_AROUND);
    this.drawRows(first, last);
  }

  // Leaves the rows that stay as they are: one may have the focus or be under a pressed button.
  drawRows(first, last) {
    const hadFocus = this.body.contains(document.activeElement);
    for (const [index, row] of this.drawn) {
      if (index < first || index >= last) {
        row.remove();
        this.drawn.delete(index);
      }
    }
    let next = this.below;
    for (let index = last - 1; index >= first; --index) {
      if (!this.drawn.has(index)) {
        this.drawn.set(index, this.row(this.rows[index], index));
        this.body.insertBefore(this.drawn.get(index), next);
      }
      next = this.drawn.get(index);
      next.className = this.rows[index] === this.chosen ? "chosen" : "";
    }
    this.resizeSpace(this.above, first);
    this.resizeSpace(this.below, this.rows.length - last);
    if (hadFocus && !this.body.contains(document.activeElement)) {
      this.scroll.focus({preventScroll: true});
    }
  }

  space() {
    return element("tr", {class: "space", "aria-hidden": "true"},
      [element("td", {colspan: String(this.columns.length)})]);
  }

  resizeSpace(row, rows) {
    row.firstChild.style.height = `${rows * ROW_HEIGHT}px`;
    row.hidden = rows === 0;
  }

  row(data, index) {
    const row = element("tr", {"aria-rowindex": String(index + 2)});
    for (const column of this.columns) {
      const cell = element("td");
      const text = shortText(String(column.text(data)), 200);
      const classes = [column.isNumber ? "number" : "", column.className ? column.className(data) : ""];
      cell.className = classes.join(" ").trim();
      if (column.onPick !== undefined) {
        const button = element("button", {type: "button", "data-row": String(index)}, text || "(no name)");
        button.addEventListener("click", () => {
          this.current = index;
          column.onPick(data);
        });
        cell.append(button);
      } else {
        cell.textContent = text;
      }
      row.append(cell);
    }
    return row;
  }

  buttonOf(index) {
    return this.body.querySelector(`button[data-row="${index}"]`);
  }

  bringIntoView(index) {
    const head = this.table.tHead.offsetHeight + this.table.caption.offsetHeight;
    const top = index * ROW_HEIGHT;
    const bottom = top + ROW_HEIGHT + head;
    if (top < this.scroll.scrollTop) {
      this.scroll.scrollTop = top;
    } else if (bottom > this.scroll.scrollTop + this.scroll.clientHeight) {
      this.scroll.scrollTop = bottom - this.scroll.clientHeight;
    }
  }

  // Keys move from row to row; a row's button takes the focus. Without buttons they scroll.
  press(event) {
    if (!this.columns.some(column => column.onPick !== undefined)) {
      return;
    }
    const page = Math.max(1, Math.floor(this.scroll.clientHeight / ROW_HEIGHT) - 2);
    const isIn = this.body.contains(document.activeElement);
    const targets = {
      ArrowDown: isIn ? this.current + 1 : this.current,
      ArrowUp: this.current - 1,
      PageDown: this.current + page,
      PageUp: this.current - page,
      Home: 0,
      End: this.rows.length - 1,
    };
    if (!(event.key in targets) || this.rows.length === 0 || event.ctrlKey || event.altKey ||
        event.target.closest("thead") !== null) {
      return;
    }
    event.preventDefault();
    this.current = Math.min(this.rows.length - 1, Math.max(0, targets[event.key]));
    this.bringIntoView(this.current);
    this.draw();
    const button = this.buttonOf(this.current);
    if (button !== null) {
      button.focus({preventScroll: true});
    }
  }
}
