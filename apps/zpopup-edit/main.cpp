// zpopup-edit [POPUP]: edits a popup in a desktop window.
// zpopup-edit --screenshot OUT.png [--view design|data] [--select KEY]
// [--find TEXT] [--menu] [--delete] [--edit-menu] POPUP: renders the window
// offscreen to a PNG and exits.
#include <QApplication>
#include <QCommandLineParser>
#include <QEventLoop>
#include <QIcon>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPixmap>
#include <QTimer>
#include <QTreeView>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "main_window.h"

namespace {

struct ScreenshotScene {
  QString view;
  // The popup key of the item made current, two digits per level: "1020".
  QString select;
  QString find;
  // Open the item menu over the current row.
  bool item_menu = false;
  // Delete the selected item first.
  bool delete_item = false;
  // Open the Edit menu under the menu bar.
  bool edit_menu = false;
};

// Makes the outline row of the item with this key current.
bool SelectItem(QTreeView* outline, const QString& key) {
  QModelIndex row = outline->model()->index(0, 0);
  for (qsizetype at = 0; at + 2 <= key.size() && row.isValid(); at += 2) {
    QModelIndex parent = row;
    row = QModelIndex();
    for (int child = 0; child < outline->model()->rowCount(parent); ++child) {
      QModelIndex candidate = outline->model()->index(child, 0, parent);
      if (candidate.data().toString() == key.mid(at, 2)) row = candidate;
    }
  }
  if (!row.isValid() || key.size() % 2 != 0) return false;
  outline->setCurrentIndex(row);
  outline->scrollTo(row);
  return true;
}

int Screenshot(zephyr::apps::MainWindow& window, const QString& out, const ScreenshotScene& scene) {
  window.resize(960, 600);
  window.show();
  zephyr::editor::PopupControlEdit* editor = window.Editor();
  if (scene.view == QLatin1String("design")) editor->ShowView(false);
  if (scene.view == QLatin1String("data")) editor->ShowView(true);
  if (!scene.select.isEmpty() &&
      !SelectItem(editor->findChild<QTreeView*>(QStringLiteral("DataGrid")), scene.select)) {
    std::fprintf(stderr, "zpopup-edit: no item has the key %s\n", qPrintable(scene.select));
    return 2;
  }
  if (scene.delete_item) editor->DeleteCurrentItem();
  if (!scene.find.isEmpty()) {
    editor->FocusFind();
    editor->findChild<QLineEdit*>(QStringLiteral("txtFind"))->setText(scene.find);
  }
  // Let the find box's delayed filter and the repaint run.
  QEventLoop settle;
  QTimer::singleShot(400, &settle, &QEventLoop::quit);
  settle.exec();
  QPixmap shot = window.grab();
  // A menu is a window of its own: it is drawn onto the picture where it opened.
  auto draw_menu = [&](QMenu* menu, QPoint at) {
    menu->popup(at);
    QEventLoop shown;
    QTimer::singleShot(200, &shown, &QEventLoop::quit);
    shown.exec();
    QPainter painter(&shot);
    painter.drawPixmap(window.mapFromGlobal(menu->pos()), menu->grab());
  };
  if (scene.item_menu) {
    auto* outline = editor->findChild<QTreeView*>(QStringLiteral("DataGrid"));
    QRect row = outline->visualRect(outline->currentIndex());
    draw_menu(editor->findChild<QMenu*>(QStringLiteral("mnuPopupAction")),
              outline->viewport()->mapToGlobal(row.center()));
  }
  if (scene.edit_menu) {
    auto* edit = window.findChild<QMenu*>(QStringLiteral("menuEdit"));
    QRect title = window.menuBar()->actionGeometry(edit->menuAction());
    draw_menu(edit, window.menuBar()->mapToGlobal(title.bottomLeft()));
  }
  if (!shot.save(out, "PNG")) {
    std::fprintf(stderr, "zpopup-edit: %s: cannot write the picture\n", qPrintable(out));
    return 2;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  // A screenshot, a printout, the help and the version need no display.
  for (int i = 1; i < argc; ++i) {
    std::string_view option(argv[i]);
    bool batch = option == "--screenshot" || option == "--print-pdf" || option == "--help" ||
                 option == "-h" || option == "--version" || option == "-v";
    if (batch && !std::getenv("QT_QPA_PLATFORM")) {
      setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
  }
  // A spreadsheet program that goes away during an import or export is an
  // error the editor reports, not the end of the editor and its unsaved work.
  std::signal(SIGPIPE, SIG_IGN);
  QApplication app(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("ZephyrPopup"));
  QApplication::setApplicationName(QStringLiteral("zpopup-edit"));
  QApplication::setApplicationDisplayName(QStringLiteral("ZephyrPopup Editor"));
  QApplication::setApplicationVersion(QStringLiteral(ZEPHYR_VERSION));
  // The installed desktop entry and the icon the package puts in the theme.
  QGuiApplication::setDesktopFileName(QStringLiteral("zpopup-edit"));
  QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("zpopup-edit")));

  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Edits a popup: its design and its items."));
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption version = parser.addVersionOption();
  QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                QStringLiteral("Render the window to a PNG file and exit."),
                                QStringLiteral("OUT.png"));
  QCommandLineOption view(QStringLiteral("view"),
                          QStringLiteral("The view to show: design or data."),
                          QStringLiteral("design|data"));
  QCommandLineOption print_pdf(QStringLiteral("print-pdf"),
                               QStringLiteral("Print the data view to a PDF file and exit."),
                               QStringLiteral("OUT.pdf"));
  QCommandLineOption select(QStringLiteral("select"),
                            QStringLiteral("With --screenshot: make the item with this key current "
                                           "in the data view."),
                            QStringLiteral("KEY"));
  QCommandLineOption find(QStringLiteral("find"),
                          QStringLiteral("With --screenshot: type this text into the find box."),
                          QStringLiteral("TEXT"));
  QCommandLineOption item_menu(
      QStringLiteral("menu"),
      QStringLiteral("With --screenshot: open the item menu over the current row."));
  parser.addOption(screenshot);
  parser.addOption(print_pdf);
  parser.addOption(view);
  parser.addOption(select);
  parser.addOption(find);
  QCommandLineOption delete_item(
      QStringLiteral("delete"),
      QStringLiteral("With --screenshot and --select: delete that item first."));
  QCommandLineOption edit_menu(QStringLiteral("edit-menu"),
                               QStringLiteral("With --screenshot: open the Edit menu."));
  parser.addOption(item_menu);
  parser.addOption(delete_item);
  parser.addOption(edit_menu);
  parser.addPositionalArgument(
      QStringLiteral("POPUP"),
      QStringLiteral("The popup: folder and base name, or its .ZPT file."));
  // A usage error exits 2, as zpopup's do.
  if (!parser.parse(QApplication::arguments())) {
    std::fprintf(stderr, "zpopup-edit: %s\n", qPrintable(parser.errorText()));
    return 2;
  }
  if (parser.isSet(help)) parser.showHelp(0);
  if (parser.isSet(version)) parser.showVersion();
  const QStringList popups = parser.positionalArguments();
  if (popups.size() > 1) {
    std::fprintf(stderr, "zpopup-edit: give at most one POPUP\n");
    return 2;
  }
  QString view_name = parser.value(view);
  if (!view_name.isEmpty() && view_name != QLatin1String("design") &&
      view_name != QLatin1String("data")) {
    std::fprintf(stderr, "zpopup-edit: --view takes design or data\n");
    return 2;
  }

  zephyr::apps::MainWindow window;
  bool batch = parser.isSet(screenshot) || parser.isSet(print_pdf);
  if (batch) window.SetBatch();
  if (!popups.isEmpty() && !window.OpenNamed(popups.first()) && batch) return 2;
  if (parser.isSet(screenshot)) {
    ScreenshotScene scene{view_name,
                          parser.value(select),
                          parser.value(find),
                          parser.isSet(item_menu),
                          parser.isSet(delete_item),
                          parser.isSet(edit_menu)};
    if (scene.view.isEmpty() &&
        (!scene.select.isEmpty() || !scene.find.isEmpty() || scene.item_menu)) {
      scene.view = QStringLiteral("data");
    }
    return Screenshot(window, parser.value(screenshot), scene);
  }
  if (parser.isSet(print_pdf)) return window.PrintPdf(parser.value(print_pdf)) ? 0 : 2;
  window.show();
  bool recovered = window.OfferRecovery();
  if (popups.isEmpty() && !recovered) window.Editor()->OpenPopup("", "");  // title first
  return app.exec();
}
