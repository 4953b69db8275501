// Lines of a table, one under the other.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TerminalStyle.h"

namespace view {

// Every line is to be measured before the first one is made; no line needs to be kept meanwhile.
// Cells are safe texts.
class Columns {
  public:
    enum class Side { kLeft, kRight };
    enum class Cut { kNever, kMiddle, kEnd };
    struct Column {
        std::string heading;
        Side side = Side::kLeft;
        Cut cut = Cut::kNever;
        size_t least = 8;  // columns that stay if it is cut
    };
    using Cells = std::vector<std::string>;  // one for each column

    Columns(std::vector<Column> columns, size_t indent, const TerminalStyle& style);

    void measure(const Cells& cells);
    // Makes columns narrower until a line fits into the style's width: the widest of those that may
    // lose their end, then of those that may lose their middle. What is still too wide loses the
    // line's end.
    void fit();

    // The headings, without those of columns that are empty in every line.
    std::string headings() const;
    std::string line(const Cells& cells) const;
    // What is left of the last column's cells. Known after `fit`.
    size_t lastWidth() const { return mWidths.back(); }

  private:
    std::string cell(size_t column, const std::string& text) const;
    std::string joinedLine(const Cells& cells) const;
    size_t lineWidth() const;
    size_t widest(Cut cut) const;

    const std::vector<Column> mColumns;
    const size_t mIndent;
    const TerminalStyle mStyle;
    std::vector<size_t> mWidths;  // 0: nothing in it
};

}  // namespace view
