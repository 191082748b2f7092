#include "commands.h"

#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>

#include "codepage_report.h"
#include "calc_setup.h"
#include "exchange_commands.h"
#include "file_error.h"
#include "json.h"
#include "options.h"
#include "popup_name.h"
#include "terminal_progress.h"
#include "usage_error.h"
#include "zephyr/runtime/design_rules.h"
#include "zephyr/runtime/popup_check.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/file_utils.h"
#include "zephyr/support/lock_file.h"
#include "zephyr/support/text.h"
#include "zephyr/table/dbase.h"

namespace zephyr::cli {

namespace {

// The one POPUP argument of a command that takes nothing else.
PopupName OnlyPopup(const ParsedOptions& options, const char* command) {
  if (options.Positional().size() != 1) throw UsageError{std::string(command) + " takes one POPUP"};
  return ParsePopup(options.Positional()[0]);
}

// A popup that the command needs must exist.
void RequireExisting(const PopupName& name) {
  if (!name.Exists()) {
    throw RuntimeError(RuntimeErrorCode::kFileNotFound,
                       "no popup '" + name.Display() + "' (its .ZPT file is missing)");
  }
}

}  // namespace

PopupName ParsePopup(const std::string& argument) {
  PopupName name = PopupName::Parse(argument);
  std::error_code error;
  if (std::filesystem::is_directory(argument, error) && !name.Exists()) {
    throw FileError{argument,
                    "is a folder; name a popup by its folder and base name "
                    "(examples/Products)"};
  }
  return name;
}

std::unique_ptr<PopupClass> OpenExisting(const PopupName& name) {
  ForFile(name.File(".ZPT"), [&] { RequireExisting(name); });
  auto popup = std::make_unique<PopupClass>();
  auto progress = std::make_shared<TerminalProgress>();
  popup->SetProgress(progress);
  name.Apply(*popup);
  OpenPopupFiles(*popup, name, *progress);
  return popup;
}

void OpenPopupFiles(PopupClass& popup, const PopupName& name, const TerminalProgress& progress) {
  try {
    popup.OpenPopup();
  } catch (const Error& error) {
    throw FileError{name.File(progress.Started() ? ".ZPD" : ".ZPT"), error.Description()};
  }
}

namespace {

// Visits every item depth first, in tree order.
void Walk(PopupItems& items, const std::function<void(PopupItem&)>& visit) {
  for (const auto& item : items) {
    visit(*item);
    if (item->HasChildren()) Walk(*item->Children(), visit);
  }
}

std::string JoinedValues(PopupItem& item) {
  std::string joined;
  for (const auto& value : *item.PopupValues()) {
    if (!joined.empty()) joined += " | ";
    joined += value->Value();
  }
  return joined;
}

// Rows of the table that hold no item: their parent is missing.
void TellRowsLeftOut(PopupClass& popup, const PopupName& name, int64_t items) {
  int64_t left_out = popup.RowCount() - items;
  if (left_out <= 0) return;
  std::fprintf(stderr, "zpopup: %s: %lld %s left out: no parent item ('zpopup check' names %s)\n",
               name.File(".ZPD").c_str(), static_cast<long long>(left_out),
               left_out == 1 ? "row was" : "rows were", left_out == 1 ? "it" : "them");
}

int Show(const Arguments& args) {
  PopupName name = OnlyPopup(ParsedOptions(args, {}), "show");
  auto popup = OpenExisting(name);
  std::printf("%s\n", popup->Title().c_str());
  Walk(*popup->PopupItems(), [](PopupItem& item) {
    std::string indent(2 * static_cast<size_t>(std::max<int16_t>(item.Level() - 1, 0)), ' ');
    std::printf("%s%s  %s\n", indent.c_str(), OwnCode(item.PopupKey()).c_str(),
                JoinedValues(item).c_str());
  });
  TellRowsLeftOut(*popup, name, CountItemsInTree(*popup->PopupItems()));
  return kSuccess;
}

void DumpItems(PopupItems& items, std::string& out) {
  out += "[";
  bool first = true;
  for (const auto& item : items) {
    if (!first) out += ", ";
    first = false;
    out += "{\"key\": " + JsonString(item->PopupKey()) +
           ", \"level\": " + std::to_string(item->Level()) + ", \"values\": [";
    bool first_value = true;
    for (const auto& value : *item->PopupValues()) {
      if (!first_value) out += ", ";
      first_value = false;
      out += JsonString(value->Value());
    }
    out += "], \"children\": ";
    if (item->HasChildren()) {
      DumpItems(*item->Children(), out);
    } else {
      out += "[]";
    }
    out += "}";
  }
  out += "]";
}

int Dump(const Arguments& args) {
  ParsedOptions options(args, {{"--format", true}});
  if (options.Has("--format") && options.Value("--format") != "json") {
    throw UsageError{"--format takes json"};
  }
  auto popup = OpenExisting(OnlyPopup(options, "dump"));
  std::string out = "{\"title\": " + JsonString(popup->Title()) + ", \"levels\": [";
  bool first = true;
  for (const auto& level : *popup->PopupLevels()) {
    out += (first ? "" : ", ") + JsonString(level->Question().ToText());
    first = false;
  }
  out += "], \"fields\": [";
  first = true;
  for (const auto& field : *popup->PopupFields()) {
    out += std::string(first ? "" : ", ") + "{\"name\": " + JsonString(field->Name()) +
           ", \"length\": " + std::to_string(field->FieldLength()) + "}";
    first = false;
  }
  out += "], \"items\": ";
  DumpItems(*popup->PopupItems(), out);
  out += "}\n";
  std::fputs(out.c_str(), stdout);
  return kSuccess;
}

int Info(const Arguments& args) {
  PopupName name = OnlyPopup(ParsedOptions(args, {}), "info");
  auto popup = OpenExisting(name);
  std::printf("Title: %s\n", popup->Title().c_str());
  std::printf("Levels: %d\n", popup->Levels());
  int32_t number = 1;
  for (const auto& level : *popup->PopupLevels()) {
    std::printf("  %d. %s\n", number++, level->Question().ToText().c_str());
  }
  std::printf("Fields: %d\n", popup->PopupFields()->Count());
  for (const auto& field : *popup->PopupFields()) {
    std::printf("  %d. %s (%d)\n", field->Index(), field->Name().c_str(), field->FieldLength());
  }
  int64_t count = 0;
  int depth = 0;
  Walk(*popup->PopupItems(), [&](PopupItem& item) {
    ++count;
    depth = std::max<int>(depth, item.Level());
  });
  std::printf("Items: %lld\n", static_cast<long long>(count));
  std::printf("Depth: %d\n", depth);
  if (auto owner = LockFile::Read(WithTrailingSlash(name.folder) + popup->TemplateFileName())) {
    std::printf("In use: %s%s\n", owner->Describe().c_str(),
                owner->IsStale() ? " (that editor has stopped)" : "");
  }
  TellRowsLeftOut(*popup, name, count);
  return kSuccess;
}

int Check(const Arguments& args) {
  PopupName name = OnlyPopup(ParsedOptions(args, {}), "check");
  PopupClass popup;
  name.Apply(popup);
  ForFile(name.File(".ZPT"), [&] {
    RequireExisting(name);
    popup.LoadTemplate();
  });
  std::string folder = WithTrailingSlash(name.folder);
  std::string data = folder + ResolveCaseVariant(name.folder, popup.DataFileName());
  if (!PathExists(data)) {  // a popup without items has nothing to check
    std::puts("no problems found");
    return kSuccess;
  }
  Variant values;
  ForFile(data, [&] {
    dBase table;
    table.OpenFile(data);
    values = table.GetTableValues();
    table.CloseFile();
  });
  std::vector<CheckFinding> findings;
  if (values.IsArray()) findings = CheckPopupKeys(*values.AsArray(), popup.Levels());
  for (const auto& finding : findings) {
    std::printf("%s: row %d: %s\n", data.c_str(), finding.row, finding.text.c_str());
  }
  if (findings.empty()) std::puts("no problems found");
  return findings.empty() ? kSuccess : kProblemsFound;
}

// The design `new` was given, checked by the rules the editor applies.
DesignDraft NewDesign(const ParsedOptions& options) {
  if (!options.Has("--title")) throw UsageError{"new needs --title"};
  if (!options.Has("--level")) throw UsageError{"new needs at least one --level"};
  DesignDraft draft;
  draft.title = *options.Value("--title");
  draft.levels = options.Values("--level");
  for (const std::string& value : options.Values("--field")) {
    size_t colon = value.rfind(':');
    if (colon == std::string::npos || colon == 0) {
      throw UsageError{"--field takes NAME:LENGTH, not '" + value + "'"};
    }
    draft.fields.push_back({value.substr(0, colon), value.substr(colon + 1)});
  }
  if (auto broken = CheckDesign(draft)) throw UsageError{broken->message};
  for (const auto& field : draft.fields) {
    double length = 0;
    ParseNumber(field.length, &length);
    if (length != static_cast<int>(length)) {
      throw UsageError{"field length must be a whole number, not '" + field.length + "' for " +
                       field.name};
    }
  }
  for (size_t i = 0; i < draft.fields.size(); ++i) {
    for (size_t j = 0; j < i; ++j) {
      if (UpperAscii(std::string(Trim(draft.fields[i].name))) ==
          UpperAscii(std::string(Trim(draft.fields[j].name)))) {
        throw UsageError{"two fields are named '" + std::string(Trim(draft.fields[i].name)) + "'"};
      }
    }
  }
  return draft;
}

int New(const Arguments& args) {
  ParsedOptions options(
      args, {{"--title", true}, {"--level", true}, {"--field", true}, {"--strict", false}});
  if (options.Positional().size() != 1) throw UsageError{"new takes one POPUP"};
  DesignDraft draft = NewDesign(options);
  PopupName name = ParsePopup(options.Positional()[0]);
  ForFile(name.File(".ZPT"), [&] {
    if (name.Exists()) {
      throw RuntimeError(RuntimeErrorCode::kFileAlreadyExists,
                         "popup '" + name.Display() + "' exists already; not overwritten");
    }
  });
  RequireWritableFolder(name.folder);
  PopupClass popup;
  name.Apply(popup);
  popup.Title(std::string(Trim(draft.title)));
  std::vector<PopupClass::LevelSpec> level_specs;
  int16_t number = 1;
  for (const auto& question : draft.levels) {
    level_specs.push_back({Variant(std::string(Trim(question))), number++});
  }
  popup.ReplaceLevels(level_specs);
  std::vector<PopupClass::FieldSpec> field_specs;
  number = 1;
  for (const auto& field : draft.fields) {
    double length = 0;
    ParseNumber(field.length, &length);
    field_specs.push_back(
        {std::string(Trim(field.name)), static_cast<int16_t>(length), 0, number++});
  }
  popup.ReplaceFields(field_specs);
  CodePageReport unencodable;
  unencodable.CheckPopup(popup);
  if (!unencodable.TellAndAllowSave(options.Has("--strict"))) return kProblemsFound;
  ForFile(name.File(".ZPD"), [&] {
    popup.WriteTemplate();
    popup.SavePopup();
    popup.SaveClose();
  });
  return kSuccess;
}

}  // namespace

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {"show", "the title and every item, indented by level",
       "usage: zpopup show POPUP\n\n"
       "Prints the title, then one line per item in tree order, indented two\n"
       "spaces per level below 1: the item's two-digit code, two spaces, and its\n"
       "values joined by \" | \".\n",
       Show},
      {"dump", "the loaded popup as JSON",
       "usage: zpopup dump POPUP [--format json]\n\n"
       "Prints the popup as UTF-8 JSON: title, levels, fields (name, length) and\n"
       "the item tree (key, level, values, children), keys and values as loaded.\n",
       Dump},
      {"info", "title, levels, fields, item count, depth and who has it open",
       "usage: zpopup info POPUP\n\n"
       "Prints the title, the question levels, the fields with their lengths, the\n"
       "number of items and the depth of the tree; and, while an editor has the\n"
       "popup open, who and since when (\"In use: Opened by USER on HOST since\n"
       "TIME\").\n",
       Info},
      {"check", "structural problems of the data table",
       "usage: zpopup check POPUP\n\n"
       "Prints one line per problem in the data table: rows without a parent,\n"
       "duplicate keys, keys of the wrong width or with codes that are not two\n"
       "digits, keys with a blank own code. Exits 1 when there are any.\n",
       Check},
      {"new", "a new popup with a design and no items",
       "usage: zpopup new POPUP --title T --level Q [--level Q ...] [--field NAME:LENGTH ...]\n\n"
       "Creates a popup with the title, the question levels (top level first) and\n"
       "the companion fields (lengths 1 to 254), with no items. An existing popup\n"
       "is not overwritten.\n",
       New},
      {"import", "a popup from the active sheet of a workbook", kImportUsage, Import},
      {"export", "a popup to a new workbook", kExportUsage, Export},
      {"calc-setup", "make LibreOffice Calc listen for import and export", kCalcSetupUsage,
       CalcSetup},
  };
  return commands;
}

int RunCommand(const Command& command, const Arguments& args) {
  for (const auto& arg : args) {
    if (arg == "--help" || arg == "-h") {
      std::fputs(command.usage, stdout);
      return kSuccess;
    }
  }
  try {
    return command.run(args);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "zpopup: %s\n%s", error.message.c_str(), command.usage);
    return kUsageError;
  }
}

}  // namespace zephyr::cli
