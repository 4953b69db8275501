#include "Rows.h"

#include <unistd.h>  // rmdir, unlink

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "Capture.h"
#include "NewFile.h"
#include "Row.h"
#include "RowText.h"
#include "RowsOf.h"
#include "View.h"
#include "ViewOptions.h"

namespace view {
namespace {

namespace fs = std::filesystem;

}  // namespace

RowsFolder::RowsFolder(const std::string& path) : mPath(path) {
    std::error_code error;
    mIsNew = fs::create_directory(path, error);
    if (error) {
        throw std::runtime_error(path + ": cannot be made a folder: " + error.message());
    }
}

RowsFolder::~RowsFolder() {
    if (mIsNew) {
        rmdir(mPath.c_str());
    }
}

std::string RowsFolder::fileOf(const char* name) const {
    return fs::path(mPath) / name;
}

Rows::Rows(const RowOptions& options)
    : mOptions(options),
      mFolder(options.folder),
      mCaptures(mFolder.fileOf(rows::kCapturesFile)),
      mNodes(mFolder.fileOf(rows::kNodesFile)),
      mRun(mFolder.fileOf(rows::kRunFile)) {}

void Rows::nameRun(const Session& session) {
    if (mOptions.runId.empty() && !session.sources.empty()) {
        mOptions.runId = session.sources.front();
    }
}

void Rows::add(const Capture& capture, const Session& session) {
    nameRun(session);
    const rows::CaptureRow row = captureRowOf(capture, session, mOptions);
    mText.clear();
    appendRow(row, mText);
    mCaptures.write(mText);
    ++mCaptureRows;
    mText.clear();
    for (const rows::NodeRow& node : nodeRowsOf(capture, row)) {
        appendRow(node, mText);
        ++mNodeRows;
    }
    mNodes.write(mText);
}

void Rows::finish(const Session& session) {
    nameRun(session);
    rows::RunRow run = runRowOf(session, mOptions);
    run.captures = mCaptureRows;
    run.nodes = mNodeRows;
    mText.clear();
    appendRow(run, mText);
    mRun.write(mText);
    for (NewFile* file : {&mCaptures, &mNodes, &mRun}) {
        file->refuse(session.sources);
        file->close();
    }
    putInPlace();
}

// An earlier run's row goes first, so that it never stands beside rows that are not of its run.
void Rows::putInPlace() {
    std::vector<std::string> placed;
    unlink(mRun.target().c_str());
    try {
        for (NewFile* file : {&mCaptures, &mNodes, &mRun}) {
            file->finish();
            placed.push_back(file->target());
        }
    } catch (const std::runtime_error&) {
        for (const std::string& file : placed) {
            unlink(file.c_str());
        }
        throw;
    }
    mFolder.keep();
}

}  // namespace view
