// DesignView: the editor's design view: the title box, the working lists of
// question levels and fields with their buttons, and the import and export
// buttons. Its edits are recorded in the session's history; applying the
// edited design to the popup's items is asked of it by the shell.
#ifndef ZEPHYR_EDITOR_DESIGN_VIEW_H_
#define ZEPHYR_EDITOR_DESIGN_VIEW_H_

#include <QObject>
#include <memory>

#include "design_commands.h"
#include "design_list_models.h"

class QFrame;
class QGroupBox;
class QLineEdit;
class QPushButton;
class QString;
class QTableView;
class QToolButton;
class QWidget;

namespace zephyr::editor {

class EditorSession;
class EditorState;

class DesignView : public QObject {
  Q_OBJECT

 public:
  DesignView(EditorState& shell, EditorSession& session);

  // Builds the view's controls in a frame of `parent` and connects them.
  QFrame* Build(QWidget* parent);
  QFrame* Frame() const { return fraDesignMode_; }

  // Fills the working lists from the popup's design: no edits pending.
  void LoadTemplateData();
  // Shows the working lists and the title, and enables their buttons.
  void FillDesignGrids();
  void SizeFieldColumns();
  void FocusTitle();
  // Shows whether the popup may be changed: read-only, the title, the lists
  // and their buttons take no edits.
  void ShowReadOnly();
  // Checks the edited design, telling the user the first rule it breaks and
  // making its row current.
  bool Validate();

  // True when the edits change the popup's items once applied (levels
  // removed or added, fields reordered, added or removed).
  bool ChangesItems() const { return fields_changed_ || levels_changed_; }
  // Applies the edited fields and levels to the popup and its items.
  void ApplyToItems();
  // The component's procedures that ApplyToItems runs.
  void ChangeLevels();
  void LevelChangeKeyFormat(const std::shared_ptr<PopupItems>& items);
  void ChangeFields();

  // The view as it stands, and showing one: the rows of the working lists
  // stand for the popup's levels and fields by their initial index.
  ShownDesign CaptureDraft() const;
  void ShowDraft(const ShownDesign& shown);

 private:
  class Action;

  bool eventFilter(QObject* watched, QEvent* event) override;
  void Connect();
  void TitleChanged();
  void AddLevelRow();
  void DeleteLevelRow();
  void AddFieldRow();
  void DeleteFieldRow();
  void MoveField(int step);
  void LevelRowEntered(int row);
  void FieldRowEntered(int row);
  bool LevelEditRefused(const QString& text);
  void SaveLevelsCol();
  void SaveFieldsCol();
  // Records the change since the last record as one command.
  void RecordDraft(const QString& text, bool title_typing = false);

  EditorState& shell_;
  EditorSession& session_;
  LevelListModel* LevelList_;
  FieldListModel* FieldList_;
  bool fields_changed_ = false;
  bool levels_changed_ = false;
  // The view as last recorded, and whether an action is under way (it
  // records itself when done).
  ShownDesign recorded_;
  bool in_action_ = false;

  // Controls, named as the component names them.
  QFrame* fraDesignMode_ = nullptr;
  QGroupBox* fraPopupTitle_ = nullptr;
  QLineEdit* txtTitle_ = nullptr;
  QGroupBox* fraPopupFields_ = nullptr;
  QTableView* grdFields_ = nullptr;
  QPushButton* cmdAddField_ = nullptr;
  QPushButton* cmdDeleteField_ = nullptr;
  QToolButton* cmdUp_ = nullptr;
  QToolButton* cmdDown_ = nullptr;
  QGroupBox* fraQuestionLevels_ = nullptr;
  QTableView* grdLevels_ = nullptr;
  QPushButton* cmdAddLevels_ = nullptr;
  QPushButton* cmdDeleteLevels_ = nullptr;
  QGroupBox* fraImportExport_ = nullptr;
  QPushButton* cmdImport_ = nullptr;
  QPushButton* cmdExport_ = nullptr;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_DESIGN_VIEW_H_
