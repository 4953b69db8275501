// What the programs make the library do: the calls of a capture log, with other snapshots in
// flight and a service that only counts.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "CaptureLog.h"
#include "InfoSynchronizerManager.h"
#include "ServiceBase.h"

// The manager of the library that the program runs with.
inline camInfosync::InfoSynchronizerManager& manager() {
    return camInfosync::InfoSynchronizerManager::getInstance();
}

// Counts the calls that make up reports, and keeps nothing.
class CountingService final : public ServiceBase {
  public:
    void setParam(const std::string& /*id*/, const std::string& /*key*/,
                  const std::string& /*value*/) override {
        ++calls;
    }
    void reportEvent(const std::string& /*id*/, const std::string& /*event*/) override { ++calls; }
    void finishReport(std::string /*id*/, int32_t /*first*/, int32_t /*second*/) override {
        ++calls;
    }
    std::string queryValue(std::string /*key*/) override { return "enabled"; }

    std::atomic<uint64_t> calls{0};
};

// The library's service once prepareLibrary was called.
CountingService& service();

// Gives the library its service and shuts both log gates.
void prepareLibrary();

using Calls = std::vector<replay::CaptureStep>;

// The calls of a capture log, whose name is relative to the folder of data. `imageSuffix` is
// appended to the images' names. Throws what is wrong with a line, and if there is none.
Calls readCalls(const std::string& file, const std::string& imageSuffix = "");

void makeCalls(const Calls& calls);

// A snapshot's life, from registration to flush and unregistration.
struct Lifecycle {
    std::string imageStem;  // of the image's name, which ends with 2000000
    Calls calls;
};

// The two lives that the figures are about: with names that fit into a small string, and with
// longer ones.
const Lifecycle& shortNames();
const Lifecycle& longNames();

// Asks whether collection is enabled, as a client does. False if the answer is another.
bool askWhetherEnabled();

// How many other snapshots are in flight, unless a benchmark varies it.
constexpr int64_t kOthersInFlight = 4;

// Keeps `count` other snapshots in flight. Their names come before that of the lifecycle's image
// in key order, as those of earlier captures do.
class OthersInFlight {
  public:
    OthersInFlight(const Lifecycle& lifecycle, int64_t count);
    ~OthersInFlight();
    OthersInFlight(const OthersInFlight&) = delete;
    OthersInFlight& operator=(const OthersInFlight&) = delete;

  private:
    std::vector<std::string> mImages;
};
