// Keeps texts out of the memory.

#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace view {

// A temporary file of texts, which comes into being with the first one and has no name.
class TextStore {
  public:
    // Where a text lies.
    struct Slot {
        long begin;
        size_t size;
    };

    // Both throw std::runtime_error if the file cannot be written or read.
    Slot add(const std::string& text);
    std::string at(const Slot& slot) const;

    void clear() { mFile.reset(); }

  private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::unique_ptr<std::FILE, Closer> mFile;
};

}  // namespace view
