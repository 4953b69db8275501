// Floats against the C library's own texts.

#include "NumberText.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
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
    using Limits = std::numeric_limits<float>;
    for (const float value : {0.0F,
                              -0.0F,
                              1.5F,
                              1e-7F,
                              5e-7F,
                              0.0078125F,
                              -0.0234375F,
                              999999.9375F,
                              9.99999e11F,
                              1e12F,
                              1.000001e12F,
                              9.2e12F,
                              9.3e12F,
                              -1e13F,
                              Limits::max(),
                              -Limits::max(),
                              Limits::min(),
                              Limits::denorm_min(),
                              Limits::infinity(),
                              -Limits::infinity(),
                              Limits::quiet_NaN(),
                              -Limits::quiet_NaN()}) {
        expectAsPrinted(value);
    }
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
