// The models behind the design view's two grids. Each adapts one of the
// editor's working lists: the popup's own level and field objects, in the
// order the user arranges them. Editing a cell writes straight into those
// objects; the lists reach the popup's design when it is saved.
//
// A grid row r >= 1 of the component is model row r - 1; the component's
// heading row is the view's horizontal header.
#ifndef ZEPHYR_EDITOR_DESIGN_LIST_MODELS_H_
#define ZEPHYR_EDITOR_DESIGN_LIST_MODELS_H_

#include <QAbstractTableModel>
#include <memory>
#include <string>
#include <vector>

#include "zephyr/runtime/popup_field.h"
#include "zephyr/runtime/popup_level.h"

namespace zephyr::editor {

// QString and the library's UTF-8 text.
QString ToQString(const std::string& text);
std::string ToUtf8(const QString& text);

// The working list of question levels: row k - 1 is level k.
class LevelListModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  using List = std::vector<std::shared_ptr<PopupLevel>>;

  explicit LevelListModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

  void Reset(List levels);
  const List& Levels() const { return levels_; }
  // Appends a new level (initial index 0) with an empty question.
  void AppendNew();
  // Removes the last level.
  void RemoveLast();

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // Sets the question when the text differs from it.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 private:
  List levels_;
};

// The working list of companion fields: row k - 1 is the popup's field k + 1.
// Column 0 is the name, column 1 the length. The length cell keeps the text
// as typed, so a length that is no number stays visible for the validation.
class FieldListModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  using List = std::vector<std::shared_ptr<PopupField>>;

  explicit FieldListModel(QObject* parent = nullptr) : QAbstractTableModel(parent) {}

  // Shows the fields, each length cell with the given text (the length as a
  // number when none is given).
  void Reset(List fields, std::vector<std::string> length_texts = {});
  const List& Fields() const { return fields_; }
  // The length cell's text of a row.
  const std::string& LengthText(int row) const { return length_texts_[static_cast<size_t>(row)]; }
  // Appends a new field (initial index 0) with an empty name and length 0.
  void AppendNew();
  void RemoveAt(int row);
  // Exchanges two rows.
  void Swap(int first, int second);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // Column 0 sets the name when it differs; column 1 keeps the text and sets
  // the length to its numeric value when that differs and fits 16 bits.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 private:
  List fields_;
  std::vector<std::string> length_texts_;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_DESIGN_LIST_MODELS_H_
