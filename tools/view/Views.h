// All that the user wants to see of a session.

#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "View.h"
#include "ViewOptions.h"

namespace view {

// Hands each capture to every view that the options ask for.
class Views : public View {
  public:
    // Views for the terminal are written to `terminal`; null leaves them out. Throws
    // std::runtime_error if a file cannot be written.
    Views(const ViewOptions& options, std::FILE* terminal);

    void add(const Capture& capture, const Session& session) override;
    void finish(const Session& session) override;

    // Whether a capture has failed or a call had no effect; known at the end.
    bool hasFindings() const { return mHasFindings; }

    // Of the images that the options name, those that no capture had; known at the end.
    const std::set<std::string>& missingImages() const { return mMissingImages; }

  private:
    std::vector<std::unique_ptr<View>> mViews;
    bool mHasFindings = false;
    std::set<std::string> mMissingImages;
};

}  // namespace view
