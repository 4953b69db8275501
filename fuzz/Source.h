// Values drawn from bytes.

#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include "RecordModel.h"

namespace fuzz {

inline const std::string kSwitch = "snapshotInfoCollectEnable";
inline const std::string kNames[] = {"",
                                     "a",
                                     "a:b",
                                     "enabled ",
                                     std::string("enabled\0", 8),
                                     "%s%n\"\\",
                                     std::string("z\0z", 3),
                                     kSwitch};
inline const double kEdges[] = {NAN,    INFINITY, -INFINITY,     -0.0,  0.5,
                                0x1p-7, 1e-40,    -2147483649.5, 0x1p63};

// Draws values. Small numbers and known texts are as frequent as any others: they meet again.
class Source : public FuzzedDataProvider {
  public:
    using FuzzedDataProvider::FuzzedDataProvider;

    template <typename... Values>
    void draw(Values&... values) {
        (drawOne(values), ...);
    }

  private:
    void drawOne(bool& value) { value = ConsumeBool(); }
    template <typename Number>
    void drawOne(Number& number) {
        if (ConsumeBool()) {
            number = static_cast<Number>(ConsumeIntegralInRange(-2, 15));
        } else if (std::is_floating_point_v<Number> && ConsumeBool()) {
            number = static_cast<Number>(PickValueInArray(kEdges));
        } else {
            ConsumeData(&number, sizeof(number));
        }
    }
    void drawOne(std::string& text) {
        text = ConsumeBool()   ? ConsumeRandomLengthString(300)
               : ConsumeBool() ? PickValueInArray(kNames)
                               : kStages[ConsumeIntegralInRange<size_t>(0, 14)];
    }
    template <typename Element>
    void drawOne(std::vector<Element>& list) {
        list = std::vector<Element>(ConsumeIntegralInRange<size_t>(0, 5));
        for (Element& element : list) {
            draw(element);
        }
    }
    template <typename Key, typename Value>
    void drawOne(std::map<Key, Value>& map) {
        map.clear();
        for (int i = ConsumeIntegralInRange(0, 4); i > 0; --i) {
            Key key{};
            draw(key);
            draw(map[key]);
        }
    }
};

}  // namespace fuzz
