// The page without its data, as it was put into the program when it was built.

#pragma once

#include <optional>
#include <string_view>

namespace view {

struct PageParts {
    std::string_view before;  // the data
    std::string_view after;
};

// Nothing if D3 was not there when the program was built.
std::optional<PageParts> builtInPage();

}  // namespace view
