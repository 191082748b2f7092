#include "outline_view.h"

#include <QDropEvent>

namespace zephyr::editor {

OutlineView::OutlineView(QWidget* parent) : QTreeView(parent) {
  setDragEnabled(true);
  setAcceptDrops(true);
  setDropIndicatorShown(true);
  setDragDropMode(QAbstractItemView::DragDrop);
  setDefaultDropAction(Qt::MoveAction);
}

void OutlineView::dropEvent(QDropEvent* event) {
  QModelIndex target = indexAt(event->position().toPoint());
  const auto where = dropIndicatorPosition();
  if (!target.isValid() || where == QAbstractItemView::OnViewport) {
    event->ignore();
    return;
  }
  DropPlace place = where == QAbstractItemView::AboveItem   ? DropPlace::kAbove
                    : where == QAbstractItemView::BelowItem ? DropPlace::kBelow
                                                            : DropPlace::kOn;
  bool copy = event->modifiers().testFlag(Qt::ControlModifier);
  // Reported as a copy: the view then removes no rows of its own.
  event->setDropAction(Qt::CopyAction);
  event->accept();
  emit Dropped(target.siblingAtColumn(0), place, copy);
}

}  // namespace zephyr::editor
