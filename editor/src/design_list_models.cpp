#include "design_list_models.h"

#include <cmath>
#include <cstdlib>
#include <limits>

#include "zephyr/support/variant.h"

namespace zephyr::editor {

QString ToQString(const std::string& text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string ToUtf8(const QString& text) {
  return text.toStdString();
}

namespace {

// The number a text starts with, as the platform's Val reads it: "12a" is 12,
// "x" is 0.
double LeadingNumber(const std::string& text) {
  double value = 0;
  if (ParseNumber(text, &value)) return value;
  return std::strtod(text.c_str(), nullptr);
}

}  // namespace

void LevelListModel::Reset(List levels) {
  beginResetModel();
  levels_ = std::move(levels);
  endResetModel();
}

void LevelListModel::AppendNew() {
  int row = rowCount();
  beginInsertRows({}, row, row);
  levels_.push_back(std::make_shared<PopupLevel>());
  endInsertRows();
}

void LevelListModel::RemoveLast() {
  if (levels_.empty()) return;
  int row = rowCount() - 1;
  beginRemoveRows({}, row, row);
  levels_.pop_back();
  endRemoveRows();
}

int LevelListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(levels_.size());
}

int LevelListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : 1;
}

QVariant LevelListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole)) return {};
  return ToQString(levels_[static_cast<size_t>(index.row())]->Question().ToText());
}

QVariant LevelListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole) return {};
  if (orientation == Qt::Vertical) return section + 1;
  return QStringLiteral("Popup Question Level");
}

Qt::ItemFlags LevelListModel::flags(const QModelIndex& index) const {
  return QAbstractTableModel::flags(index) | Qt::ItemIsEditable;
}

bool LevelListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || role != Qt::EditRole) return false;
  auto& level = levels_[static_cast<size_t>(index.row())];
  std::string text = ToUtf8(value.toString());
  if (text == level->Question().ToText()) return true;
  level->Question(Variant(text));
  emit dataChanged(index, index);
  return true;
}

void FieldListModel::Reset(List fields, std::vector<std::string> length_texts) {
  beginResetModel();
  fields_ = std::move(fields);
  length_texts_ = std::move(length_texts);
  for (size_t row = length_texts_.size(); row < fields_.size(); ++row) {
    length_texts_.push_back(std::to_string(fields_[row]->FieldLength()));
  }
  endResetModel();
}

void FieldListModel::AppendNew() {
  int row = rowCount();
  beginInsertRows({}, row, row);
  // Both cells start empty: a length must be typed before the design passes.
  fields_.push_back(std::make_shared<PopupField>());
  length_texts_.emplace_back();
  endInsertRows();
}

void FieldListModel::RemoveAt(int row) {
  if (row < 0 || row >= rowCount()) return;
  beginRemoveRows({}, row, row);
  fields_.erase(fields_.begin() + row);
  length_texts_.erase(length_texts_.begin() + row);
  endRemoveRows();
}

void FieldListModel::Swap(int first, int second) {
  if (first < 0 || second < 0 || first >= rowCount() || second >= rowCount()) return;
  std::swap(fields_[static_cast<size_t>(first)], fields_[static_cast<size_t>(second)]);
  std::swap(length_texts_[static_cast<size_t>(first)], length_texts_[static_cast<size_t>(second)]);
  emit dataChanged(index(std::min(first, second), 0), index(std::max(first, second), 1));
}

int FieldListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(fields_.size());
}

int FieldListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : 2;
}

QVariant FieldListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole)) return {};
  size_t row = static_cast<size_t>(index.row());
  if (index.column() == 0) return ToQString(fields_[row]->Name());
  return ToQString(length_texts_[row]);
}

QVariant FieldListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole) return {};
  if (orientation == Qt::Vertical) return section + 1;
  return section == 0 ? QStringLiteral("Popup Field Description") : QStringLiteral("Field Length");
}

Qt::ItemFlags FieldListModel::flags(const QModelIndex& index) const {
  return QAbstractTableModel::flags(index) | Qt::ItemIsEditable;
}

bool FieldListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || role != Qt::EditRole) return false;
  size_t row = static_cast<size_t>(index.row());
  auto& field = fields_[row];
  std::string text = ToUtf8(value.toString());
  if (index.column() == 0) {
    if (text == field->Name()) return true;
    field->Name(text);
  } else {
    if (text == length_texts_[row]) return true;
    length_texts_[row] = text;
    double length = LeadingNumber(text);
    bool fits = std::abs(length) <= std::numeric_limits<int16_t>::max();
    if (fits && length != field->FieldLength()) field->FieldLength(ToInt16Checked(length));
  }
  emit dataChanged(index, index);
  return true;
}

}  // namespace zephyr::editor
