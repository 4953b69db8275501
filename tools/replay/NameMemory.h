// Remembers names that captures have had.

#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace replay {

// Names with the line that each one was remembered for. Forgets the oldest of more than 65,536, and
// takes two names of the same 64-bit hash for one.
class NameMemory {
  public:
    void add(std::string_view name, uint64_t line);
    std::optional<uint64_t> lineOf(std::string_view name) const;

  private:
    std::unordered_map<size_t, uint64_t> mLines;  // by the name's hash
    std::deque<size_t> mOrder;
};

// Guesses which name was meant by another one, of the last 512 that are not long.
class NearNames {
  public:
    void add(std::string_view name);
    // "; did you mean X?", or nothing.
    std::string didYouMean(std::string_view name) const;

  private:
    std::deque<std::string> mNames;
};

}  // namespace replay
