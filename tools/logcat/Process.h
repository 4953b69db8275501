// What is known of one process of a log.

#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
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
    bool lacksLines = false;    // some of them are known to be missing from the log
};

// A report that is being told, line by line, by one thread.
struct Telling {
    bool hasReport = false;
    bool isNamed = false;  // by the report's first event, so that the name is certain
    std::optional<std::string> pipelineName;
    std::string timestamp;
    view::Report report;
    std::vector<view::Node> nodes;
    std::string camera;
    std::vector<view::Finding> findings;
};

// In formats without threads, all of a process are one.
struct Thread {
    bool isKnown = false;      // which one it is
    std::deque<Message> last;  // messages: one, or a few if the lines of threads are mixed
    std::optional<Telling> telling;
    uint64_t begunFlushes = 0;    // whose own line has come, and not their last
    bool isConstructing = false;  // a manager

    void setLast(const Message& message);
    // The last message if it is about that image; in a mix of threads, the last about it.
    const Message* lastOn(const std::string& name) const;
};

class Process {
  public:
    enum class Service {
        kNotKnown,
        kThere,
        kNotFound,  // when a manager was built, as far as the lines of the engine's tag are there
        kNone,
    };

    int32_t pid = 0;
    std::map<int32_t, Thread> threads;
    std::map<std::string, OpenCapture> captures;
    bool hasCutNames = false;  // among those of the captures, or had
    Service service = Service::kNotKnown;
    std::map<std::string, std::string> switches;  // as in the session

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
