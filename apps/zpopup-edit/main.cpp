// zpopup-edit [POPUP]: edits a popup in a desktop window.
// zpopup-edit --screenshot OUT.png [--view design|data] POPUP: renders the
// window offscreen to a PNG and exits.
#include <QApplication>
#include <QCommandLineParser>
#include <QPixmap>
#include <QTimer>
#include <cstdio>
#include <cstdlib>

#include "main_window.h"

namespace {

int Screenshot(zephyr::apps::MainWindow& window, const QString& out, const QString& view) {
  window.resize(960, 600);
  window.show();
  if (view == QLatin1String("design")) window.Editor()->ShowView(false);
  if (view == QLatin1String("data")) window.Editor()->ShowView(true);
  QApplication::processEvents();
  if (!window.grab().save(out, "PNG")) {
    std::fprintf(stderr, "zpopup-edit: %s: cannot write the picture\n", qPrintable(out));
    return 2;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  // A screenshot needs no display.
  for (int i = 1; i < argc; ++i) {
    std::string_view option(argv[i]);
    bool batch = option == "--screenshot" || option == "--print-pdf";
    if (batch && !std::getenv("QT_QPA_PLATFORM")) {
      setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
  }
  QApplication app(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("ZephyrPopup"));
  QApplication::setApplicationName(QStringLiteral("zpopup-edit"));
  QApplication::setApplicationDisplayName(QStringLiteral("ZephyrPopup Editor"));

  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Edits a popup: its design and its items."));
  parser.addHelpOption();
  QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                QStringLiteral("Render the window to a PNG file and exit."),
                                QStringLiteral("OUT.png"));
  QCommandLineOption view(QStringLiteral("view"),
                          QStringLiteral("The view to show: design or data."),
                          QStringLiteral("design|data"));
  QCommandLineOption print_pdf(QStringLiteral("print-pdf"),
                               QStringLiteral("Print the data view to a PDF file and exit."),
                               QStringLiteral("OUT.pdf"));
  parser.addOption(screenshot);
  parser.addOption(print_pdf);
  parser.addOption(view);
  parser.addPositionalArgument(
      QStringLiteral("POPUP"),
      QStringLiteral("The popup: folder and base name, or its .ZPT file."));
  parser.process(app);
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
  if (parser.isSet(screenshot)) return Screenshot(window, parser.value(screenshot), view_name);
  if (parser.isSet(print_pdf)) return window.PrintPdf(parser.value(print_pdf)) ? 0 : 2;
  window.show();
  if (popups.isEmpty()) window.Editor()->OpenPopup("", "");  // a new popup, title first
  return app.exec();
}
