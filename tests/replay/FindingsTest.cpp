// What is found to be wrong with the calls of a log and with its captures.

#include <cstddef>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "CaptureObserver.h"
#include "Finding.h"
#include "PlayedLog.h"

namespace {

using played::Lines;
using played::play;
using view::FindingKind;

// The lines of "A; B; C".
Lines splitLines(const std::string& text) {
    Lines lines;
    std::istringstream parts(text);
    for (std::string line; std::getline(parts >> std::ws, line, ';');) {
        lines.push_back(line.substr(0, line.find_last_not_of(' ') + 1));
    }
    return lines;
}

// findings.txt has logs, each with an empty line behind it, and indented what is found in each. A
// line "== A; B ... C" says what stands before and behind the lines of the logs that follow.
TEST(Findings, AreThoseOfTheTable) {
    std::ifstream table(FINDINGS);
    Lines before;
    Lines behind;
    Lines log;
    Lines findings;
    size_t logs = 0;
    for (std::string line; std::getline(table, line) || !log.empty(); line.clear()) {
        if (line.substr(0, 3) == "== ") {
            const size_t dots = line.find("...");
            before = splitLines(line.substr(3, dots - 3));
            behind = splitLines(line.substr(dots + 3));
        } else if (line.substr(0, 4) == "    ") {
            findings.push_back(line.substr(4));
        } else if (!line.empty()) {
            log.push_back(line);
        } else if (!log.empty()) {
            Lines all = before;
            all.insert(all.end(), log.begin(), log.end());
            all.insert(all.end(), behind.begin(), behind.end());
            EXPECT_EQ(findings, play(all).findings()) << testing::PrintToString(log);
            log.clear();
            findings.clear();
            ++logs;
        }
    }
    EXPECT_EQ(47U, logs);
}

// The empty name is that of the first frame which is not known.
TEST(Findings, AreOfTheFirstFrameThatIsNotKnown) {
    EXPECT_EQ(1U, play({"register A", "register B", "node "}).captures.at(0).nodes.size());
}

TEST(Findings, AreCountedBeyondTenOfAKind) {
    Lines lines(15, "3a IMG_2");
    lines.insert(lines.begin(), {"register IMG_0", "register IMG_1"});
    const auto& findings = play(lines).session.findings;
    ASSERT_EQ(11U, findings.size());
    const std::string says = "IMG_2: updateAnchor3aInfo: is not registered";
    EXPECT_EQ(says + "; did you mean IMG_1?", findings[9].text);
    EXPECT_EQ(1U, findings[9].calls);
    EXPECT_EQ(says + "; and 4 more like this", findings[10].text);
    EXPECT_EQ(5U, findings[10].calls);
    EXPECT_EQ(13U, findings[10].place.line);
    lines.resize(13);
    EXPECT_EQ(says, play(lines).session.findings.at(10).text);
}

TEST(Findings, AreKeptOfAThousandNamesAndCountedOfOthers) {
    Lines lines;
    for (int name = 0; name < 1020; ++name) {
        lines.push_back("anchor " + std::to_string(name));
    }
    const auto& findings = play(lines).session.findings;
    ASSERT_EQ(1011U, findings.size());
    EXPECT_EQ(10U, findings.back().calls);
}

TEST(Findings, CutNamesBetweenCharacters) {
    std::string name = "x";
    for (int i = 0; i < 100; ++i) {
        name += "\u00e4";
    }
    EXPECT_EQ(Lines{"1 unknown_name " + name.substr(0, 199) +
                    "...: updateAnchor3aInfo: is not registered"},
              play({"3a " + name}).findings());
    const std::string stage(1025, 'x');
    EXPECT_EQ(
            "2 unknown_stage_name updateSnapshotTimeInfo: " + stage.substr(1) +
                    "... is no stage's name",
            play({"register A", R"(stage A "timeInfo":{")" + stage + R"(":1})"}).findings().at(2));
}

TEST(Findings, NameTheLinesOfTheLogInEveryRound) {
    ReplayOptions twice;
    twice.repeat = 2;
    EXPECT_EQ((Lines{"1 unknown_name A: updateAnchor3aInfo: is not registered",
                     "1 unknown_name A#2: updateAnchor3aInfo: is not registered"}),
              play({"3a A"}, twice).findings());
}

// How often a text stands in another one.
size_t count(const std::string& text, const std::string& part) {
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

// How many calls the findings of a kind are about.
size_t calls(const played::Shown& shown, FindingKind kind) {
    std::vector<view::Finding> findings = shown.session.findings;
    for (const view::Capture& capture : shown.captures) {
        findings.insert(findings.end(), capture.findings.begin(), capture.findings.end());
    }
    size_t found = 0;
    for (const view::Finding& finding : findings) {
        found += finding.kind == kind ? finding.calls : 0;
    }
    return found;
}

// The library warns of what has no effect, which the threads decide each time anew.
TEST(Findings, AgreeWithTheLibraryWhileThreadsRunFreely) {
    constexpr const char* kCalls[] = {"register", "3a", "flush", "anchor", "unregister"};
    Lines lines;
    std::map<std::string, size_t> made;
    for (unsigned i = 0; i < 12000; ++i) {
        std::string line = kCalls[(i / 12 + i % 4) % 5];
        made[line] += 1;
        line += ' ';
        line += static_cast<char>('A' + i / 4 % 3);
        line += R"( "thread":"t)";
        line += static_cast<char>('0' + i % 4);
        lines.push_back(line + '"');
    }
    testing::internal::CaptureStderr();
    const played::Shown shown = play(lines);
    const std::string warnings = testing::internal::GetCapturedStderr();
    const size_t twice = count(warnings, "had exist");
    EXPECT_EQ(twice, calls(shown, FindingKind::kAlreadyRegistered));
    EXPECT_EQ(made["register"] - twice, shown.captures.size());
    size_t useless = count(warnings, "can't find image");
    size_t reports = 0;
    for (const view::Capture& capture : shown.captures) {
        EXPECT_TRUE(capture.isRegistered);
        reports += capture.reports.size();
    }
    EXPECT_EQ(shown.session.reports, reports);
    useless += made["flush"] - reports;  // of the flushes
    EXPECT_EQ(useless,
              calls(shown, FindingKind::kUnknownName) + calls(shown, FindingKind::kAfterRemoval));
}

}  // namespace
