// What the benchmarks share: the implementations that they compare.

#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Calls.h"
#include "CountedState.h"
#include "CountingService.h"
#include "HandWritten.h"
#include "InfoSynchronizerManager.h"

// The service of both implementations.
CountingService& service();

// Each implementation: its object, and how its benchmarks' names begin.
struct Infosync {
    using Manager = camInfosync::InfoSynchronizerManager;
    static constexpr char kName[] = "infosync/";
    static Manager& manager() { return Manager::getInstance(); }
};
struct ByHand {
    using Manager = HandWritten;
    static constexpr char kName[] = "by_hand/";
    static Manager& manager() {
        static HandWritten manager(HandWritten::JsonStyle::kLiteral);
        return manager;
    }
};
struct ByHandByField {
    using Manager = HandWritten;
    static constexpr char kName[] = "by_hand_by_field/";
    static Manager& manager() {
        static HandWritten manager(HandWritten::JsonStyle::kByField);
        return manager;
    }
};

// How many other snapshots are in flight, unless a benchmark varies it.
constexpr int64_t kOthersInFlight = 4;

// Keeps `count` other snapshots in flight. Their names come before `image` in key order, as
// those of earlier captures do.
template <typename Implementation>
class OthersInFlight {
  public:
    OthersInFlight(const std::string& image, int64_t count) {
        const std::string stem = image.substr(0, image.size() - 7);
        for (int64_t i = 0; i < count; ++i) {
            mImages.push_back(stem + std::to_string(1000000 + i));
            Implementation::manager().registerSnapshotRequestRecord(mImages.back());
            Implementation::manager().updateFrameInfo(mImages.back(), 1, "1520700123456", {0}, 0);
        }
    }
    ~OthersInFlight() {
        for (const std::string& image : mImages) {
            Implementation::manager().unregisterSnapshotRequestRecord(image);
        }
    }
    OthersInFlight(const OthersInFlight&) = delete;
    OthersInFlight& operator=(const OthersInFlight&) = delete;

  private:
    std::vector<std::string> mImages;
};

// Registers `function`, which gets the state and an implementation, once for each of the two.
// `configure` gets each benchmark, to give it arguments or threads.
template <typename Implementation, typename Function, typename Configure>
void registerFor(const std::string& name, Function function, Configure configure) {
    configure(benchmark::RegisterBenchmark(
            (Implementation::kName + name).c_str(),
            [function](benchmark::State& state) { function(state, Implementation{}); }));
}
template <typename Function, typename Configure>
void registerForBoth(const std::string& name, Function function, Configure configure) {
    registerFor<Infosync>(name, function, configure);
    registerFor<ByHand>(name, function, configure);
}
template <typename Function>
void registerForBoth(const std::string& name, Function function) {
    registerForBoth(name, function, [](benchmark::internal::Benchmark* /*unchanged*/) {});
}

// The benchmarks of each source file.
void registerLifecycles();
void registerOperations();
void registerPlatform();
