#include "zephyr/editor/data_grid_model.h"

#include <algorithm>
#include <utility>

#include "node_index.h"
#include "zephyr/editor/design_list_models.h"

namespace zephyr::editor {

namespace {

std::string OwnCode(const std::string& key) {
  return key.size() >= 2 ? key.substr(key.size() - 2) : key;
}

void Renumber(GridNode& node) {
  int row = 0;
  for (auto& child : node.children) child->row = row++;
}

}  // namespace

DataGridModel::DataGridModel(QObject* parent)
    : QAbstractItemModel(parent), nodes_(std::make_unique<NodeIndex>()) {}

DataGridModel::~DataGridModel() = default;

void DataGridModel::Load(std::shared_ptr<PopupClass> popup) {
  beginResetModel();
  popup_ = std::move(popup);
  headings_.clear();
  for (const auto& field : *popup_->PopupFields()) headings_.push_back(ToQString(field->Name()));
  nodes_->Clear();
  rekeyed_.clear();
  title_ = std::make_unique<GridNode>();
  AddItems(*title_, *popup_->PopupItems());
  endResetModel();
}

void DataGridModel::AddItems(GridNode& parent, PopupItems& items) {
  // Depth first with an explicit stack: a deep popup cannot exhaust the stack.
  using ItemIterator = decltype(std::declval<const PopupItems&>().begin());
  struct Frame {
    GridNode* node;
    PopupItems* items;
    ItemIterator next;
  };
  std::vector<Frame> stack{{&parent, &items, items.begin()}};
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next == frame.items->end()) {
      stack.pop_back();
      continue;
    }
    const auto& item = *frame.next;
    ++frame.next;
    auto node = std::make_unique<GridNode>();
    node->identity = item->Identity();
    node->parent = frame.node;
    node->row = static_cast<int>(frame.node->children.size());
    GridNode* added = node.get();
    nodes_->Insert(added->identity, added);
    frame.node->children.push_back(std::move(node));
    if (item->HasChildren()) {
      PopupItems* children = item->Children().get();
      stack.push_back({added, children, children->begin()});
    }
  }
}

void DataGridModel::SortTree() {
  if (!title_) return;
  emit layoutAboutToBeChanged();
  QModelIndexList before = persistentIndexList();
  std::vector<std::pair<GridNode*, int>> remembered;
  remembered.reserve(static_cast<size_t>(before.size()));
  for (const QModelIndex& index : before) remembered.emplace_back(NodeOf(index), index.column());
  std::vector<GridNode*> pending{title_.get()};
  while (!pending.empty()) {
    GridNode* node = pending.back();
    pending.pop_back();
    SortNode(*node);
    for (auto& child : node->children) {
      if (!child->children.empty()) pending.push_back(child.get());
    }
  }
  QModelIndexList after;
  after.reserve(before.size());
  for (const auto& [node, column] : remembered) {
    after.push_back(node ? createIndex(node->row, column, node->identity) : QModelIndex());
  }
  changePersistentIndexList(before, after);
  emit layoutChanged();
}

void DataGridModel::SortChildren(const QModelIndex& parent) {
  GridNode* node = NodeOf(parent);
  if (!node) return;
  emit layoutAboutToBeChanged({parent});
  QModelIndexList before = persistentIndexList();
  std::vector<std::pair<GridNode*, int>> remembered;
  for (const QModelIndex& index : before) remembered.emplace_back(NodeOf(index), index.column());
  SortNode(*node);
  QModelIndexList after;
  for (const auto& [remembered_node, column] : remembered) {
    after.push_back(remembered_node
                        ? createIndex(remembered_node->row, column, remembered_node->identity)
                        : QModelIndex());
  }
  changePersistentIndexList(before, after);
  emit layoutChanged({parent});
}

void DataGridModel::SortNode(GridNode& node) {
  if (node.children.size() < 2) return;
  std::vector<std::pair<std::string, std::unique_ptr<GridNode>>> keyed;
  keyed.reserve(node.children.size());
  for (auto& child : node.children) {
    auto item = FindItemByIdentity(child->identity);
    keyed.emplace_back(item ? OwnCode(item->PopupKey()) : std::string(), std::move(child));
  }
  // Stable: rows with equal codes keep their order.
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (size_t i = 0; i < keyed.size(); ++i) node.children[i] = std::move(keyed[i].second);
  Renumber(node);
}

QModelIndex DataGridModel::AppendRow(const QModelIndex& parent, int32_t identity) {
  GridNode* node = NodeOf(parent);
  if (!node || identity == 0) return {};
  QModelIndex parent_cell = createIndex(node->row, 0, static_cast<quintptr>(node->identity));
  int row = static_cast<int>(node->children.size());
  beginInsertRows(parent_cell, row, row);
  auto child = std::make_unique<GridNode>();
  child->identity = identity;
  child->parent = node;
  child->row = row;
  nodes_->Insert(identity, child.get());
  node->children.push_back(std::move(child));
  endInsertRows();
  return createIndex(row, 0, static_cast<quintptr>(identity));
}

QModelIndex DataGridModel::InsertRowInOrder(const QModelIndex& parent, int32_t identity) {
  GridNode* node = NodeOf(parent);
  auto item = FindItemByIdentity(identity);
  if (!node || !item) return {};
  std::string code = OwnCode(item->PopupKey());
  // After every sibling whose code is not greater, as a stable sort puts it.
  auto place =
      std::upper_bound(node->children.begin(), node->children.end(), code,
                       [](const std::string& wanted, const std::unique_ptr<GridNode>& child) {
                         auto sibling = FindItemByIdentity(child->identity);
                         return wanted < (sibling ? OwnCode(sibling->PopupKey()) : std::string());
                       });
  int row = static_cast<int>(place - node->children.begin());
  QModelIndex parent_cell = createIndex(node->row, 0, static_cast<quintptr>(node->identity));
  beginInsertRows(parent_cell, row, row);
  auto child = std::make_unique<GridNode>();
  child->identity = identity;
  child->parent = node;
  nodes_->Insert(identity, child.get());
  node->children.insert(node->children.begin() + row, std::move(child));
  Renumber(*node);
  endInsertRows();
  return createIndex(row, 0, static_cast<quintptr>(identity));
}

void DataGridModel::AppendBranch(const QModelIndex& row, PopupItem& item) {
  if (!item.HasChildren()) return;
  for (const auto& child : *item.Children()) {
    QModelIndex added = AppendRow(row, child->Identity());
    AppendBranch(added, *child);
  }
}

bool DataGridModel::SetValue(const QModelIndex& index, const std::string& text) {
  auto item = ItemAt(index);
  if (!item || index.column() < 1) return false;
  auto values = item->PopupValues();
  // An item loaded from a narrower table may lack the later values.
  while (values->Count() < index.column()) values->Add(std::string());
  values->Item(Variant(index.column()))->Value(text);
  emit dataChanged(index, index);
  return true;
}

void DataGridModel::KeyChanged(const QModelIndex& index) {
  GridNode* node = NodeOf(index);
  if (!node || node->identity == 0) return;
  rekeyed_.insert(node->identity);
  QModelIndex first = createIndex(node->row, 0, static_cast<quintptr>(node->identity));
  emit dataChanged(first, first);
}

std::vector<std::pair<QModelIndex, bool>> DataGridModel::RowVisibility(const QString& text) const {
  std::vector<std::pair<QModelIndex, bool>> rows;
  if (!title_) return rows;
  rows.reserve(nodes_->Size());
  // Post-order: a row is visible when it matches or any child is visible.
  struct Frame {
    const GridNode* node;
    size_t next;
    bool any_visible;
  };
  std::vector<Frame> stack{{title_.get(), 0, false}};
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next < frame.node->children.size()) {
      stack.push_back({frame.node->children[frame.next++].get(), 0, false});
      continue;
    }
    const GridNode* node = frame.node;
    bool visible = frame.any_visible || text.isEmpty() || Matches(*node, text);
    stack.pop_back();
    if (stack.empty()) break;  // the title row is always shown
    stack.back().any_visible = stack.back().any_visible || visible;
    rows.emplace_back(createIndex(node->row, 0, static_cast<quintptr>(node->identity)), visible);
  }
  return rows;
}

bool DataGridModel::Matches(const GridNode& node, const QString& text) const {
  auto item = FindItemByIdentity(node.identity);
  if (!item) return false;
  if (ToQString(item->PopupKey()).contains(text, Qt::CaseInsensitive)) return true;
  for (const auto& value : *item->PopupValues()) {
    if (ToQString(value->Value()).contains(text, Qt::CaseInsensitive)) return true;
  }
  return false;
}

void DataGridModel::RemoveRow(const QModelIndex& index) {
  GridNode* node = NodeOf(index);
  if (!node || !node->parent) return;
  GridNode* parent = node->parent;
  int row = node->row;
  beginRemoveRows(this->parent(index), row, row);
  Forget(*node);
  parent->children.erase(parent->children.begin() + row);
  Renumber(*parent);
  endRemoveRows();
}

void DataGridModel::Forget(const GridNode& node) {
  std::vector<const GridNode*> pending{&node};
  while (!pending.empty()) {
    const GridNode* current = pending.back();
    pending.pop_back();
    nodes_->Erase(current->identity);
    rekeyed_.erase(current->identity);
    for (const auto& child : current->children) pending.push_back(child.get());
  }
}

std::vector<QModelIndex> DataGridModel::ParentRows() const {
  std::vector<QModelIndex> rows;
  if (!title_) return rows;
  std::vector<const GridNode*> pending{title_.get()};
  while (!pending.empty()) {
    const GridNode* node = pending.back();
    pending.pop_back();
    if (node->children.empty()) continue;
    rows.push_back(createIndex(node->row, 0, static_cast<quintptr>(node->identity)));
    for (const auto& child : node->children) pending.push_back(child.get());
  }
  return rows;
}

QModelIndex DataGridModel::TitleIndex() const {
  return title_ ? createIndex(0, 0, kTitleId) : QModelIndex();
}

QModelIndex DataGridModel::IndexOfIdentity(int32_t identity) const {
  GridNode* node = nodes_->Find(identity);
  if (!node || identity == 0) return {};
  return createIndex(node->row, 0, static_cast<quintptr>(identity));
}

std::shared_ptr<PopupItem> DataGridModel::ItemAt(const QModelIndex& index) const {
  GridNode* node = NodeOf(index);
  if (!node || node->identity == 0) return nullptr;
  return FindItemByIdentity(node->identity);
}

std::vector<int32_t> DataGridModel::IdentitiesInGridOrder() const {
  std::vector<int32_t> identities;
  if (!title_) return identities;
  identities.reserve(nodes_->Size());
  std::vector<const GridNode*> pending;
  for (auto it = title_->children.rbegin(); it != title_->children.rend(); ++it) {
    pending.push_back(it->get());
  }
  while (!pending.empty()) {
    const GridNode* node = pending.back();
    pending.pop_back();
    identities.push_back(node->identity);
    for (auto it = node->children.rbegin(); it != node->children.rend(); ++it) {
      pending.push_back(it->get());
    }
  }
  return identities;
}

GridNode* DataGridModel::NodeOfId(quintptr id) const {
  if (!title_) return nullptr;
  if (id == kTitleId) return title_.get();
  return nodes_->Find(static_cast<int32_t>(id));
}

GridNode* DataGridModel::NodeOf(const QModelIndex& index) const {
  if (!index.isValid() || index.model() != this) return nullptr;
  return NodeOfId(index.internalId());
}

int DataGridModel::rowCount(const QModelIndex& parent) const {
  if (!title_) return 0;
  if (!parent.isValid()) return 1;
  if (parent.column() != 0) return 0;
  GridNode* node = NodeOf(parent);
  return node ? static_cast<int>(node->children.size()) : 0;
}

int DataGridModel::columnCount(const QModelIndex&) const {
  return std::max<int>(static_cast<int>(headings_.size()), 1);
}

QModelIndex DataGridModel::index(int row, int column, const QModelIndex& parent) const {
  if (!title_ || column < 0 || column >= columnCount()) return {};
  if (!parent.isValid()) return row == 0 ? createIndex(0, column, kTitleId) : QModelIndex();
  GridNode* node = NodeOf(parent);
  if (!node || row < 0 || row >= static_cast<int>(node->children.size())) return {};
  const GridNode& child = *node->children[static_cast<size_t>(row)];
  return createIndex(row, column, static_cast<quintptr>(child.identity));
}

QModelIndex DataGridModel::parent(const QModelIndex& index) const {
  GridNode* node = NodeOf(index);
  if (!node || !node->parent) return {};
  GridNode* parent = node->parent;
  return createIndex(parent->row, 0, static_cast<quintptr>(parent->identity));
}

QVariant DataGridModel::data(const QModelIndex& index, int role) const {
  GridNode* node = NodeOf(index);
  if (!node) return {};
  if (role == Qt::UserRole) {
    return index.column() == 0 ? QVariant(node->identity) : QVariant();
  }
  if (role == kKeyChangedRole) {
    return index.column() == 0 && rekeyed_.count(node->identity) != 0;
  }
  if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
  if (node->identity == 0) {
    return index.column() == 0 ? ToQString(popup_->Title()) : QVariant();
  }
  auto item = FindItemByIdentity(node->identity);
  if (!item) return {};
  if (index.column() == 0) return ToQString(OwnCode(item->PopupKey()));
  auto values = item->PopupValues();
  if (index.column() > values->Count()) return {};
  return ToQString(values->Item(Variant(index.column()))->Value());
}

QVariant DataGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  if (section < 0 || section >= static_cast<int>(headings_.size())) return {};
  return headings_[static_cast<size_t>(section)];
}

Qt::ItemFlags DataGridModel::flags(const QModelIndex& index) const {
  GridNode* node = NodeOf(index);
  if (!node) return Qt::NoItemFlags;
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  // The title row is never edited here.
  return node->identity == 0 ? flags : flags | Qt::ItemIsEditable;
}

}  // namespace zephyr::editor
