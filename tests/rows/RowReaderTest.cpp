#include "RowReader.h"

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "Row.h"
#include "SafeText.h"
#include "TerminalText.h"

namespace rows {
namespace {

namespace fs = std::filesystem;

class RowReaderTest : public testing::Test {
  protected:
    void SetUp() override { fs::create_directory(mFolder); }
    void TearDown() override { fs::remove_all(mFolder); }

    std::string write(const std::string& name, const std::string& content) const {
        const std::string path = mFolder / name;
        std::ofstream(path) << content;
        return path;
    }
    std::string folder() const { return mFolder; }

    // What is said of a file, without the file's name; "" if all of it is read.
    template <typename Row>
    std::string complaintOn(const std::string& content) const {
        const std::string path = write("rows", content);
        try {
            RowReader<Row> reader(path);
            Row row;
            while (reader.next(row)) {
            }
        } catch (const std::runtime_error& error) {
            const std::string text = error.what();
            EXPECT_EQ(text.rfind(path, 0), 0U) << text;
            return text.substr(path.size());
        }
        return "";
    }

  private:
    const fs::path mFolder = fs::path(testing::TempDir()) / ("rows-" + std::to_string(getpid()));
};

std::string capture(const std::string& more) {
    return R"({"schema_version":1,"run_id":"r","capture_seq":1)" + more + "}\n";
}

TEST_F(RowReaderTest, ReadsEachTypeAndLeavesWhatIsNotThereUnknown) {
    const std::string path = write(
            "rows",
            capture(R"(,"name":"A\\\\\\x1b","has_failed":true,"iso":-9007199254740992,"fstop":2,"zoom_ratio":0.5)"
                    R"(,"lux":18446744073709551615,"registered_ns":"-9223372036854775808","build":null)"
                    R"(,"req_value64":"18446744073709551615","stage_14_us":7)") +
                    R"({"capture_seq":2,"run_id":"r","schema_version":1})" + '\n');
    CaptureReader reader(path);
    CaptureRow row;
    ASSERT_TRUE(reader.next(row));
    EXPECT_EQ(row.runId, "r");
    EXPECT_EQ(row.captureSeq, 1);
    EXPECT_EQ(row.name, "A\\\x1b");  // not the escapes that rows have for it
    EXPECT_EQ(row.hasFailed, true);
    EXPECT_EQ(row.iso, -9007199254740992);
    EXPECT_EQ(row.fstop, 2.0);
    EXPECT_EQ(row.zoomRatio, 0.5);
    EXPECT_EQ(row.lux, 18446744073709551615.0);
    EXPECT_EQ(row.registered.value_or(Nanoseconds{}).value, INT64_MIN);
    EXPECT_EQ(row.reqValue64.value_or(InText<uint64_t>{}).value, UINT64_MAX);
    EXPECT_EQ(row.stages[14], 7);
    EXPECT_FALSE(row.build);
    ASSERT_TRUE(reader.next(row));
    EXPECT_EQ(reader.place(), path + ":2");
    EXPECT_EQ(row.captureSeq, 2);
    EXPECT_FALSE(row.name);
    EXPECT_FALSE(row.stages[14]);
    EXPECT_FALSE(reader.next(row));
    EXPECT_EQ(row.captureSeq, 2);
}

TEST(SafeText, IsReadAsWhatItWasBeforeItWasMadeSafe) {
    for (const std::string& text :
         {std::string("A\\n\x1b\n\t\x7f"), std::string("\xff\xc2\x80 \xe2\x80\xa8 z"),
          std::string(1, '\0'), std::string("\\x41\\u{41}"),
          std::string("\xf3\xa0\x81\x81\xc2\xad")}) {
        EXPECT_NE(view::safe(text), text);
        EXPECT_EQ(withoutEscapes(view::safe(text)), text);
    }
    for (const char* noEscape : {"\\", "a\\q", "\\x4", "\\xg1", "\\x+1", "\\u{}", "\\u{110000}",
                                 "\\u{41", "\\u41}", "\\u{ffffffffff}"}) {
        EXPECT_EQ(withoutEscapes(noEscape), noEscape);
    }
}

TEST_F(RowReaderTest, IgnoresColumnsThatItDoesNotKnow) {
    EXPECT_EQ(complaintOn<CaptureRow>(capture(R"(,"new":{"iso":"no","a":[{"run_id":1}]},"n":[1])"
                                              R"(,"switch_x":5,"big":1e300,"iso":3)")),
              "");
    const std::string run = R"({"schema_version":1,"run_id":"r","switch_b":"on","switch_a":"off"})";
    RunReader reader(write("run", run + '\n' + run));  // the last newline may be missing
    RunRow row;
    ASSERT_TRUE(reader.next(row));
    ASSERT_TRUE(reader.next(row));
    EXPECT_EQ(row.switches, (decltype(row.switches){{"a", "off"}, {"b", "on"}}));
    EXPECT_EQ(complaintOn<RunRow>(R"({"schema_version":1,"run_id":"r","switch_x":5})"),
              ":1: switch_x: must be a text");
}

TEST_F(RowReaderTest, SaysInWhichLineAndColumnSomethingIsWrong) {
    const auto complaint = [&](const std::string& more) {
        return complaintOn<CaptureRow>(capture("") + capture(more));
    };
    EXPECT_EQ(complaint(R"(,"name":5)"), ":2: name: must be a text");
    EXPECT_EQ(complaint(R"(,"name":["A"])"), ":2: name: must be a text");
    for (const char* bad : {"\"5\"", "5.5", "9007199254740993", "-9007199254740993", "1e3", "{}"}) {
        EXPECT_EQ(complaint(std::string(R"(,"iso":)") + bad),
                  ":2: iso: must be a whole number within 2^53");
    }
    EXPECT_EQ(complaint(R"(,"lux":true)"), ":2: lux: must be a number");
    EXPECT_EQ(complaint(R"(,"has_failed":1)"), ":2: has_failed: must be true or false");
    for (const char* bad : {"5", R"("5 ")", R"("")", R"("9223372036854775808")"}) {
        EXPECT_EQ(complaint(std::string(R"(,"flushed_ns":)") + bad),
                  ":2: flushed_ns: must be a text of a whole number, as \"17\"");
    }
    EXPECT_EQ(complaint(R"(,"iso":1,"iso":2)"), ":2: iso: is given twice");
    EXPECT_EQ(complaint(R"(,"name":5,"iso":"5")"), ":2: name: must be a text");
    EXPECT_EQ(complaintOn<CaptureRow>(R"({"schema_version":1,"capture_seq":1})"),
              ":1: run_id: is missing");
    EXPECT_EQ(complaintOn<CaptureRow>(R"({"schema_version":1,"capture_seq":1,"run_id":null})"),
              ":1: run_id: must be a text");
    EXPECT_EQ(complaintOn<NodeRow>(capture("")), ":1: node: is missing");
    EXPECT_EQ(complaintOn<CaptureRow>(capture("") + R"({"schema_version":1,"capture_seq":1})"),
              ":2: run_id: is missing");
}

TEST_F(RowReaderTest, RefusesAnotherSchemaVersionWhateverElseIsWrong) {
    const std::string newer = R"({"run_id":7,"schema_version":2})";
    EXPECT_EQ(complaintOn<NodeRow>(R"({"schema_version":0})"),
              ":1: schema_version: is 0, and this program reads 1");
    EXPECT_EQ(complaintOn<NodeRow>(newer), ":1: schema_version: is 2, and this program reads 1");
    EXPECT_EQ(complaintOn<NodeRow>(R"({"run_id":"r","capture_seq":1,"node":"n"})"),
              ":1: schema_version: is missing");
    EXPECT_EQ(complaintOn<NodeRow>(R"({"schema_version":"1"})"),
              ":1: schema_version: must be a whole number within 2^53");
}

TEST_F(RowReaderTest, RefusesWhatAreNoRows) {
    const std::string whole = capture("");
    EXPECT_EQ(complaintOn<CaptureRow>(whole + whole.substr(0, whole.size() - 5)),
              ":2: line: is cut off, and the file's end with it");
    EXPECT_EQ(complaintOn<CaptureRow>(whole + whole.substr(0, 9) + '\n' + whole),
              ":2: line: is not valid JSON at column 10");
    EXPECT_EQ(complaintOn<CaptureRow>("[1]\n"), ":1: line: must be an object");
    EXPECT_EQ(complaintOn<CaptureRow>("5\n"), ":1: line: must be an object");
    EXPECT_EQ(complaintOn<CaptureRow>(std::string("{}\0\n", 4)), ":1: line: contains a zero byte");
    EXPECT_EQ(complaintOn<CaptureRow>("\x1f\x8b..."),
              ": is compressed by gzip; \"gunzip\" makes rows of it");
    EXPECT_EQ(complaintOn<CaptureRow>(""), "");
    const std::string longName(size_t{2} << 20, 'x');
    EXPECT_EQ(complaintOn<CaptureRow>(capture(R"(,"name":")" + longName + '"')), "");
}

TEST_F(RowReaderTest, TakesOnlyFoldersThatAreWhole) {
    const auto complaint = [&]() -> std::string {
        try {
            return rowFolder(folder()).run;
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    };
    const std::string captures = write(kCapturesFile, "");
    EXPECT_FALSE(isRowFolder(captures));
    EXPECT_TRUE(isRowFolder(folder()));
    EXPECT_EQ(complaint(), folder() + "/nodes.ndjson: is missing; a folder of rows has it");
    write(kNodesFile, "");
    EXPECT_EQ(complaint(),
              folder() + "/run.ndjson: is missing; without it the rows may not be whole");
    const std::string run = write(kRunFile, "");
    EXPECT_EQ(complaint(), run);
}

}  // namespace
}  // namespace rows
