#include "xml_parser.h"

#include <expat.h>

#include <exception>
#include <memory>

#include "zephyr/excel/workbook.h"

namespace zephyr::excel {

namespace {

// State shared with expat's C callbacks. A callback never lets an exception
// cross expat; it stops the parser and keeps the exception for later.
struct ParseState {
  XML_Parser parser = nullptr;
  XmlHandler* handler = nullptr;
  bool stopped = false;          // the handler ended the parse
  bool refused_doctype = false;  // a DTD or entity declaration appeared
  std::exception_ptr error;

  void Stop() {
    stopped = true;
    XML_StopParser(parser, XML_FALSE);
  }
  template <typename Call>
  void Guard(Call call) {
    if (stopped) return;
    try {
      if (!call()) Stop();
    } catch (...) {
      error = std::current_exception();
      Stop();
    }
  }
};

void OnStart(void* data, const XML_Char* name, const XML_Char** attributes) {
  auto* state = static_cast<ParseState*>(data);
  state->Guard([&] { return state->handler->StartElement(LocalName(name), attributes); });
}

void OnEnd(void* data, const XML_Char* name) {
  auto* state = static_cast<ParseState*>(data);
  state->Guard([&] { return state->handler->EndElement(LocalName(name)); });
}

void OnText(void* data, const XML_Char* text, int length) {
  auto* state = static_cast<ParseState*>(data);
  state->Guard(
      [&] { return state->handler->Text(std::string_view(text, static_cast<size_t>(length))); });
}

void OnDoctype(void* data, const XML_Char*, const XML_Char*, const XML_Char*, int) {
  auto* state = static_cast<ParseState*>(data);
  state->refused_doctype = true;
  state->Stop();
}

void OnEntity(void* data, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
              const XML_Char*, const XML_Char*, const XML_Char*) {
  auto* state = static_cast<ParseState*>(data);
  state->refused_doctype = true;
  state->Stop();
}

struct ParserFree {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

}  // namespace

std::string_view LocalName(std::string_view name) {
  size_t colon = name.rfind(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

const char* FindAttribute(const char** attributes, std::string_view name) {
  for (; attributes[0] != nullptr; attributes += 2) {
    if (LocalName(attributes[0]) == name) return attributes[1];
  }
  return nullptr;
}

void ParseXmlEntry(const ZipArchive& archive, std::string_view entry, XmlHandler& handler) {
  std::unique_ptr<XML_ParserStruct, ParserFree> parser(XML_ParserCreate(nullptr));
  if (!parser) throw std::bad_alloc();
  ParseState state;
  state.parser = parser.get();
  state.handler = &handler;
  XML_SetUserData(parser.get(), &state);
  XML_SetElementHandler(parser.get(), OnStart, OnEnd);
  XML_SetCharacterDataHandler(parser.get(), OnText);
  XML_SetStartDoctypeDeclHandler(parser.get(), OnDoctype);
  XML_SetEntityDeclHandler(parser.get(), OnEntity);
  XML_SetParamEntityParsing(parser.get(), XML_PARAM_ENTITY_PARSING_NEVER);

  auto fail = [&](const std::string& reason) {
    throw WorkbookError(WorkbookError::Kind::kMalformed, archive.path(),
                        std::string(entry) + ": " + reason);
  };
  auto check = [&](XML_Status status) {
    if (state.error) std::rethrow_exception(state.error);
    if (state.refused_doctype) fail("document type declarations are not allowed");
    if (status == XML_STATUS_ERROR && !state.stopped) {
      fail("XML error at line " + std::to_string(XML_GetCurrentLineNumber(parser.get())) + ": " +
           XML_ErrorString(XML_GetErrorCode(parser.get())));
    }
  };
  archive.Read(entry, [&](std::string_view chunk) {
    check(XML_Parse(parser.get(), chunk.data(), static_cast<int>(chunk.size()), XML_FALSE));
    return !state.stopped;
  });
  if (!state.stopped) check(XML_Parse(parser.get(), nullptr, 0, XML_TRUE));
}

}  // namespace zephyr::excel
