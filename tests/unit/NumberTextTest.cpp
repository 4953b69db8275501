// Numbers against the C library's own texts.

#include "NumberText.h"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace camInfosync {
namespace {

std::string textOf(float value) {
    return std::string(NumberText(value).text());
}

std::string printed(float value) {
    char text[64];
    std::snprintf(text, sizeof(text), "%f", static_cast<double>(value));
    return text;
}

TEST(NumberText, FloatsAreAsPrintfHasThem) {
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
                              1e13F,
                              -1e13F,
                              FLT_MAX,
                              -FLT_MAX,
                              FLT_MIN,
                              -FLT_MIN,
                              std::nanf(""),
                              std::numeric_limits<float>::denorm_min(),
                              std::numeric_limits<float>::infinity(),
                              -std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(textOf(value), printed(value));
    }
    std::mt19937 random(1);
    for (int i = 0; i < 100000; ++i) {
        const auto bits = static_cast<uint32_t>(random());
        float value = 0;
        std::memcpy(&value, &bits, sizeof(value));
        ASSERT_EQ(textOf(value), printed(value)) << bits;
        ASSERT_EQ(textOf(static_cast<float>(bits) / 4096),
                  printed(static_cast<float>(bits) / 4096));
    }
}

}  // namespace
}  // namespace camInfosync
