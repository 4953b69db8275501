// What is known of one process of a log.

#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Capture.h"
#include "Finding.h"
#include "Message.h"

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
    std::optional<Message> warning;  // the last message, if it was one
    std::optional<Telling> telling;
    bool isConstructing = false;  // a manager
};

class Process {
  public:
    enum class Service { kNotKnown, kThere, kNone };

    int32_t pid = 0;
    std::map<int32_t, Thread> threads;
    std::map<std::string, OpenCapture> captures;
    Service service = Service::kNotKnown;

    // The capture that a message names, or null. A name whose end is missing is taken for the
    // first that begins so.
    OpenCapture* find(const Message& message);

    bool wasRemoved(const std::string& name) const { return mRemoved.count(name) != 0; }
    void setRemoved(const std::string& name);

    // Compares the size of the queue, as a message tells it, with the captures that are known.
    void noteQueueSize(uint64_t size) { mKnowsAll = size == captures.size(); }
    // Whether the queue had no record that the log does not tell of.
    bool knowsAll() const { return mKnowsAll; }

    // "; did you mean X?" or nothing.
    std::string guess(const std::string& name) const;

  private:
    std::unordered_set<std::string> mRemoved;
    std::deque<std::string> mLastRemoved;
    bool mKnowsAll = false;
};

}  // namespace logcat
