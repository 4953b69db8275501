#include "JsonTree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <rapidjson/rapidjson.h>
#include <rapidjson/reader.h>
#include <rapidjson/stream.h>
#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>

#include "StrictJson.h"

namespace replay {

using nlohmann::json;

namespace {

using Stream = rapidjson::InsituStringStream;

constexpr size_t kMostKept = size_t{1} << 20;  // in bytes, from one line to the next

bool isAscii(std::string_view text) {
    unsigned char bits = 0;
    for (const char byte : text) {
        bits |= static_cast<unsigned char>(byte);
    }
    return bits < 0x80;
}

template <unsigned kFlags, typename Builder>
bool parseWith(Stream& stream, Builder& builder) {
    return !rapidjson::Reader().Parse<kFlags>(stream, builder).IsError();
}

}  // namespace

double JsonValue::number() const {
    switch (mKind) {
        case Kind::kUnsigned:
            return static_cast<double>(mContent.unsignedNumber);
        case Kind::kSigned:
            return static_cast<double>(mContent.signedNumber);
        default:
            return mContent.real;
    }
}

const JsonValue* JsonValue::find(std::string_view name) const {
    for (const JsonValue& member : *this) {
        // Most names differ in these two.
        if (member.mNameSize == name.size() && (name.empty() || member.mName[0] == name[0]) &&
            member.name() == name) {
            return &member;
        }
    }
    return nullptr;
}

// Takes what the parser finds, and ends the parsing by a false where JsonTree::parse gives up.
class JsonTree::Builder {
  public:
    Builder(JsonTree& tree, const Stream& stream) : mTree(tree), mStream(stream) {}

    bool Null() {
        add(Kind::kNull);
        return true;
    }
    bool Bool(bool value) {
        add(Kind::kBool).mContent.isTrue = value;
        return true;
    }
    bool Int(int value) { return Int64(value); }
    bool Uint(unsigned value) { return Uint64(value); }
    bool Int64(int64_t value) {
        add(Kind::kSigned).mContent.signedNumber = value;
        return true;
    }
    bool Uint64(uint64_t value) {
        add(Kind::kUnsigned).mContent.unsignedNumber = value;
        return true;
    }
    bool Double(double /*value*/) { return addReal(); }
    bool RawNumber(const char* /*text*/, rapidjson::SizeType /*size*/, bool /*copy*/) {
        return false;  // is not asked for
    }
    bool String(const char* text, rapidjson::SizeType size, bool /*copy*/) {
        JsonValue& value = add(Kind::kText);
        value.mContent.text = text;
        value.mSize = size;
        return true;
    }
    bool Key(const char* text, rapidjson::SizeType size, bool /*copy*/) {
        mName = {text, size};
        return true;
    }
    bool StartObject() { return enter(Kind::kObject); }
    bool StartArray() { return enter(Kind::kArray); }
    bool EndObject(rapidjson::SizeType size) { return hasEachNameOnce(leave(size)); }
    bool EndArray(rapidjson::SizeType size) {
        leave(size);
        return true;
    }

  private:
    using Kind = JsonValue::Kind;

    JsonValue& add(Kind kind) { return mTree.add(kind, mName); }
    bool enter(Kind kind) {
        if (mDepth == kDeepestNesting) {
            return false;
        }
        mOpen[mDepth++] = mTree.mValues.size();
        add(kind);
        return true;
    }
    JsonValue& leave(size_t size) {
        JsonValue& value = mTree.mValues[mOpen[--mDepth]];
        value.mSize = static_cast<uint32_t>(size);
        value.mSpan = static_cast<uint32_t>(mTree.mValues.size() - mOpen[mDepth]);
        return value;
    }
    bool addReal();
    static bool hasEachNameOnce(const JsonValue& object);

    JsonTree& mTree;
    const Stream& mStream;
    std::string_view mName;  // of the member that comes next; an element of an array has none
    size_t mDepth = 0;
    std::array<size_t, kDeepestNesting> mOpen{};  // objects and arrays around, the outermost first
};

// The parser, which is at the number's beginning or end, would round some numbers otherwise than
// strtod. It stands in an object or array, so that something follows it that is no part of it.
bool JsonTree::Builder::addReal() {
    constexpr std::string_view kOfNumbers = "0123456789+-.eE";
    if (mDepth == 0) {
        return false;
    }
    const char* begin = mStream.src_;
    while (kOfNumbers.find(begin[-1]) != std::string_view::npos) {
        --begin;
    }
    const double number = std::strtod(begin, nullptr);
    add(Kind::kReal).mContent.real = number;
    return std::isfinite(number);
}

bool JsonTree::Builder::hasEachNameOnce(const JsonValue& object) {
    constexpr size_t kFew = 16;
    if (object.size() <= kFew) {
        for (const JsonValue& member : object) {
            if (object.find(member.name()) != &member) {
                return false;
            }
        }
        return true;
    }
    std::vector<std::string_view> names;
    names.reserve(object.size());
    for (const JsonValue& member : object) {
        names.push_back(member.name());
    }
    std::sort(names.begin(), names.end());
    return std::adjacent_find(names.begin(), names.end()) == names.end();
}

const JsonValue* JsonTree::parse(std::string_view text) {
    // The parser would end at a zero, and takes half of a surrogate pair for a character.
    if (text.find('\0') != std::string_view::npos || text.find("\\u") != std::string_view::npos) {
        return nullptr;
    }
    mValues.clear();
    constexpr size_t kLongestSequence = 4;
    mText = text;
    mText.append(kLongestSequence, '\0');  // all of a sequence is looked at, also if it is cut off
    Stream stream(mText.data());
    Builder builder(*this, stream);
    const bool isWell = isAscii(text)
                                ? parseWith<rapidjson::kParseInsituFlag>(stream, builder)
                                : parseWith<rapidjson::kParseInsituFlag |
                                            rapidjson::kParseValidateEncodingFlag>(stream, builder);
    return isWell && mValues[0].isObject() ? mValues.data() : nullptr;
}

void JsonTree::trim() {
    mTaken.reset();
    if (mText.capacity() > kMostKept || mValues.capacity() * sizeof(JsonValue) > kMostKept) {
        *this = {};
    }
}

JsonValue& JsonTree::add(JsonValue::Kind kind, std::string_view name) {
    JsonValue& value = mValues.emplace_back();
    value.mKind = kind;
    value.mName = name.data();
    value.mNameSize = static_cast<uint32_t>(name.size());
    return value;
}

const JsonValue& JsonTree::take(json value) {
    mValues.clear();
    mTaken = std::make_shared<const json>(std::move(value));
    addTaken({}, *mTaken);
    return mValues[0];
}

void JsonTree::addTaken(std::string_view name, const json& value) {
    const size_t place = mValues.size();
    JsonValue& added = add(JsonValue::Kind::kNull, name);
    switch (value.type()) {
        case json::value_t::boolean:
            added.mKind = JsonValue::Kind::kBool;
            added.mContent.isTrue = value.get<bool>();
            break;
        case json::value_t::number_unsigned:
            added.mKind = JsonValue::Kind::kUnsigned;
            added.mContent.unsignedNumber = value.get<uint64_t>();
            break;
        case json::value_t::number_integer:
            added.mKind = JsonValue::Kind::kSigned;
            added.mContent.signedNumber = value.get<int64_t>();
            break;
        case json::value_t::number_float:
            added.mKind = JsonValue::Kind::kReal;
            added.mContent.real = value.get<double>();
            break;
        case json::value_t::string:
            added.mKind = JsonValue::Kind::kText;
            added.mContent.text = value.get_ref<const std::string&>().data();
            added.mSize = static_cast<uint32_t>(value.get_ref<const std::string&>().size());
            break;
        case json::value_t::array:
        case json::value_t::object:
            added.mKind = value.is_array() ? JsonValue::Kind::kArray : JsonValue::Kind::kObject;
            addInside(place, value);
            break;
        default:
            break;
    }
}

void JsonTree::addInside(size_t place, const json& value) {
    mValues[place].mSize = static_cast<uint32_t>(value.size());
    for (const auto& [name, inside] : value.items()) {
        addTaken(value.is_object() ? std::string_view(name) : std::string_view(), inside);
    }
    mValues[place].mSpan = static_cast<uint32_t>(mValues.size() - place);
}

}  // namespace replay
