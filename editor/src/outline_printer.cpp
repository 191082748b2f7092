#include "outline_printer.h"

#include <QFontMetrics>
#include <QPagedPaintDevice>
#include <QPainter>
#include <algorithm>

namespace zephyr::editor {

namespace {

constexpr int kIndentPerLevel = 3;  // in average character widths
constexpr int kColumnGap = 2;       // in average character widths

}  // namespace

int OutlinePrinter::Print(QPainter& painter, QPagedPaintDevice& device) const {
  const QRect page = painter.viewport();
  const QFontMetrics metrics = painter.fontMetrics();
  QFont bold_font = painter.font();
  bold_font.setBold(true);
  // Headings and the title row are bold.
  const QFontMetrics bold_metrics(bold_font, &device);
  const int line = metrics.lineSpacing() * 5 / 4;
  const int indent = kIndentPerLevel * metrics.averageCharWidth();
  const int gap = kColumnGap * metrics.averageCharWidth();
  const int columns = static_cast<int>(headings_.size());

  // Every column as wide as its widest text, the indentation included.
  std::vector<int> widths(static_cast<size_t>(columns), 0);
  for (int column = 0; column < columns; ++column) {
    widths[static_cast<size_t>(column)] =
        bold_metrics.horizontalAdvance(headings_[column]) + metrics.averageCharWidth();
  }
  for (const PrintedRow& row : rows_) {
    for (int column = 0; column < columns && column < row.cells.size(); ++column) {
      const QFontMetrics& used = row.depth == 0 ? bold_metrics : metrics;
      // A little room, so that rounding never elides the widest text.
      int width = used.horizontalAdvance(row.cells[column]) + metrics.averageCharWidth();
      if (column == 0) width += row.depth * indent;
      widths[static_cast<size_t>(column)] = std::max(widths[static_cast<size_t>(column)], width);
    }
  }
  int total = 0;
  for (int width : widths) total += width;
  // A table wider than the page shares the page out in proportion.
  int available = page.width() - gap * columns;
  if (total > available && total > 0 && available > 0) {
    for (int& width : widths) width = static_cast<int>(int64_t{width} * available / total);
  }

  const int footer = line;
  const int rows_per_page = std::max(1, (page.height() - line - footer) / line);
  const int pages =
      std::max(1, static_cast<int>((rows_.size() + rows_per_page - 1) / rows_per_page));
  auto draw_row = [&](int y, const QStringList& cells, int depth, bool bold) {
    QFont font = painter.font();
    font.setBold(bold);
    painter.setFont(font);
    int x = page.left();
    for (int column = 0; column < columns; ++column) {
      int width = widths[static_cast<size_t>(column)];
      int shift = column == 0 ? depth * indent : 0;
      QRect cell(x + shift, y, std::max(width - shift, 0), line);
      QString text = column < cells.size() ? cells[column] : QString();
      const QFontMetrics& used = bold ? bold_metrics : metrics;
      painter.drawText(cell, Qt::AlignLeft | Qt::AlignVCenter,
                       used.elidedText(text, Qt::ElideRight, cell.width()));
      x += width + gap;
    }
  };
  size_t next = 0;
  for (int number = 1; number <= pages; ++number) {
    if (number > 1) device.newPage();
    int y = page.top();
    draw_row(y, headings_, 0, true);
    painter.drawLine(page.left(), y + line, page.right(), y + line);
    y += line;
    for (int i = 0; i < rows_per_page && next < rows_.size(); ++i, ++next) {
      const PrintedRow& row = rows_[next];
      draw_row(y, row.cells, row.depth, row.depth == 0);
      y += line;
    }
    QRect foot(page.left(), page.bottom() - footer, page.width(), footer);
    painter.drawText(foot, Qt::AlignHCenter | Qt::AlignBottom,
                     QStringLiteral("Page %1 of %2").arg(number).arg(pages));
  }
  return pages;
}

}  // namespace zephyr::editor
