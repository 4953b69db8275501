// What a page is given: the JSON that docs/page-data.md describes.

#pragma once

#include <string>

#include "Capture.h"
#include "PageNames.h"
#include "View.h"

namespace view {

std::string pageCapture(const Capture& capture, PageNames& names);
std::string pageSession(const Session& session);

}  // namespace view
