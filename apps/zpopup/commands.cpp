#include "commands.h"

#include <cstdio>
#include <functional>
#include <memory>

#include "exchange_commands.h"
#include "file_error.h"
#include "json.h"
#include "popup_name.h"
#include "terminal_progress.h"
#include "usage_error.h"
#include "zephyr/runtime/popup_check.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/file_utils.h"
#include "zephyr/table/dbase.h"

namespace zephyr::cli {

namespace {

// The one POPUP argument of a command that takes nothing else.
PopupName OnlyPopup(const Arguments& args, const char* command) {
  if (args.size() != 1 || args[0].empty() || args[0][0] == '-') {
    throw UsageError{std::string(command) + " takes one POPUP"};
  }
  return PopupName::Parse(args[0]);
}

// A popup that the command needs must exist.
void RequireExisting(const PopupName& name) {
  if (!name.Exists()) {
    throw RuntimeError(RuntimeErrorCode::kFileNotFound,
                       "no popup '" + name.Display() + "' (its .ZPT file is missing)");
  }
}

}  // namespace

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

int Show(const Arguments& args) {
  auto popup = OpenExisting(OnlyPopup(args, "show"));
  std::printf("%s\n", popup->Title().c_str());
  Walk(*popup->PopupItems(), [](PopupItem& item) {
    std::string indent(2 * static_cast<size_t>(std::max<int16_t>(item.Level() - 1, 0)), ' ');
    std::printf("%s%s  %s\n", indent.c_str(), OwnCode(item.PopupKey()).c_str(),
                JoinedValues(item).c_str());
  });
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
  Arguments rest;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--format") {
      if (i + 1 >= args.size() || args[i + 1] != "json") {
        throw UsageError{"--format takes json"};
      }
      ++i;
    } else {
      rest.push_back(args[i]);
    }
  }
  auto popup = OpenExisting(OnlyPopup(rest, "dump"));
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
  auto popup = OpenExisting(OnlyPopup(args, "info"));
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
  return kSuccess;
}

int Check(const Arguments& args) {
  PopupName name = OnlyPopup(args, "check");
  PopupClass popup;
  name.Apply(popup);
  ForFile(name.File(".ZPT"), [&] {
    RequireExisting(name);
    popup.LoadTemplate();
  });
  std::string folder = WithTrailingSlash(name.folder);
  std::string data = folder + ResolveCaseVariant(name.folder, popup.DataFileName());
  if (!PathExists(data)) return kSuccess;  // a popup without items has nothing to check
  Variant values;
  ForFile(data, [&] {
    dBase table;
    table.OpenFile(data);
    values = table.GetTableValues();
    table.CloseFile();
  });
  if (!values.IsArray()) return kSuccess;
  auto findings = CheckPopupKeys(*values.AsArray(), popup.Levels());
  for (const auto& finding : findings) {
    std::printf("%s: row %d: %s\n", data.c_str(), finding.row, finding.text.c_str());
  }
  return findings.empty() ? kSuccess : kProblemsFound;
}

int New(const Arguments& args) {
  std::string target, title;
  bool has_title = false;
  std::vector<std::string> levels;
  std::vector<std::pair<std::string, int16_t>> fields;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--title" || arg == "--level" || arg == "--field") {
      if (i + 1 >= args.size()) throw UsageError{arg + " needs a value"};
      const std::string& value = args[++i];
      if (arg == "--title") {
        title = value;
        has_title = true;
      } else if (arg == "--level") {
        levels.push_back(value);
      } else {
        size_t colon = value.rfind(':');
        double length = 0;
        if (colon == std::string::npos || colon == 0 ||
            !ParseNumber(value.substr(colon + 1), &length)) {
          throw UsageError{"--field takes NAME:LENGTH, not '" + value + "'"};
        }
        if (length < 1 || length > 254 || length != static_cast<int>(length)) {
          throw UsageError{"field length must be a whole number from 1 to 254 in '" + value + "'"};
        }
        fields.emplace_back(value.substr(0, colon), static_cast<int16_t>(length));
      }
    } else if (!arg.empty() && arg[0] == '-') {
      throw UsageError{"unknown option " + arg};
    } else if (target.empty()) {
      target = arg;
    } else {
      throw UsageError{"new takes one POPUP"};
    }
  }
  if (target.empty()) throw UsageError{"new needs a POPUP"};
  if (!has_title) throw UsageError{"new needs --title"};
  if (levels.empty()) throw UsageError{"new needs at least one --level"};
  if (levels.size() > 127) throw UsageError{"a popup has at most 127 levels"};
  for (const std::string& text : levels) {
    if (text.find('"') != std::string::npos)
      throw UsageError{"questions cannot hold double quotes"};
  }
  if (title.find('"') != std::string::npos) throw UsageError{"the title cannot hold double quotes"};

  PopupName name = PopupName::Parse(target);
  ForFile(name.File(".ZPT"), [&] {
    if (name.Exists()) {
      throw RuntimeError(RuntimeErrorCode::kFileAlreadyExists,
                         "popup '" + name.Display() + "' exists already; not overwritten");
    }
  });
  PopupClass popup;
  name.Apply(popup);
  popup.Title(title);
  std::vector<PopupClass::LevelSpec> level_specs;
  int16_t number = 1;
  for (const auto& question : levels) level_specs.push_back({Variant(question), number++});
  popup.ReplaceLevels(level_specs);
  std::vector<PopupClass::FieldSpec> field_specs;
  number = 1;
  for (const auto& [field_name, length] : fields) {
    field_specs.push_back({field_name, length, 0, number++});
  }
  popup.ReplaceFields(field_specs);
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
      {"info", "title, levels, fields, item count and depth",
       "usage: zpopup info POPUP\n\n"
       "Prints the title, the question levels, the fields with their lengths, the\n"
       "number of items and the depth of the tree.\n",
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
