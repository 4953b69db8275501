// Reads rows from files.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "LogFile.h"
#include "Row.h"

namespace rows {

class FieldTable;

// Reads a file of rows, one after the other; its memory does not grow with the file. Columns that
// are not known are ignored.
//
// What is wrong is thrown as std::runtime_error with one sentence for the user, which may be
// printed as it is: "FILE:LINE: COLUMN: what is wrong". Nothing can be read after that.
template <typename Row>
class RowReader {
  public:
    // Opens the file; "-" is standard input.
    explicit RowReader(const std::string& path);
    ~RowReader();
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;

    // Sets `row` to the next one. Returns false at the end, and leaves `row` as it is.
    bool next(Row& row);

    // Where the last row stands: "FILE:LINE".
    std::string place() const { return mFile.place(); }
    uint64_t line() const { return mFile.lineNumber(); }

  private:
    replay::LogFile mFile;
    std::string mText;
    Row mRow;
    std::unique_ptr<FieldTable> mFields;  // of mRow
};

using CaptureReader = RowReader<CaptureRow>;
using NodeReader = RowReader<NodeRow>;
using RunReader = RowReader<RunRow>;

extern template class RowReader<CaptureRow>;
extern template class RowReader<NodeRow>;
extern template class RowReader<RunRow>;

// A folder of rows.
struct RowFolder {
    std::string captures;  // paths of the files
    std::string nodes;
    std::string run;
};

// Whether `path` is a folder: no other input is one.
bool isRowFolder(const std::string& path);

// The files of a folder. Throws std::runtime_error with a sentence for the user if one of them is
// missing; without run.ndjson, that its rows may not be whole.
RowFolder rowFolder(const std::string& path);

}  // namespace rows
