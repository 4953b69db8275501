#include "Compare.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Captured.h"
#include "Difference.h"
#include "Parameters.h"
#include "Row.h"
#include "Tolerance.h"

namespace diff {
namespace {

using TextMap = std::map<std::string, std::string>;

constexpr char kThere[] = "is there";

// A source that knows the record knows these, also if they are empty.
bool knowsRecord(const rows::CaptureRow& row) {
    return row.algorithms && row.results;
}

// Each part of a list, with how often it is there.
std::map<std::string, uint64_t> partsOf(const rows::Text& list, std::string_view separator) {
    std::map<std::string, uint64_t> parts;
    std::string_view rest = list ? std::string_view(*list) : std::string_view();
    while (!rest.empty()) {
        const size_t end = std::min(rest.find(separator), rest.size());
        ++parts[std::string(rest.substr(0, end))];
        rest.remove_prefix(std::min(end + separator.size(), rest.size()));
    }
    return parts;
}

// Of "61=error_none,62=not_return", the texts by id.
TextMap resultsOf(const rows::Text& list) {
    TextMap results;
    for (const auto& [part, count] : partsOf(list, ",")) {
        const size_t equals = std::min(part.find('='), part.size());
        results[part.substr(0, equals)] = part.substr(std::min(equals + 1, part.size()));
    }
    return results;
}

rows::Text wordOf(const rows::Flag& flag) {
    return flag ? rows::Text(*flag ? "yes" : "no") : std::nullopt;
}

rows::Text countOf(const rows::Whole& count) {
    return count ? rows::Text(std::to_string(*count)) : std::nullopt;
}

// Calls `visit` for each key of both maps, with the values or null.
template <typename Map, typename Visit>
void visitBoth(const Map& a, const Map& b, const Visit& visit) {
    auto inA = a.begin();
    auto inB = b.begin();
    while (inA != a.end() || inB != b.end()) {
        const bool isInA = inA != a.end() && (inB == b.end() || inA->first <= inB->first);
        const bool isInB = inB != b.end() && (inA == a.end() || inB->first <= inA->first);
        visit(isInA ? inA->first : inB->first, isInA ? &inA->second : nullptr,
              isInB ? &inB->second : nullptr);
        inA = isInA ? std::next(inA) : inA;
        inB = isInB ? std::next(inB) : inB;
    }
}

// So that stages have their order as texts.
std::string twoDigits(const std::string& number) {
    return number.size() == 1 ? '0' + number : number;
}

// A switch's state without its reason, which sources of several kinds put in other words.
std::string stateOf(const std::string& text) {
    return text == "not true" ? "false" : text.substr(0, text.find_first_of(": "));
}

// Compares two captures and keeps what differs.
class Comparison {
  public:
    Comparison(const Captured& a, const Captured& b, const Tolerance& tolerance)
        : mA(a.row),
          mB(b.row),
          mTolerance(tolerance),
          mBothKnow(knowsRecord(mA) && knowsRecord(mB)) {
        compareErrors();
        compareResults();
        compareNodes(a.nodes, b.nodes);
        compareCourse();
        compareStages();
        compareParameters();
        compareDuration("to_flush", {}, mA.toFlush, mB.toFlush);
        compareDuration("shot_to_shot", {}, mA.shotToShot, mB.shotToShot);
    }

    std::vector<Difference> take() { return std::move(mFound); }

  private:
    using Nodes = std::vector<rows::NodeRow>;

    // `bothKnow`: what one side lacks is not there, rather than not known.
    void compareTexts(Kind kind, const std::string& item, const std::string& node,
                      const rows::Text& a, const rows::Text& b, bool bothKnow) {
        if (a != b && (bothKnow || (a && b))) {
            mFound.push_back({kind, item, node, a, b, std::nullopt});
        }
    }

    void compareDuration(const std::string& item, const std::string& node, const rows::Duration& a,
                         const rows::Duration& b) {
        if (a && b && !mTolerance.allows(*a, *b)) {
            mFound.push_back(
                    {Kind::kDuration, item, node, std::to_string(*a), std::to_string(*b), *b - *a});
        }
    }

    void compareErrors() {
        const size_t before = mFound.size();
        visitBoth(partsOf(mA.errors, "; "), partsOf(mB.errors, "; "),
                  [&](const std::string& text, const uint64_t* a, const uint64_t* b) {
                      compareTexts(Kind::kError, text, {}, std::to_string(a != nullptr ? *a : 0),
                                   std::to_string(b != nullptr ? *b : 0), true);
                  });
        if (mFound.size() != before) {
            return;
        }
        // The texts are the same, but one may stand for several calls.
        compareTexts(Kind::kError, "vendor errors", {}, countOf(mA.vendorErrors),
                     countOf(mB.vendorErrors), false);
        compareTexts(Kind::kError, "node time-outs", {}, countOf(mA.nodeTimeOuts),
                     countOf(mB.nodeTimeOuts), false);
        compareTexts(Kind::kError, "node errors", {}, countOf(mA.nodeErrors),
                     countOf(mB.nodeErrors), false);
        compareTexts(Kind::kError, "error texts", {}, countOf(mA.errorTexts),
                     countOf(mB.errorTexts), false);
    }

    void compareResults() {
        if (!mA.results || !mB.results) {
            return;
        }
        visitBoth(resultsOf(mA.results), resultsOf(mB.results),
                  [&](const std::string& id, const std::string* a, const std::string* b) {
                      compareTexts(Kind::kVendorResult, id, {},
                                   a != nullptr ? rows::Text(*a) : std::nullopt,
                                   b != nullptr ? rows::Text(*b) : std::nullopt, true);
                  });
    }

    void compareNodes(const Nodes& a, const Nodes& b) {
        visitBoth(byName(a), byName(b),
                  [&](const std::string& name, const rows::NodeRow* const* inA,
                      const rows::NodeRow* const* inB) {
                      if (inA != nullptr && inB != nullptr) {
                          compareNode(name, **inA, **inB);
                          return;
                      }
                      compareTexts(Kind::kNode, "node", name,
                                   inA != nullptr ? rows::Text(kThere) : std::nullopt,
                                   inB != nullptr ? rows::Text(kThere) : std::nullopt, true);
                  });
    }

    static std::map<std::string, const rows::NodeRow*> byName(const Nodes& nodes) {
        std::map<std::string, const rows::NodeRow*> named;
        for (const rows::NodeRow& node : nodes) {
            named.emplace(node.node, &node);
        }
        return named;
    }

    void compareNode(const std::string& name, const rows::NodeRow& a, const rows::NodeRow& b) {
        compareTexts(Kind::kNodeState, "state", name, a.state, b.state, mBothKnow);
        if (a.timedOut && b.timedOut) {
            compareTexts(Kind::kNodeState, "timed_out", name, wordOf(a.timedOut),
                         wordOf(b.timedOut), mBothKnow);
        }
        compareTexts(Kind::kNodeState, "completed", name, wordOf(a.completion.has_value()),
                     wordOf(b.completion.has_value()), true);
        if (mBothKnow) {
            compareTexts(Kind::kNodeState, "listed", name, wordOf(a.isListed), wordOf(b.isListed),
                         false);
        }
        compareDuration("node", name, a.took, b.took);
    }

    void compareCourse() {
        const auto compare = [&](const char* item, const rows::Text& a, const rows::Text& b) {
            compareTexts(Kind::kCourse, item, {}, a, b, false);
        };
        compare("flushed", wordOf(mA.isFlushed), wordOf(mB.isFlushed));
        compare("removed", wordOf(mA.isRemoved), wordOf(mB.isRemoved));
        compare("reports", countOf(mA.reports), countOf(mB.reports));
        compare("calls_without_effect", countOf(mA.callsWithoutEffect),
                countOf(mB.callsWithoutEffect));
    }

    void compareStages() {
        const auto toldInA = partsOf(mA.stagesTold, ",");
        const auto toldInB = partsOf(mB.stagesTold, ",");
        if (mA.stagesTold && mB.stagesTold) {
            visitBoth(toldInA, toldInB,
                      [&](const std::string& number, const uint64_t* a, const uint64_t* b) {
                          compareTexts(Kind::kStage, twoDigits(number), {},
                                       a != nullptr ? rows::Text("told") : std::nullopt,
                                       b != nullptr ? rows::Text("told") : std::nullopt, true);
                      });
        }
        for (size_t i = 0; i < rows::kStages; ++i) {
            compareDuration("stage " + twoDigits(std::to_string(i)), {}, mA.stages[i],
                            mB.stages[i]);
        }
    }

    void compareParameters() {
        const std::vector<Parameter> a = parametersOf(mA);
        const std::vector<Parameter> b = parametersOf(mB);
        for (size_t i = 0; i < a.size(); ++i) {
            compareTexts(Kind::kParameter, a[i].first, {}, a[i].second, b[i].second, mBothKnow);
        }
    }

    const rows::CaptureRow& mA;
    const rows::CaptureRow& mB;
    const Tolerance& mTolerance;
    const bool mBothKnow;
    std::vector<Difference> mFound;
};

}  // namespace

const char* nameOf(Kind kind) {
    switch (kind) {
        case Kind::kSwitch:
            return "switch";
        case Kind::kCapture:
            return "capture";
        case Kind::kError:
            return "error";
        case Kind::kVendorResult:
            return "vendor_result";
        case Kind::kNodeState:
            return "node_state";
        case Kind::kNode:
            return "node";
        case Kind::kCourse:
            return "course";
        case Kind::kStage:
            return "stage";
        case Kind::kParameter:
            return "parameter";
        case Kind::kDuration:
            return "duration";
    }
    return "";
}

std::vector<Difference> compareCaptures(const Captured& a, const Captured& b,
                                        const Tolerance& tolerance) {
    return Comparison(a, b, tolerance).take();
}

std::vector<Difference> compareSessions(const Session& a, const Session& b) {
    std::vector<Difference> found;
    const bool areOfOneKind =
            std::equal(a.switches.begin(), a.switches.end(), b.switches.begin(), b.switches.end(),
                       [](const auto& inA, const auto& inB) { return inA.first == inB.first; });
    visitBoth(a.switches, b.switches,
              [&](const std::string& name, const std::string* inA, const std::string* inB) {
                  if (inA != nullptr && inB != nullptr &&
                      (areOfOneKind ? *inA != *inB : stateOf(*inA) != stateOf(*inB))) {
                      found.push_back({Kind::kSwitch, name, {}, *inA, *inB, std::nullopt});
                  }
              });
    if (a.findings && b.findings && *a.findings != *b.findings) {
        found.push_back({Kind::kError,
                         "findings of no capture",
                         {},
                         std::to_string(*a.findings),
                         std::to_string(*b.findings),
                         std::nullopt});
    }
    return found;
}

}  // namespace diff
