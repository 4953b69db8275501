// The synchronizers' base, and the executor of commands.

#include "Doubles.h"
#include "InfoSynchronizer.h"

namespace camInfosync {
namespace {

class Executor : public doubles::Test {
  protected:
    Executor() { doubles::takeJournal(); }
    ~Executor() override { InfoSynchronizer::mIntentAwareImpl = doubles::service(); }
    const char* ask(const char* key) { return static_cast<const char*>(executor.requestCmd(key)); }

    CmdExecutor executor{INFO_SYNC_TYPE_CMD};
};

TEST_F(Executor, AsksAfreshAndKeepsTheLastAnswerPerKey) {
    const std::string on = "on, and longer than any small text";
    std::string answer = on;
    doubles::onQuery = [&answer](const std::string& /*key*/) { return answer; };
    const char* first = ask("a");
    EXPECT_EQ(first, on);
    ask("b");
    EXPECT_EQ(ask("aa"), answer);  // between the two
    EXPECT_EQ(ask("a"), first);    // the text that is kept
    answer = "off";
    EXPECT_STREQ(ask("a"), "off");
    EXPECT_EQ(first, on);  // stays as it was
    answer = on;
    EXPECT_EQ(ask("a"), first);  // and is kept once
    InfoSynchronizer::mIntentAwareImpl = nullptr;
    EXPECT_STREQ(ask("a"), "");
    EXPECT_EQ(executor.mStatus, 1);
    EXPECT_EQ(ask(nullptr), nullptr);
}

TEST_F(Executor, AsksWithNothingLocked) {
    doubles::onQuery = [this](const std::string& key) {
        return key.size() < 3 ? ask((key + "x").c_str()) + key : std::string("end");
    };
    EXPECT_STREQ(ask("x"), "endxxx");
}

TEST_F(Executor, LocksForAnAnswerThatWasNotTheLast) {
    std::string answer = "steady";
    doubles::onQuery = [&answer](const std::string& /*key*/) { return answer; };
    const auto locks = [this](const char* key) {
        // The double of the service locks once for its journal.
        return doubles::locksOf(nullptr, [&] { ask(key); }) - 1;
    };
    std::vector<int> seen;
    for (const char* key : {"a", "a", "b", "b", "ab", "ab", "b"}) {
        seen.push_back(locks(key));
    }
    EXPECT_EQ(seen, (std::vector<int>{1, 0, 1, 0, 1, 0, 1}));
    answer = "changed";
    EXPECT_EQ(locks("b"), 1);
    EXPECT_EQ(locks("b"), 0);
    doubles::takeJournal();
}

}  // namespace
}  // namespace camInfosync
