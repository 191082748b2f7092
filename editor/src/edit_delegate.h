// EditDelegate: the in-place editor of the editor's grids, with the checks
// the component runs before an edit, before it is accepted and after it.
#ifndef ZEPHYR_EDITOR_EDIT_DELEGATE_H_
#define ZEPHYR_EDITOR_EDIT_DELEGATE_H_

#include <QStyledItemDelegate>
#include <functional>
#include <optional>

class QAbstractItemView;

namespace zephyr::editor {

// True while an in-place editor is open in the view.
bool HasOpenEditor(const QAbstractItemView& view);

class EditDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  // The longest text the editor takes in a cell; 0 for no limit.
  using MaxLength = std::function<int(const QModelIndex&)>;
  // Checks the typed text; may rewrite it. True refuses it: the editor stays
  // open with the text as typed.
  using Refuse = std::function<bool(const QModelIndex&, QString&)>;
  // Runs once the text has reached the model.
  using AfterEdit = std::function<void(const QModelIndex&)>;
  // Takes the accepted text in place of the model's setData.
  using Commit = std::function<void(const QModelIndex&, const QString&)>;

  explicit EditDelegate(QObject* parent = nullptr) : QStyledItemDelegate(parent) {}

  void SetMaxLength(MaxLength max_length) { max_length_ = std::move(max_length); }
  void SetRefuse(Refuse refuse) { refuse_ = std::move(refuse); }
  void SetAfterEdit(AfterEdit after_edit) { after_edit_ = std::move(after_edit); }
  void SetCommit(Commit commit) { commit_ = std::move(commit); }
  // Cells drawn in blue: the marked ones.
  void SetMarked(std::function<bool(const QModelIndex&)> marked) { marked_ = std::move(marked); }
  // Tints the other cells of the current cell's row.
  void SetMarkCurrentRow(bool mark) { mark_current_row_ = mark; }
  // Sees the key presses of every editor this delegate opens.
  void SetKeyFilter(QObject* filter) { key_filter_ = filter; }

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override;
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
  // A reopened editor shows the refused text again, not the model's.
  void setEditorData(QWidget* editor, const QModelIndex& index) const override;
  void setModelData(QWidget* editor, QAbstractItemModel* model,
                    const QModelIndex& index) const override;

 private:
  void MarkCurrentRow(QStyleOptionViewItem* option, const QModelIndex& index) const;

  MaxLength max_length_;
  Refuse refuse_;
  AfterEdit after_edit_;
  Commit commit_;
  QObject* key_filter_ = nullptr;
  mutable std::optional<QString> refused_text_;
  std::function<bool(const QModelIndex&)> marked_;
  bool mark_current_row_ = false;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_EDIT_DELEGATE_H_
