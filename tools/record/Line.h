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
    void begin() { mText.assign(1, '{'); }

    // `name` is written as it stands.
    template <typename Value>
    void field(std::string_view name, const Value& value) {
        putName(name);
        put(value);
    }

    // A field that is an object, whose fields `write` writes.
    template <typename Write>
    void object(std::string_view name, Write write) {
        putName(name);
        mText += '{';
        write();
        mText += '}';
    }

    // A list of as many elements as fit into `mostBytes`. Returns the number of the others.
    template <typename Elements>
    size_t fieldUpTo(std::string_view name, const Elements& elements, size_t mostBytes) {
        putName(name);
        mText += '[';
        const size_t begin = mText.size();
        size_t left = elements.size();
        for (const auto& element : elements) {
            const size_t before = mText.size();
            putComma('[');
            put(element);
            if (mText.size() - begin > mostBytes) {
                mText.resize(before);
                break;
            }
            --left;
        }
        mText += ']';
        return left;
    }

    // Takes back all fields after the first `size` characters.
    void cutTo(size_t size) { mText.resize(size); }

    void end() { mText += "}\n"; }

    // Valid until the line changes.
    std::string_view text() const { return mText; }
    size_t size() const { return mText.size(); }

    // Frees what a line of unusual length has left.
    void shrinkTo(size_t capacity);

  private:
    template <typename Integer,
              std::enable_if_t<std::is_integral_v<Integer> || std::is_enum_v<Integer>, int> = 0>
    void put(Integer value) {
        char text[24];
        if constexpr (std::is_same_v<Integer, bool>) {
            mText += value ? "true" : "false";
        } else if constexpr (std::is_enum_v<Integer>) {
            put(static_cast<std::underlying_type_t<Integer>>(value));
        } else {
            mText.append(text, std::to_chars(text, text + sizeof(text), value).ptr);
        }
    }
    void put(float value);
    void put(double value);
    void put(std::string_view text);
    void put(const std::string& text) { put(std::string_view(text)); }
    void put(const char* text);
    void put(std::nullptr_t /*null*/) { mText += "null"; }

    template <typename Element>
    void put(const std::vector<Element>& elements) {
        mText += '[';
        for (const Element& element : elements) {
            putComma('[');
            put(element);
        }
        mText += ']';
    }

    // An object if every key is UTF-8, else a list of pairs.
    template <typename Key, typename Value, typename Less>
    void put(const std::map<Key, Value, Less>& map) {
        const bool isObject = std::all_of(map.begin(), map.end(),
                                          [](const auto& entry) { return isName(entry.first); });
        mText += isObject ? '{' : '[';
        for (const auto& [key, value] : map) {
            putComma(isObject ? '{' : '[');
            mText += isObject ? "" : "[";
            putKey(key);
            mText += isObject ? ':' : ',';
            put(value);
            mText += isObject ? "" : "]";
        }
        mText += isObject ? '}' : ']';
    }

    void put(const timespec& time);
    void put(const camInfosync::FrameInfo& frame);
    void put(const camInfosync::SnapshotInfo::RequestInfo& info);
    void put(const camInfosync::SnapshotInfo::ZuAlgoInfo& info);
    void put(const camInfosync::SnapshotInfo& info);
    void put(const camInfosync::RequestRecord& record);

    void putComma(char opening) {
        if (mText.back() != opening) {
            mText += ',';
        }
    }
    void putName(std::string_view name);
    void putKey(const std::string& key) { put(key); }
    void putKey(int32_t key);
    void putEscaped(std::string_view text);
    void putHex(std::string_view text);

    static bool isUtf8(std::string_view text);
    static bool isName(int32_t /*key*/) { return true; }
    static bool isName(const std::string& key) { return isUtf8(key); }

    std::string mText;
};

}  // namespace recording
