#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "Difference.h"
#include "JsonText.h"
#include "Report.h"

namespace diff {
namespace {

// Adds `,"name":value`.
class Object {
  public:
    void addText(const char* name, const std::string& text) { add(name, view::jsonText(text)); }
    void addNumber(const char* name, int64_t number) { add(name, std::to_string(number)); }

    std::string line() const { return '{' + mMembers + "}\n"; }

  private:
    void add(const char* name, const std::string& value) {
        mMembers += (mMembers.empty() ? "\"" : ",\"") + std::string(name) + "\":" + value;
    }

    std::string mMembers;
};

void addSide(Object& object, const char* name, const Difference& difference,
             const std::optional<std::string>& value) {
    if (value && difference.change) {
        object.addNumber((std::string(name) + "_us").c_str(), std::atoll(value->c_str()));
    } else if (value) {
        object.addText(name, *value);
    }
}

}  // namespace

void JsonReport::add(const Difference& difference, const Where& where) {
    Object object;
    object.addText("kind", nameOf(difference.kind));
    object.addText("item", difference.item);
    if (!difference.node.empty()) {
        object.addText("node", difference.node);
    }
    if (where.numberA != 0 || where.numberB != 0) {
        object.addText("capture", where.name);
    }
    if (where.otherName != where.name && where.numberA != 0 && where.numberB != 0) {
        object.addText("capture_b", where.otherName);
    }
    if (where.numberA != 0) {
        object.addNumber("capture_seq_a", where.numberA);
    }
    if (where.numberB != 0) {
        object.addNumber("capture_seq_b", where.numberB);
    }
    addSide(object, "a", difference, difference.a);
    addSide(object, "b", difference, difference.b);
    if (difference.change) {
        object.addNumber("change_us", *difference.change);
    }
    mEntries.push_back({difference.kind, std::abs(difference.change.value_or(0)), object.line()});
}

void JsonReport::write(std::FILE* file, const Counts& counts) {
    std::stable_sort(mEntries.begin(), mEntries.end(), [](const Entry& a, const Entry& b) {
        return a.kind != b.kind ? a.kind < b.kind : a.size > b.size;
    });
    for (const Entry& entry : mEntries) {
        std::fputs(entry.line.c_str(), file);
    }
    Object object;
    object.addText("kind", "summary");
    object.addNumber("compared", static_cast<int64_t>(counts.pairs));
    object.addNumber("differing", static_cast<int64_t>(counts.differing));
    object.addNumber("only_in_a", static_cast<int64_t>(counts.onlyInA));
    object.addNumber("only_in_b", static_cast<int64_t>(counts.onlyInB));
    object.addNumber("differences", static_cast<int64_t>(mEntries.size()));
    std::fputs(object.line().c_str(), file);
}

}  // namespace diff
