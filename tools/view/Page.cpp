#include "Page.h"

#include <optional>
#include <stdexcept>
#include <string>

#include "Capture.h"
#include "PageData.h"
#include "PageParts.h"
#include "View.h"

namespace view {
namespace {

PageParts partsOr(const std::optional<PageParts>& parts, const std::string& path) {
    if (!parts) {
        throw std::runtime_error(path + ": a page needs Debian's node-d3 when the tools are built");
    }
    return *parts;
}

}  // namespace

Page::Page(const std::string& path, const std::optional<PageParts>& parts)
    : mParts(partsOr(parts, path)), mFile(path) {
    mFile.write(mParts.before);
    mFile.write("{\"version\":1,\"captures\":[");
}

void Page::add(const Capture& capture, const Session& /*session*/) {
    mFile.write(mHasCaptures ? ",\n" : "\n");
    mFile.write(pageCapture(capture, mNames));
    mHasCaptures = true;
}

void Page::finish(const Session& session) {
    mFile.refuse(session.sources);
    mFile.write("\n],\n\"names\":" + mNames.list() + ",\n\"session\":" + pageSession(session) +
                "}");
    mFile.write(mParts.after);
    mFile.finish();
}

}  // namespace view
