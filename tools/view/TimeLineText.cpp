#include "TimeLineText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "TerminalStyle.h"
#include "TerminalText.h"
#include "TimeLine.h"

namespace view {
namespace {

constexpr size_t kIndent = 4;
constexpr size_t kGap = 2;
constexpr size_t kMostLanes = 40;
constexpr double kNanosecondsPerMs = 1e6;

// What one column of a lane shows, later ones over earlier ones.
enum class Cell { kNothing, kInstant, kEven, kOdd, kFailed };

using Cells = std::vector<Cell>;

struct Drawing {
    int64_t length;
    size_t labels;  // columns for the lanes' names
    size_t width;   // columns for the time
    TerminalStyle style;

    size_t columnOf(int64_t at) const {
        const double part = length <= 0 ? 0 : static_cast<double>(at) / static_cast<double>(length);
        const double column = part * static_cast<double>(width);
        return std::min(static_cast<size_t>(std::max(column, 0.0)), width - 1);
    }
    std::string line(const std::string& label, const std::string& drawn) const {
        const std::string shown = withoutMiddle(label, labels, style);
        return std::string(kIndent, ' ') + shown +
               std::string(labels - columnsOf(shown) + kGap, ' ') + drawn + '\n';
    }
    std::string note(const std::string& text) const {
        return std::string(kIndent, ' ') + withoutEnd(text, style.width - kIndent, style) + '\n';
    }
};

std::string labelOf(const Lane& lane) {
    switch (lane.kind) {
        case Lane::Kind::kCapture:
            return "capture";
        case Lane::Kind::kStages:
            return "stages";
        case Lane::Kind::kNode:
            return safeName(lane.name);
        case Lane::Kind::kThread:
            break;
    }
    return "thread " + (lane.name.empty() ? std::to_string(lane.tid) : safe(lane.name));
}

std::string glyphOf(Cell cell, const TerminalStyle& style) {
    switch (cell) {
        case Cell::kNothing:
            break;
        case Cell::kInstant:
            return style.utf8 ? "\u2502" : "|";
        case Cell::kEven:
            return style.utf8 ? "\u2588" : "=";
        case Cell::kOdd:
            return style.utf8 ? "\u2593" : "-";
        case Cell::kFailed:
            return style.utf8 ? "\u2592" : "x";
    }
    return " ";
}

// The cells with one colour escape for each run of cells that look the same.
std::string drawn(const Cells& cells, Colour colour, const TerminalStyle& style) {
    std::string text;
    for (size_t i = 0; i < cells.size();) {
        std::string run;
        const Cell cell = cells[i];
        for (; i < cells.size() && cells[i] == cell; ++i) {
            run += glyphOf(cell, style);
        }
        text += cell == Cell::kNothing  ? run
                : cell == Cell::kFailed ? inColour(run, Colour::kRed, style)
                                        : inColour(run, colour, style);
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

Cells cellsOf(const Lane& lane, const Drawing& drawing) {
    Cells cells(drawing.width, Cell::kNothing);
    bool isOdd = false;
    for (const Span& span : lane.spans) {
        const Cell look = span.hasFailed           ? Cell::kFailed
                          : span.begin == span.end ? Cell::kInstant
                          : isOdd                  ? Cell::kOdd
                                                   : Cell::kEven;
        const size_t first = drawing.columnOf(span.begin);
        const size_t last = std::max(first, drawing.columnOf(span.end - (span.end > span.begin)));
        for (size_t column = first; column <= last; ++column) {
            cells[column] = std::max(cells[column], look);
        }
        isOdd = !isOdd;
    }
    return cells;
}

Colour colourOf(Lane::Kind kind) {
    return kind == Lane::Kind::kNode ? Colour::kCyan : Colour::kNone;
}

// Nothing if there is no mark of that kind.
std::string markLine(const TimeLine& timeLine, bool failures, const Drawing& drawing) {
    std::string line(drawing.width, ' ');
    for (const Mark& mark : timeLine.marks) {
        if (mark.isFailure == failures) {
            line[drawing.columnOf(mark.at)] = failures ? '!' : '^';
        }
    }
    line.erase(line.find_last_not_of(' ') + 1);
    const Colour colour = failures ? Colour::kRed : Colour::kNone;
    return line.empty() ? ""
                        : drawing.line(failures ? "errors" : "flushes",
                                       inColour(line, colour, drawing.style));
}

// The beginning, the middle and the end in milliseconds, as far as there is room.
std::string axis(const Drawing& drawing) {
    const double ms = static_cast<double>(drawing.length) / kNanosecondsPerMs;
    const std::string end = milliseconds(ms) + " ms";
    const std::string middle = milliseconds(ms / 2);
    std::string line(drawing.width, ' ');
    const auto put = [&](size_t at, const std::string& text) {
        line.replace(at, text.size(), text);
    };
    if (drawing.width > end.size() + 2) {
        put(0, "0");
        put(drawing.width - end.size(), end);
    }
    if (drawing.length > 0 && drawing.width / 2 > end.size() + middle.size() + 2) {
        put(drawing.width / 2, middle);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return drawing.line("", inColour(line, Colour::kDim, drawing.style));
}

Drawing drawingOf(const TimeLine& timeLine, const TerminalStyle& style) {
    size_t labels = columnsOf("flushes");
    for (const Lane& lane : timeLine.lanes) {
        labels = std::max(labels, columnsOf(labelOf(lane)));
    }
    labels = std::min(labels, std::max<size_t>(style.width / 4, 7));
    const size_t used = kIndent + labels + kGap;
    return {timeLine.length, labels, style.width - std::min(style.width - 1, used), style};
}

}  // namespace

std::string timeLineText(const TimeLine& timeLine, const TerminalStyle& style) {
    const Drawing drawing = drawingOf(timeLine, style);
    std::string text = axis(drawing);
    const size_t shown = std::min(timeLine.lanes.size(), kMostLanes);
    for (size_t i = 0; i < shown; ++i) {
        const Lane& lane = timeLine.lanes[i];
        text += drawing.line(labelOf(lane),
                             drawn(cellsOf(lane, drawing), colourOf(lane.kind), style));
    }
    if (shown < timeLine.lanes.size()) {
        text += drawing.note("... and " + counted(timeLine.lanes.size() - shown, "lane") + " more");
    }
    text += markLine(timeLine, true, drawing) + markLine(timeLine, false, drawing);
    if (timeLine.nodesStandApart) {
        text += drawing.note("the nodes have a clock of their own: the first one is drawn at 0");
    }
    return text;
}

}  // namespace view
