#include "zephyr/excel/running_calc.h"

#include <algorithm>
#include <com/sun/star/beans/XPropertySet.hpp>
#include <com/sun/star/bridge/UnoUrlResolver.hpp>
#include <com/sun/star/bridge/XUnoUrlResolver.hpp>
#include <com/sun/star/connection/NoConnectException.hpp>
#include <com/sun/star/container/XEnumeration.hpp>
#include <com/sun/star/container/XEnumerationAccess.hpp>
#include <com/sun/star/container/XIndexAccess.hpp>
#include <com/sun/star/container/XNamed.hpp>
#include <com/sun/star/frame/Desktop.hpp>
#include <com/sun/star/frame/XController.hpp>
#include <com/sun/star/frame/XDesktop2.hpp>
#include <com/sun/star/frame/XModel.hpp>
#include <com/sun/star/sheet/FormulaResult.hpp>
#include <com/sun/star/sheet/XCellRangeAddressable.hpp>
#include <com/sun/star/sheet/XCellRangeData.hpp>
#include <com/sun/star/sheet/XCellRangesQuery.hpp>
#include <com/sun/star/sheet/XSheetCellCursor.hpp>
#include <com/sun/star/sheet/XSheetCellRanges.hpp>
#include <com/sun/star/sheet/XSpreadsheet.hpp>
#include <com/sun/star/sheet/XSpreadsheetDocument.hpp>
#include <com/sun/star/sheet/XSpreadsheetView.hpp>
#include <com/sun/star/sheet/XUniqueCellFormatRangesSupplier.hpp>
#include <com/sun/star/sheet/XUsedAreaCursor.hpp>
#include <com/sun/star/table/XCell.hpp>
#include <com/sun/star/table/XCellRange.hpp>
#include <com/sun/star/util/XNumberFormats.hpp>
#include <com/sun/star/util/XNumberFormatsSupplier.hpp>
#include <cppuhelper/bootstrap.hxx>
#include <limits>
#include <map>
#include <optional>
#include <rtl/bootstrap.hxx>
#include <rtl/uri.hxx>
#include <tuple>
#include <unordered_set>
#include <utility>
#include <vector>

#include "number_format.h"

namespace zephyr::excel {

namespace {

using namespace ::com::sun::star;
using Kind = WorkbookError::Kind;
using rtl::OUString;

std::string Utf8(const OUString& text) {
  rtl::OString bytes = rtl::OUStringToOString(text, RTL_TEXTENCODING_UTF8);
  return std::string(bytes.getStr(), static_cast<size_t>(bytes.getLength()));
}

OUString Unicode(const std::string& text) {
  return OUString(text.data(), static_cast<sal_Int32>(text.size()), RTL_TEXTENCODING_UTF8);
}

// The local side of the bridge: only the types and the connector, made once.
uno::Reference<uno::XComponentContext> LocalContext() {
  static const uno::Reference<uno::XComponentContext> context = []() {
    rtl::Bootstrap::set("URE_BOOTSTRAP", ZEPHYR_URE_BOOTSTRAP);
    return cppu::defaultBootstrap_InitialComponentContext();
  }();
  return context;
}

uno::Reference<uno::XComponentContext> Connect(const std::string& pipe) {
  auto resolver = bridge::UnoUrlResolver::create(LocalContext());
  try {
    return uno::Reference<uno::XComponentContext>(
        resolver->resolve(Unicode("uno:pipe,name=" + pipe + ";urp;StarOffice.ComponentContext")),
        uno::UNO_QUERY_THROW);
  } catch (const connection::NoConnectException&) {
    throw WorkbookError(Kind::kNoProgram, kCalcName,
                        "nothing listens on the pipe '" + pipe + "' (see 'zpopup calc-setup')");
  }
}

// The document the user works on: the current one, else (a document loaded
// without a window is never current) the first spreadsheet open.
uno::Reference<sheet::XSpreadsheetDocument> CurrentSpreadsheet(
    const uno::Reference<frame::XDesktop2>& desktop) {
  uno::Reference<lang::XComponent> current = desktop->getCurrentComponent();
  if (current.is()) {
    uno::Reference<sheet::XSpreadsheetDocument> document(current, uno::UNO_QUERY);
    if (!document.is()) {
      throw WorkbookError(Kind::kNotWorksheet, kCalcName, "the current document is no spreadsheet");
    }
    return document;
  }
  uno::Reference<container::XEnumeration> open = desktop->getComponents()->createEnumeration();
  while (open->hasMoreElements()) {
    uno::Reference<sheet::XSpreadsheetDocument> document(open->nextElement(), uno::UNO_QUERY);
    if (document.is()) return document;
  }
  throw WorkbookError(Kind::kCannotOpen, kCalcName, "no spreadsheet document is open");
}

// UNO's own errors (the office went away half-way) as the workbook's.
template <typename Action>
auto Translated(Action&& action) {
  try {
    return action();
  } catch (const uno::Exception& error) {
    throw WorkbookError(Kind::kCannotOpen, kCalcName, Utf8(error.Message));
  }
}

class CalcWorkbook : public Workbook {
 public:
  explicit CalcWorkbook(uno::Reference<sheet::XSpreadsheetDocument> document)
      : document_(std::move(document)), sheets_(document_->getSheets(), uno::UNO_QUERY_THROW) {
    std::optional<std::string> shown;
    uno::Reference<frame::XModel> model(document_, uno::UNO_QUERY);
    if (model.is()) {
      uno::Reference<sheet::XSpreadsheetView> view(model->getCurrentController(), uno::UNO_QUERY);
      if (view.is()) shown = NameOf(uno::Any(view->getActiveSheet()));
    }
    // A document never saved has no file: it is named as Calc names it.
    path_ = model.is() ? Utf8(rtl::Uri::decode(model->getURL(), rtl_UriDecodeWithCharset,
                                               RTL_TEXTENCODING_UTF8))
                       : std::string();
    if (path_.empty()) path_ = "Untitled";
    for (sal_Int32 i = 0; i < sheets_->getCount(); ++i) {
      std::string name = NameOf(sheets_->getByIndex(i));
      if (shown && name == *shown) active_ = static_cast<size_t>(i);
      infos_.push_back({std::move(name), true});
    }
  }

  const std::vector<SheetInfo>& Sheets() const override { return infos_; }
  std::string DocumentPath() const override { return path_; }
  size_t ActiveSheet() const override { return active_; }

  Sheet ReadSheet(size_t index) override {
    return Translated([&]() { return Read(index); });
  }

 private:
  Sheet Read(size_t index) {
    uno::Reference<sheet::XSpreadsheet> sheet(sheets_->getByIndex(static_cast<sal_Int32>(index)),
                                              uno::UNO_QUERY_THROW);
    Sheet result;
    result.name = infos_.at(index).name;
    uno::Reference<sheet::XSheetCellCursor> cursor = sheet->createCursor();
    uno::Reference<sheet::XUsedAreaCursor> used(cursor, uno::UNO_QUERY_THROW);
    used->gotoStartOfUsedArea(false);
    used->gotoEndOfUsedArea(true);
    table::CellRangeAddress area =
        uno::Reference<sheet::XCellRangeAddressable>(cursor, uno::UNO_QUERY_THROW)
            ->getRangeAddress();
    // All values in one call: text as text, numbers as doubles, errors void.
    uno::Sequence<uno::Sequence<uno::Any>> values =
        uno::Reference<sheet::XCellRangeData>(cursor, uno::UNO_QUERY_THROW)->getDataArray();
    std::vector<bool> visible = VisibleRows(cursor, area);
    std::unordered_set<uint64_t> errors = ErrorCells(cursor);
    FormatMap formats = NumberFormats(cursor);

    result.rows.resize(static_cast<size_t>(area.EndRow) + 1);
    for (sal_Int32 r = 0; r < values.getLength(); ++r) {
      SheetRow& row = result.rows[static_cast<size_t>(area.StartRow + r)];
      row.hidden = !visible[static_cast<size_t>(r)];
      const uno::Sequence<uno::Any>& cells = values[r];
      row.cells.resize(static_cast<size_t>(area.StartColumn + cells.getLength()));
      for (sal_Int32 c = 0; c < cells.getLength(); ++c) {
        Cell& cell = row.cells[static_cast<size_t>(area.StartColumn + c)];
        OUString text;
        double number = 0;
        if (errors.count(CellKey(area.StartColumn + c, area.StartRow + r)) != 0) {
          cell.kind = CellKind::kError;  // "#N/A" and the like, whatever the array says
        } else if (cells[c] >>= text) {
          cell.kind = text.isEmpty() ? CellKind::kEmpty : CellKind::kText;
          cell.text = Utf8(text);
        } else if (cells[c] >>= number) {
          cell.kind = CellKind::kNumber;
          cell.text = formats.At(area.StartColumn + c, area.StartRow + r).Format(number);
        } else {
          cell.kind = CellKind::kError;
        }
      }
    }
    return result;
  }

  static std::string NameOf(const uno::Any& sheet) {
    return Utf8(uno::Reference<container::XNamed>(sheet, uno::UNO_QUERY_THROW)->getName());
  }

  // The cells whose formula ends in an error value, by CellKey: a look-up
  // per cell, however many ranges the errors make.
  static std::unordered_set<uint64_t> ErrorCells(
      const uno::Reference<sheet::XSheetCellCursor>& cursor) {
    uno::Reference<sheet::XSheetCellRanges> found(
        uno::Reference<sheet::XCellRangesQuery>(cursor, uno::UNO_QUERY_THROW)
            ->queryFormulaCells(sheet::FormulaResult::ERROR),
        uno::UNO_QUERY_THROW);
    std::unordered_set<uint64_t> cells;
    for (const table::CellRangeAddress& range : found->getRangeAddresses()) {
      for (sal_Int32 row = range.StartRow; row <= range.EndRow; ++row) {
        for (sal_Int32 column = range.StartColumn; column <= range.EndColumn; ++column) {
          cells.insert(CellKey(column, row));
        }
      }
    }
    return cells;
  }

  static uint64_t CellKey(sal_Int32 column, sal_Int32 row) {
    return (static_cast<uint64_t>(row) << 32) | static_cast<uint32_t>(column);
  }

  // Which rows of the area show: neither hidden nor filtered out.
  static std::vector<bool> VisibleRows(const uno::Reference<sheet::XSheetCellCursor>& cursor,
                                       const table::CellRangeAddress& area) {
    std::vector<bool> visible(static_cast<size_t>(area.EndRow - area.StartRow + 1), false);
    uno::Reference<sheet::XSheetCellRanges> shown(
        uno::Reference<sheet::XCellRangesQuery>(cursor, uno::UNO_QUERY_THROW)->queryVisibleCells(),
        uno::UNO_QUERY_THROW);
    for (const table::CellRangeAddress& range : shown->getRangeAddresses()) {
      for (sal_Int32 r = range.StartRow; r <= range.EndRow; ++r) {
        visible[static_cast<size_t>(r - area.StartRow)] = true;
      }
    }
    return visible;
  }

  // The number formats of a sheet's cells, found by the ranges that share
  // one format: a few calls however many cells there are.
  class FormatMap {
   public:
    void Add(const table::CellRangeAddress& range, size_t format) {
      for (sal_Int32 column = range.StartColumn; column <= range.EndColumn; ++column) {
        spans_[column].push_back({range.StartRow, range.EndRow, format});
      }
    }
    void Finish(std::vector<NumberFormat> formats) {
      formats_ = std::move(formats);
      for (auto& [column, spans] : spans_) std::sort(spans.begin(), spans.end());
    }
    // The format of a cell; General where none was found.
    const NumberFormat& At(sal_Int32 column, sal_Int32 row) const {
      auto spans = spans_.find(column);
      if (spans != spans_.end()) {
        auto after = std::upper_bound(spans->second.begin(), spans->second.end(),
                                      Span{row, std::numeric_limits<sal_Int32>::max(), 0});
        if (after != spans->second.begin() && std::prev(after)->last >= row) {
          return formats_[std::prev(after)->format];
        }
      }
      return general_;
    }

   private:
    struct Span {
      sal_Int32 first, last;
      size_t format;
      bool operator<(const Span& other) const {
        return std::tie(first, last) < std::tie(other.first, other.last);
      }
    };
    std::map<sal_Int32, std::vector<Span>> spans_;
    std::vector<NumberFormat> formats_;
    NumberFormat general_;
  };

  FormatMap NumberFormats(const uno::Reference<sheet::XSheetCellCursor>& cursor) {
    FormatMap map;
    std::vector<NumberFormat> formats;
    std::map<sal_Int32, size_t> by_key;
    uno::Reference<util::XNumberFormats> known =
        uno::Reference<util::XNumberFormatsSupplier>(document_, uno::UNO_QUERY_THROW)
            ->getNumberFormats();
    uno::Reference<container::XIndexAccess> groups =
        uno::Reference<sheet::XUniqueCellFormatRangesSupplier>(cursor, uno::UNO_QUERY_THROW)
            ->getUniqueCellFormatRanges();
    for (sal_Int32 i = 0; i < groups->getCount(); ++i) {
      uno::Reference<sheet::XSheetCellRanges> group(groups->getByIndex(i), uno::UNO_QUERY_THROW);
      sal_Int32 key = 0;
      uno::Reference<beans::XPropertySet>(group, uno::UNO_QUERY_THROW)
          ->getPropertyValue("NumberFormat") >>= key;
      auto [known_key, added] = by_key.emplace(key, formats.size());
      if (added) {
        OUString code;
        known->getByKey(key)->getPropertyValue("FormatString") >>= code;
        formats.emplace_back(Utf8(code));
      }
      for (const table::CellRangeAddress& range : group->getRangeAddresses()) {
        map.Add(range, known_key->second);
      }
    }
    map.Finish(std::move(formats));
    return map;
  }

  uno::Reference<sheet::XSpreadsheetDocument> document_;
  uno::Reference<container::XIndexAccess> sheets_;
  std::vector<SheetInfo> infos_;
  size_t active_ = 0;
  std::string path_;
};

}  // namespace

std::unique_ptr<Workbook> OpenRunningCalc(const std::string& pipe) {
  return Translated([&]() -> std::unique_ptr<Workbook> {
    uno::Reference<frame::XDesktop2> desktop = frame::Desktop::create(Connect(pipe));
    return std::make_unique<CalcWorkbook>(CurrentSpreadsheet(desktop));
  });
}

ExportReport ExportToRunningCalc(PopupClass& popup, std::string* sheet_name,
                                 const std::string& pipe) {
  return Translated([&]() {
    uno::Reference<frame::XDesktop2> desktop = frame::Desktop::create(Connect(pipe));
    uno::Reference<sheet::XSpreadsheetDocument> document = CurrentSpreadsheet(desktop);
    ExportedRows exported = ExportRows(popup);

    uno::Reference<sheet::XSpreadsheets> sheets = document->getSheets();
    std::string base = ExportSheetName(popup.Title());
    std::string name = base;
    for (int n = 2; sheets->hasByName(Unicode(name)); ++n) name = base + " " + std::to_string(n);
    sheets->insertNewByName(Unicode(name),
                            static_cast<sal_Int16>(sheets->getElementNames().getLength()));
    uno::Reference<sheet::XSpreadsheet> sheet(sheets->getByName(Unicode(name)),
                                              uno::UNO_QUERY_THROW);

    // One rectangle of text, written in one call: the keys stay text.
    size_t width = 0;
    for (const auto& row : exported.rows) width = std::max(width, row.size());
    uno::Sequence<uno::Sequence<uno::Any>> cells(static_cast<sal_Int32>(exported.rows.size()));
    for (size_t r = 0; r < exported.rows.size(); ++r) {
      uno::Sequence<uno::Any> row(static_cast<sal_Int32>(width));
      for (size_t c = 0; c < width; ++c) {
        const auto& texts = exported.rows[r];
        row.getArray()[c] <<= Unicode(c < texts.size() ? texts[c] : std::string());
      }
      cells.getArray()[r] = row;
    }
    uno::Reference<table::XCellRange> range = sheet->getCellRangeByPosition(
        0, 0, static_cast<sal_Int32>(width) - 1, static_cast<sal_Int32>(exported.rows.size()) - 1);
    uno::Reference<sheet::XCellRangeData>(range, uno::UNO_QUERY_THROW)->setDataArray(cells);

    uno::Reference<frame::XModel> model(document, uno::UNO_QUERY);
    if (model.is()) {
      uno::Reference<sheet::XSpreadsheetView> view(model->getCurrentController(), uno::UNO_QUERY);
      if (view.is()) view->setActiveSheet(sheet);
    }
    if (sheet_name) *sheet_name = name;
    return exported.report;
  });
}

SheetSource RunningCalc(const std::string& pipe) {
  SheetSource source;
  source.name = kCalcName;
  source.open = [pipe]() { return OpenRunningCalc(pipe); };
  return source;
}

}  // namespace zephyr::excel
