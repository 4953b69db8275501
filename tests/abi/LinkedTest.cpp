// The interface as a linked program with hidden visibility sees it.

#include <dlfcn.h>

#include <string>

#include <gtest/gtest.h>

#include "InfoSynchronizerManager.h"
#include "Plugin.h"
#include "RawClient.h"
#include "RawOverlap.h"

namespace camInfosync {
namespace {

// What was called since the last time; at first, since the library's load.
std::string takeReceived() {
    auto* take = reinterpret_cast<TakeReceived*>(dlsym(RTLD_DEFAULT, "takeReceived"));
    return take != nullptr ? take() : "no raw overlap library";
}

const std::string loading = takeReceived();

const std::string kReport =
        "21 A iso=0\n21 A lux=0.000000\n21 A face_detect=0\n21 A cam_mode=0\n21 A cam_id=7\n"
        "21 A fstop=0.000000\n21 A zoom_ratio=0\n21 A exposure_time=0\n"
        "23 A { \"submit-request\":{\"pipeline_name\":\"A\",\"timestamp\":\"123\"}}\n"
        "24 A 1022 10000\n";

TEST(BinaryInterface, LibraryCallsTheSlotsOfBareTables) {
    EXPECT_EQ(loading, "options 1 1 1 1 1 0 0 0 0 0 0 0 0\n3\n5 IntentAwareSys 0\n");
    reportThroughPlugin("A");
    EXPECT_EQ(takeReceived(), kReport);
}

TEST(BinaryInterface, BareTableOfASynchronizerHasItsSlots) {
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    RequestRecord record(REQUEST_TYPE_DEFAULT);
    record.frameInfo.imageName = "A";
    record.frameInfo.timestamp = "123";
    record.frameInfo.camIds = {7};
    takeReceived();
    rawRequestInfo(manager.mSynchronizers[INFO_SYNC_TYPE_COLLECT].get(), &record);
    EXPECT_EQ(takeReceived(), kReport);
    EXPECT_EQ(rawRequestCmd(manager.mSynchronizers[INFO_SYNC_TYPE_COLLECT].get(), "key"), nullptr);

    void* executor = manager.mSynchronizers[INFO_SYNC_TYPE_CMD].get();
    rawRequestInfo(executor, &record);
    EXPECT_EQ(takeReceived(), "");
    EXPECT_STREQ(static_cast<const char*>(rawRequestCmd(executor, "snapshotInfoCollectEnable")),
                 "enabled");
}

TEST(BinaryInterface, OneManagerForAllBinaries) {
    EXPECT_EQ(managerOfPlugin(), &InfoSynchronizerManager::getInstance());
    EXPECT_NE(GetInstance(), managerOfPlugin());
}

}  // namespace
}  // namespace camInfosync
