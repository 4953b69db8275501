// Whole lives of snapshots: with short and long names, on one and on two threads, with others
// in flight.

#include <utility>

#include "Bench.h"

namespace {

using Calls = std::vector<Call>;

// Eight parameters, the submit event, two events of each of eight nodes, and the closing call.
constexpr uint64_t kServiceCalls = 8 + 1 + 16 + 1;

template <typename Implementation>
void lifecycle(benchmark::State& state, Implementation /*which*/, const Calls& calls) {
    const OthersInFlight<Implementation> others(imageOf(calls[0]), state.range(0));
    makeCalls(Implementation::manager(), calls);  // what is built once is built now
    const uint64_t callsBefore = service().calls;
    {
        const CountedState counted(state);
        for (auto _ : state) {
            makeCalls(Implementation::manager(), calls);
        }
    }
    if (service().calls - callsBefore != kServiceCalls * state.iterations()) {
        state.SkipWithError("the service did not receive all calls");
    }
}

// Each thread has a snapshot of its own.
template <typename Implementation>
void lifecyclePerThread(benchmark::State& state, Implementation /*which*/) {
    const Calls calls =
            withImage(shortNames(), "IMG_300000" + std::to_string(state.thread_index()));
    const CountedState counted(state);
    for (auto _ : state) {
        makeCalls(Implementation::manager(), calls);
    }
    state.SetItemsProcessed(state.iterations());
}

template <typename Type>
bool is(const Call& call) {
    return std::holds_alternative<Type>(call);
}

// The operations that find their record by its key, on one filled record.
template <typename Implementation>
void keyLookUps(benchmark::State& state, Implementation /*which*/) {
    const OthersInFlight<Implementation> others(imageOf(shortNames()[0]), state.range(0));
    Calls filling = shortNames();
    filling.pop_back();
    Calls calls;
    for (const Call& call : shortNames()) {
        if (is<calls::TimeStage>(call) || is<calls::VndResultInfo>(call) ||
            is<calls::Anchor3aInfo>(call) || is<calls::Flush>(call)) {
            calls.push_back(call);
        }
    }
    makeCalls(Implementation::manager(), filling);
    {
        const CountedState counted(state);
        for (auto _ : state) {
            makeCalls(Implementation::manager(), calls);
        }
    }
    makeCall(Implementation::manager(), shortNames().back());
}

// Operations that take their arguments by value and do nothing: what is left is what the caller
// pays for its copies.
struct ArgumentsOnly {
    template <typename... Types>
    __attribute__((noinline)) static void take(Types... arguments) {
        (benchmark::DoNotOptimize(arguments), ...);
    }
#define INFOSYNC_TAKE(operation)             \
    template <typename... Types>             \
    void operation(const Types&... values) { \
        take<Types...>(values...);           \
    }
    INFOSYNC_TAKE(registerSnapshotRequestRecord)
    INFOSYNC_TAKE(updateFrameInfo)
    INFOSYNC_TAKE(updateRequestInfo)
    INFOSYNC_TAKE(updateUIInfo)
    INFOSYNC_TAKE(updateAnchor3aInfo)
    INFOSYNC_TAKE(updateAnchorFrame)
    INFOSYNC_TAKE(updateVndResultInfo)
    INFOSYNC_TAKE(updateZuAlgoInfo)
    INFOSYNC_TAKE(updateSnapshotTimeInfo)
    INFOSYNC_TAKE(updateNodeProcTime)
    INFOSYNC_TAKE(updateNodeProcState)
    INFOSYNC_TAKE(snapshotRequestInfoFlush)
    INFOSYNC_TAKE(unregisterSnapshotRequestRecord)
#undef INFOSYNC_TAKE
};

void argumentsOnly(benchmark::State& state, const Calls& calls) {
    ArgumentsOnly manager;
    const CountedState counted(state);
    for (auto _ : state) {
        makeCalls(manager, calls);
    }
}

}  // namespace

void registerLifecycles() {
    for (const auto& [name, calls] :
         {std::pair{"short_names", &shortNames()}, std::pair{"long_names", &longNames()}}) {
        const auto function = [calls = calls](auto& state, auto which) {
            lifecycle(state, which, *calls);
        };
        const auto configure = [](auto* benchmark) { benchmark->Arg(kOthersInFlight); };
        registerForBoth(std::string("lifecycle/") + name, function, configure);
        registerFor<ByHandByField>(std::string("lifecycle/") + name, function, configure);
        benchmark::RegisterBenchmark(
                (std::string("arguments_only/lifecycle/") + name).c_str(),
                [calls = calls](auto& state) { argumentsOnly(state, *calls); });
    }
    const auto vary = [](auto* benchmark) { benchmark->RangeMultiplier(10)->Range(1, 10000); };
    registerForBoth(
            "in_flight/lifecycle",
            [](auto& state, auto which) { lifecycle(state, which, shortNames()); }, vary);
    registerForBoth(
            "in_flight/key_look_ups", [](auto& state, auto which) { keyLookUps(state, which); },
            vary);
    registerForBoth(
            "threads/lifecycle", [](auto& state, auto which) { lifecyclePerThread(state, which); },
            [](auto* benchmark) { benchmark->ThreadRange(1, 2)->UseRealTime(); });
}
