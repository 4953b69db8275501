// Captures as a page: one file that any browser opens.

#pragma once

#include <optional>
#include <string>

#include "Capture.h"
#include "NewFile.h"
#include "PageNames.h"
#include "PageParts.h"
#include "View.h"

namespace view {

// Writes each capture as it comes: memory does not grow with them.
class Page : public View {
  public:
    // Throws if there are no parts: says what is missing.
    Page(const std::string& path, const std::optional<PageParts>& parts);

    void add(const Capture& capture, const Session& session) override;
    void finish(const Session& session) override;

  private:
    const PageParts mParts;
    NewFile mFile;
    PageNames mNames;
    bool mHasCaptures = false;
};

}  // namespace view
