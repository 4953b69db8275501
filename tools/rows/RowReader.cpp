#include "RowReader.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>

#include "FieldTable.h"
#include "InputKind.h"
#include "LogFile.h"
#include "Printable.h"
#include "Row.h"
#include "RowColumns.h"

namespace rows {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// Hands the values of one line's object to their fields. What an unknown column holds is passed
// over, whatever it is.
class LineHandler {
  public:
    explicit LineHandler(FieldTable& fields) : mFields(fields) {}

    bool null() {
        return set([](Field& field) { return field.setNull(); });
    }
    bool boolean(bool value) {
        return set([&](Field& field) { return field.set(value); });
    }
    bool number_integer(int64_t value) {
        return set([&](Field& field) { return field.set(value); });
    }
    bool number_unsigned(uint64_t value) {
        return value <= INT64_MAX ? number_integer(static_cast<int64_t>(value))
                                  : number_float(static_cast<double>(value), {});
    }
    bool number_float(double value, const std::string& /*text*/) {
        return set([&](Field& field) { return field.set(value); });
    }
    bool string(std::string& value) {
        return set([&](Field& field) { return field.set(value); });
    }
    bool binary(json::binary_t& /*value*/) { return true; }
    bool start_object(size_t /*size*/) { return enter(true); }
    bool start_array(size_t /*size*/) { return enter(false); }
    bool end_object() { return leave(); }
    bool end_array() { return leave(); }
    bool key(const std::string& name) {
        if (mDepth == 1) {
            mField = mFields.find(name);
        }
        return true;
    }
    bool parse_error(size_t position, const std::string& /*token*/,
                     const json::exception& /*error*/) {
        mBadColumn = position;
        return false;
    }

    // Where the text is no JSON; 0 if it is.
    size_t badColumn() const { return mBadColumn; }
    bool isObject() const { return mIsObject; }

  private:
    template <typename Set>
    bool set(const Set& setField) {
        if (mDepth == 1 && mField != nullptr) {
            mFields.note(*mField, setField(*mField));
        }
        return true;
    }
    bool enter(bool isObject) {
        mIsObject = mDepth == 0 ? isObject : mIsObject;
        set([](Field& /*field*/) { return false; });
        ++mDepth;
        return true;
    }
    bool leave() {
        --mDepth;
        return true;
    }

    FieldTable& mFields;
    Field* mField = nullptr;
    size_t mDepth = 0;
    size_t mBadColumn = 0;
    bool mIsObject = false;
};

// What is wrong with a line's text; empty if it was read.
std::string readLine(const std::string& text, bool isWhole, FieldTable& fields) {
    LineHandler handler(fields);
    // The parser would stop at a zero byte.
    const size_t zero = text.find('\0');
    if (zero != std::string::npos) {
        return "line: contains a zero byte";
    }
    if (!json::sax_parse(text, &handler)) {
        return isWhole ? "line: is not valid JSON at column " + std::to_string(handler.badColumn())
                       : "line: is cut off, and the file's end with it";
    }
    return handler.isObject() ? fields.error() : "line: must be an object";
}

}  // namespace

template <typename Row>
RowReader<Row>::RowReader(const std::string& path)
    : mFile(path), mFields(std::make_unique<FieldTable>()) {
    const std::string kind = replay::compressedKind(mFile.beginning(), "rows");
    if (!kind.empty()) {
        throw std::runtime_error(replay::printable(path) + ": " + kind);
    }
    mFile.setLongestLine(replay::LogFile::kLongestRecordedLine);
    visitColumns(mRow, [this](const char* name, auto& member) { mFields->add(name, member); });
    if constexpr (std::is_same_v<Row, RunRow>) {
        mFields->addSwitches(mRow.switches);
    }
}

template <typename Row>
RowReader<Row>::~RowReader() = default;

template <typename Row>
bool RowReader<Row>::next(Row& row) {
    if (!mFile.next(mText)) {
        return false;
    }
    mRow = Row();
    mFields->beginLine();
    const std::string error = mFile.lineIsTooLong()
                                      ? "line: is longer than 64 MiB"
                                      : readLine(mText, mFile.lineIsWhole(), *mFields);
    if (!error.empty()) {
        throw std::runtime_error(mFile.place() + ": " + error);
    }
    std::swap(row, mRow);
    return true;
}

template class RowReader<CaptureRow>;
template class RowReader<NodeRow>;
template class RowReader<RunRow>;

bool isRowFolder(const std::string& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

RowFolder rowFolder(const std::string& path) {
    const fs::path folder(path);
    const RowFolder files{folder / kCapturesFile, folder / kNodesFile, folder / kRunFile};
    std::error_code ignored;
    for (const std::string& file : {files.captures, files.nodes}) {
        if (!fs::exists(file, ignored)) {
            throw std::runtime_error(replay::printable(file) +
                                     ": is missing; a folder of rows has it");
        }
    }
    if (!fs::exists(files.run, ignored)) {
        throw std::runtime_error(replay::printable(files.run) +
                                 ": is missing; without it the rows may not be whole");
    }
    return files;
}

}  // namespace rows
