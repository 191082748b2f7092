#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "helpers/error_number.h"
#include "zephyr/runtime/popup_fields.h"
#include "zephyr/runtime/popup_items.h"
#include "zephyr/runtime/popup_levels.h"
#include "zephyr/runtime/popup_values.h"

namespace zephyr {
namespace {

using testing::ErrorNumberOf;

std::vector<std::string> KeysOf(const PopupItems& items) {
  std::vector<std::string> keys;
  for (const auto& item : items) keys.push_back(item->PopupKey());
  return keys;
}

TEST(PopupItemsTest, AddKeysByPopupKeyAndRefusesDuplicates) {
  PopupItems items;
  auto first = items.Add("  01");
  auto second = items.Add("  02");
  EXPECT_EQ(first->PopupKey(), "  01");
  EXPECT_EQ(first->Index(), 1);
  EXPECT_EQ(second->Index(), 2);
  EXPECT_EQ(ErrorNumberOf([&] { items.Add("  01"); }), 457);
  EXPECT_EQ(items.Count(), 2);
  EXPECT_EQ(KeysOf(items), (std::vector<std::string>{"  01", "  02"}));
}

TEST(PopupItemsTest, MissingPositionsAndKeysYieldNoItem) {
  PopupItems items;
  auto item = items.Add("  01");
  EXPECT_EQ(items.Item(1), item);
  EXPECT_EQ(items.Item("  01"), item);
  EXPECT_EQ(items.Item(0), nullptr);
  EXPECT_EQ(items.Item(2), nullptr);
  EXPECT_EQ(items.Item("  09"), nullptr);
  EXPECT_EQ(items.Item(Variant()), nullptr);
}

TEST(PopupItemsTest, RemoveAndClearKeepPositionsAndKeysConsistent) {
  PopupItems items;
  for (const char* key : {"  01", "  02", "  03", "  04"}) items.Add(key);
  items.Remove(2);
  items.Remove("  04");
  EXPECT_EQ(KeysOf(items), (std::vector<std::string>{"  01", "  03"}));
  EXPECT_EQ(items.Item(2)->PopupKey(), "  03");
  EXPECT_EQ(items.Item("  02"), nullptr);
  items.Add("  02");  // the key is free again
  EXPECT_EQ(ErrorNumberOf([&] { items.Remove(9); }), 9);
  EXPECT_EQ(ErrorNumberOf([&] { items.Remove("  77"); }), 5);
  items.Clear();
  EXPECT_EQ(items.Count(), 0);
  items.Add("  01");
}

TEST(OtherCollectionsTest, ItemErrorsReachTheCaller) {
  PopupFields fields;
  PopupLevels levels;
  PopupValues values;
  fields.Add("Popup Code", 4, 0, 0);
  levels.Add(Variant("Q"), 1);
  values.Add("v");
  EXPECT_EQ(ErrorNumberOf([&] { fields.Item(2); }), 9);
  EXPECT_EQ(ErrorNumberOf([&] { levels.Item("nokey"); }), 5);
  EXPECT_EQ(ErrorNumberOf([&] { values.Item(0); }), 9);
}

TEST(OtherCollectionsTest, FieldsNumberThemselvesAndKeepTheirArguments) {
  PopupFields fields;
  fields.Add("Popup Code", 4, 0, 0);
  auto name = fields.Add("Name", 20, 1, 5, "name");
  EXPECT_EQ(name->Index(), 2);
  EXPECT_EQ(name->FieldLength(), 20);
  EXPECT_EQ(name->InitialIndex(), 1);
  EXPECT_EQ(name->StartCharPos(), 5);
  EXPECT_EQ(fields.Item("name"), name);
  EXPECT_EQ(ErrorNumberOf([&] { fields.Add("Again", 1, 2, 3, "name"); }), 457);
  fields.Remove(1);
  EXPECT_EQ(fields.Item(1), name);
  EXPECT_EQ(name->Index(), 2);  // Index is where it was added, not where it is
}

TEST(OtherCollectionsTest, LevelsHoldTextOrObjectQuestions) {
  PopupLevels levels;
  auto text = levels.Add(Variant("Category"), 1, Variant(std::string()));
  EXPECT_EQ(text->Question().ToText(), "Category");
  EXPECT_EQ(text->IntialIndex(), 1);
  auto object = std::make_shared<Object>();
  auto held = levels.Add(Variant(object), 2);
  EXPECT_EQ(held->Question().AsObject(), object);
  EXPECT_EQ(ErrorNumberOf([&] { levels.Add(Variant("Q"), 40000); }), 6);
  EXPECT_EQ(levels.Count(), 2);
}

TEST(OtherCollectionsTest, IterationFollowsInsertionOrder) {
  PopupValues values;
  for (const char* v : {"a", "b", "c"}) values.Add(v);
  std::string seen;
  for (const auto& data : values) seen += data->Value();
  EXPECT_EQ(seen, "abc");
}

TEST(PopupItemTest, CollectionsAreCreatedOnFirstRead) {
  auto item = PopupItem::Create();
  EXPECT_FALSE(item->HasChildren());
  auto children = item->Children();
  ASSERT_NE(children, nullptr);
  EXPECT_EQ(children->Count(), 0);
  EXPECT_EQ(item->Children(), children);
  EXPECT_EQ(item->PopupValues()->Count(), 0);
  children->Add("0101");
  EXPECT_TRUE(item->HasChildren());
}

TEST(PopupItemTest, ParentsAreWeakSoADroppedTreeIsFreed) {
  std::weak_ptr<PopupItem> watch_parent, watch_child;
  {
    PopupItems top;
    auto parent = top.Add("  01");
    auto child = parent->Children()->Add("0101");
    child->Parent(parent);
    EXPECT_EQ(child->Parent(), parent);
    watch_parent = parent;
    watch_child = child;
  }
  EXPECT_TRUE(watch_parent.expired());
  EXPECT_TRUE(watch_child.expired());
}

TEST(PopupItemTest, IdentitiesFindLiveItemsOnly) {
  auto item = PopupItem::Create();
  auto other = PopupItem::Create();
  EXPECT_NE(item->Identity(), other->Identity());
  EXPECT_EQ(FindItemByIdentity(item->Identity()), item);
  int32_t stale = other->Identity();
  other.reset();
  EXPECT_EQ(FindItemByIdentity(stale), nullptr);
  EXPECT_EQ(FindItemByIdentity(0), nullptr);
  EXPECT_EQ(FindItemByIdentity(-5), nullptr);
}

TEST(PopupItemTest, TheRegistryTracksManyItemsFreedInAnyOrder) {
  std::vector<std::shared_ptr<PopupItem>> items;
  for (int i = 0; i < 5000; ++i) items.push_back(PopupItem::Create());
  std::vector<int32_t> identities;
  for (const auto& item : items) identities.push_back(item->Identity());
  std::mt19937 random(3);
  std::vector<size_t> order(items.size());
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), random);
  for (size_t i = 0; i < order.size() / 2; ++i) items[order[i]].reset();
  for (size_t i = 0; i < items.size(); ++i) {
    ASSERT_EQ(FindItemByIdentity(identities[i]), items[i]) << i;  // null once freed
  }
  auto newcomer = PopupItem::Create();
  for (int32_t identity : identities) EXPECT_NE(newcomer->Identity(), identity);
}

}  // namespace
}  // namespace zephyr
