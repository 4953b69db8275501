#include "Trace.h"

#include <sys/resource.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Capture.h"
#include "MadeCaptures.h"
#include "NewFile.h"
#include "Page.h"
#include "PageParts.h"
#include "View.h"

namespace view {
namespace {

namespace fs = std::filesystem;

constexpr int64_t kMs = 1'000'000;

class Folder : public testing::Test {
  protected:
    void SetUp() override { fs::create_directory(mFolder); }
    void TearDown() override { fs::remove_all(mFolder); }

    std::string path(const std::string& name) const { return (mFolder / name).string(); }
    static std::string contentOf(const std::string& path) {
        std::ostringstream content;
        content << std::ifstream(path).rdbuf();
        return content.str();
    }
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(mFolder)) {
            names.push_back(entry.path().filename());
        }
        return names;
    }
    // What the file's writer says; empty if it says nothing.
    template <typename Action>
    static std::string complaintOf(Action action) {
        try {
            action();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

  private:
    const fs::path mFolder = fs::path(testing::TempDir()) / ("view-" + std::to_string(getpid()));
};

using NewFileTest = Folder;
using TraceTest = Folder;
using Names = std::vector<std::string>;

TEST_F(NewFileTest, AppearsWhenItIsFinishedAndNotBefore) {
    std::ofstream(path("target")) << "before";
    fs::create_symlink(path("target"), path("link"));
    {
        NewFile file(path("link"));
        file.write("lost");
    }
    EXPECT_EQ(contentOf(path("target")), "before");
    NewFile one(path("link"));
    NewFile other(path(std::string(255, 'n')));
    one.write("one");
    other.write("other");
    EXPECT_EQ(contentOf(path("target")), "before");
    one.finish();
    other.finish();
    EXPECT_EQ(contentOf(path("target")), "one");
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(contentOf(path(std::string(255, 'n'))), "other");
    EXPECT_EQ(names().size(), 3U);
}

TEST_F(NewFileTest, LeavesDevicesInTheirPlaceAndTheSourceAlone) {
    NewFile device("/dev/null");
    device.write("text");
    device.finish();
    EXPECT_TRUE(fs::is_character_file("/dev/null"));

    std::ofstream(path("log")) << "log";
    fs::create_hard_link(path("log"), path("same"));
    const NewFile file(path("same"));
    EXPECT_EQ(complaintOf([&] {
                  file.refuse({"-", path("log")});
              }),
              path("same") + ": has been read, and would be overwritten");
}

TEST_F(NewFileTest, SaysWhatFailsAndLeavesNothing) {
    const std::string missing = path("none/file");
    EXPECT_EQ(complaintOf([&] { const NewFile file(missing); }),
              missing + ": cannot be opened for writing: No such file or directory");
    EXPECT_EQ(complaintOf([] { const NewFile file("-"); }),
              "standard output cannot be written to here; please name a file");
    EXPECT_EQ(complaintOf([&] { const NewFile file(path("")); }),
              path("") + ": cannot be opened for writing: Is a directory");

    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{1 << 16, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(complaintOf([&] {
                  NewFile file(path("large"));
                  for (int i = 0; i < 100; ++i) {
                      file.write(std::string(1000, 'x'));
                  }
                  file.finish();
              }),
              path("large") + ": cannot be written: File too large");
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, before);
    EXPECT_EQ(names(), Names());
}

TEST_F(TraceTest, WritesEachLaneAsAThread) {
    const Session session = madeSession(false);
    Capture noTimes;
    noTimes.name = "none";
    Trace trace(path("trace"));
    trace.add(noTimes, session);
    trace.add(nodesOnlyCapture(), session);
    trace.add(completeCapture(), session);
    Capture early;
    early.number = 1;
    early.name = "early";
    early.registered = 4999 * kMs;
    trace.add(early, session);
    trace.finish(session);
    EXPECT_EQ(contentOf(path("trace")), contentOf(INFOSYNC_EXPECTED_TRACE));
}

TEST_F(TraceTest, WithoutCapturesIsATrace) {
    Trace trace(path("trace"));
    trace.finish(Session());
    EXPECT_EQ(contentOf(path("trace")),
              "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n],\"metadata\":{\"clock\":\"none\","
              "\"sources\":[],\"captures_without_times\":0}}\n");
}

using PageFileTest = Folder;

TEST_F(PageFileTest, HasTheDataBetweenItsParts) {
    const Session session = madeSession(false);
    Page page(path("page"), PageParts{"before:", ":after"});
    page.add(completeCapture(), session);
    Capture bare;
    bare.number = 4;
    page.add(bare, session);
    Capture apart;
    apart.number = 5;
    apart.isFlushed = true;
    apart.registered = 5000 * kMs;
    apart.nodes = nodesOnlyCapture().nodes;
    apart.nodes[0].start = 900'000.1 + 0.2;
    apart.calls = {{"two days before", "", 0, -200'000'000 * kMs - 1, {}, true}};
    apart.stages = {{{4, "5request_to_post", -1, false}}};
    page.add(apart, session);
    page.add(nodesOnlyCapture(), session);
    page.finish(session);
    EXPECT_EQ(contentOf(path("page")), contentOf(INFOSYNC_EXPECTED_PAGE));
}

TEST_F(PageFileTest, TellsThatTimesAreTheRealClocks) {
    Session session;
    session.clock = Clock::kReal;
    Page page(path("page"), PageParts{"", ""});
    page.finish(session);
    EXPECT_NE(std::string::npos, contentOf(path("page")).find("\"toReal\":0,"));
}

TEST_F(PageFileTest, CannotBeMadeWithoutD3) {
    EXPECT_EQ(complaintOf([&] { const Page page(path("page"), std::nullopt); }),
              path("page") + ": a page needs Debian's node-d3 when the tools are built");
    EXPECT_EQ(names(), Names());
}

}  // namespace
}  // namespace view
