#include "Pairing.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Captured.h"

namespace diff {
namespace {

// Captures that wait for their other, by name. Those of one name are all of one side.
class Waiting {
  public:
    explicit Waiting(PairVisitor& visitor) : mVisitor(visitor) {}

    void add(Captured capture, bool isOfA) {
        const std::string name = capture.name();
        const auto position = mByName.find(name);
        if (position == mByName.end() || position->second.isOfA == isOfA) {
            Group& group = mByName[name];
            group.isOfA = isOfA;
            group.captures.push_back(std::move(capture));
            return;
        }
        auto& others = position->second.captures;
        isOfA ? mVisitor.pair(capture, others.front()) : mVisitor.pair(others.front(), capture);
        others.pop_front();
        if (others.empty()) {
            mByName.erase(position);
        }
    }

    // Those of A first, each side's in the order of registration.
    void finish() {
        using Single = std::tuple<bool, std::string, int64_t, const Captured*>;
        std::vector<Single> singles;
        for (const auto& [name, group] : mByName) {
            for (const Captured& capture : group.captures) {
                singles.emplace_back(!group.isOfA, capture.row.runId, capture.row.captureSeq,
                                     &capture);
            }
        }
        std::sort(singles.begin(), singles.end());
        for (const auto& [isOfB, run, number, capture] : singles) {
            mVisitor.single(*capture, !isOfB);
        }
    }

  private:
    struct Group {
        bool isOfA = false;
        std::deque<Captured> captures;
    };

    PairVisitor& mVisitor;
    std::unordered_map<std::string, Group> mByName;
};

void pairByName(CaptureReader& a, CaptureReader& b, PairVisitor& visitor) {
    Waiting waiting(visitor);
    bool isMoreInA = true;
    bool isMoreInB = true;
    while (isMoreInA || isMoreInB) {
        Captured capture;
        isMoreInA = isMoreInA && a.next(capture);
        if (isMoreInA) {
            waiting.add(std::move(capture), true);
        }
        capture = Captured();
        isMoreInB = isMoreInB && b.next(capture);
        if (isMoreInB) {
            waiting.add(std::move(capture), false);
        }
    }
    waiting.finish();
}

void pairByOrder(CaptureReader& a, CaptureReader& b, PairVisitor& visitor) {
    OrderedReader inA(a);
    OrderedReader inB(b);
    Captured ofA;
    Captured ofB;
    bool isInA = inA.next(ofA);
    bool isInB = inB.next(ofB);
    while (isInA || isInB) {
        if (isInA && isInB) {
            visitor.pair(ofA, ofB);
        } else {
            visitor.single(isInA ? ofA : ofB, isInA);
        }
        isInA = isInA && inA.next(ofA);
        isInB = isInB && inB.next(ofB);
    }
}

}  // namespace

void pairCaptures(CaptureReader& a, CaptureReader& b, By by, PairVisitor& visitor) {
    by == By::kName ? pairByName(a, b, visitor) : pairByOrder(a, b, visitor);
}

}  // namespace diff
