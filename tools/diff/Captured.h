// The captures of one side, with their nodes.

#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Row.h"
#include "RowReader.h"

namespace diff {

struct Captured {
    rows::CaptureRow row;
    std::vector<rows::NodeRow> nodes;

    std::string name() const { return row.name.value_or(""); }
};

// What belongs to no single capture; of several runs in a folder, all of it.
struct Session {
    std::map<std::string, std::string> switches;
    rows::Whole findings;  // that belong to no capture
    rows::Whole captures;
};

// Reads a folder of rows once from front to back. Keeps in memory only those nodes that come before
// their capture's turn.
//
// What is wrong with the rows is thrown as std::runtime_error with one sentence for the user, also
// that there are fewer rows than run.ndjson tells of, or nodes of no capture.
class CaptureReader {
  public:
    explicit CaptureReader(const rows::RowFolder& folder);

    // Sets `capture` to the next one, in the order of the file. Returns false at the end.
    bool next(Captured& capture);

    // Where the last capture stands: "FILE:LINE".
    std::string place() const { return mCaptureRows.place(); }
    const Session& session() const { return mSession; }

  private:
    using Key = std::pair<std::string, int64_t>;  // run and capture
    struct Early {
        std::string place;  // of the first one
        std::vector<rows::NodeRow> nodes;
    };

    void readRuns(const std::string& path);
    void takeNodes(Captured& capture);
    bool lookAhead();
    void checkEnd();

    rows::CaptureReader mCaptureRows;
    rows::NodeReader mNodeRows;
    const std::string mPath;  // of the captures
    rows::NodeRow mAhead;     // if mIsAhead, the next one
    bool mIsAhead = false;
    std::map<Key, Early> mEarly;
    Session mSession;
    uint64_t mCaptures = 0;
};

// The same captures in the order of their registration, one run after the other. Keeps in memory
// those that come before their turn.
class OrderedReader {
  public:
    explicit OrderedReader(CaptureReader& reader) : mReader(reader) {}

    bool next(Captured& capture);

  private:
    bool isNextHere() const;
    void hold(Captured capture);
    bool readOne();

    CaptureReader& mReader;
    std::string mRun;
    std::map<int64_t, Captured> mHeld;  // of one run
    std::optional<Captured> mOfNextRun;
    int64_t mLast = 0;
    bool mIsAtEnd = false;
};

}  // namespace diff
