#include "StrictJson.h"

#include <array>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>
#include <nlohmann/json_fwd.hpp>

#include "LineError.h"
#include "Printable.h"

namespace replay {
namespace {

using nlohmann::json;

constexpr int kDeepestNesting = 8;
constexpr size_t kLongestName = 60;  // in a message

// Leaves the parser at the first thing that JSON allows and a capture log does not.
struct Refused {
    LineError error;
};

// Refuses deep nesting and names that an object has twice.
class StructureCheck {
  public:
    bool operator()(int depth, json::parse_event_t event, const json& value) {
        using Event = json::parse_event_t;
        if (event == Event::object_start || event == Event::array_start) {
            if (depth >= kDeepestNesting) {
                throw Refused{{"line", "is nested more than " + std::to_string(kDeepestNesting) +
                                               " levels deep"}};
            }
            (*mKeys)[static_cast<size_t>(depth)].clear();
        } else if (event == Event::key) {
            const auto& key = value.get_ref<const std::string&>();
            if (!(*mKeys)[static_cast<size_t>(depth) - 1].insert(key).second) {
                throw Refused{{printable(key, kLongestName), "is given twice"}};
            }
        }
        return true;
    }

  private:
    // The names so far of each object around the current place. Shared: the parser copies this.
    std::shared_ptr<std::array<std::set<std::string>, kDeepestNesting>> mKeys =
            std::make_shared<std::array<std::set<std::string>, kDeepestNesting>>();
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

json parseObject(std::string_view text, std::vector<LineError>& errors, bool* isJson) {
    *isJson = false;
    if (text.find('\0') != std::string_view::npos) {  // where the parser would stop reading
        errors.push_back({"line", "contains a zero byte"});
        return nullptr;
    }
    try {
        json value = json::parse(text, StructureCheck());
        *isJson = true;
        if (value.is_object()) {
            return value;
        }
        errors.push_back({"line", "must be an object"});
    } catch (const Refused& refused) {
        *isJson = true;
        errors.push_back(refused.error);
    } catch (const json::parse_error& error) {
        errors.push_back({"line", "is not valid JSON at column " + parserText(error)});
    } catch (const json::out_of_range& error) {
        *isJson = true;
        errors.push_back({"line", parserText(error)});
    }
    return nullptr;
}

}  // namespace replay
