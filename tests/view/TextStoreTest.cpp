#include "TextStore.h"

#include <string>

#include <gtest/gtest.h>

namespace view {
namespace {

TEST(TextStore, KeepsTextsWhileOthersAreRead) {
    TextStore store;
    const std::string text("one\0two", 7);
    const TextStore::Slot first = store.add(text);
    const TextStore::Slot second = store.add("three");
    EXPECT_EQ(text, store.at(first));
    const TextStore::Slot third = store.add("");
    const TextStore::Slot fourth = store.add("four");
    EXPECT_EQ("three", store.at(second));
    EXPECT_EQ("", store.at(third));
    EXPECT_EQ("four", store.at(fourth));
    store.clear();
    EXPECT_EQ(0, store.add("five").begin);
}

}  // namespace
}  // namespace view
