// Findings as lines for the terminal.

#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "TerminalStyle.h"
#include "TerminalText.h"
#include "View.h"

namespace view {

enum class Weight { kFailure, kNoEffect, kWorthKnowing };

Weight weightOf(FindingKind kind);
Colour colourOf(Weight weight);

// "night.jsonl:17", or nothing if the line is not known.
std::string placeText(const Place& place, const Session& session);

// All of them, a line for each.
std::string findingLines(const std::vector<Finding>& findings, const Session& session,
                         size_t indent, const TerminalStyle& style);

// The worst findings of any number of captures: failures first, and in the order of registration.
class WorstFindings {
  public:
    static constexpr size_t kMost = 20;  // that are kept

    void add(const Capture& capture, const Session& session);
    // A line for each, and how many there are more.
    std::string lines(size_t indent, const TerminalStyle& style) const;

  private:
    struct Entry {
        Weight weight;
        uint64_t capture;
        size_t position;
        std::string place;
        std::string name;
        std::string text;

        bool operator<(const Entry& other) const;
    };

    std::set<Entry> mEntries;
    uint64_t mLeftOut = 0;
};

// The first of a session's own findings, as lines.
std::string sessionFindingLines(const Session& session, size_t indent, const TerminalStyle& style);

}  // namespace view
