#include "Pairing.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "Captured.h"
#include "Rows.h"

namespace diff {
namespace {

class Pairs : public PairVisitor {
  public:
    void pair(const Captured& a, const Captured& b) override {
        all.insert(nameOf(a) + '-' + nameOf(b));
    }
    void single(const Captured& capture, bool isOfA) override {
        all.insert(isOfA ? nameOf(capture) + "-" : "-" + nameOf(capture));
    }

    std::multiset<std::string> all;

  private:
    static std::string nameOf(const Captured& capture) {
        return capture.name() + std::to_string(capture.row.captureSeq);
    }
};

// Of captures that are named and numbered as the characters of the texts.
std::multiset<std::string> pairsOf(const std::string& namesA, const std::string& namesB, By by) {
    Folder a;
    Folder b;
    for (size_t i = 0; i < namesA.size(); ++i) {
        a.capture(static_cast<int>(i) + 1, namesA.substr(i, 1));
    }
    for (size_t i = namesB.size(); i > 0; --i) {  // the last that was registered is over first
        b.capture(static_cast<int>(i), namesB.substr(i - 1, 1));
    }
    CaptureReader readerA(a.files());
    CaptureReader readerB(b.files());
    Pairs pairs;
    pairCaptures(readerA, readerB, by, pairs);
    return pairs.all;
}

using Expected = std::multiset<std::string>;

TEST(Pairing, GoesByNameAndThenByOccurrence) {
    EXPECT_EQ((Expected{"x1-x3", "y2-y2", "z3-z1"}), pairsOf("xyz", "zyx", By::kName));
    EXPECT_EQ((Expected{"x1-x1", "y2-", "-z2"}), pairsOf("xy", "xz", By::kName));
    // The sides' files have their captures of one name in different orders.
    EXPECT_EQ((Expected{"x1-x3", "x2-x2", "x3-x1"}), pairsOf("xxx", "xxx", By::kName));
    EXPECT_EQ((Expected{"x1-x4", "y2-y3", "x3-x2", "x4-", "-y1"}),
              pairsOf("xyxx", "yxyx", By::kName));
    EXPECT_EQ((Expected{"x1-", "y2-"}), pairsOf("xy", "", By::kName));
    EXPECT_EQ((Expected{}), pairsOf("", "", By::kName));
}

TEST(Pairing, GoesByTheOrderOfRegistrationWhateverTheNames) {
    EXPECT_EQ((Expected{"x1-a1", "y2-b2", "z3-c3"}), pairsOf("xyz", "abc", By::kOrder));
    EXPECT_EQ((Expected{"x1-a1", "y2-"}), pairsOf("xy", "a", By::kOrder));
    EXPECT_EQ((Expected{"x1-a1", "-b2"}), pairsOf("x", "ab", By::kOrder));
}

}  // namespace
}  // namespace diff
