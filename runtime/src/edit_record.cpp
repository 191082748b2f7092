#include "zephyr/runtime/edit_record.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "item_access.h"

namespace zephyr {
namespace {

enum Operation : char {
  kValue = 'V',
  kCode = 'C',
  kRemoved = 'R',
  kInserted = 'I',
  kWhole = 'W',
};

class Writer {
 public:
  explicit Writer(std::string& out) : out_(out) {}
  void Number(uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) out_ += static_cast<char>((value >> shift) & 0xFF);
  }
  void Text(std::string_view text) {
    Number(static_cast<uint32_t>(text.size()));
    out_ += text;
  }
  void Key(const CollectionKey& key) {
    out_ += key.HasKey() ? '1' : '0';
    Text(key.Text());
  }

 private:
  std::string& out_;
};

[[noreturn]] void Fail(const std::string& why) {
  throw RuntimeError(RuntimeErrorCode::kInvalidFileFormat, "edit record: " + why);
}

class Reader {
 public:
  explicit Reader(std::string_view in) : in_(in) {}
  bool AtEnd() const { return at_ == in_.size(); }
  char Byte() {
    Need(1);
    return in_[at_++];
  }
  uint32_t Number() {
    Need(4);
    uint32_t value = 0;
    for (int shift = 0; shift < 32; shift += 8) {
      value |= static_cast<uint32_t>(static_cast<unsigned char>(in_[at_++])) << shift;
    }
    return value;
  }
  int16_t Short() { return static_cast<int16_t>(Number()); }
  std::string Text() {
    uint32_t size = Number();
    Need(size);
    std::string text(in_.substr(at_, size));
    at_ += size;
    return text;
  }
  CollectionKey Key() {
    bool has_key = Byte() == '1';
    std::string text = Text();
    return has_key ? CollectionKey(text) : CollectionKey();
  }

 private:
  void Need(size_t count) const {
    if (in_.size() - at_ < count) Fail("the record is cut off");
  }

  std::string_view in_;
  size_t at_ = 0;
};

int32_t PositionIn(const PopupItems& siblings, const PopupItem& item) {
  int32_t position = 1;
  for (const auto& sibling : siblings) {
    if (sibling.get() == &item) return position;
    ++position;
  }
  return 0;
}

// The positions from the top level down to the item.
std::vector<uint32_t> PlaceOf(PopupClass& popup, const PopupItem& item) {
  std::vector<uint32_t> place;
  std::shared_ptr<const PopupItem> at = item.shared_from_this();
  while (at) {
    auto siblings = popup.SiblingsOf(*at);
    place.insert(place.begin(), static_cast<uint32_t>(siblings ? PositionIn(*siblings, *at) : 0));
    at = at->Level() == 1 ? nullptr : at->Parent();
  }
  return place;
}

void WritePlace(Writer& out, const std::vector<uint32_t>& place) {
  out.Number(static_cast<uint32_t>(place.size()));
  for (uint32_t position : place) out.Number(position);
}

std::vector<uint32_t> ReadPlace(Reader& in) {
  std::vector<uint32_t> place(in.Number());
  for (auto& position : place) position = in.Number();
  return place;
}

// The item at `place`; null for no place (the top level itself).
std::shared_ptr<PopupItem> ItemAt(PopupClass& popup, const std::vector<uint32_t>& place) {
  std::shared_ptr<PopupItem> item;
  for (uint32_t position : place) {
    auto siblings = item ? item->Children() : popup.PopupItems();
    if (position < 1 || position > static_cast<uint32_t>(siblings->Count())) {
      Fail("no item at position " + std::to_string(position));
    }
    item = siblings->Item(Variant(static_cast<int32_t>(position)));
  }
  return item;
}

void WriteBranch(Writer& out, PopupItem& item, const CollectionKey& key) {
  out.Key(key);
  out.Number(static_cast<uint32_t>(item.Level()));
  out.Text(item.PopupKey());
  out.Text(ItemAccess::LoadedKey(item));
  auto values = item.PopupValues();
  out.Number(static_cast<uint32_t>(values->Count()));
  for (const auto& value : *values) out.Text(value->Value());
  if (!item.HasChildren()) {
    out.Number(0);
    return;
  }
  auto children = item.Children();
  out.Number(static_cast<uint32_t>(children->Count()));
  for (int32_t position = 1; position <= children->Count(); ++position) {
    WriteBranch(out, *children->Item(Variant(position)), ItemAccess::KeyAt(*children, position));
  }
}

std::shared_ptr<PopupItem> ReadBranch(Reader& in, CollectionKey& key) {
  key = in.Key();
  auto item = PopupItem::Create();
  ItemAccess::SetLevel(*item, in.Short());
  item->PopupKey(in.Text());
  ItemAccess::SetLoadedKey(*item, in.Text());
  auto values = item->PopupValues();
  for (uint32_t count = in.Number(); count > 0; --count) values->Add(in.Text());
  uint32_t children = in.Number();
  if (children > 0) {
    auto list = item->Children();
    for (; children > 0; --children) {
      CollectionKey child_key;
      auto child = ReadBranch(in, child_key);
      child->Parent(item);
      ItemAccess::Append(*list, child, child_key);
    }
  }
  return item;
}

void ReplayWhole(PopupClass& popup, Reader& in) {
  popup.Title(in.Text());
  std::vector<PopupClass::LevelSpec> levels(in.Number());
  for (auto& level : levels) {
    level.question = Variant(in.Text());
    level.initial_index = in.Short();
  }
  popup.ReplaceLevels(levels);
  std::vector<PopupClass::FieldSpec> fields(in.Number());
  for (auto& field : fields) {
    field.name = in.Text();
    field.length = in.Short();
    field.start_char_pos = in.Short();
    field.initial_index = in.Short();
  }
  popup.ReplaceFields(fields);
  auto items = popup.PopupItems();
  items->Clear();
  for (uint32_t count = in.Number(); count > 0; --count) {
    CollectionKey key;
    auto item = ReadBranch(in, key);
    ItemAccess::Append(*items, item, key);
  }
}

}  // namespace

void EditRecord::Value(PopupClass& popup, PopupItem& item, int32_t position) {
  Writer out(bytes_);
  bytes_ += kValue;
  WritePlace(out, PlaceOf(popup, item));
  out.Number(static_cast<uint32_t>(position));
  auto values = item.PopupValues();
  out.Text(position <= values->Count() ? values->Item(Variant(position))->Value() : "");
}

void EditRecord::Code(PopupClass& popup, const PopupItem& item) {
  Writer out(bytes_);
  bytes_ += kCode;
  WritePlace(out, PlaceOf(popup, item));
  const std::string& key = item.PopupKey();
  out.Text(key.size() >= 2 ? key.substr(key.size() - 2) : key);
}

void EditRecord::Removed(PopupClass& popup, const PopupClass::DetachedItem& detached) {
  Writer out(bytes_);
  bytes_ += kRemoved;
  std::vector<uint32_t> place = detached.parent ? PlaceOf(popup, *detached.parent)
                                                : std::vector<uint32_t>{};
  place.push_back(static_cast<uint32_t>(detached.position));
  WritePlace(out, place);
}

void EditRecord::Inserted(PopupClass& popup, const std::shared_ptr<PopupItem>& item) {
  Writer out(bytes_);
  bytes_ += kInserted;
  std::vector<uint32_t> place = PlaceOf(popup, *item);
  WritePlace(out, place);
  auto siblings = popup.SiblingsOf(*item);
  WriteBranch(out, *item, ItemAccess::KeyAt(*siblings, static_cast<int32_t>(place.back())));
}

void EditRecord::Whole(PopupClass& popup) {
  Writer out(bytes_);
  bytes_ += kWhole;
  out.Text(popup.Title());
  out.Number(static_cast<uint32_t>(popup.PopupLevels()->Count()));
  for (const auto& level : *popup.PopupLevels()) {
    out.Text(level->Question().ToText());
    out.Number(static_cast<uint32_t>(level->IntialIndex()));
  }
  auto fields = popup.PopupFields();
  out.Number(static_cast<uint32_t>(std::max(fields->Count() - 1, 0)));
  bool key_field = true;
  for (const auto& field : *fields) {
    if (std::exchange(key_field, false)) continue;  // ReplaceFields makes it anew
    out.Text(field->Name());
    out.Number(static_cast<uint32_t>(field->FieldLength()));
    out.Number(static_cast<uint32_t>(field->StartCharPos()));
    out.Number(static_cast<uint32_t>(field->InitialIndex()));
  }
  auto items = popup.PopupItems();
  out.Number(static_cast<uint32_t>(items->Count()));
  for (int32_t position = 1; position <= items->Count(); ++position) {
    WriteBranch(out, *items->Item(Variant(position)), ItemAccess::KeyAt(*items, position));
  }
}

void ReplayEdits(PopupClass& popup, std::string_view bytes) {
  Reader in(bytes);
  while (!in.AtEnd()) {
    char operation = in.Byte();
    switch (operation) {
      case kValue: {
        auto item = ItemAt(popup, ReadPlace(in));
        auto position = static_cast<int32_t>(in.Number());
        std::string text = in.Text();
        if (!item || position < 1) Fail("a value of no item");
        auto values = item->PopupValues();
        while (values->Count() < position) values->Add(std::string());
        values->Item(Variant(position))->Value(std::move(text));
        break;
      }
      case kCode: {
        auto item = ItemAt(popup, ReadPlace(in));
        std::string code = in.Text();
        if (!item) Fail("a code of no item");
        popup.ModifyKey(code, item, item->Level());
        break;
      }
      case kRemoved: {
        auto item = ItemAt(popup, ReadPlace(in));
        if (!item || !popup.RemoveItem(item)) Fail("no item to remove");
        break;
      }
      case kInserted: {
        std::vector<uint32_t> place = ReadPlace(in);
        if (place.empty()) Fail("an insert without a place");
        auto position = static_cast<int32_t>(place.back());
        place.pop_back();
        auto parent = ItemAt(popup, place);
        CollectionKey key;
        auto item = ReadBranch(in, key);
        auto siblings = parent ? parent->Children() : popup.PopupItems();
        if (position < 1 || position > siblings->Count() + 1) Fail("no such place");
        popup.ReattachItem({item, parent, position, key});
        break;
      }
      case kWhole:
        ReplayWhole(popup, in);
        break;
      default:
        Fail("an unknown edit");
    }
  }
}

}  // namespace zephyr
