#include "edit_delegate.h"

#include <QAbstractItemView>
#include <QLineEdit>
#include <QTimer>

namespace zephyr::editor {

QWidget* EditDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const {
  QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
  if (auto* line = qobject_cast<QLineEdit*>(editor); line && max_length_) {
    int limit = max_length_(index);
    if (limit > 0) line->setMaxLength(limit);
  }
  return editor;
}

void EditDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                const QModelIndex& index) const {
  auto* line = qobject_cast<QLineEdit*>(editor);
  if (!line) {
    QStyledItemDelegate::setModelData(editor, model, index);
    return;
  }
  QString text = line->text();
  if (refuse_ && refuse_(index, text)) {
    // The view closes the editor after this call; open a new one on the same
    // cell, holding the refused text, once it has.
    auto* view = qobject_cast<QAbstractItemView*>(parent());
    QPersistentModelIndex cell(index);
    QTimer::singleShot(0, view, [view, cell, text]() {
      if (!cell.isValid()) return;
      view->setCurrentIndex(cell);
      view->edit(cell);
      if (auto* reopened = view->indexWidget(cell) ? nullptr : view->focusWidget()) {
        if (auto* reopened_line = qobject_cast<QLineEdit*>(reopened)) reopened_line->setText(text);
      }
    });
    return;
  }
  model->setData(index, text, Qt::EditRole);
  if (after_edit_) after_edit_(index);
}

}  // namespace zephyr::editor
