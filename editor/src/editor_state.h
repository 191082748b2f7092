// The state and child controls of a PopupControlEdit, and the procedures
// that work on them. The widget's public members forward here; the view
// pieces (design view, data view, saving) are implemented in their own files.
#ifndef ZEPHYR_EDITOR_EDITOR_STATE_H_
#define ZEPHYR_EDITOR_EDITOR_STATE_H_

#include <QObject>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zephyr/editor/data_grid_model.h"
#include "zephyr/editor/design_list_models.h"
#include "zephyr/editor/new_key_prompt.h"
#include "zephyr/editor/popup_control_edit.h"
#include "zephyr/support/errors.h"

class QAction;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QTableView;
class QTimer;
class QPrinter;
class QToolButton;
class QTreeView;
class QKeyEvent;

namespace zephyr::editor {

class TabStrip;

// The log modules of the editor. They differ on purpose: each names the
// object the procedure has always logged under.
inline constexpr const char* kEditModule = "PopupEditControl";
inline constexpr const char* kInitializeModule = "PopupControl";
inline constexpr const char* kTemplateDataModule = "POpupControlEdit";
inline constexpr const char* kSaveChangesModule = "popupcontrolEdit";

// Tab indices of the tab strip (0-based; the component calls them 1 and 2).
inline constexpr int kDesignTab = 0;
inline constexpr int kDataTab = 1;

class EditorState : public QObject {
  Q_OBJECT

 public:
  explicit EditorState(PopupControlEdit* owner);
  ~EditorState() override;

  std::shared_ptr<NewKeyPrompt> DefaultNewKeyPrompt();

  // --- shell ---
  void BuildControls();
  void OpenPopup(const std::string& path, const std::string& file);
  void LoadDesignMode();
  void LoadDataMode();
  bool TabBeforeClick(int target);
  void TabClick(int index);
  void EnableDisable();
  void ResizeControls();
  void SizeFieldColumns();
  void SetDataChanged(bool changed);
  MessageAnswer Tell(const std::string& prompt, MessageButtons buttons = MessageButtons::kOk,
                     const std::string& title = {}, MessageIcon icon = MessageIcon::kNone,
                     int default_button = 1);

  // --- design view ---
  void ConnectDesignView();
  void LoadTemplateData();
  void FillDesignGrids();
  void TitleChanged();
  void AddLevelRow();
  void DeleteLevelRow();
  void AddFieldRow();
  void DeleteFieldRow();
  void MoveField(int step);
  void LevelRowEntered(int row);
  void FieldRowEntered(int row);
  bool LevelEditRefused(const QString& text);
  bool StepRefused();

  // --- data view ---
  void ConnectDataView();
  void LoadDataGrid();
  void SortTree();
  void DataRowChanged();
  void CurrentItemSelected();
  std::shared_ptr<PopupItem> CurrentItem();
  int CurrentLevel();
  bool CurrentIsTitle() const;
  void RebuildAddButtons();
  void AddButtonClicked(int index);
  void ShowItemMenu(const QPoint& position);
  void SelectItemRow(const std::shared_ptr<PopupItem>& item);
  void DeleteDataItem();
  // In-place editing of the outline.
  bool BeforeEdit(const QModelIndex& cell);
  void StartEdit();
  int MaxEditLength(const QModelIndex& cell);
  bool DataEditRefused(const QModelIndex& cell, QString& text);
  void DataAfterEdit(const QModelIndex& cell, const QString& text);
  bool DataGridKey(QKeyEvent* event, bool editing);
  // Find: shows only the rows matching the text, with their ancestors.
  void ApplyFind();

  // --- item operations ---
  void AddChild();
  void AddSibling();
  std::shared_ptr<PopupItem> AddpopupDataItem(const std::shared_ptr<PopupItems>& siblings,
                                              int16_t step, const std::string& parent_key,
                                              const std::string& after_code);
  int16_t GetNewKey(const PopupItems& siblings, int16_t step, const std::string& after_code);
  int16_t AskNewKey(const PopupItems& siblings);
  int16_t KeyStep() const;
  void AddGridRow(const QModelIndex& parent_row, const std::shared_ptr<PopupItem>& item);
  std::shared_ptr<PopupItem> AddSiblingItem(const std::shared_ptr<PopupItem>& current);
  QModelIndex ParentRowOf(const PopupItem& item);
  void CopyPopupItem();
  void CopyPopupItemW_Children();
  void CloneNewItem(const std::shared_ptr<PopupItem>& target,
                    const std::shared_ptr<PopupItem>& source);
  void Paste();
  void CopyToClipboard();
  // Runs a user's command; an error it raises is told, not thrown on.
  template <typename Command>
  void Guarded(Command&& command);

  // --- workbooks ---
  std::optional<std::string> PickWorkbook();
  void ImportFromExcel();
  void ExportToExcel();

  // --- printing ---
  bool PrintOutline(QPrinter& printer);

  // --- validation and saving ---
  bool Validate();
  bool DosFileNameCheck(const std::string& name);
  void SaveChanges(bool save_as);
  void SaveData();
  void SaveDesign();
  void ChangeLevels();
  void LevelChangeKeyFormat(const std::shared_ptr<PopupItems>& items);
  void SaveLevelsCol();
  void ChangeFields();
  void SaveFieldsCol();

  bool eventFilter(QObject* watched, QEvent* event) override;

  PopupControlEdit* q;

  // Control state.
  std::string SourcePath;
  std::string SourceFile;
  bool DataMode = false;
  bool DataChanged = false;
  bool Loading = false;
  bool Opening = false;
  bool FieldsChanged = false;
  bool LevelsChanged = false;
  // The outline was filled during the OpenPopup under way.
  bool filled_while_opening = false;
  uint32_t EditBackColor = kDefaultEditBackColor;
  // The level and parent the next new item receives.
  int16_t AddLevel = 0;
  std::shared_ptr<PopupItem> AddParent;

  std::shared_ptr<PopupClass> popup;

  std::shared_ptr<MessageBox> messages;
  std::shared_ptr<FileDialog> file_dialog;
  std::shared_ptr<Progress> progress;
  std::shared_ptr<Clipboard> clipboard;
  std::shared_ptr<NewKeyPrompt> new_key_prompt;

  // The working lists and the data view's outline.
  LevelListModel* LevelList = nullptr;
  FieldListModel* FieldList = nullptr;
  DataGridModel* grid = nullptr;

  // Child controls, named as the component names them.
  TabStrip* tbsZephyrPopup = nullptr;
  QFrame* fraDesignMode = nullptr;
  QGroupBox* fraPopupTitle = nullptr;
  QLineEdit* txtTitle = nullptr;
  QGroupBox* fraPopupFields = nullptr;
  QTableView* grdFields = nullptr;
  QPushButton* cmdAddField = nullptr;
  QPushButton* cmdDeleteField = nullptr;
  QToolButton* cmdUp = nullptr;
  QToolButton* cmdDown = nullptr;
  QGroupBox* fraQuestionLevels = nullptr;
  QTableView* grdLevels = nullptr;
  QPushButton* cmdAddLevels = nullptr;
  QPushButton* cmdDeleteLevels = nullptr;
  QGroupBox* fraImportExport = nullptr;
  QPushButton* cmdImport = nullptr;
  QPushButton* cmdExport = nullptr;
  QFrame* FraDataMode = nullptr;
  QFrame* fraButtons = nullptr;
  QLabel* lblAdd = nullptr;
  std::vector<QPushButton*> cmdAdd;  // cmdAdd[i - 1] is button i
  QFrame* fraStepDelete = nullptr;
  QLabel* lblStep = nullptr;
  QComboBox* cboStep = nullptr;
  QPushButton* cmdDelete = nullptr;
  QTreeView* DataGrid = nullptr;
  QLineEdit* txtFind = nullptr;
  QTimer* find_timer = nullptr;
  QLabel* Label1 = nullptr;
  QMenu* mnuPopupAction = nullptr;
  QAction* mnuAddChild = nullptr;
  QAction* mnuAddSibling = nullptr;
  QAction* sep0 = nullptr;
  QMenu* mnucopy = nullptr;
  QAction* mnuCopywithout = nullptr;
  QAction* mnucopywithchildren = nullptr;
  QAction* mnuPaste = nullptr;
  QAction* mnuDelete = nullptr;
};

template <typename Command>
void EditorState::Guarded(Command&& command) {
  try {
    command();
  } catch (const Error& error) {
    Tell("Run-time error '" + std::to_string(error.Number()) + "':\r\n\r\n" + error.Description(),
         MessageButtons::kOk, {}, MessageIcon::kCritical);
  } catch (const std::exception& error) {
    // Nothing may unwind through the event loop.
    Tell(std::string("Unexpected error: ") + error.what(), MessageButtons::kOk, {},
         MessageIcon::kCritical);
  }
}

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_EDITOR_STATE_H_
