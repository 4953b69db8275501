// Texts for the terminal: safe, and as wide as they are to be.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TerminalStyle.h"

namespace view {

inline constexpr char kNotKnown[] = "not known";

// The text as replay::printable, and characters that reorder, hide or break a line as escapes such
// as \u{202e}. All functions below want texts that are safe.
std::string safe(std::string_view text);

// The same for a name, which may be empty: "(no name)".
std::string safeName(std::string_view name);

// The columns that it takes.
size_t columnsOf(std::string_view text);

// The text, with its middle or its end left out if it is wider than that. The end of a name is what
// tells it from others, so more of it is kept.
std::string withoutMiddle(const std::string& text, size_t width, const TerminalStyle& style);
std::string withoutEnd(const std::string& text, size_t width, const TerminalStyle& style);

// By the terminal's codes.
enum class Colour { kNone = 0, kBold = 1, kDim = 2, kRed = 31, kYellow = 33, kCyan = 36 };

std::string inColour(const std::string& text, Colour colour, const TerminalStyle& style);

// Three digits or more: "0.12", "4.5", "430", "10000".
std::string milliseconds(double ms);
std::string milliseconds(std::optional<double> ms);

// As it was given, to three decimals.
std::string number(double value);
std::string number(std::optional<double> value);

// "1 report", "2 reports".
std::string counted(uint64_t count, const char* noun);

// "a, b", or "none".
std::string joined(const std::vector<std::string>& texts);

}  // namespace view
