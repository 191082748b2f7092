#include <gtest/gtest.h>

#include "helpers/error_number.h"
#include "item_access.h"
#include "zephyr/runtime/popup_items.h"

namespace zephyr {
namespace {

using testing::ErrorNumberOf;

// Keys longer than the 15 bytes an entry holds in place, in collections small
// enough to search and large enough to index, made room for or not.
TEST(PopupItemsTest, KeysAndPositionsStayConsistent) {
  for (auto [count, reserved] : {std::pair{5, false}, {40, false}, {40, true}}) {
    SCOPED_TRACE(count);
    PopupItems items;
    if (reserved) ItemAccess::Reserve(items, 100);
    std::vector<std::string> keys;
    for (int i = 0; i < count; ++i) keys.push_back(std::string(i % 20, ' ') + std::to_string(i));
    for (const auto& key : keys) items.Add(key);
    EXPECT_EQ(items.Count(), count);
    for (const auto& key : keys) ASSERT_EQ(items.Item(key)->PopupKey(), key);
    EXPECT_EQ(ErrorNumberOf([&] { items.Add(keys.back()); }), 457);
    EXPECT_EQ(items.Item(0), nullptr);  // missing positions and keys yield no item
    EXPECT_EQ(items.Item(count + 1), nullptr);
    EXPECT_EQ(items.Item("missing"), nullptr);
    EXPECT_EQ(items.Item(Variant()), nullptr);

    items.Remove(keys[0]);
    items.Remove(2);  // keys[2]
    EXPECT_EQ(items.Item(keys[0]), nullptr);
    EXPECT_EQ(items.Item(keys[2]), nullptr);
    for (size_t i = 3; i < keys.size(); ++i) ASSERT_EQ(items.Item(keys[i])->PopupKey(), keys[i]);
    EXPECT_EQ(items.Item(2)->PopupKey(), keys[3]);
    items.Add(keys[0]);  // the key is free again
    EXPECT_EQ(ErrorNumberOf([&] { items.Remove(count + 1); }), 9);
    EXPECT_EQ(ErrorNumberOf([&] { items.Remove("missing"); }), 5);
    items.Clear();
    EXPECT_EQ(items.Count(), 0);
    items.Add(keys[1]);  // and so are all keys after Clear
  }
}

}  // namespace
}  // namespace zephyr
