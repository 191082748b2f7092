// OutlineView: the data view's tree, from which an item is dragged and onto
// which it is dropped. The view does not change the popup: it names the row
// dropped on and where (above, on or below it) and leaves the move or copy
// to its owner.
#ifndef ZEPHYR_EDITOR_OUTLINE_VIEW_H_
#define ZEPHYR_EDITOR_OUTLINE_VIEW_H_

#include <QTreeView>

namespace zephyr::editor {

class OutlineView : public QTreeView {
  Q_OBJECT

 public:
  // Where a drop puts the dragged item.
  enum class DropPlace { kAbove, kOn, kBelow };

  explicit OutlineView(QWidget* parent = nullptr);

 signals:
  // The current item was dropped at `target` (column 0): moved, or copied
  // with its branch when `copy`.
  void Dropped(const QModelIndex& target, zephyr::editor::OutlineView::DropPlace place, bool copy);

 protected:
  void dropEvent(QDropEvent* event) override;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_OUTLINE_VIEW_H_
