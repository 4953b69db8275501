// The JSON of one line, as values that lie side by side.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace replay {

// A value of a JsonTree, which it must not outlive.
class JsonValue {
  public:
    bool isNull() const { return mKind == Kind::kNull; }
    bool isBool() const { return mKind == Kind::kBool; }
    bool isText() const { return mKind == Kind::kText; }
    bool isArray() const { return mKind == Kind::kArray; }
    bool isObject() const { return mKind == Kind::kObject; }
    // Numbers without point and exponent that fit into 64 bits: those without a sign, and all.
    bool isUnsigned() const { return mKind == Kind::kUnsigned; }
    bool isWhole() const { return isUnsigned() || mKind == Kind::kSigned; }
    bool isNumber() const { return isWhole() || mKind == Kind::kReal; }

    // What it holds, if it is of that kind.
    bool boolean() const { return mContent.isTrue; }
    uint64_t unsignedNumber() const { return mContent.unsignedNumber; }
    int64_t signedNumber() const { return mContent.signedNumber; }
    double number() const;  // of any kind
    std::string_view text() const { return {mContent.text, mSize}; }

    // An array's elements, or an object's members.
    class Iterator;
    Iterator begin() const;
    Iterator end() const;
    size_t size() const { return mSize; }

    std::string_view name() const { return {mName, mNameSize}; }  // of an object's member
    // The object's member of that name, or null.
    const JsonValue* find(std::string_view name) const;
    bool contains(std::string_view name) const { return find(name) != nullptr; }

  private:
    friend class JsonTree;

    enum class Kind : uint8_t {
        kNull,
        kBool,
        kUnsigned,
        kSigned,
        kReal,
        kText,
        kArray,
        kObject,
    };
    union Content {
        bool isTrue;
        uint64_t unsignedNumber;
        int64_t signedNumber;
        double real;
        const char* text;
    };

    const char* mName = nullptr;
    Content mContent{};
    uint32_t mNameSize = 0;
    uint32_t mSize = 0;  // of a text, or how many elements or members there are
    uint32_t mSpan = 1;  // with all values inside of this one, which follow it
    Kind mKind = Kind::kNull;
};

class JsonValue::Iterator {
  public:
    explicit Iterator(const JsonValue* value) : mValue(value) {}
    const JsonValue& operator*() const { return *mValue; }
    Iterator& operator++() {
        mValue += mValue->mSpan;
        return *this;
    }
    bool operator!=(const Iterator& other) const { return mValue != other.mValue; }

  private:
    const JsonValue* mValue;
};

inline JsonValue::Iterator JsonValue::begin() const {
    return Iterator(this + 1);
}
inline JsonValue::Iterator JsonValue::end() const {
    return Iterator(this + mSpan);
}

// The values of one line, in memory that is kept for the next one.
class JsonTree {
  public:
    // The object that `text` is, with its members in the order of the text. Null for all that
    // parseObject refuses, and for some of what it takes, which is rare; see StrictJson.h.
    const JsonValue* parse(std::string_view text);

    // A value that was parsed otherwise.
    const JsonValue& take(nlohmann::json value);

    // Gives up the memory if it is much.
    void trim();

  private:
    class Builder;

    JsonValue& add(JsonValue::Kind kind, std::string_view name);
    void addTaken(std::string_view name, const nlohmann::json& value);
    void addInside(size_t place, const nlohmann::json& value);

    std::vector<JsonValue> mValues;
    std::string mText;  // the line, whose texts are decoded where they stand
    std::shared_ptr<const nlohmann::json> mTaken;
};

}  // namespace replay
