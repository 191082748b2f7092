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

TEST(PopupItemTest, ADeepBranchIsFreedWithoutExhaustingTheStack) {
  std::weak_ptr<PopupItem> deepest;
  {
    auto top = PopupItem::Create();
    auto item = top;
    for (int depth = 0; depth < 200000; ++depth) item = item->Children()->Add("01");
    deepest = item;
  }
  EXPECT_TRUE(deepest.expired());
}

// Neighbouring ids share a registry page. Freeing one item must leave its
// neighbours findable, also when they are all that is left on the page, and
// a freed item's id must find nothing, even once its page is made again.
TEST(PopupItemTest, IdentitiesFindLiveItemsOnlyWhateverIsFreedAround) {
  EXPECT_EQ(FindItemByIdentity(0), nullptr);
  EXPECT_EQ(FindItemByIdentity(-5), nullptr);
  // Ids burnt one at a time, so that no older live item shares a page with
  // the three below.
  for (int i = 0; i < 10000; ++i) PopupItem::Create();
  std::shared_ptr<PopupItem> items[] = {PopupItem::Create(), PopupItem::Create(),
                                        PopupItem::Create()};
  const int32_t ids[] = {items[0]->Identity(), items[1]->Identity(), items[2]->Identity()};
  for (int gone : {1, 0, 2}) {
    items[gone].reset();
    for (int i = 0; i < 3; ++i) ASSERT_EQ(FindItemByIdentity(ids[i]), items[i]) << gone << i;
  }
  auto newcomer = PopupItem::Create();
  EXPECT_EQ(FindItemByIdentity(newcomer->Identity()), newcomer);
  for (int32_t id : ids) {
    EXPECT_NE(newcomer->Identity(), id);  // ids are not reused
    EXPECT_EQ(FindItemByIdentity(id), nullptr);
  }
}

}  // namespace
}  // namespace zephyr
