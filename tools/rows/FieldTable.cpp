#include "FieldTable.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <variant>

#include "Printable.h"
#include "Row.h"
#include "SafeText.h"

namespace rows {
namespace {

constexpr std::string_view kSwitchPrefix = "switch_";
constexpr size_t kLongestName = 60;  // in a message
constexpr int64_t kLargest = int64_t{1} << 53;

template <typename Integer>
std::optional<Integer> wholeOf(const std::string& text) {
    Integer value{};
    const char* end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && last == end ? std::optional<Integer>(value) : std::nullopt;
}

// Sets a member that is a Value, or is one if it is there. Returns false for any other.
template <typename Value>
bool assign(const Field::Member& member, const Value& value) {
    if (auto* const* required = std::get_if<Value*>(&member)) {
        **required = value;
        return true;
    }
    auto* const* optional = std::get_if<std::optional<Value>*>(&member);
    if (optional != nullptr) {
        **optional = value;
    }
    return optional != nullptr;
}

template <typename Integer>
bool assignWhole(const Field::Member& member, const std::string& text) {
    auto* const* whole = std::get_if<std::optional<InText<Integer>>*>(&member);
    const auto value = whole != nullptr ? wholeOf<Integer>(text) : std::nullopt;
    if (value) {
        **whole = InText<Integer>{*value};
    }
    return value.has_value();
}

}  // namespace

bool Field::isRequired() const {
    return std::holds_alternative<std::string*>(mMember) ||
           std::holds_alternative<int64_t*>(mMember);
}

bool Field::setNull() {
    return !isRequired();
}

bool Field::set(bool value) {
    auto* const* flag = std::get_if<Flag*>(&mMember);
    if (flag != nullptr) {
        **flag = value;
    }
    return flag != nullptr;
}

bool Field::set(int64_t value) {
    const bool isSafe = value >= -kLargest && value <= kLargest;
    return (isSafe && assign(mMember, value)) || set(static_cast<double>(value));
}

bool Field::set(double value) {
    auto* const* number = std::get_if<Number*>(&mMember);
    if (number != nullptr) {
        **number = value;
    }
    return number != nullptr;
}

bool Field::set(const std::string& value) {
    return assign(mMember, withoutEscapes(value)) || assignWhole<int64_t>(mMember, value) ||
           assignWhole<uint64_t>(mMember, value);
}

const char* Field::wanted() const {
    if (std::holds_alternative<std::string*>(mMember) || std::holds_alternative<Text*>(mMember)) {
        return "must be a text";
    }
    if (std::holds_alternative<int64_t*>(mMember) || std::holds_alternative<Whole*>(mMember)) {
        return "must be a whole number within 2^53";
    }
    if (std::holds_alternative<Number*>(mMember)) {
        return "must be a number";
    }
    return std::holds_alternative<Flag*>(mMember) ? "must be true or false"
                                                  : "must be a text of a whole number, as \"17\"";
}

FieldTable::FieldTable() {
    add("schema_version", mVersion);
}

void FieldTable::addMember(const std::string& name, const Field::Member& member) {
    Field& field = mFields.emplace_back(name, member);
    mByName.emplace(field.name(), &field);
}

void FieldTable::beginLine() {
    ++mLine;
    mError.clear();
}

Field* FieldTable::find(const std::string& name) {
    const auto position = mByName.find(name);
    if (position != mByName.end()) {
        return position->second;
    }
    if (mSwitches == nullptr || name.compare(0, kSwitchPrefix.size(), kSwitchPrefix) != 0) {
        return nullptr;
    }
    return &mSwitch.emplace(name, &(*mSwitches)[name.substr(kSwitchPrefix.size())]);
}

void FieldTable::note(Field& field, bool fits) {
    const bool isSecond = field.lineSeen == mLine;
    field.lineSeen = mLine;
    if (mError.empty() && (isSecond || !fits)) {
        mError = replay::printable(field.name(), kLongestName) + ": " +
                 (isSecond ? "is given twice" : field.wanted());
    }
}

std::string FieldTable::error() const {
    const Field& version = mFields.front();
    if (version.lineSeen == mLine && mError.find(version.name()) != 0 &&
        mVersion != kSchemaVersion) {
        return version.name() + ": is " + std::to_string(mVersion) + ", and this program reads " +
               std::to_string(kSchemaVersion);
    }
    if (!mError.empty()) {
        return mError;
    }
    for (const Field& field : mFields) {
        if (field.isRequired() && field.lineSeen != mLine) {
            return field.name() + ": is missing";
        }
    }
    return {};
}

}  // namespace rows
