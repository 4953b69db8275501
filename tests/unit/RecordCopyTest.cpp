// The collector's copies: what they hold, where that lies, and what happens when memory ends.

#include "RecordCopy.h"

#include <memory>
#include <new>
#include <string>
#include <tuple>
#include <type_traits>

#include "Doubles.h"
#include "InfoCollector.h"

namespace {

thread_local int arraysTaken = 0;  // the library takes no other arrays than large pieces
thread_local size_t lastArray = 0;
thread_local bool outOfMemory = false;

}  // namespace

__attribute__((noinline)) void* operator new[](size_t size) {
    ++arraysTaken;
    lastArray = size;
    return outOfMemory ? throw std::bad_alloc() : operator new(size);
}
__attribute__((noinline)) void operator delete[](void* memory) noexcept {
    operator delete(memory);
}
__attribute__((noinline)) void operator delete[](void* memory, size_t /*size*/) noexcept {
    operator delete(memory);
}

namespace camInfosync {
namespace {

template <typename Value>
std::string show(const Value& value) {
    if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>) {
        return std::to_string(+value) + ' ';
    } else if constexpr (flat::kIsPair<Value>) {
        return show(value.first) + show(value.second);
    } else {  // a text or a list
        std::string text = std::to_string(value.size()) + ':';
        for (const auto& element : value) {
            EXPECT_EQ(reinterpret_cast<uintptr_t>(&element) % alignof(decltype(element)), 0U);
            text += show(element);
        }
        return text;
    }
}
template <typename... Values>
std::string showAll(const Values&... values) {
    return (show(values) + ...);
}

// The content of records and of copies alike, each member by its name.
template <typename Record>
std::string contentOf(const Record& of) {
    const auto& frame = of.frameInfo;
    const auto& info = of.snapshotInfo;
    const auto& request = info.requestInfo;
    const auto& algo = info.zuAlgoInfo;
    return showAll(of.errorInfo, of.hasError, of.createTime.tv_sec, of.createTime.tv_nsec,
                   of.requestTime.tv_sec, of.requestTime.tv_nsec, of.reserved64, frame.frameNumber,
                   frame.timestamp, frame.camIds, frame.frameExtra, frame.imageName,
                   info.requestType, info.camMode, info.faceDetect, info.zoomRatio, info.uiExtra,
                   info.vendorResultInfo, info.fstop, info.iso, info.lux, info.exposureTime,
                   info.timeInfo, request.reqValueA, request.reqValueB, request.anchorFrame,
                   request.reqFlag, request.reqValue64, request.reqIdsA, request.expectedResultIds,
                   algo.algoList, algo.algoTimeA, algo.algoTimeB, algo.algoTimeC, algo.algoState);
}

class CopyOfRecord : public doubles::Test {
  protected:
    CopyOfRecord() { doubles::takeJournal(); }

    RequestRecord record{REQUEST_TYPE_DEFAULT};
    SnapshotInfo& info = record.snapshotInfo;
    SnapshotInfo::ZuAlgoInfo& algo = info.zuAlgoInfo;
    InfoCollector collector{INFO_SYNC_TYPE_COLLECT};
};

TEST_F(CopyOfRecord, HoldsEverythingAndNeedsNothingOfTheOriginal) {
    record.errorInfo = {"", std::string("\0x", 2)};
    record.hasError = true;
    record.createTime = {1, 2};
    record.requestTime = {3, 4};
    record.frameInfo = {5, "6", {7, 8, 9}, 10, "11"};
    info.requestType = static_cast<RequestType>(12);
    std::tie(info.camMode, info.faceDetect, info.zoomRatio) = std::tuple(13, 14, 15.5F);
    std::tie(info.fstop, info.iso, info.lux) = std::tuple(16.5F, 17, 18.5F);
    std::tie(info.uiExtra, info.exposureTime) = std::tuple("19", 20);
    info.requestInfo = {21, 22, 23, true, 24, {25}, {26, 27, 28}};
    info.vendorResultInfo = {{-30, "31"}, {30, ""}};
    info.timeInfo = {{"32", 33}};
    record.reserved64 = 34;
    algo = {{"a:b"}, {{"n", 35}}, {{"n", 36}}, {{"n", 37}}, {{"n", "38"}}};
    for (const int nodes : {1, 10000}) {
        for (int i = 1; i < nodes; ++i) {  // with equal keys in all maps
            const std::string node = std::to_string(i);
            algo.algoTimeA[node] = algo.algoTimeB[node] = algo.algoTimeC[node] = i;
            algo.algoState[node] = algo.algoList.emplace_back(node);
        }
        auto original = std::make_unique<RequestRecord>(record);
        const RecordCopy copy(*original);
        original.reset();
        EXPECT_EQ(contentOf(copy), contentOf(record));
    }
}

TEST_F(CopyOfRecord, TakesOneArrayIfItIsLargeAndNoByteTooMany) {
    for (const size_t size : {4096 - 56, 4096 - 55}) {
        record.frameInfo.camIds = {1, 2, 3};  // 12 bytes, and 4 up to the next list
        info.timeInfo = {{std::string(16, '\0'), 1}};
        info.uiExtra = std::string(size, 'x');
        arraysTaken = 0;
        const RecordCopy copy(record);
        EXPECT_EQ(arraysTaken, size > 4096 - 56 ? 1 : 0);
    }
    EXPECT_EQ(lastArray, 4097U);
}

TEST_F(CopyOfRecord, TakesNoArrayForAllStagesAndEightNodes) {
    record.frameInfo = {1, "123456789012345", {0, 1, 2}, 0, "IMG_20261121_101500_123456"};
    for (const char* const stage : TimeStageToChar) {
        info.timeInfo[stage] = 1;
    }
    for (char letter = 'a'; letter < 'i'; ++letter) {
        const std::string node(30, letter);
        algo.algoTimeA[node] = algo.algoTimeB[node] = algo.algoTimeC[node] = 1;
        algo.algoState[algo.algoList.emplace_back(node)] = "GetOutputError";
    }
    arraysTaken = 0;
    collector.requestInfo(&record);
    EXPECT_EQ(arraysTaken, 0);
    doubles::takeJournal();
}

TEST_F(CopyOfRecord, ComesBeforeTheReportAndTheNodesAreCopiedOnceMore) {
    algo.algoList = {std::string(4096, 'x')};
    outOfMemory = true;
    EXPECT_THROW(collector.requestInfo(&record), std::bad_alloc);
    EXPECT_TRUE(doubles::takeJournal().empty());
    outOfMemory = false;
    arraysTaken = 0;
    collector.requestInfo(&record);
    EXPECT_EQ(arraysTaken, 2);
    doubles::takeJournal();
}

TEST_F(CopyOfRecord, EndsWithItsPieceIfTheOriginalGrows) {
    info.uiExtra = std::string(64, 'x');  // its room is no list's
    for (const bool text : {false, true}) {
        FlatRecord copy;
        flat::Sizes sizes;
        flat::copyValue(sizes, record, copy);
        text ? info.uiExtra.push_back('x') : algo.algoList.push_back("");
        const auto piece = std::make_unique<std::byte[]>(sizes.all());
        flat::Writer writer(piece.get(), sizes);
        EXPECT_THROW(flat::copyValue(writer, record, copy), std::bad_alloc);
    }
}

TEST_F(CopyOfRecord, CompletionsAreFoundAmongOthers) {
    record.frameInfo.camIds = {7};
    algo.algoTimeA = {{"b", 1.0}, {"bb", 2.0}, {"c", 3.0}, {"f", 4.0}};
    algo.algoTimeC = {{"", 5.0}, {"a", 6.0}, {"b", 7.0}, {"ba", 8.0}, {"d", 9.0}, {"f", 10.0}};
    collector.requestInfo(&record);
    std::string events;
    for (const std::string& line : doubles::takeJournal()) {
        if (const size_t at = line.find("cam_id\""); line.back() == ')' && at < line.size()) {
            events += line.substr(line.find('{') + 2, 2) + line[at + 9] + line[at + 26] + ' ';
        }
    }
    EXPECT_EQ(events, R"(b"70 b"72 bb70 c"70 f"70 f"72 )");
}

}  // namespace
}  // namespace camInfosync
