#include "RowText.h"

#include <cctype>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "JsonText.h"
#include "Row.h"
#include "RowColumns.h"

namespace view {
namespace {

std::string json(const std::string& text) {
    return jsonText(text);
}

std::string json(int64_t whole) {
    return std::to_string(whole);
}

std::string json(double number) {
    return jsonNumber(number);
}

std::string json(bool flag) {
    return flag ? "true" : "false";
}

template <typename Integer>
std::string json(const rows::InText<Integer>& whole) {
    return '"' + std::to_string(whole.value) + '"';
}

// A row being written, column by column.
class Line {
  public:
    explicit Line(std::string& out) : mOut(out) {
        mOut += "{\"schema_version\":" + std::to_string(rows::kSchemaVersion);
    }
    ~Line() { mOut += "}\n"; }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    template <typename Value>
    void add(const std::string_view name, const Value& value) {
        ((mOut += ",\"") += name) += "\":";
        mOut += json(value);
    }
    template <typename Value>
    void add(const std::string_view name, const std::optional<Value>& value) {
        if (value) {
            add(name, *value);
        }
    }

  private:
    std::string& mOut;
};

template <typename Row>
void addColumns(const Row& row, Line& line) {
    rows::visitColumns(row, [&](const char* name, const auto& value) { line.add(name, value); });
}

// A name as the rest of a column's: small letters, digits and underscores.
std::string columnName(const std::string& name) {
    std::string column;
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        column += std::isalnum(byte) != 0 ? static_cast<char>(std::tolower(byte)) : '_';
    }
    return column;
}

}  // namespace

void appendRow(const rows::CaptureRow& row, std::string& out) {
    Line line(out);
    addColumns(row, line);
}

void appendRow(const rows::NodeRow& row, std::string& out) {
    Line line(out);
    addColumns(row, line);
}

void appendRow(const rows::RunRow& row, std::string& out) {
    Line line(out);
    addColumns(row, line);
    for (const auto& [name, state] : row.switches) {
        line.add("switch_" + columnName(name), state);
    }
}

}  // namespace view
