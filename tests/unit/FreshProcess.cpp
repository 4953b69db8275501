// A process that has just loaded the library, for tests that compare all that it prints: the
// journal of the doubles, line by line as it comes. A message is seen here as the Android log has
// it. Each argument is a thing to do.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include <android/log.h>
#include <zudebug/Log.h>

#include "Doubles.h"
#include "InfoSynchronizerManager.h"
#include "OverlapClientTmpl.h"

namespace {

using namespace camInfosync;  // NOLINT(google-build-using-namespace)

void useAClientOfItsOwn() {
    using Client = zu_hal_overlap::OverlapClientTmpl;
    doubles::note("Load", Client::GetInstance().Load());
    const auto* first = Client::GetIntentAwareSys();
    doubles::note("same", first == Client::GetIntentAwareSys());
}

void buildManagers() {
    InfoSynchronizerManager::getInstance();
    InfoSynchronizerManager::getInstance();
    doubles::note("the other:");
    auto& manager = *static_cast<InfoSynchronizerManager*>(GetInstance());
    doubles::note("two managers", &manager != &InfoSynchronizerManager::getInstance());
}

// A stage of a known image builds the other manager, also one that is ignored otherwise.
void stampStages() {
    auto& manager = *static_cast<InfoSynchronizerManager*>(GetInstance());
    manager.mRequestRecordQueue->emplace_back("IMG");
    doubles::note("built, and not again:");
    GetInstance();
    manager.updateSnapshotTimeInfo("NONE", 1U);
    manager.updateSnapshotTimeInfo("IMG", 0U);
    doubles::note("without a thread:");
    doubles::threadsLeft = 0;
    try {
        manager.updateSnapshotTimeInfo("IMG", 1U);
    } catch (const std::system_error&) {
        doubles::note("thrown");
    }
    doubles::threadsLeft = -1;
    const auto& stages = manager.mRequestRecordQueue->records.at("IMG")->snapshotInfo.timeInfo;
    doubles::note("stages", stages.size());
    manager.updateSnapshotTimeInfo("IMG", 15U);
    doubles::note("by a stage that is ignored");
    manager.updateSnapshotTimeInfo("IMG", 1U);
    doubles::note("stages", stages.size());
}

// The three operations that the switch decides about, once per answer of the service.
void useTheSwitch() {
    InfoSynchronizerManager& manager = InfoSynchronizerManager::getInstance();
    auto& records = manager.mRequestRecordQueue->records;
    for (const std::string answer : {"enabled", "", "enable", "enabled ", "Enabled", "zero"}) {
        int queries = 0;
        doubles::onQuery = [&](const std::string&) {
            ++queries;
            return answer == "zero" ? std::string("enabled\0x", 9) : answer;
        };
        manager.registerSnapshotRequestRecord("A");
        const size_t registered = records.size();
        manager.snapshotRequestInfoFlush("A", INFO_SYNC_TYPE_COLLECT_ALT);
        records.try_emplace("A", std::make_shared<RequestRecord>(REQUEST_TYPE_DEFAULT));
        manager.unregisterSnapshotRequestRecord("A");
        doubles::note("answer '" + answer + "', queries " + std::to_string(queries) +
                      ", registered " + std::to_string(registered) + ", left " +
                      std::to_string(records.size()));
        records.clear();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::pair<const char*, void (*)()> things[] = {
            {"client", useAClientOfItsOwn},    {"managers", buildManagers},
            {"stages", stampStages},           {"switch", useTheSwitch},
            {"vanish", [] { std::_Exit(0); }},
    };
    doubles::note("service", InfoSynchronizer::mIntentAwareImpl != nullptr);
    zudebug::gZuCamLogLevel = ANDROID_LOG_INFO;
    zudebug::gZuCamLogGroup = 64;
    zudebug::gZuCamDebugMask = 1;
    for (int i = 1; i < argc; ++i) {
        for (const auto& [name, run] : things) {
            if (std::strcmp(argv[i], name) == 0) {
                run();
            }
        }
    }
    return 0;
}
