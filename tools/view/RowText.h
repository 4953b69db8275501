// Rows as lines of JSON.

#pragma once

#include <string>

#include "Row.h"

namespace view {

// Adds a row with its newline. What is not known is left out; texts are safe to show.
void appendRow(const rows::CaptureRow& row, std::string& out);
void appendRow(const rows::NodeRow& row, std::string& out);
void appendRow(const rows::RunRow& row, std::string& out);

}  // namespace view
