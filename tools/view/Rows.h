// Captures as rows in files, for engines and for programs that compare and count.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Capture.h"
#include "NewFile.h"
#include "View.h"
#include "ViewOptions.h"

namespace view {

// A folder that is there once rows are to be written into it. One that was made for them goes
// again unless it is kept, if it is empty.
class RowsFolder {
  public:
    explicit RowsFolder(const std::string& path);
    ~RowsFolder();
    RowsFolder(const RowsFolder&) = delete;
    RowsFolder& operator=(const RowsFolder&) = delete;

    std::string fileOf(const char* name) const;
    void keep() { mIsNew = false; }

  private:
    const std::string mPath;
    bool mIsNew = false;
};

// Writes the three files of tools/rows/Row.h. They appear when the session is finished, the run's
// last; its memory does not grow with the captures.
class Rows : public View {
  public:
    explicit Rows(const RowOptions& options);

    void add(const Capture& capture, const Session& session) override;
    void finish(const Session& session) override;

  private:
    void nameRun(const Session& session);
    void putInPlace();

    RowOptions mOptions;
    RowsFolder mFolder;  // before the files, which go first
    NewFile mCaptures;
    NewFile mNodes;
    NewFile mRun;
    std::string mText;  // of the rows being written
    int64_t mCaptureRows = 0;
    int64_t mNodeRows = 0;
};

}  // namespace view
