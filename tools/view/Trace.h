// Captures as a trace for trace viewers: Chrome's trace-event JSON.

#pragma once

#include <cstdint>
#include <string>

#include "Capture.h"
#include "NewFile.h"
#include "TimeLine.h"
#include "TraceEvents.h"
#include "View.h"

namespace view {

// A process for each capture, sorted by number; in it a thread for each lane of its time line, in
// the time line's order, and a last one for the marks. Their ids are of this file only.
//
// Times begin with the first capture's. Where only nodes have told times, the first of such
// captures begins there too. Captures without any time are counted, not written.
class Trace : public View {
  public:
    explicit Trace(const std::string& path) : mFile(path) {}

    void add(const Capture& capture, const Session& session) override;
    void finish(const Session& session) override;

  private:
    NewFile mFile;
    TraceEvents mEvents;
    uint32_t mLastId = 0;  // of a process or a thread; no two have the same
    uint64_t mWithoutTimes = 0;
};

}  // namespace view
