// What is known of one process of a log.

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "FindingList.h"
#include "Message.h"
#include "NameMemory.h"

namespace logcat {

// A message, and where it stands.
struct Entry {
    int32_t pid = 0;  // 0: not known
    int32_t tid = 0;  // 0: not known
    view::Time at;
    view::Place place;
    Message message;
};

// A capture that has not been removed yet.
struct OpenCapture {
    view::Capture capture;
    replay::FindingList findings;
    view::Place firstPlace;     // where the log names it first
    bool hasFrame = false;      // its frame's name is known
    bool isNameCut = false;     // the log has the beginning of its name only
    bool lacksService = false;  // that has been said
};

// A report that is being told, line by line, by one thread.
struct Telling {
    bool isFlush = false;  // the flush's own line has come
    bool hasReport = false;
    std::optional<std::string> pipelineName;
    std::string timestamp;
    view::Report report;
    std::vector<view::Node> nodes;
    std::string camera;
    std::vector<view::Finding> findings;
};

struct Thread {
    std::optional<Message> last;
    std::optional<Telling> telling;
    bool isConstructing = false;  // a manager
};

class Process {
  public:
    enum class Service { kNotKnown, kThere, kNone };

    int32_t pid = 0;
    std::map<int32_t, Thread> threads;
    std::map<std::string, OpenCapture> captures;
    bool hasCutNames = false;  // among those of the captures, or had
    Service service = Service::kNotKnown;

    // The capture that a message names, or null. A name whose end is missing is taken for the
    // first that begins so.
    OpenCapture* find(const Message& message);

    void addName(const std::string& name) { mNear.add(name); }
    void setRemoved(const std::string& name, uint64_t line) { mRemoved.add(name, line); }
    bool wasRemoved(const std::string& name) const { return mRemoved.lineOf(name).has_value(); }
    // "; did you mean X?" or nothing.
    std::string guess(const std::string& name) const { return mNear.didYouMean(name); }

    // Compares the size of the queue, as a message tells it, with the captures that are known.
    void noteQueueSize(uint64_t size) { mKnowsAll = size == captures.size(); }
    // Whether the queue had no record that the log does not tell of.
    bool knowsAll() const { return mKnowsAll; }

  private:
    replay::NameMemory mRemoved;
    replay::NearNames mNear;
    bool mKnowsAll = false;
};

}  // namespace logcat
