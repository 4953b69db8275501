// Rows, and folders of them, for tests.

#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Captured.h"
#include "Row.h"
#include "RowReader.h"

namespace diff {

// A folder of rows, which are written as texts.
class Folder {
  public:
    Folder() {
        static int number = 0;
        mPath = std::filesystem::temp_directory_path() /
                ("diff-test-" + std::to_string(getpid()) + "-" + std::to_string(++number));
        std::filesystem::create_directory(mPath);
    }
    ~Folder() { std::filesystem::remove_all(mPath); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    void capture(int number, const std::string& name, const std::string& more = "",
                 const std::string& run = "r") {
        mCaptures += row(number, run) + R"(,"name":")" + name + '"' + more + "}\n";
    }
    void node(int number, const std::string& name, const std::string& run = "r") {
        mNodes += row(number, run) + R"(,"node":")" + name + "\"}\n";
    }

    // Its files; the run's row has `more` columns.
    rows::RowFolder files(const std::string& more = "") const {
        write(rows::kCapturesFile, mCaptures);
        write(rows::kNodesFile, mNodes);
        write(rows::kRunFile, R"({"schema_version":1,"run_id":"r")" + more + "}\n");
        return rows::rowFolder(mPath);
    }

  private:
    static std::string row(int number, const std::string& run) {
        return R"({"schema_version":1,"run_id":")" + run + R"(","capture_seq":)" +
               std::to_string(number);
    }
    void write(const char* name, const std::string& text) const {
        std::ofstream(mPath / name) << text;
    }

    std::filesystem::path mPath;
    std::string mCaptures;
    std::string mNodes;
};

}  // namespace diff
