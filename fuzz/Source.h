// Values drawn from bytes.

#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include "RecordModel.h"

namespace fuzz {

inline const std::string kSwitch = "snapshotInfoCollectEnable";
inline const std::string kNames[] = {
        "", "a", "a:b:c", "%s%n\"\\", std::string("z\0z", 3), std::string(1, 0)};
inline const double kEdges[] = {NAN,    INFINITY, -INFINITY,     -0.0,
                                0x1p-7, 1e-40,    -2147483649.5, 0x1p63};

// Draws values. Small numbers and known texts are more frequent than others: they meet again.
class Source : public FuzzedDataProvider {
  public:
    using FuzzedDataProvider::FuzzedDataProvider;

    // A number below `count`. Mutated bytes repeat a lot, and still select this and that.
    size_t pick(size_t count) {
        return (ConsumeIntegral<uint8_t>() + (++mPicks * 2654435761U >> 24)) % count;
    }
    int range(int least, int most) { return least + static_cast<int>(pick(most - least + 1)); }
    bool coin() { return pick(2) == 0; }
    template <typename Array>
    auto any(const Array& values) {
        return values[pick(std::size(values))];
    }

    template <typename... Values>
    void draw(Values&... values) {
        (drawOne(values), ...);
    }

  private:
    void drawOne(bool& value) { value = coin(); }
    template <typename Number>
    void drawOne(Number& number) {
        const size_t kind = pick(4);
        if (kind == 0) {
            ConsumeData(&number, sizeof(number));
        } else if (kind == 1 && std::is_floating_point_v<Number>) {
            number = static_cast<Number>(any(kEdges));
        } else {
            number = static_cast<Number>(range(-2, 15));
        }
    }
    void drawOne(std::string& text) {
        const size_t most = pick(16) == 0 ? 300 : 8;
        text = coin()   ? ConsumeBytesAsString(ConsumeIntegralInRange<size_t>(0, most))
               : coin() ? any(kNames)
                        : any(TimeStageToChar);
    }
    template <typename Element>
    void drawOne(std::vector<Element>& list) {
        list = std::vector<Element>(pick(6));
        for (Element& element : list) {
            draw(element);
        }
    }
    template <typename Key, typename Value>
    void drawOne(std::map<Key, Value>& map) {
        map.clear();
        for (size_t i = pick(5); i > 0; --i) {
            Key key{};
            draw(key);
            draw(map[key]);
        }
    }

    uint32_t mPicks = 0;
};

}  // namespace fuzz
