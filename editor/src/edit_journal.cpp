#include "edit_journal.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUuid>
#include <algorithm>
#include <stdexcept>
#include <utility>

#include "zephyr/support/file_utils.h"
#include "zephyr/support/lock_file.h"

namespace zephyr::editor {
namespace {

constexpr const char* kOwnerFile = "editor";

QString Root() {
  return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
         QStringLiteral("/journal");
}

QStringList EditFiles(const QDir& folder) {
  return folder.entryList({QStringLiteral("*.edit")}, QDir::Files, QDir::Name);
}

void Save(const QString& name, const QByteArray& bytes) {
  QSaveFile file(name);
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
    throw std::runtime_error("cannot keep unsaved edits in " + name.toStdString() + ": " +
                             file.errorString().toStdString());
  }
}

// A file's size and modification time, or "-" when there is none.
std::string MarkOf(const std::string& path) {
  QFileInfo info(QString::fromStdString(path));
  if (!info.exists()) return "-";
  return std::to_string(info.size()) + " " +
         std::to_string(info.lastModified().toMSecsSinceEpoch());
}

// The owner file: a lock line naming the process; the popup's folder and
// base name; then for each of its two files a line with its path and a line
// with its mark as the edits began ("changed" when another program had
// already changed the popup: no file will match it).
std::string OwnerText(const PopupClass& popup, const std::string& path, const std::string& file) {
  std::string text = LockOwner::Current().Format() + "\n" + path + "\n" + file + "\n";
  std::string folder = WithTrailingSlash(popup.PopupPath());
  const bool changed = popup.ChangedOnDisk();
  for (const std::string& name : {popup.TemplateFileName(), popup.DataFileName()}) {
    std::string full = popup.DataSource().empty() ? std::string() : folder + name;
    text += full + "\n" + (changed ? "changed" : MarkOf(full)) + "\n";
  }
  return text;
}

}  // namespace

std::vector<UnsavedEdits> EditJournal::Orphaned() {
  std::vector<std::pair<QDateTime, UnsavedEdits>> found;
  QDir root(Root());
  for (const QString& name : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
    QDir folder(root.filePath(name));
    QFile owner_file(folder.filePath(kOwnerFile));
    if (!owner_file.open(QIODevice::ReadOnly)) continue;
    QList<QByteArray> lines = owner_file.readAll().split('\n');
    if (lines.size() < 7) continue;
    auto owner = LockOwner::Parse(lines[0].toStdString());
    if (!owner || !owner->IsStale()) continue;  // its editor still runs, or not here
    QStringList edits = EditFiles(folder);
    if (edits.isEmpty()) {
      folder.removeRecursively();  // stopped before its first edit was written
      continue;
    }
    QDateTime last = QFileInfo(folder.filePath(edits.last())).lastModified();
    UnsavedEdits one{folder.absolutePath().toStdString(), lines[1].toStdString(),
                     lines[2].toStdString(),
                     last.toString(QStringLiteral("yyyy-MM-dd HH:mm")).toStdString()};
    for (int file = 3; file <= 5; file += 2) {
      if (MarkOf(lines[file].toStdString()) != lines[file + 1].toStdString()) {
        one.changed_on_disk = true;
      }
    }
    found.push_back({last, std::move(one)});
  }
  std::sort(found.begin(), found.end(),
            [](const auto& a, const auto& b) { return a.first > b.first; });
  std::vector<UnsavedEdits> edits;
  for (auto& [time, one] : found) edits.push_back(std::move(one));
  return edits;
}

std::string EditJournal::EditsOf(const UnsavedEdits& edits) {
  QDir folder(QString::fromStdString(edits.journal));
  std::string bytes;
  for (const QString& name : EditFiles(folder)) {
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::ReadOnly)) {
      throw std::runtime_error("cannot read " + file.fileName().toStdString());
    }
    bytes += file.readAll().toStdString();
  }
  return bytes;
}

void EditJournal::Remove(const UnsavedEdits& edits) {
  QDir(QString::fromStdString(edits.journal)).removeRecursively();
}

void EditJournal::Write(const EditRecord& record, const PopupClass& popup,
                        const std::string& path, const std::string& file) {
  if (folder_.isEmpty()) {
    QString folder = Root() + QLatin1Char('/') + QUuid::createUuid().toString(QUuid::WithoutBraces);
    if (!QDir().mkpath(folder)) {
      throw std::runtime_error("cannot make " + folder.toStdString() + " for unsaved edits");
    }
    folder_ = folder;
    next_ = 1;
    Save(folder_ + QLatin1Char('/') + kOwnerFile,
         QByteArray::fromStdString(OwnerText(popup, path, file)));
  }
  Save(QStringLiteral("%1/%2.edit").arg(folder_).arg(next_++, 6, 10, QLatin1Char('0')),
       QByteArray::fromStdString(record.Bytes()));
}

void EditJournal::Adopt(const UnsavedEdits& edits) {
  Discard();
  folder_ = QString::fromStdString(edits.journal);
  next_ = static_cast<int>(EditFiles(QDir(folder_)).size()) + 1;
  // This process holds it now; the popup's files stay as the edits found them.
  QFile owner_file(folder_ + QLatin1Char('/') + kOwnerFile);
  if (!owner_file.open(QIODevice::ReadOnly)) {
    throw std::runtime_error("cannot read " + owner_file.fileName().toStdString());
  }
  QByteArray owner = owner_file.readAll();
  owner_file.close();
  Save(owner_file.fileName(), QByteArray::fromStdString(LockOwner::Current().Format()) +
                                  owner.mid(owner.indexOf('\n')));
}

void EditJournal::Discard() {
  if (folder_.isEmpty()) return;
  QDir(folder_).removeRecursively();
  folder_.clear();
}

}  // namespace zephyr::editor
