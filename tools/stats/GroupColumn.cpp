#include "GroupColumn.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Printable.h"
#include "Row.h"
#include "RowColumns.h"
#include "Spelling.h"

namespace stats {
namespace {

std::string textOf(const std::string& value) {
    return value;
}

std::string textOf(bool value) {
    return value ? "true" : "false";
}

std::string textOf(int64_t value) {
    return std::to_string(value);
}

std::string textOf(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.10g", value);
    return text;
}

template <typename Integer>
std::string textOf(const rows::InText<Integer>& value) {
    return std::to_string(value.value);
}

template <typename Value>
std::string textOf(const std::optional<Value>& value) {
    return value ? textOf(*value) : "(not known)";
}

template <typename Row>
std::vector<std::string_view> columnsOf() {
    std::vector<std::string_view> names;
    const Row row;
    rows::visitColumns(row, [&](const char* name, const auto&) { names.emplace_back(name); });
    return names;
}

int positionOf(const std::string& name, const std::vector<std::string_view>& names) {
    for (size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) {
            return static_cast<int>(i);
        }
    }
    return GroupColumn::kNone;
}

template <typename Row>
std::string valueAt(int column, const Row& row) {
    std::string text;
    int position = 0;
    rows::visitColumns(row, [&](const char*, const auto& value) {
        if (position++ == column) {
            text = textOf(value);
        }
    });
    return text;
}

}  // namespace

GroupColumn::GroupColumn(const std::string& name)
    : mOfCaptures(positionOf(name, columnsOf<rows::CaptureRow>())),
      mOfNodes(positionOf(name, columnsOf<rows::NodeRow>())) {
    if (!isOfCaptures() && !isOfNodes()) {
        std::vector<std::string_view> known = columnsOf<rows::CaptureRow>();
        const std::vector<std::string_view> ofNodes = columnsOf<rows::NodeRow>();
        known.insert(known.end(), ofNodes.begin(), ofNodes.end());
        throw std::runtime_error("--by: rows have no column " + replay::printable(name) +
                                 replay::didYouMean(name, known));
    }
}

std::string GroupColumn::valueOf(const rows::CaptureRow& row) const {
    return valueAt(mOfCaptures, row);
}

std::string GroupColumn::valueOf(const rows::NodeRow& row) const {
    return valueAt(mOfNodes, row);
}

}  // namespace stats
