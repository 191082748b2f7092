// XmlParser: streaming XML over expat for the parts of a workbook archive.
// Element and attribute names reach the handler without their namespace
// prefix ("c" for "x:c"). Document type and entity declarations are refused,
// so no entity is ever expanded.
#ifndef ZEPHYR_EXCEL_SRC_XML_PARSER_H_
#define ZEPHYR_EXCEL_SRC_XML_PARSER_H_

#include <string>
#include <string_view>

#include "zip_archive.h"

namespace zephyr::excel {

// Callbacks of one parse. `attributes` is expat's list: name, value, name,
// value, ..., null; read it with FindAttribute.
class XmlHandler {
 public:
  virtual ~XmlHandler() = default;
  // Return false from any callback to end the parse early (no error).
  virtual bool StartElement(std::string_view name, const char** attributes) = 0;
  virtual bool EndElement(std::string_view name) = 0;
  virtual bool Text(std::string_view text) = 0;
};

// The name without its namespace prefix.
std::string_view LocalName(std::string_view name);

// The value of the attribute whose local name is `name`, or null.
const char* FindAttribute(const char** attributes, std::string_view name);

// Parses one entry of the archive through the handler. Raises WorkbookError
// (kMalformed) naming the file and the entry for malformed XML or a document
// type declaration; the handler may raise WorkbookError too.
void ParseXmlEntry(const ZipArchive& archive, std::string_view entry, XmlHandler& handler);

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_SRC_XML_PARSER_H_
