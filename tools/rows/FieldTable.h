// Where the values of a line go.

#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>

#include "Row.h"

namespace rows {

// A member of a row. Each setter returns false, and leaves the member as it is, if the value is not
// of the member's type.
class Field {
  public:
    using Member = std::variant<std::string*, int64_t*, Text*, Whole*, Number*, Flag*,
                                std::optional<InText<int64_t>>*, std::optional<InText<uint64_t>>*>;

    Field(std::string name, const Member& member) : mName(std::move(name)), mMember(member) {}

    bool setNull();  // as if the field were not there
    bool set(bool value);
    bool set(int64_t value);
    bool set(double value);
    bool set(const std::string& value);

    const std::string& name() const { return mName; }
    // "must be a text", and so on.
    const char* wanted() const;
    bool isRequired() const;

    uint64_t lineSeen = 0;  // the last one that had it

  private:
    std::string mName;
    Member mMember;
};

// The fields of one kind of row, by name.
class FieldTable {
  public:
    FieldTable();

    template <typename Value>
    void add(const std::string& name, Value& value) {
        addMember(name, &value);
    }
    // Fields of any name that begins with "switch_".
    void addSwitches(std::map<std::string, std::string>& switches) { mSwitches = &switches; }

    void beginLine();
    // Null if there is none.
    Field* find(const std::string& name);
    // The value of `field` was there; `fits`: and was of its type.
    void note(Field& field, bool fits);
    // "FIELD: what is wrong" with the line so far; empty if nothing is.
    std::string error() const;

  private:
    void addMember(const std::string& name, const Field::Member& member);

    std::deque<Field> mFields;  // their addresses stay
    std::unordered_map<std::string_view, Field*> mByName;
    std::map<std::string, std::string>* mSwitches = nullptr;
    uint64_t mLine = 0;
    int64_t mVersion = 0;
    std::string mError;            // the first one
    std::optional<Field> mSwitch;  // the last one that was asked for
};

}  // namespace rows
