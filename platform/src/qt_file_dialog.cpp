#include "zephyr/platform/qt_file_dialog.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QRegularExpression>

namespace zephyr::platform {

namespace {

QStringList SplitPatterns(const QString& patterns) {
  static const QRegularExpression separators(QStringLiteral("[;\\s]+"));
  return patterns.split(separators, Qt::SkipEmptyParts);
}

QString NameFilter(const QString& description, const QString& pattern) {
  QStringList patterns = SplitPatterns(pattern);
  QString text = description.trimmed();
  QString joined = patterns.join(QLatin1Char(' '));
  // Qt takes the patterns from the last parentheses, separated by blanks: a
  // description that already lists them keeps them, with blanks between.
  static const QRegularExpression listed(QStringLiteral("\\(([^()]*)\\)$"));
  QRegularExpressionMatch match = listed.match(text);
  if (match.hasMatch() && SplitPatterns(match.captured(1)) == patterns) {
    return text.left(match.capturedStart(1)) + joined + QLatin1Char(')');
  }
  if (text.isEmpty()) return joined;
  return text + QStringLiteral(" (") + joined + QLatin1Char(')');
}

}  // namespace

QStringList ToQtNameFilters(std::string_view filter) {
  QStringList parts =
      QString::fromUtf8(filter.data(), static_cast<qsizetype>(filter.size())).split('|');
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    if (parts[i].trimmed().isEmpty() && parts[i + 1].trimmed().isEmpty()) continue;
    filters << NameFilter(parts[i], parts[i + 1]);
  }
  return filters;
}

std::optional<std::string> QtFileDialog::ShowSave(const FileDialogRequest& request) {
  return Run(request, true);
}

std::optional<std::string> QtFileDialog::ShowOpen(const FileDialogRequest& request) {
  return Run(request, false);
}

std::optional<std::string> QtFileDialog::Run(const FileDialogRequest& request, bool save) {
  if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return std::nullopt;

  QFileDialog dialog(owner_, QString::fromStdString(request.title));
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  dialog.setOption(QFileDialog::DontConfirmOverwrite, !save);
  QStringList filters = ToQtNameFilters(request.filter);
  if (!filters.isEmpty()) dialog.setNameFilters(filters);
  if (!request.initial_folder.empty()) {
    dialog.setDirectory(QString::fromStdString(request.initial_folder));
  }
  QString suffix = QString::fromStdString(request.default_extension);
  while (suffix.startsWith(QLatin1Char('.'))) suffix.remove(0, 1);
  if (save && !suffix.isEmpty()) dialog.setDefaultSuffix(suffix);
  if (!request.file_name.empty()) dialog.selectFile(QString::fromStdString(request.file_name));

  if (request.centre && owner_) {
    dialog.adjustSize();
    QRect frame = dialog.frameGeometry();
    frame.moveCenter(owner_->mapToGlobal(owner_->rect().center()));
    dialog.move(frame.topLeft());
  }

  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  QStringList chosen = dialog.selectedFiles();
  if (chosen.isEmpty() || chosen.first().isEmpty()) return std::nullopt;
  return QFileInfo(chosen.first()).absoluteFilePath().toStdString();
}

}  // namespace zephyr::platform
