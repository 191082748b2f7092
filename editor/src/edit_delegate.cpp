#include "edit_delegate.h"

#include <QAbstractItemView>
#include <QGuiApplication>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>

namespace zephyr::editor {

bool HasOpenEditor(const QAbstractItemView& view) {
  const auto editors = view.viewport()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
  return std::any_of(editors.begin(), editors.end(),
                     [](const QWidget* editor) { return editor->isVisible(); });
}

QWidget* EditDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const {
  QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
  if (auto* line = qobject_cast<QLineEdit*>(editor); line && max_length_) {
    int limit = max_length_(index);
    if (limit > 0) line->setMaxLength(limit);
  }
  if (key_filter_) editor->installEventFilter(key_filter_);
  return editor;
}

void EditDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  if (mark_current_row_) MarkCurrentRow(option, index);
  if (marked_ && marked_(index)) {
    option->palette.setColor(QPalette::Text, Qt::blue);
    option->palette.setColor(QPalette::HighlightedText, Qt::blue);
  }
}

void EditDelegate::MarkCurrentRow(QStyleOptionViewItem* option, const QModelIndex& index) const {
  auto* view = qobject_cast<QAbstractItemView*>(parent());
  QModelIndex current = view ? view->currentIndex() : QModelIndex();
  if (!current.isValid() || index == current || index.row() != current.row() ||
      index.parent() != current.parent()) {
    return;
  }
  // The row's other cells are tinted with the desktop's selection colour
  // (the current cell itself may have any colour the host chose).
  QColor tint = QGuiApplication::palette().color(QPalette::Highlight);
  tint.setAlpha(64);
  option->backgroundBrush = tint;
}

void EditDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
  auto* line = qobject_cast<QLineEdit*>(editor);
  if (line && refused_text_) {
    line->setText(*refused_text_);
    return;
  }
  QStyledItemDelegate::setEditorData(editor, index);
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
    refused_text_ = text;
    QPersistentModelIndex cell(index);
    QTimer::singleShot(0, view, [this, view, cell]() {
      // Unless another edit began meanwhile: the refused one is then given up.
      if (cell.isValid() && !HasOpenEditor(*view)) {
        view->setCurrentIndex(cell);
        view->edit(cell);
      }
      refused_text_.reset();
    });
    return;
  }
  if (commit_) {
    commit_(index, text);
  } else {
    model->setData(index, text, Qt::EditRole);
  }
  if (after_edit_) after_edit_(index);
}

}  // namespace zephyr::editor
