#include "TraceEvents.h"

#include <stdio.h>  // getline, P_tmpdir

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include "JsonText.h"
#include "NewFile.h"

namespace view {
namespace {

[[noreturn]] void fail() {
    throw std::runtime_error(std::string("the folder for temporary files, ") + P_tmpdir +
                             ", cannot be used: " + std::strerror(errno));
}

// In a line: the clock, the time, a blank, the fields. Text behind it is left alone.
constexpr char kClocks[] = {'-', 's', 'n'};

struct Line {
    char clock;
    int64_t at;
    std::string_view fields;
};

Line parse(std::string_view line) {
    char* end = nullptr;
    const int64_t at = std::strtoll(line.data() + 1, &end, 10);
    const auto begin = static_cast<size_t>(end - line.data()) + 1;
    return {line[0], at, line.substr(begin)};
}

// A line of any length, without its end.
class Reader {
  public:
    explicit Reader(std::FILE* file) : mFile(file) {}
    ~Reader() { std::free(mLine); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    bool next(std::string_view& line) {
        const ssize_t length = getline(&mLine, &mSize, mFile);
        if (length <= 0) {
            return false;
        }
        line = std::string_view(mLine, static_cast<size_t>(length) - 1);
        return true;
    }

  private:
    std::FILE* mFile;
    char* mLine = nullptr;
    size_t mSize = 0;
};

}  // namespace

TraceEvents::TraceEvents() : mFile(std::tmpfile()) {
    if (mFile == nullptr) {
        fail();
    }
}

void TraceEvents::add(Clock clock, int64_t at, std::string_view fields) {
    int64_t unused = 0;
    int64_t& first = clock == Clock::kSession ? mFirst
                     : clock == Clock::kNodes ? mFirstOfNodes
                                              : unused;
    first = std::min(first, at);
    const std::string head = kClocks[static_cast<int>(clock)] + std::to_string(at) + ' ';
    std::fwrite(head.data(), 1, head.size(), mFile.get());
    std::fwrite(fields.data(), 1, fields.size(), mFile.get());
    std::fputc('\n', mFile.get());
    if (std::ferror(mFile.get()) != 0) {
        fail();
    }
}

void TraceEvents::writeTo(NewFile& file) {
    if (std::fflush(mFile.get()) != 0 || std::fseek(mFile.get(), 0, SEEK_SET) != 0) {
        fail();
    }
    Reader reader(mFile.get());
    std::string_view text;
    const char* separator = "\n";
    while (reader.next(text)) {
        const Line line = parse(text);
        file.write(separator);
        separator = ",\n";
        file.write("{");
        if (line.clock != kClocks[0]) {
            const int64_t first = line.clock == kClocks[1] ? mFirst : mFirstOfNodes;
            file.write("\"ts\":" + microseconds(line.at - first) + ",");
        }
        file.write(line.fields);
        file.write("}");
    }
    if (std::ferror(mFile.get()) != 0) {
        fail();
    }
}

}  // namespace view
