// One line for each capture.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Capture.h"
#include "TerminalStyle.h"

namespace view {

// Keeps a short row of each capture, whatever the capture holds.
class Summary {
  public:
    // `sort` is that of ViewOptions.
    Summary(std::string sort, const TerminalStyle& style) : mSort(std::move(sort)), mStyle(style) {}

    void add(const Capture& capture);
    size_t size() const { return mRows.size(); }
    // Puts the lines into order and writes them. What is known of no capture has no column.
    void write(std::FILE* file);

  private:
    struct Row {
        uint64_t number;
        std::string name;
        std::string cameras;
        std::optional<double> duration;
        size_t nodes;
        std::string slowest;  // node; empty: no duration is known
        std::optional<double> slowestDuration;
        std::array<uint64_t, 3> findings;  // their number, by weight
        std::string worst;                 // finding, in words
    };

    void sort();
    std::vector<std::string> cells(const Row& row, const std::string& findings) const;

    const std::string mSort;
    const TerminalStyle mStyle;
    std::vector<Row> mRows;
    bool mKnowsCameras = false;
    bool mKnowsDurations = false;
};

}  // namespace view
