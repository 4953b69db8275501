#include "Captured.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Rows.h"

namespace diff {
namespace {

template <typename Reader>
std::string readAll(Reader& reader) {
    std::string text;
    Captured capture;
    while (reader.next(capture)) {
        text += capture.name() + '(';
        for (const auto& node : capture.nodes) {
            text += node.node;
        }
        text += ')';
    }
    return text;
}

std::string read(const Folder& folder, const std::string& run = "") {
    CaptureReader reader(folder.files(run));
    return readAll(reader);
}

std::string readInOrder(const Folder& folder) {
    CaptureReader reader(folder.files());
    OrderedReader ordered(reader);
    return readAll(ordered);
}

template <typename Read>
std::string refusalOf(const Read& readFolder) {
    try {
        readFolder();
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        return text.substr(text.rfind('/') + 1);
    }
    return "none";
}

std::string refusal(const Folder& folder, const std::string& run = "") {
    return refusalOf([&] { read(folder, run); });
}

TEST(CaptureReader, GivesEachCaptureItsNodes) {
    Folder folder;
    folder.capture(2, "B", R"(,"node_count":2)");
    folder.capture(1, "A");
    folder.capture(1, "C", "", "s");
    folder.node(1, "x", "s");  // before its turn
    folder.node(2, "y");
    folder.node(2, "z");
    folder.node(1, "w");
    EXPECT_EQ("B(yz)A(w)C(x)", read(folder));
}

TEST(CaptureReader, RefusesRowsThatDoNotFitTogether) {
    Folder tooFew;
    tooFew.capture(1, "A", R"(,"node_count":2)");
    tooFew.node(1, "x");
    EXPECT_EQ("captures.ndjson:1: node_count: is 2, and there are 1 nodes of the capture",
              refusal(tooFew));
    Folder tooMany;
    tooMany.capture(1, "A", R"(,"node_count":0)");
    tooMany.node(1, "x");
    EXPECT_EQ("captures.ndjson:1: node_count: is 0, and there are 1 nodes of the capture",
              refusal(tooMany));
    Folder negative;
    negative.capture(1, "A", R"(,"node_count":-1)");
    EXPECT_EQ("captures.ndjson:1: node_count: is -1, and there are 0 nodes of the capture",
              refusal(negative));
    Folder foreign;
    foreign.capture(1, "A");
    foreign.node(1, "x");
    foreign.node(7, "y");
    EXPECT_EQ("nodes.ndjson:2: there is no capture 7 of the run \"r\"", refusal(foreign));
    Folder early;
    early.capture(1, "A", R"(,"node_count":1)");
    early.node(8, "x", "s");
    early.node(8, "z", "s");
    early.node(1, "y");
    EXPECT_EQ("nodes.ndjson:1: there is no capture 8 of the run \"s\"", refusal(early));
    Folder cut;
    cut.capture(1, "A");
    EXPECT_EQ("captures.ndjson: has 1 captures, where run.ndjson tells of 2",
              refusal(cut, R"(,"captures":2)"));
    EXPECT_EQ("none", refusal(cut, R"(,"captures":1)"));
}

TEST(CaptureReader, PutsTheRunsOfAFolderTogether) {
    Folder folder;
    folder.capture(1, "A");
    folder.capture(1, "B", "", "s");
    const CaptureReader reader(folder.files(
            R"(,"captures":1,"findings":2,"switch_x":"on","switch_y":"1"})"
            "\n"
            R"({"schema_version":1,"run_id":"s","captures":1,"findings":3,"switch_x":"off","switch_y":"1")"));
    EXPECT_EQ(2, reader.session().captures);
    EXPECT_EQ(5, reader.session().findings);
    EXPECT_EQ("on / off", reader.session().switches.at("x"));
    EXPECT_EQ("1", reader.session().switches.at("y"));
}

TEST(OrderedReader, GoesByTheNumbersOfEachRun) {
    Folder folder;
    for (const int number : {3, 1, 2, 9, 5}) {  // some are missing
        folder.capture(number, std::to_string(number));
    }
    for (const int number : {2, 1}) {
        folder.capture(number, "s" + std::to_string(number), "", "s");
    }
    folder.capture(1, "t1", "", "t");
    EXPECT_EQ("1()2()3()5()9()s1()s2()t1()", readInOrder(folder));
    folder.capture(1, "t1", "", "t");
    EXPECT_EQ("captures.ndjson:9: capture 1 of the run \"t\" is there twice",
              refusalOf([&] { readInOrder(folder); }));
}

}  // namespace
}  // namespace diff
