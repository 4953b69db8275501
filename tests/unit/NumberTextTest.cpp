// Floats against the C library's own texts. InfoCollectorTest.cpp has those at the edges.

#include "NumberText.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

namespace camInfosync {
namespace {

void expectAsPrinted(float value) {
    char text[64];
    std::snprintf(text, sizeof(text), "%f", static_cast<double>(value));
    ASSERT_EQ(NumberText(value).text(), text);
}

TEST(NumberText, FloatsAreAsPrintfHasThem) {
    std::mt19937 random(1);
    for (int i = 0; i < 100000; ++i) {
        const auto bits = static_cast<uint32_t>(random());
        float value = 0;
        std::memcpy(&value, &bits, sizeof(value));
        expectAsPrinted(value);
        expectAsPrinted(static_cast<float>(bits) / 4096);
    }
}

}  // namespace
}  // namespace camInfosync
