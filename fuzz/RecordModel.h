// What a snapshot record is to be after each operation: a second, plain account of the
// library's behaviour, which shares no code with it.

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "InfoSynchronizerManager.h"

namespace fuzz {

struct ModelRecord {
    std::vector<std::string> errors;
    uint32_t frameNumber = 0;
    std::string timestamp;
    std::vector<uint32_t> cameras;
    uint32_t frameExtra = 0;
    std::string frameName;
    int32_t requestType = 1;
    uint32_t camMode = 0;
    int32_t faceDetect = 0;
    float zoom = 0;
    std::string uiExtra;
    int32_t requestA = 0;
    int32_t requestB = 0;
    bool requestFlag = false;
    uint64_t request64 = 0;
    std::vector<int32_t> idsA;
    std::vector<int32_t> expectedIds;
    int32_t anchorFrame = 0;
    float fstop = 0;
    int32_t iso = 0;
    float lux = 0;
    int64_t exposure = 0;
    std::map<int32_t, std::string> results;
    std::vector<std::string> algorithms;
    std::map<std::string, double> timeA;
    std::map<std::string, double> timeB;
    std::map<std::string, double> timeC;
    std::map<std::string, std::string> states;
    std::map<std::string, int64_t> stages;

    // The calls that a report on the record makes, in order.
    std::vector<std::string> report() const;
    // Ends the process if `record` differs.
    void compare(const camInfosync::RequestRecord& record) const;
};

// The calls as the report() lists them.
std::string paramCall(const std::string& id, const std::string& key, const std::string& value);
std::string eventCall(const std::string& id, const std::string& event);
std::string finishCall(const std::string& id, int32_t first, int32_t second);

// The value without its fraction; the nearest end if it lies outside, and 0 for NaN.
int64_t truncated(double value, int64_t least, int64_t most);

// The texts of codes; empty if the code has none.
std::string stageText(uint32_t stage);
std::string stateText(int32_t state);
std::string resultText(int32_t code);

}  // namespace fuzz
