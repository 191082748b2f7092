// zpopup: create and inspect popups from the command line.
//
// POPUP names a popup by folder and base name (examples/Products for
// examples/Products.ZPT and examples/Products.ZPD); a path ending in .ZPT or
// .ZPD, in any letter case, names the same popup.
// Exit codes: 0 success, 1 the command ran and found problems, 2 usage errors
// or unreadable input.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "zephyr/runtime/popup_class.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/text.h"

namespace {

constexpr int kOk = 0;
constexpr int kUsage = 2;

struct PopupName {
  std::string folder;
  std::string base;
};

PopupName ParsePopupName(const std::string& argument) {
  std::filesystem::path path(argument);
  std::string extension = zephyr::UpperAscii(path.extension().string());
  if (extension == ".ZPT" || extension == ".ZPD") path.replace_extension();
  PopupName name;
  name.folder = path.parent_path().string();
  name.base = path.filename().string();
  return name;
}

void Configure(zephyr::PopupClass& popup, const PopupName& name) {
  popup.PopupPath(name.folder);
  popup.DataSource(name.base);
}

const char* kMainUsage =
    "usage: zpopup COMMAND [ARGS]\n\n"
    "commands:\n"
    "  info POPUP   title, question levels and fields of a popup\n"
    "  new POPUP --title T --level Q [--level Q ...] [--field NAME:LENGTH ...]\n"
    "               create a popup with that design and no items\n\n"
    "Run 'zpopup COMMAND --help' for the details of one command.\n";

const char* kInfoUsage =
    "usage: zpopup info POPUP\n\n"
    "Prints the popup's title, its question levels and its fields with their lengths.\n";

const char* kNewUsage =
    "usage: zpopup new POPUP --title T --level Q [--level Q ...] [--field NAME:LENGTH ...]\n\n"
    "Creates a popup with the given title, question levels (top level first) and\n"
    "companion fields, and no items.\n";

int UsageError(const char* usage, const std::string& problem) {
  std::fprintf(stderr, "zpopup: %s\n%s", problem.c_str(), usage);
  return kUsage;
}

bool WantsHelp(const std::vector<std::string>& args) {
  for (const auto& arg : args) {
    if (arg == "--help" || arg == "-h") return true;
  }
  return false;
}

int Info(const std::vector<std::string>& args) {
  if (WantsHelp(args)) return std::fputs(kInfoUsage, stdout), kOk;
  if (args.size() != 1) return UsageError(kInfoUsage, "info takes one POPUP");
  zephyr::PopupClass popup;
  Configure(popup, ParsePopupName(args[0]));
  popup.LoadTemplate();
  std::printf("Title: %s\n", popup.Title().c_str());
  std::printf("Levels: %d\n", popup.Levels());
  int32_t number = 1;
  for (const auto& level : *popup.PopupLevels()) {
    std::printf("  %d. %s\n", number++, level->Question().ToText().c_str());
  }
  std::printf("Fields: %d\n", popup.PopupFields()->Count());
  for (const auto& field : *popup.PopupFields()) {
    std::printf("  %d. %s (%d)\n", field->Index(), field->Name().c_str(), field->FieldLength());
  }
  return kOk;
}

int New(const std::vector<std::string>& args) {
  if (WantsHelp(args)) return std::fputs(kNewUsage, stdout), kOk;
  std::string target, title;
  bool has_title = false;
  std::vector<std::string> levels;
  std::vector<std::pair<std::string, int16_t>> fields;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    bool has_value = i + 1 < args.size();
    if (arg == "--title" || arg == "--level" || arg == "--field") {
      if (!has_value) return UsageError(kNewUsage, arg + " needs a value");
      const std::string& value = args[++i];
      if (arg == "--title") {
        title = value;
        has_title = true;
      } else if (arg == "--level") {
        levels.push_back(value);
      } else {
        size_t colon = value.rfind(':');
        int16_t length = 0;
        try {
          if (colon == std::string::npos) throw std::invalid_argument("no colon");
          length = zephyr::TextToInt16(value.substr(colon + 1));
        } catch (const std::exception&) {
          return UsageError(kNewUsage, "--field takes NAME:LENGTH, not '" + value + "'");
        }
        if (length < 1 || length > 254) {
          return UsageError(kNewUsage, "field length must be 1 to 254 in '" + value + "'");
        }
        fields.emplace_back(value.substr(0, colon), length);
      }
    } else if (!arg.empty() && arg[0] == '-') {
      return UsageError(kNewUsage, "unknown option " + arg);
    } else if (target.empty()) {
      target = arg;
    } else {
      return UsageError(kNewUsage, "new takes one POPUP");
    }
  }
  if (target.empty()) return UsageError(kNewUsage, "new needs a POPUP");
  if (!has_title) return UsageError(kNewUsage, "new needs --title");
  if (levels.empty()) return UsageError(kNewUsage, "new needs at least one --level");
  if (levels.size() > 49) return UsageError(kNewUsage, "a popup has at most 49 levels");

  PopupName name = ParsePopupName(target);
  zephyr::PopupClass popup;
  Configure(popup, name);
  popup.Title(title);
  popup.Levels(static_cast<int16_t>(levels.size()));
  int32_t number = 1;
  for (const auto& question : levels) popup.PopupLevels()->Add(zephyr::Variant(question), number++);
  popup.PopupFields()->Add("Popup Code", static_cast<int16_t>(2 * levels.size()), 0, 0);
  number = 1;
  for (const auto& [field_name, length] : fields) {
    popup.PopupFields()->Add(field_name, length, static_cast<int16_t>(number++), 0);
  }
  popup.WriteTemplate();
  std::string folder = name.folder.empty() ? "." : name.folder;
  std::filesystem::rename(folder + "/" + name.base + ".bpt", folder + "/" + name.base + ".ZPT");
  return kOk;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) return UsageError(kMainUsage, "no command given");
  std::string command = args.front();
  args.erase(args.begin());
  try {
    if (command == "--help" || command == "-h") return std::fputs(kMainUsage, stdout), kOk;
    if (command == "info") return Info(args);
    if (command == "new") return New(args);
    return UsageError(kMainUsage, "unknown command '" + command + "'");
  } catch (const zephyr::Error& error) {
    std::fprintf(stderr, "zpopup: %s\n", error.Description().c_str());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zpopup: %s\n", error.what());
  }
  return kUsage;
}
