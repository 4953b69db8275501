#include "Tolerance.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace diff {
namespace {

TEST(Tolerance, AllowsTheLargerOfAPartOfAAndATime) {
    struct Case {
        std::vector<std::string> texts;
        int64_t a;
        int64_t b;
        bool isAllowed;
    };
    const Case cases[] = {
            {{"10%"}, 100'000, 110'000, true},
            {{"10%"}, 100'000, 110'001, false},
            {{"10%"}, 100'000, 90'000, true},
            {{"10%"}, 100'000, 89'999, false},
            {{"10%"}, 0, 1, false},
            {{"10%"}, -100'000, -110'000, true},
            {{"5ms"}, 1'000'000, 1'005'000, true},
            {{"5ms"}, 1'000'000, 1'005'001, false},
            {{"250us"}, 1000, 750, true},
            {{"250us"}, 1000, 749, false},
            {{"1.5s"}, 0, 1'500'000, true},
            {{"1.5s"}, 0, 1'500'001, false},
            {{"10%", "5ms"}, 10'000, 15'000, true},
            {{"10%", "5ms"}, 10'000, 15'001, false},
            {{"5ms", "10%"}, 100'000, 110'000, true},
            {{"5ms", "10%"}, 100'000, 110'001, false},
            {{"5ms", "1ms"}, 0, 1'001, false},
            {{"0%"}, 7, 7, true},
            {{"0ms"}, 7, 8, false},
            {{"0.5%"}, 1000, 1005, true},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(each.isAllowed, toleranceOf(each.texts).allows(each.a, each.b))
                << each.texts.front() << ' ' << each.a << ' ' << each.b;
    }
}

TEST(Tolerance, RefusesWhatIsNoNumberWithAUnit) {
    const std::string endless(400, '9');
    for (const std::string& text : std::vector<std::string>{
                 endless + "ms", "",      "x",     "5",    "%",       "ms",   "-5ms",
                 "5 ms",         "5msec", "nan%",  "inf%", "1e999ms", "5ms,", "+5ms",
                 "-0%",          " 5ms",  "0x5ms", ".ms",  "1.2.3ms", "1e3ms"}) {
        EXPECT_THROW(toleranceOf({"10%", text}), std::runtime_error) << text;
    }
}

}  // namespace
}  // namespace diff
