// The stages of a capture, as the library names them.

#pragma once

#include <array>

#include "Row.h"

namespace stats {

// Deliberate: a copy of the library's table, which rows do not have and which these programs are
// not linked to.
inline constexpr std::array<const char*, rows::kStages> kStageNames = {
        "1request_to_zuhal",     "2request_to_vendor",
        "3result_from_vendor",   "4result_to_fwk",
        "5request_to_post",      "6request_to_algo",
        "7anchor_time",          "8getbuffer_from_fwk",
        "9mock_config_from_fwk", "10mock_request_from_fwk",
        "11mock_result_to_fwk",  "12post_proc_time",
        "13shot_2_shot",         "14shot_2_gallery",
        "15shot_2_view",
};

}  // namespace stats
