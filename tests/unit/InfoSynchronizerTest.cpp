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
    std::string answer = "on, and longer than any small text";
    doubles::onQuery = [&answer](std::string& key) {
        key = "overwritten";  // the service's own copy
        return answer;
    };
    const char* first = ask("a");
    EXPECT_EQ(first, answer);
    ask("b");
    EXPECT_EQ(ask("aa"), answer);  // between the two
    EXPECT_EQ(ask("a"), first);    // the text that is kept
    answer = "off";
    EXPECT_STREQ(ask("a"), "off");
    InfoSynchronizer::mIntentAwareImpl = nullptr;
    EXPECT_STREQ(ask("a"), "");
    EXPECT_EQ(executor.mStatus, 1);
    EXPECT_EQ(ask(nullptr), nullptr);
}

TEST_F(Executor, AsksWithNothingLocked) {
    doubles::onQuery = [this](std::string& key) {
        return key.size() < 3 ? ask((key + "x").c_str()) + key : std::string("end");
    };
    EXPECT_STREQ(ask("x"), "endxxx");
}

TEST_F(Executor, TextsStayAsTheyWere) {
    const std::string answers[] = {"", "short", std::string(1000, 'x'), std::string("a\0b", 3)};
    std::vector<std::pair<const char*, std::string>> returned;
    for (int round = 0; round < 3; ++round) {
        for (const std::string& answer : answers) {
            for (const char* key : {"a", "b"}) {
                doubles::onQuery = [&answer](std::string& /*key*/) { return answer; };
                returned.emplace_back(ask(key), answer);
            }
        }
    }
    constexpr size_t kPerRound = 8;
    for (size_t i = 0; i < returned.size(); ++i) {
        EXPECT_EQ(std::string(returned[i].first, returned[i].second.size() + 1),
                  returned[i].second + '\0');
        EXPECT_EQ(returned[i].first, returned[i % kPerRound].first) << "kept twice";
    }
    doubles::takeJournal();
}

TEST_F(Executor, LocksForAnAnswerThatWasNotTheLast) {
    std::string answer = "steady";
    doubles::onQuery = [&answer](std::string& /*key*/) { return answer; };
    const auto locks = [this](const char* key) {
        // The double of the service locks once for its journal.
        return doubles::locksOf(nullptr, [&] { ask(key); }) - 1;
    };
    EXPECT_EQ(locks("a"), 1);
    EXPECT_EQ(locks("a"), 0);
    EXPECT_EQ(locks("b"), 1);
    EXPECT_EQ(locks("b"), 0);
    EXPECT_EQ(locks("ab"), 1);
    EXPECT_EQ(locks("ab"), 0);
    EXPECT_EQ(locks("b"), 1);
    answer = "changed";
    EXPECT_EQ(locks("b"), 1);
    EXPECT_EQ(locks("b"), 0);
    doubles::takeJournal();
}

}  // namespace
}  // namespace camInfosync
