// EditDelegate: the in-place editor of the editor's grids, with the checks
// the component runs before an edit, before it is accepted and after it.
#ifndef ZEPHYR_EDITOR_EDIT_DELEGATE_H_
#define ZEPHYR_EDITOR_EDIT_DELEGATE_H_

#include <QStyledItemDelegate>
#include <functional>

namespace zephyr::editor {

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

  explicit EditDelegate(QObject* parent = nullptr) : QStyledItemDelegate(parent) {}

  void SetMaxLength(MaxLength max_length) { max_length_ = std::move(max_length); }
  void SetRefuse(Refuse refuse) { refuse_ = std::move(refuse); }
  void SetAfterEdit(AfterEdit after_edit) { after_edit_ = std::move(after_edit); }

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override;
  void setModelData(QWidget* editor, QAbstractItemModel* model,
                    const QModelIndex& index) const override;

 private:
  MaxLength max_length_;
  Refuse refuse_;
  AfterEdit after_edit_;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_EDIT_DELEGATE_H_
