#include "Recording.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Lines.h"
#include "Order.h"
#include "RecordFile.h"
#include "Settings.h"

namespace recording {
namespace {

constexpr size_t kMostCutBytes = size_t{512} << 10U;
constexpr size_t kMostKeptBytes = size_t{1} << 20U;  // of the line's memory

}  // namespace

Recording::Recording(const Settings& settings, const Header& header)
    : mHeader(header), mFile(settings.folder, settings.limit) {}

void Recording::noteCall(Frame& frame, const Call& call, const WriteArguments& writeArguments) {
    const Moment moment = Moment::now(mScratch);
    beginCall(mLine, mCalls + 1, moment, call.isOther, call.name);
    const size_t headSize = mLine.size();
    writeArguments(mLine);
    mLine.end();
    if (isTooLong()) {
        omitArguments(call, headSize);
    }
    put(moment.at);
    frame.call = ++mCalls;
    frame.lines = mLines;
    if (call.kind == Call::Kind::kRegister) {
        mRegistered.add(*call.image);
    } else if (call.kind == Call::Kind::kUnregister) {
        mRegistered.remove(*call.image);
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

void Recording::noteAnswer(const Frame& frame, std::string_view key, const std::string* answer) {
    auto last = mAnswers.find(key);
    const bool isNews = answer == nullptr || last == mAnswers.end() || last->second != *answer;
    if (frame.call == 0 || (!isNews && frame.lines == mLines)) {
        return;
    }
    const Moment moment = Moment::now(mScratch);
    beginAnswer(mLine, frame.call, moment, key);
    if (answer != nullptr) {
        mLine.field("answer", *answer);
    } else {
        mLine.field("threw", true);
    }
    mLine.end();
    if (isTooLong()) {
        throw Fault{"an answer does not fit", EFBIG};
    }
    put(moment.at);
    if (answer == nullptr) {
        return;
    }
    if (last == mAnswers.end()) {
        last = mAnswers.emplace(key, std::string()).first;
    }
    last->second = *answer;
}

void Recording::end() {
    if (mLines > 0) {
        writeEnd(mLine, mCalls);
        put(Moment::now(mScratch).at);
    }
}

void Recording::put(int64_t now) {
    if (!mFile.hasRoomFor(mLine.size())) {
        beginPart();
    }
    mFile.append(mLine.text(), now);
    ++mLines;
    mLine.shrinkTo(kMostKeptBytes);
}

void Recording::beginPart() {
    writeHeader(mScratch, mHeader, mFile.partsBegun() + 1, mAnswers, mRegistered.names(),
                std::min<size_t>(kMostCutBytes, mFile.partLimit() / 4));
    mFile.beginPart(mScratch.text());
    if (!mFile.hasRoomFor(mLine.size())) {
        throw Fault{"a line does not fit", EFBIG};
    }
}

}  // namespace recording
