// OutlinePrinter: lays the data view's rows out on printed pages. The heading
// row is repeated at the top of every page, items are indented by their
// outline level, columns are as wide as their widest text (shrunk together
// when the page is narrower), a row is never split across pages, and every
// page carries its number in the footer.
#ifndef ZEPHYR_EDITOR_OUTLINE_PRINTER_H_
#define ZEPHYR_EDITOR_OUTLINE_PRINTER_H_

#include <QStringList>
#include <vector>

class QPagedPaintDevice;
class QPainter;

namespace zephyr::editor {

struct PrintedRow {
  QStringList cells;  // one text per column
  int depth = 0;      // 0 for the title row
};

class OutlinePrinter {
 public:
  OutlinePrinter(QStringList headings, std::vector<PrintedRow> rows)
      : headings_(std::move(headings)), rows_(std::move(rows)) {}

  // Paints every page on a painter already begun on the device. Answers the
  // number of pages.
  int Print(QPainter& painter, QPagedPaintDevice& device) const;

 private:
  QStringList headings_;
  std::vector<PrintedRow> rows_;
};

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_OUTLINE_PRINTER_H_
