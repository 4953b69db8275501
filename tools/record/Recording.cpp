#include "Recording.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Call.h"
#include "Lines.h"
#include "OpenCalls.h"
#include "Order.h"
#include "RecordFile.h"
#include "Settings.h"

namespace recording {
namespace {

constexpr size_t kMostCutBytes = size_t{512} << 10U;
constexpr size_t kMostKeptBytes = size_t{1} << 20U;  // of the line's memory
constexpr size_t kEndBytes = 80;                     // enough for the last line of a part
constexpr std::string_view kEnabled = "enabled";
constexpr std::string_view kAssumed = kEnabled;  // of an answer that is not seen

}  // namespace

Recording::Recording(const Settings& settings, const Header& header)
    : mHeader(header), mFile(settings.folder, settings.limit) {}

void Recording::noteCall(Frame& frame, const Call& call, const WriteArguments& writeArguments) {
    const Moment moment = Moment::now(mScratch);
    beginCall(mLine, mCalls + 1, moment, call.isOther, call.name);
    noteOrder(frame);
    const size_t headSize = mLine.size();
    writeArguments(mLine);
    mLine.end();
    if (isTooLong()) {
        omitArguments(call, headSize);
    }
    put(moment.at, kEndBytes);
    frame.call = ++mCalls;
    frame.lines = mLines;
    if (!call.asks()) {
        return;
    }
    if (call.isSeen) {
        mOpen.add(frame.call, call, mLine.text());
        frame.isOpen = true;
    } else if (call.image != nullptr) {
        takeEffect(call.kind, *call.image, mHeader.service ? kAssumed : std::string_view());
    }
}

void Recording::noteOrder(const Frame& frame) {
    if (!frame.isOrdered()) {
        mLine.field("unordered", true);
    }
}

// A line is at most half a part, and no longer than the replay reads.
bool Recording::isTooLong() const {
    constexpr uint64_t kLongestRead = uint64_t{64} << 20U;
    return mLine.size() > std::min(mFile.partLimit() / 2, kLongestRead);
}

void Recording::omitArguments(const Call& call, size_t headSize) {
    const size_t whole = mLine.size();
    const auto write = [&](bool withImage) {
        mLine.cutTo(headSize);
        if (withImage) {
            mLine.field("image", *call.image);
        }
        mLine.field("omitted", whole);
        mLine.end();
    };
    write(call.image != nullptr);
    if (isTooLong()) {
        write(false);
    }
}

void Recording::noteAnswer(Frame& frame, std::string_view key, const std::string* answer) {
    auto last = mAnswers.find(key);
    const bool isNews = answer == nullptr || last == mAnswers.end() || last->second != *answer;
    if (frame.call != 0 && (isNews || frame.lines != mLines)) {
        writeAnswer(frame, key, answer);
    }
    close(frame, answer != nullptr ? std::optional<std::string_view>(*answer) : std::nullopt);
    if (frame.call == 0 || !isNews || answer == nullptr) {
        return;
    }
    if (last == mAnswers.end()) {
        last = mAnswers.emplace(key, std::string()).first;
    }
    last->second = *answer;
}

void Recording::noteReturn(Frame& frame) {
    close(frame, kAssumed);
}

void Recording::writeAnswer(const Frame& frame, std::string_view key, const std::string* answer) {
    const Moment moment = Moment::now(mScratch);
    beginAnswer(mLine, frame.call, moment, key);
    noteOrder(frame);
    if (answer != nullptr) {
        mLine.field("answer", *answer);
    } else {
        mLine.field("threw", true);
    }
    mLine.end();
    if (isTooLong()) {
        throw Fault{"an answer does not fit", EFBIG};
    }
    put(moment.at, kEndBytes);
}

void Recording::close(Frame& frame, std::optional<std::string_view> answer) {
    const OpenCall* const open = frame.isOpen ? mOpen.find(frame.call) : nullptr;
    frame.isOpen = false;
    if (open == nullptr) {
        return;
    }
    if (answer) {
        takeEffect(open->kind, open->image, *answer);
    }
    mOpen.remove(open);
}

// As the library decides what a call does that has been answered so.
void Recording::takeEffect(Call::Kind kind, const std::string& image, std::string_view answer) {
    if (!mHeader.supported || (!mHeader.forceEnabled && answer != kEnabled)) {
        return;
    }
    if (kind == Call::Kind::kRegister) {
        mRegistered.add(image);
    } else if (kind == Call::Kind::kUnregister) {
        mRegistered.remove(image);
    }
}

void Recording::end() {
    if (mLines > 0) {
        writeEnd(mLine, mCalls, 0);
        put(Moment::now(mScratch).at, 0);
    }
}

void Recording::put(int64_t now, size_t roomAfter) {
    if (!mFile.hasRoomFor(mLine.size() + roomAfter)) {
        beginPart(now);
    }
    mFile.append(mLine.text(), now);
    ++mLines;
    mLine.shrinkTo(kMostKeptBytes);
}

// The part's first lines are those of the calls that will be answered in it, so that it plays by
// itself; none that the half of it does not hold.
void Recording::beginPart(int64_t now) {
    const uint64_t part = mFile.partsBegun() + 1;
    writeEnd(mScratch, mCalls, part);
    if (mFile.hasRoomFor(mScratch.size())) {
        mFile.append(mScratch.text(), now);
    }
    writeHeader(mScratch, mHeader, part, mCalls, mAnswers, mRegistered.names(),
                std::min<size_t>(kMostCutBytes, mFile.partLimit() / 4));
    for (const OpenCall& open : mOpen) {
        if (mScratch.size() + open.line.size() <= mFile.partLimit() / 2) {
            mScratch.addWritten(open.line);
        }
    }
    mFile.beginPart(mScratch.text());
    if (!mFile.hasRoomFor(mLine.size())) {
        throw Fault{"a line does not fit", EFBIG};
    }
}

}  // namespace recording
