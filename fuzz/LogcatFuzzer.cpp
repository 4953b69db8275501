// Reads bytes as logs, and checks that what is built of them holds together.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "Capture.h"
#include "Check.h"
#include "Finding.h"
#include "Input.h"
#include "LogcatReader.h"
#include "View.h"

namespace {

// A text that comes in pieces.
class Bytes : public logcat::Input {
  public:
    Bytes(std::string text, int64_t date, size_t piece)
        : Input("log", date), mText(std::move(text)), mPiece(piece) {}
    size_t read(char* buffer, size_t size) override {
        const size_t length = mText.copy(buffer, std::min(size, mPiece), mPosition);
        mPosition += length;
        return length;
    }

  private:
    std::string mText;
    size_t mPiece;
    size_t mPosition = 0;
};

class Checker : public view::View {
  public:
    void add(const view::Capture& capture, const view::Session& session) override {
        FUZZ_CHECK(mNumbers.insert(capture.number).second);
        FUZZ_CHECK(capture.isRegistered || !capture.registered);
        FUZZ_CHECK(capture.isRemoved || !capture.removed);
        FUZZ_CHECK(!capture.calls.empty() || !capture.reports.empty() || !capture.findings.empty());
        for (const view::Call& call : capture.calls) {
            check(call.place, session);
        }
        for (const view::Finding& finding : capture.findings) {
            check(finding.place, session);
        }
    }
    void finish(const view::Session& session) override {
        FUZZ_CHECK(mNumbers.empty() || *mNumbers.rbegin() == mNumbers.size());
        for (const view::Finding& finding : session.findings) {
            check(finding.place, session);
        }
    }

  private:
    static void check(const view::Place& place, const view::Session& session) {
        FUZZ_CHECK(place.source < session.sources.size() && place.line > 0);
    }

    std::set<uint64_t> mNumbers;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider source(data, size);
    const auto date = source.ConsumeIntegral<int64_t>();
    const size_t piece = source.ConsumeIntegralInRange<size_t>(1, 64);
    Checker checker;
    logcat::LogcatReader reader(checker);
    if (source.ConsumeBool()) {
        reader.setPrintable();
    }
    const std::string first = source.ConsumeRandomLengthString();
    for (const std::string& log : {first, source.ConsumeRemainingBytesAsString()}) {
        Bytes input(log, date, piece);
        try {
            reader.read(input, "log");
        } catch (const std::runtime_error&) {  // no logcat
        }
    }
    reader.finish();
    return 0;
}
