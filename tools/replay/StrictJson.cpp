#include "StrictJson.h"

#include <array>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>

#include "JsonTree.h"
#include "LineError.h"
#include "Printable.h"

namespace replay {
namespace {

using nlohmann::json;

constexpr size_t kLongestName = 60;  // in a message

// Refuses deep nesting and names that an object has twice, and leaves all else to the parser. It
// looks first, since the parser's own callback takes time by the square of an array's length.
class StructureCheck {
  public:
    // What is wrong, if `json::sax_parse` returned false and it was not the syntax.
    const std::optional<LineError>& error() const { return mError; }

    bool null() { return true; }
    bool boolean(bool /*value*/) { return true; }
    bool number_integer(json::number_integer_t /*value*/) { return true; }
    bool number_unsigned(json::number_unsigned_t /*value*/) { return true; }
    bool number_float(json::number_float_t /*value*/, const std::string& /*text*/) { return true; }
    bool string(std::string& /*value*/) { return true; }
    bool binary(json::binary_t& /*value*/) { return true; }
    bool start_object(size_t /*size*/) { return enter(); }
    bool start_array(size_t /*size*/) { return enter(); }
    bool end_object() { return leave(); }
    bool end_array() { return leave(); }
    bool key(std::string& name) {
        if (!mNames[mDepth - 1].insert(name).second) {
            mError = {printable(name, kLongestName), "is given twice"};
        }
        return !mError;
    }
    bool parse_error(size_t /*position*/, const std::string& /*token*/,
                     const json::exception& /*error*/) {
        return false;
    }

  private:
    bool enter() {
        if (mDepth == kDeepestNesting) {
            mError = {"line",
                      "is nested more than " + std::to_string(kDeepestNesting) + " levels deep"};
            return false;
        }
        mNames[mDepth++].clear();
        return true;
    }
    bool leave() {
        --mDepth;
        return true;
    }

    size_t mDepth = 0;
    std::array<std::set<std::string>, kDeepestNesting> mNames;  // so far, of each object around
    std::optional<LineError> mError;
};

// What the parser says, without its own error number and place.
std::string parserText(const json::exception& error) {
    std::string_view text = error.what();
    for (const std::string_view mark : {"] ", "column "}) {
        const size_t position = text.find(mark);
        if (position != std::string_view::npos) {
            text.remove_prefix(position + mark.size());
        }
    }
    constexpr size_t kLongestText = 160;
    return printable(text, kLongestText);
}

}  // namespace

const JsonValue* parseObject(std::string_view text, JsonTree& tree, std::vector<LineError>& errors,
                             bool* isJson) {
    *isJson = false;
    if (text.find('\0') != std::string_view::npos) {  // where the parser would stop reading
        errors.push_back({"line", "contains a zero byte"});
        return nullptr;
    }
    StructureCheck check;
    json::sax_parse(text, &check);
    if (const auto& error = check.error(); error) {
        *isJson = true;
        errors.push_back(*error);
        return nullptr;
    }
    try {
        json value = json::parse(text);
        *isJson = true;
        if (value.is_object()) {
            return &tree.take(std::move(value));
        }
        errors.push_back({"line", "must be an object"});
    } catch (const json::parse_error& error) {
        errors.push_back({"line", "is not valid JSON at column " + parserText(error)});
    } catch (const json::out_of_range& error) {
        *isJson = true;
        errors.push_back({"line", parserText(error)});
    }
    return nullptr;
}

}  // namespace replay
