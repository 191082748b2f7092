#include "data_grid_model.h"

#include <QMimeData>
#include <algorithm>
#include <functional>
#include <utility>

#include "design_list_models.h"
#include "node_index.h"
#include "zephyr/runtime/popup_key.h"

namespace zephyr::editor {

namespace {

const std::vector<GridNode*>& ChildrenOf(const GridNode& node) {
  static const std::vector<GridNode*> kNone;
  return node.children ? *node.children : kNone;
}

// Leaves, most of the rows, carry no list of their own.
std::vector<GridNode*>& MutableChildren(GridNode& node) {
  if (!node.children) node.children = std::make_unique<std::vector<GridNode*>>();
  return *node.children;
}

void Renumber(GridNode& node) {
  int row = 0;
  for (GridNode* child : ChildrenOf(node)) child->row = row++;
}

}  // namespace

DataGridModel::DataGridModel(QObject* parent)
    : QAbstractItemModel(parent), nodes_(std::make_unique<NodeIndex>()) {}

DataGridModel::~DataGridModel() = default;

void DataGridModel::Load(std::shared_ptr<PopupClass> popup) {
  beginResetModel();
  Reset(std::move(popup));
  all_unsorted_ = true;
  title_ = NewNode(0, nullptr);
  AddItems(*title_, *popup_->PopupItems());
  endResetModel();
}

void DataGridModel::LoadLayout(std::shared_ptr<PopupClass> popup, const BranchLayout& layout) {
  beginResetModel();
  Reset(std::move(popup));
  std::vector<GridNode*> path;
  for (const BranchLayout::Row& laid : layout.rows) {
    path.resize(static_cast<size_t>(laid.depth));
    GridNode* added = NewLaidNode(laid, path.empty() ? nullptr : path.back());
    if (path.empty()) {
      title_ = added;
    } else {
      AppendChild(*path.back(), added);
    }
    path.push_back(added);
  }
  endResetModel();
}

void DataGridModel::Reset(std::shared_ptr<PopupClass> popup) {
  popup_ = std::move(popup);
  title_text_ = ToQString(popup_->Title());
  headings_.clear();
  for (const auto& field : *popup_->PopupFields()) headings_.push_back(ToQString(field->Name()));
  nodes_->Clear();
  rekeyed_.clear();
  unsorted_.clear();
  all_unsorted_ = false;
  pool_.clear();
  free_.clear();
  title_ = nullptr;
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
    GridNode* added = NewNode(item->Identity(), frame.node);
    AppendChild(*frame.node, added);
    if (item->HasChildren()) {
      PopupItems* children = item->Children().get();
      stack.push_back({added, children, children->begin()});
    }
  }
}

SortRecord DataGridModel::SortTree() {
  SortRecord record;
  if (!title_ || (!all_unsorted_ && unsorted_.empty())) return record;
  emit layoutAboutToBeChanged();
  auto sort = [this, &record](GridNode& node) { SortNode(node, record); };
  KeepingPersistentIndexes([this, &sort]() {
    if (!all_unsorted_) {
      // Every other node is in order already, and sorting it would keep it so.
      for (int32_t identity : unsorted_) sort(*NodeOfId(static_cast<quintptr>(identity)));
      return;
    }
    std::vector<GridNode*> pending{title_};
    while (!pending.empty()) {
      GridNode* node = pending.back();
      pending.pop_back();
      sort(*node);
      for (GridNode* child : ChildrenOf(*node)) {
        if (!ChildrenOf(*child).empty()) pending.push_back(child);
      }
    }
  });
  unsorted_.clear();
  all_unsorted_ = false;
  emit layoutChanged();
  return record;
}

void DataGridModel::RestoreOrder(const SortRecord& record) {
  if (record.nodes.empty()) return;
  emit layoutAboutToBeChanged();
  KeepingPersistentIndexes([this, &record]() {
    for (const SortRecord::Node& recorded : record.nodes) {
      GridNode* node = NodeOfId(static_cast<quintptr>(recorded.identity));
      if (!node || ChildrenOf(*node).size() != recorded.children.size()) continue;
      std::vector<GridNode*>& children = *node->children;
      for (size_t i = 0; i < children.size(); ++i) {
        children[i] = nodes_->Find(recorded.children[i]);
      }
      Renumber(*node);
      unsorted_.insert(recorded.identity);
    }
  });
  emit layoutChanged();
}

SortRecord DataGridModel::SortChildren(const QModelIndex& parent) {
  SortRecord record;
  GridNode* node = NodeOf(parent);
  if (!node) return record;
  unsorted_.erase(node->identity);
  emit layoutAboutToBeChanged({parent});
  KeepingPersistentIndexes([this, node, &record]() { SortNode(*node, record); });
  emit layoutChanged({parent});
  return record;
}

void DataGridModel::KeepingPersistentIndexes(const std::function<void()>& reorder) {
  QModelIndexList before = persistentIndexList();
  std::vector<std::pair<GridNode*, int>> remembered;
  remembered.reserve(static_cast<size_t>(before.size()));
  for (const QModelIndex& index : before) remembered.emplace_back(NodeOf(index), index.column());
  reorder();
  QModelIndexList after;
  after.reserve(before.size());
  for (const auto& [node, column] : remembered) {
    after.push_back(node ? createIndex(node->row, column, static_cast<quintptr>(node->identity))
                         : QModelIndex());
  }
  changePersistentIndexList(before, after);
}

void DataGridModel::SortNode(GridNode& node, SortRecord& record) {
  if (ChildrenOf(node).size() < 2) return;
  std::vector<int32_t> before;
  for (const GridNode* child : ChildrenOf(node)) before.push_back(child->identity);
  std::vector<GridNode*>& children = *node.children;
  std::vector<std::pair<std::string, GridNode*>> keyed;
  keyed.reserve(children.size());
  for (GridNode* child : children) {
    auto item = FindItemByIdentity(child->identity);
    keyed.emplace_back(item ? OwnCode(item->PopupKey()) : std::string(), child);
  }
  // Stable: rows with equal codes keep their order.
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (size_t i = 0; i < keyed.size(); ++i) children[i] = keyed[i].second;
  Renumber(node);
  for (size_t i = 0; i < before.size(); ++i) {
    if (children[i]->identity != before[i]) {
      record.nodes.push_back({node.identity, std::move(before)});
      return;
    }
  }
}

GridNode* DataGridModel::NewNode(int32_t identity, GridNode* parent) {
  GridNode* node;
  if (free_.empty()) {
    node = &pool_.emplace_back();
  } else {
    node = free_.back();
    free_.pop_back();
  }
  node->identity = identity;
  node->parent = parent;
  node->row = 0;
  node->children.reset();
  if (identity != 0) nodes_->Insert(identity, node);
  return node;
}

QModelIndex DataGridModel::AppendRow(const QModelIndex& parent, int32_t identity) {
  GridNode* node = NodeOf(parent);
  if (!node || identity == 0) return {};
  QModelIndex parent_cell = createIndex(node->row, 0, static_cast<quintptr>(node->identity));
  int row = static_cast<int>(ChildrenOf(*node).size());
  beginInsertRows(parent_cell, row, row);
  AppendChild(*node, NewNode(identity, node));
  unsorted_.insert(node->identity);
  endInsertRows();
  return createIndex(row, 0, static_cast<quintptr>(identity));
}

QModelIndex DataGridModel::InsertRowInOrder(const QModelIndex& parent, int32_t identity) {
  GridNode* node = NodeOf(parent);
  auto item = FindItemByIdentity(identity);
  if (!node || !item) return {};
  std::string code = OwnCode(item->PopupKey());
  // After every sibling whose code is not greater, as a stable sort puts it.
  std::vector<GridNode*>& children = MutableChildren(*node);
  auto place = std::upper_bound(
      children.begin(), children.end(), code, [](const std::string& wanted, const GridNode* child) {
        auto sibling = FindItemByIdentity(child->identity);
        return wanted < (sibling ? OwnCode(sibling->PopupKey()) : std::string());
      });
  int row = static_cast<int>(place - children.begin());
  QModelIndex parent_cell = createIndex(node->row, 0, static_cast<quintptr>(node->identity));
  beginInsertRows(parent_cell, row, row);
  children.insert(children.begin() + row, NewNode(identity, node));
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

void DataGridModel::KeyChanged(const QModelIndex& index, bool marked) {
  GridNode* node = NodeOf(index);
  if (!node || node->identity == 0) return;
  if (marked) {
    rekeyed_.insert(node->identity);
  } else {
    rekeyed_.erase(node->identity);
  }
  // Its code moved: its siblings may be out of order now.
  unsorted_.insert(node->parent->identity);
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
  std::vector<Frame> stack{{title_, 0, false}};
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next < ChildrenOf(*frame.node).size()) {
      stack.push_back({ChildrenOf(*frame.node)[frame.next++], 0, false});
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
  std::vector<GridNode*>& siblings = *parent->children;
  siblings.erase(siblings.begin() + row);
  Renumber(*parent);
  endRemoveRows();
}

void DataGridModel::SwapRows(const QModelIndex& first, const QModelIndex& second) {
  GridNode* a = NodeOf(first);
  GridNode* b = NodeOf(second);
  if (!a || !b || a == b || !a->parent || a->parent != b->parent) return;
  QModelIndex parent = this->parent(first);
  emit layoutAboutToBeChanged({parent});
  KeepingPersistentIndexes([a, b]() {
    std::vector<GridNode*>& siblings = *a->parent->children;
    std::swap(siblings[static_cast<size_t>(a->row)], siblings[static_cast<size_t>(b->row)]);
    std::swap(a->row, b->row);
  });
  emit layoutChanged({parent});
}

BranchLayout DataGridModel::LayoutOf(const QModelIndex& index) const {
  GridNode* top = NodeOf(index);
  if (!top || top->identity == 0) return {};
  return LayoutFrom(*top);
}

BranchLayout DataGridModel::WholeLayout() const {
  return title_ ? LayoutFrom(*title_) : BranchLayout{};
}

BranchLayout DataGridModel::LayoutFrom(const GridNode& top) const {
  BranchLayout layout;
  std::vector<std::pair<const GridNode*, int>> pending{{&top, 0}};
  while (!pending.empty()) {
    auto [node, depth] = pending.back();
    pending.pop_back();
    layout.rows.push_back({node->identity, depth, rekeyed_.count(node->identity) != 0,
                           all_unsorted_ || unsorted_.count(node->identity) != 0});
    const auto& children = ChildrenOf(*node);
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
      pending.emplace_back(*child, depth + 1);
    }
  }
  return layout;
}

QModelIndex DataGridModel::InsertLayout(const QModelIndex& parent, int row,
                                        const BranchLayout& layout) {
  GridNode* node = NodeOf(parent);
  if (!node || layout.rows.empty() || row < 0 || row > static_cast<int>(ChildrenOf(*node).size())) {
    return {};
  }
  QModelIndex parent_cell = createIndex(node->row, 0, static_cast<quintptr>(node->identity));
  beginInsertRows(parent_cell, row, row);
  // The branch may stand anywhere among its new siblings: the next sort looks.
  unsorted_.insert(node->identity);
  // The rows below the top one come in with it, in the order they had.
  std::vector<GridNode*> path{node};
  GridNode* top = nullptr;
  for (const BranchLayout::Row& laid : layout.rows) {
    path.resize(static_cast<size_t>(laid.depth) + 1);
    GridNode* added = NewLaidNode(laid, path.back());
    if (!top) {
      top = added;
      auto& siblings = MutableChildren(*node);
      siblings.insert(siblings.begin() + row, added);
      Renumber(*node);
    } else {
      AppendChild(*path.back(), added);
    }
    path.push_back(added);
  }
  endInsertRows();
  return createIndex(top->row, 0, static_cast<quintptr>(top->identity));
}

GridNode* DataGridModel::NewLaidNode(const BranchLayout::Row& laid, GridNode* parent) {
  GridNode* node = NewNode(laid.identity, parent);
  if (laid.rekeyed) rekeyed_.insert(laid.identity);
  if (laid.unsorted) unsorted_.insert(laid.identity);
  return node;
}

void DataGridModel::AppendChild(GridNode& parent, GridNode* child) {
  auto& siblings = MutableChildren(parent);
  child->row = static_cast<int>(siblings.size());
  siblings.push_back(child);
}

void DataGridModel::Forget(GridNode& node) {
  std::vector<GridNode*> pending{&node};
  while (!pending.empty()) {
    GridNode* current = pending.back();
    pending.pop_back();
    nodes_->Erase(current->identity);
    rekeyed_.erase(current->identity);
    unsorted_.erase(current->identity);
    for (GridNode* child : ChildrenOf(*current)) pending.push_back(child);
    current->children.reset();
    free_.push_back(current);
  }
}

std::vector<QModelIndex> DataGridModel::ParentRows() const {
  std::vector<QModelIndex> rows;
  if (!title_) return rows;
  std::vector<const GridNode*> pending{title_};
  while (!pending.empty()) {
    const GridNode* node = pending.back();
    pending.pop_back();
    if (ChildrenOf(*node).empty()) continue;
    rows.push_back(createIndex(node->row, 0, static_cast<quintptr>(node->identity)));
    for (const GridNode* child : ChildrenOf(*node)) pending.push_back(child);
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
  const auto& top = ChildrenOf(*title_);
  std::vector<const GridNode*> pending(top.rbegin(), top.rend());
  while (!pending.empty()) {
    const GridNode* node = pending.back();
    pending.pop_back();
    identities.push_back(node->identity);
    const auto& children = ChildrenOf(*node);
    pending.insert(pending.end(), children.rbegin(), children.rend());
  }
  return identities;
}

GridNode* DataGridModel::NodeOfId(quintptr id) const {
  if (!title_) return nullptr;
  if (id == kTitleId) return title_;
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
  return node ? static_cast<int>(ChildrenOf(*node).size()) : 0;
}

int DataGridModel::columnCount(const QModelIndex&) const {
  return std::max<int>(static_cast<int>(headings_.size()), 1);
}

QModelIndex DataGridModel::index(int row, int column, const QModelIndex& parent) const {
  if (!title_ || column < 0 || column >= columnCount()) return {};
  if (!parent.isValid()) return row == 0 ? createIndex(0, column, kTitleId) : QModelIndex();
  GridNode* node = NodeOf(parent);
  if (!node || row < 0 || row >= static_cast<int>(ChildrenOf(*node).size())) return {};
  const GridNode& child = *ChildrenOf(*node)[static_cast<size_t>(row)];
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
  // The title as it was filled in: the outline does not follow the title box.
  if (node->identity == 0) return index.column() == 0 ? title_text_ : QVariant();
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
  if (read_only_) return flags;
  flags |= Qt::ItemIsDropEnabled;
  // The title row is never edited here, nor dragged.
  return node->identity == 0 ? flags : flags | Qt::ItemIsEditable | Qt::ItemIsDragEnabled;
}

QStringList DataGridModel::mimeTypes() const {
  return {QString::fromLatin1(kItemMimeType)};
}

QMimeData* DataGridModel::mimeData(const QModelIndexList& indexes) const {
  GridNode* node = indexes.isEmpty() ? nullptr : NodeOf(indexes.first());
  if (!node || node->identity == 0) return nullptr;
  auto* data = new QMimeData();
  data->setData(QString::fromLatin1(kItemMimeType), QByteArray::number(node->identity));
  return data;
}

Qt::DropActions DataGridModel::supportedDragActions() const {
  return Qt::MoveAction | Qt::CopyAction;
}

Qt::DropActions DataGridModel::supportedDropActions() const {
  return Qt::MoveAction | Qt::CopyAction;
}

}  // namespace zephyr::editor
