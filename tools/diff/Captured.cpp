#include "Captured.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "Printable.h"
#include "Row.h"
#include "RowReader.h"

namespace diff {
namespace {

std::string inQuotes(const std::string& text) {
    return '"' + replay::printable(text, 200) + '"';
}

rows::Whole sumOf(const rows::Whole& a, const rows::Whole& b) {
    int64_t sum = 0;
    const bool isKnown = a && b && !__builtin_add_overflow(*a, *b, &sum);
    return isKnown ? rows::Whole(sum) : std::nullopt;
}

}  // namespace

CaptureReader::CaptureReader(const rows::RowFolder& folder)
    : mCaptureRows(folder.captures), mNodeRows(folder.nodes), mPath(folder.captures) {
    readRuns(folder.run);
}

void CaptureReader::readRuns(const std::string& path) {
    rows::RunReader reader(path);
    rows::RunRow run;
    mSession.findings = 0;
    mSession.captures = 0;
    while (reader.next(run)) {
        mSession.findings = sumOf(mSession.findings, run.findings);
        mSession.captures = sumOf(mSession.captures, run.captures);
        for (const auto& [name, text] : run.switches) {
            std::string& all = mSession.switches[name];
            if (all != text) {
                all += (all.empty() ? "" : " / ") + text;
            }
        }
    }
    if (reader.line() == 0) {
        throw std::runtime_error(replay::printable(path) + ": tells of no run");
    }
}

bool CaptureReader::next(Captured& capture) {
    capture.nodes.clear();
    if (!mCaptureRows.next(capture.row)) {
        checkEnd();
        return false;
    }
    ++mCaptures;
    takeNodes(capture);
    return true;
}

bool CaptureReader::lookAhead() {
    mIsAhead = mIsAhead || mNodeRows.next(mAhead);
    return mIsAhead;
}

void CaptureReader::takeNodes(Captured& capture) {
    const Key key{capture.row.runId, capture.row.captureSeq};
    auto& nodes = capture.nodes;
    if (const auto early = mEarly.find(key); early != mEarly.end()) {
        nodes = std::move(early->second.nodes);
        mEarly.erase(early);
    }
    const auto wanted = static_cast<uint64_t>(capture.row.nodeCount.value_or(0));
    while (lookAhead()) {
        const Key owner{mAhead.runId, mAhead.captureSeq};
        if (owner != key && nodes.size() >= wanted) {
            break;
        }
        mIsAhead = false;
        if (owner == key) {
            nodes.push_back(std::move(mAhead));
            continue;
        }
        Early& early = mEarly[owner];
        early.place = early.nodes.empty() ? mNodeRows.place() : early.place;
        early.nodes.push_back(std::move(mAhead));
    }
    if (capture.row.nodeCount && nodes.size() != wanted) {
        throw std::runtime_error(mCaptureRows.place() + ": node_count: is " +
                                 std::to_string(*capture.row.nodeCount) + ", and there are " +
                                 std::to_string(nodes.size()) + " nodes of the capture");
    }
}

void CaptureReader::checkEnd() {
    if (mSession.captures && static_cast<uint64_t>(*mSession.captures) != mCaptures) {
        throw std::runtime_error(replay::printable(mPath) + ": has " + std::to_string(mCaptures) +
                                 " captures, where run.ndjson tells of " +
                                 std::to_string(*mSession.captures));
    }
    const bool isEarly = !mEarly.empty();
    if (isEarly || lookAhead()) {
        const Key owner = isEarly ? mEarly.begin()->first : Key{mAhead.runId, mAhead.captureSeq};
        throw std::runtime_error((isEarly ? mEarly.begin()->second.place : mNodeRows.place()) +
                                 ": there is no capture " + std::to_string(owner.second) +
                                 " of the run " + inQuotes(owner.first));
    }
}

bool OrderedReader::isNextHere() const {
    return !mHeld.empty() && (mIsAtEnd || mOfNextRun || mHeld.begin()->first == mLast + 1);
}

void OrderedReader::hold(Captured capture) {
    if (capture.row.runId != mRun) {
        mRun = capture.row.runId;
        mLast = 0;
    }
    const int64_t number = capture.row.captureSeq;
    if (number <= mLast || mHeld.count(number) != 0) {
        throw std::runtime_error(mReader.place() + ": capture " + std::to_string(number) +
                                 " of the run " + inQuotes(mRun) + " is there twice");
    }
    mHeld.emplace(number, std::move(capture));
}

// Returns false at the end, when none is held.
bool OrderedReader::readOne() {
    if (mOfNextRun) {
        Captured first = std::move(*mOfNextRun);
        mOfNextRun.reset();
        hold(std::move(first));
        return true;
    }
    Captured capture;
    mIsAtEnd = mIsAtEnd || !mReader.next(capture);
    if (mIsAtEnd) {
        return !mHeld.empty();
    }
    if (!mHeld.empty() && capture.row.runId != mRun) {
        mOfNextRun = std::move(capture);
    } else {
        hold(std::move(capture));
    }
    return true;
}

bool OrderedReader::next(Captured& capture) {
    while (!isNextHere()) {
        if (!readOne()) {
            return false;
        }
    }
    mLast = mHeld.begin()->first;
    capture = std::move(mHeld.begin()->second);
    mHeld.erase(mHeld.begin());
    return true;
}

}  // namespace diff
