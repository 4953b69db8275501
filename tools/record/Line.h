// One line of a capture log in the making.

#pragma once

#include <time.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "RequestRecord.h"

namespace recording {

// A JSON object, field by field, in a buffer that keeps its capacity. Every value can be read back
// bit for bit: texts that are not UTF-8 are written as {"hex":"..."}, floating-point numbers as
// the shortest text that means them, infinities and NaN as texts with their bits.
//
// std::bad_alloc passes; the line is then of no use until it begins anew.
class Line {
  public:
    void begin() {
        mSize = 0;
        add('{');
    }

    // `name` is written as it stands.
    template <typename Value>
    void field(std::string_view name, const Value& value) {
        putName(name);
        put(value);
    }

    // One field or more, as an earlier line has them.
    void fields(std::string_view written) {
        addComma('{');
        add(written);
    }

    // A field that is an object, whose fields `write` writes.
    template <typename Write>
    void object(std::string_view name, Write write) {
        putName(name);
        add('{');
        write();
        add('}');
    }

    // A list of as many elements as fit into `mostBytes`. Returns the number of the others.
    template <typename Elements>
    size_t fieldUpTo(std::string_view name, const Elements& elements, size_t mostBytes) {
        putName(name);
        add('[');
        const size_t begin = mSize;
        size_t left = elements.size();
        for (const auto& element : elements) {
            const size_t before = mSize;
            addComma('[');
            put(element);
            if (mSize - begin > mostBytes) {
                mSize = before;
                break;
            }
            --left;
        }
        add(']');
        return left;
    }

    // Takes back all fields after the first `size` characters.
    void cutTo(size_t size) { mSize = size; }

    void end() { add("}\n"); }

    // Another line, which has been written before, after the end.
    void addWritten(std::string_view line) { add(line); }

    // Valid until the line changes.
    std::string_view text() const { return {mText.data(), mSize}; }
    size_t size() const { return mSize; }

    // Frees what a line of unusual length has left.
    void shrinkTo(size_t capacity);

  private:
    template <typename Integer,
              std::enable_if_t<std::is_integral_v<Integer> || std::is_enum_v<Integer>, int> = 0>
    void put(Integer value) {
        if constexpr (std::is_same_v<Integer, bool>) {
            add(value ? std::string_view("true") : "false");
        } else if constexpr (std::is_enum_v<Integer>) {
            put(static_cast<std::underlying_type_t<Integer>>(value));
        } else {
            constexpr size_t kMostDigits = 24;
            char* const begin = room(kMostDigits);
            mSize += static_cast<size_t>(std::to_chars(begin, begin + kMostDigits, value).ptr -
                                         begin);
        }
    }
    void put(float value);
    void put(double value);
    void put(std::string_view text);
    void put(const std::string& text) { put(std::string_view(text)); }
    void put(const char* text);
    void put(std::nullptr_t /*null*/) { add("null"); }

    template <typename Element>
    void put(const std::vector<Element>& elements) {
        add('[');
        for (const Element& element : elements) {
            addComma('[');
            put(element);
        }
        add(']');
    }

    // An object if every key is UTF-8, else a list of pairs.
    template <typename Key, typename Value, typename Less>
    void put(const std::map<Key, Value, Less>& map) {
        const bool isObject = std::all_of(map.begin(), map.end(),
                                          [](const auto& entry) { return isName(entry.first); });
        add(isObject ? '{' : '[');
        for (const auto& [key, value] : map) {
            addComma(isObject ? '{' : '[');
            add(std::string_view(isObject ? "" : "["));
            putKey(key);
            add(isObject ? ':' : ',');
            put(value);
            add(std::string_view(isObject ? "" : "]"));
        }
        add(isObject ? '}' : ']');
    }

    void put(const timespec& time);
    void put(const camInfosync::FrameInfo& frame);
    void put(const camInfosync::SnapshotInfo::RequestInfo& info);
    void put(const camInfosync::SnapshotInfo::ZuAlgoInfo& info);
    void put(const camInfosync::SnapshotInfo& info);
    void put(const camInfosync::RequestRecord& record);

    // Room for so many characters more.
    char* room(size_t count) {
        if (mText.size() - mSize < count) {
            grow(count);
        }
        return mText.data() + mSize;
    }
    void grow(size_t count);
    void add(char character) {
        *room(1) = character;
        ++mSize;
    }
    void add(std::string_view text) { mSize += text.copy(room(text.size()), text.size()); }
    void addComma(char opening) {
        if (mText[mSize - 1] != opening) {
            add(',');
        }
    }
    void putName(std::string_view name) {
        constexpr size_t kMarks = 4;
        char* out = room(name.size() + kMarks);
        if (out[-1] != '{') {
            *out++ = ',';
        }
        *out++ = '"';
        out = std::copy(name.begin(), name.end(), out);
        *out++ = '"';
        *out++ = ':';
        mSize = static_cast<size_t>(out - mText.data());
    }
    void putKey(const std::string& key) { put(key); }
    void putKey(int32_t key);
    void putEscaped(std::string_view text);
    void putHex(std::string_view text);

    static bool isUtf8(std::string_view text);
    static bool isName(int32_t /*key*/) { return true; }
    static bool isName(const std::string& key) { return isUtf8(key); }

    std::string mText;  // as long as there is room; what is used of it are the first characters
    size_t mSize = 0;
};

}  // namespace recording
