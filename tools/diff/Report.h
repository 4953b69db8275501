// What is said of the differences.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Captured.h"
#include "Difference.h"
#include "TerminalStyle.h"

namespace diff {

// Where a difference was found.
struct Where {
    std::string name;       // of the capture; empty: it has none, or it is the session
    std::string otherName;  // B's, of a pair
    int64_t numberA = 0;    // among the side's captures, from 1; 0: there is none
    int64_t numberB = 0;
};

struct Counts {
    uint64_t pairs = 0;
    uint64_t differing = 0;  // pairs
    uint64_t onlyInA = 0;
    uint64_t onlyInB = 0;
    uint64_t ofSession = 0;  // differences

    // Both sides have captures, and none of one is compared with any of the other.
    bool haveNothingInCommon() const { return pairs == 0 && onlyInA != 0 && onlyInB != 0; }
    bool areSame() const { return differing + onlyInA + onlyInB + ofSession == 0; }
};

class Report {
  public:
    virtual ~Report() = default;
    virtual void add(const Difference& difference, const Where& where) = 0;
    // Writes all, and `counts` last.
    virtual void write(std::FILE* file, const Counts& counts) = 0;
};

// For a person: a table in which what differs in several captures has one line, or a few if it
// differs in several ways. Its memory grows with the kinds of differences only.
class TableReport : public Report {
  public:
    TableReport(std::string a, std::string b, const view::TerminalStyle& style)
        : mA(std::move(a)), mB(std::move(b)), mStyle(style) {}

    void add(const Difference& difference, const Where& where) override;
    void write(std::FILE* file, const Counts& counts) override;

  private:
    using Cells = std::vector<std::string>;  // of a line of the table
    // Differences from one value to the same other one; of a duration, all of them.
    struct Line {
        Difference example;  // the first, or the largest change
        std::string capture;
        uint64_t captures = 0;
    };
    struct Group {
        std::vector<Line> lines;
        uint64_t others = 0;  // captures that differ in further ways
        uint64_t captures = 0;
        int64_t largestChange = 0;
    };
    using Key = std::pair<std::string, std::string>;  // item and node

    static Line* lineOf(Group& group, const Difference& difference);
    std::vector<Cells> tableCells() const;
    void addCells(const Group& group, std::vector<Cells>& all) const;

    const std::string mA;
    const std::string mB;
    const view::TerminalStyle mStyle;
    std::map<Kind, std::map<Key, Group>> mGroups;
};

// For programs: a line of JSON for each difference and a last one for the counts. Keeps all
// differences in memory until they are written.
class JsonReport : public Report {
  public:
    void add(const Difference& difference, const Where& where) override;
    void write(std::FILE* file, const Counts& counts) override;

  private:
    struct Entry {
        Kind kind;
        int64_t size;  // of a duration's change
        std::string line;
    };

    std::vector<Entry> mEntries;
};

// "8 captures compared, 2 of them differ, 1 only in B".
std::string summaryOf(const Counts& counts);

}  // namespace diff
