// DataGridModel: the data view's outline of a popup. The single top-level
// row is the title row; under it stand the items, each row a GridNode that
// holds only the item's identity and its place in the grid's own order (the
// order Sort_Tree gives and saving follows). Cell texts come from the items
// themselves, looked up by identity, so a node whose item is gone shows
// nothing and yields no item.
//
// Column c is the popup's field c + 1: column 0 shows an item's own two-digit
// code, column c >= 1 its value c. Qt::UserRole on column 0 answers the row
// data: the item's identity, 0 for the title row.
#ifndef ZEPHYR_EDITOR_DATA_GRID_MODEL_H_
#define ZEPHYR_EDITOR_DATA_GRID_MODEL_H_

#include <QAbstractItemModel>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <unordered_set>
#include <vector>

#include "zephyr/runtime/popup_class.h"

namespace zephyr::editor {

// One row of the outline: 24 bytes, for a million rows and more.
struct GridNode {
  int32_t identity = 0;  // 0 for the title row
  int32_t row = 0;       // position among the parent's children
  GridNode* parent = nullptr;
  // The rows under this one, in outline order; none for a leaf.
  std::unique_ptr<std::vector<GridNode*>> children;
};

class NodeIndex;

// The children of the nodes a sort moved, in their order before it: what
// puts the outline back as it was.
struct SortRecord {
  struct Node {
    int32_t identity;               // 0 for the title row
    std::vector<int32_t> children;  // identities, in the order before
  };
  std::vector<Node> nodes;
};

// The rows of a branch as the outline showed them: each row's identity, its
// depth below the branch's top row (0), whether its key was marked as
// changed and whether its children awaited a sort; top to bottom.
struct BranchLayout {
  struct Row {
    int32_t identity;
    int depth;
    bool rekeyed;
    bool unsorted;
  };
  std::vector<Row> rows;
};

class DataGridModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  // The type of the drag data: an item's identity as decimal text.
  static constexpr const char* kItemMimeType = "application/x-zephyr-popup-item";
  // True on the key cell of a row whose key the user changed.
  static constexpr int kKeyChangedRole = Qt::UserRole + 1;

  explicit DataGridModel(QObject* parent = nullptr);
  ~DataGridModel() override;

  // Rebuilds the outline from the popup: headings from its fields, the title
  // row, then every item depth first in collection order. No sorting.
  void Load(std::shared_ptr<PopupClass> popup);
  // Rebuilds the outline from the popup as WholeLayout laid it out: the same
  // rows in the same order, with their marks. Every item in it must exist.
  void LoadLayout(std::shared_ptr<PopupClass> popup, const BranchLayout& layout);
  // The whole outline, the title row first.
  BranchLayout WholeLayout() const;
  // Orders the children of every node by the text of column 0. Only the
  // nodes whose children an edit may have put out of order since the last
  // sort are visited (all of them after a Load): the result is the same.
  // Answers what it moved.
  SortRecord SortTree();
  // Puts the children of the recorded nodes back in their recorded order;
  // they count as unsorted again.
  void RestoreOrder(const SortRecord& record);
  // Orders the children of one node by the text of column 0; answers what
  // it moved.
  SortRecord SortChildren(const QModelIndex& parent);

  // Adds a row for an item as the last child of a row; Sort_Tree or
  // SortChildren then puts it in its place.
  QModelIndex AppendRow(const QModelIndex& parent, int32_t identity);
  // Adds a row for an item among the children of a row, at its place in code
  // order when those children are in code order.
  QModelIndex InsertRowInOrder(const QModelIndex& parent, int32_t identity);
  // Adds rows for every descendant of the item under its row, depth first
  // in collection order.
  void AppendBranch(const QModelIndex& row, PopupItem& item);
  // Trades the places of two rows under one parent.
  void SwapRows(const QModelIndex& first, const QModelIndex& second);
  // Removes a row and the rows of its whole branch.
  void RemoveRow(const QModelIndex& index);
  // The rows of a row's branch, as RemoveRow would remove them.
  BranchLayout LayoutOf(const QModelIndex& index) const;
  // Puts rows laid out so back as the given row under a parent row (the
  // items must exist), leaving the parent's children to the next sort;
  // answers the branch's top row.
  QModelIndex InsertLayout(const QModelIndex& parent, int row, const BranchLayout& layout);

  // Writes a cell of an item row into the item: column c >= 1 is value c.
  // Column 0, the key, changes only through the popup's ModifyKey; call
  // KeyChanged afterwards.
  bool SetValue(const QModelIndex& index, const std::string& text);
  // Marks the row's key as changed (shown in blue), or no longer, and
  // refreshes it; the row keeps its place until its siblings are sorted.
  void KeyChanged(const QModelIndex& index, bool marked = true);
  // True when the row's key is marked as changed.
  bool IsKeyChanged(const QModelIndex& index) const { return index.data(kKeyChangedRole).toBool(); }

  // The rows whose key or a value contains the text (ignoring case), with
  // all their ancestors; every row for an empty text. Visits every row once.
  std::vector<std::pair<QModelIndex, bool>> RowVisibility(const QString& text) const;

  QModelIndex TitleIndex() const;
  // The rows that have rows under them, parents before their children.
  std::vector<QModelIndex> ParentRows() const;
  // The row of an item, or an invalid index when it has none.
  QModelIndex IndexOfIdentity(int32_t identity) const;
  // The row's item, or null for the title row, a stale row or an invalid index.
  std::shared_ptr<PopupItem> ItemAt(const QModelIndex& index) const;
  // The row data of every row after the title row, top to bottom.
  std::vector<int32_t> IdentitiesInGridOrder() const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& index) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // Read-only, no cell takes an edit, a drag or a drop.
  void SetReadOnly(bool read_only) { read_only_ = read_only; }
  // Items are dragged as their identity; the view, not the model, carries
  // out a drop.
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;
  Qt::DropActions supportedDragActions() const override;
  Qt::DropActions supportedDropActions() const override;

 private:
  // Internal ids: the item's identity, and kTitleId for the title row.
  static constexpr quintptr kTitleId = 0;

  GridNode* NodeOf(const QModelIndex& index) const;
  GridNode* NodeOfId(quintptr id) const;
  void AddItems(GridNode& parent, PopupItems& items);
  // Sorts a node's children, recording their order before when it changed.
  void SortNode(GridNode& node, SortRecord& record);
  // Forgets the rows and takes the popup's title and headings.
  void Reset(std::shared_ptr<PopupClass> popup);
  BranchLayout LayoutFrom(const GridNode& top) const;
  // Runs a reordering of rows and moves every persistent index with its row.
  void KeepingPersistentIndexes(const std::function<void()>& reorder);
  // A node from the pool, registered under its identity.
  GridNode* NewNode(int32_t identity, GridNode* parent);
  // A node for a row laid out by LayoutOf or WholeLayout, with its marks.
  GridNode* NewLaidNode(const BranchLayout::Row& laid, GridNode* parent);
  // Makes a node the last child of another.
  void AppendChild(GridNode& parent, GridNode* child);
  // Unregisters a branch and returns its nodes to the pool.
  void Forget(GridNode& node);
  bool Matches(const GridNode& node, const QString& text) const;

  std::shared_ptr<PopupClass> popup_;
  std::vector<QString> headings_;
  QString title_text_;
  // Every node lives in the pool; removed ones wait in free_ for reuse.
  std::deque<GridNode> pool_;
  std::vector<GridNode*> free_;
  GridNode* title_ = nullptr;
  std::unique_ptr<NodeIndex> nodes_;
  std::unordered_set<int32_t> rekeyed_;
  bool read_only_ = false;
  // The nodes (by identity, 0 for the title row) whose children may be out
  // of code order; every node when all_unsorted_.
  std::unordered_set<int32_t> unsorted_;
  bool all_unsorted_ = false;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_DATA_GRID_MODEL_H_
