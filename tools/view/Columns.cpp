#include "Columns.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "TerminalStyle.h"
#include "TerminalText.h"

namespace view {
namespace {

constexpr size_t kGap = 2;

}  // namespace

Columns::Columns(std::vector<Column> columns, size_t indent, const TerminalStyle& style)
    : mColumns(std::move(columns)), mIndent(indent), mStyle(style), mWidths(mColumns.size()) {}

void Columns::measure(const Cells& cells) {
    for (size_t i = 0; i < mColumns.size(); ++i) {
        const size_t width = columnsOf(cells[i]);
        if (width != 0) {
            mWidths[i] = std::max({mWidths[i], width, columnsOf(mColumns[i].heading)});
        }
    }
}

size_t Columns::lineWidth() const {
    size_t width = mIndent;
    for (const size_t column : mWidths) {
        width += column != 0 ? column + kGap : 0;
    }
    return width - std::min(width, kGap);
}

// Of those that may lose `cut`, the widest; the number of columns if none can become narrower.
size_t Columns::widest(Cut cut) const {
    size_t widest = mColumns.size();
    for (size_t i = 0; i < mColumns.size(); ++i) {
        const bool canShrink = mColumns[i].cut == cut && mWidths[i] > mColumns[i].least;
        if (canShrink && (widest == mColumns.size() || mWidths[i] > mWidths[widest])) {
            widest = i;
        }
    }
    return widest;
}

void Columns::fit() {
    while (lineWidth() > mStyle.width) {
        const size_t end = widest(Cut::kEnd);
        const size_t next = end != mColumns.size() ? end : widest(Cut::kMiddle);
        if (next == mColumns.size()) {
            return;
        }
        // Texts may be very long: what cannot fit in any case goes at once.
        const size_t excess = lineWidth() - mStyle.width;
        const size_t spare = mWidths[next] - mColumns[next].least;
        const size_t tooWide = mWidths[next] - std::min(mWidths[next], mStyle.width);
        mWidths[next] -= std::max<size_t>(1, std::min({excess, spare, tooWide}));
    }
}

std::string Columns::cell(size_t column, const std::string& text) const {
    const size_t width = mWidths[column];
    std::string cut = mColumns[column].cut == Cut::kMiddle ? withoutMiddle(text, width, mStyle)
                                                           : withoutEnd(text, width, mStyle);
    const bool isLeft = mColumns[column].side == Side::kLeft;
    if (isLeft && column + 1 == mColumns.size()) {
        return cut;
    }
    const std::string blanks(width - columnsOf(cut), ' ');
    return isLeft ? cut + blanks : blanks + cut;
}

std::string Columns::joinedLine(const Cells& cells) const {
    std::string line(mIndent, ' ');
    for (size_t i = 0; i < mColumns.size(); ++i) {
        if (mWidths[i] != 0) {
            line += cell(i, cells[i]) + std::string(kGap, ' ');
        }
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::string Columns::headings() const {
    Cells headings;
    for (const Column& column : mColumns) {
        headings.push_back(column.heading);
    }
    return line(headings);
}

std::string Columns::line(const Cells& cells) const {
    return withoutEnd(joinedLine(cells), mStyle.width, mStyle);
}

}  // namespace view
