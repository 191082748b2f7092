#include "calc_setup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "file_error.h"
#include "options.h"
#include "usage_error.h"
#include "zephyr/excel/calc_pipe.h"

namespace zephyr::cli {

const char* const kCalcSetupUsage =
    "usage: zpopup calc-setup\n\n"
    "Makes LibreOffice Calc listen on the pipe 'zpopup import --calc', 'zpopup\n"
    "export --calc' and the editor's Import and Export buttons reach it by\n"
    "($ZEPHYR_CALC_PIPE, else zephyrpopup), from its next start: the setting goes\n"
    "into the user's LibreOffice profile (a named pipe only, never a network\n"
    "port). While LibreOffice runs, its profile is left alone and the command\n"
    "says how to make the running copy listen at once, then exits 1.\n";

namespace {

namespace fs = std::filesystem;

constexpr const char* kSettingPath = "/org.openoffice.Setup/Office";
constexpr const char* kSettingName = "ooSetupConnectionURL";

// The user's LibreOffice profile: $XDG_CONFIG_HOME (else ~/.config)/libreoffice/4/user.
fs::path ProfileFolder() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const char* home = std::getenv("HOME");
  fs::path base = config && *config ? fs::path(config)
                  : home && *home
                      ? fs::path(home) / ".config"
                      : throw UsageError{"calc-setup: neither HOME nor XDG_CONFIG_HOME is set"};
  return base / "libreoffice" / "4" / "user";
}

// True when a LibreOffice of this user runs: it rewrites its settings when it
// ends, so they are not touched meanwhile.
bool OfficeRunning() {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/proc", error)) {
    std::ifstream comm(entry.path() / "comm");
    std::string name;
    if (!std::getline(comm, name) || name != "soffice.bin") continue;
    // An office that ended but was never reaped runs no more.
    std::ifstream stat_file(entry.path() / "stat");
    std::string stat_line;
    std::getline(stat_file, stat_line);
    size_t state = stat_line.rfind(") ");
    if (state != std::string::npos && stat_line.compare(state + 2, 1, "Z") == 0) continue;
    struct stat info {};
    if (::stat(entry.path().c_str(), &info) == 0 && info.st_uid == ::getuid()) return true;
  }
  return false;
}

std::string SettingItem(const std::string& url) {
  return std::string("<item oor:path=\"") + kSettingPath + "\"><prop oor:name=\"" + kSettingName +
         "\" oor:op=\"fuse\"><value>" + url + "</value></prop></item>";
}

// The settings file with the connection setting in it: the item replaced
// where there is one, else added before the end.
std::string WithSetting(std::string settings, const std::string& item) {
  size_t name = settings.find(std::string("oor:name=\"") + kSettingName + "\"");
  if (name != std::string::npos) {
    size_t start = settings.rfind("<item ", name);
    size_t end = settings.find("</item>", name);
    if (start != std::string::npos && end != std::string::npos) {
      return settings.replace(start, end + 7 - start, item);
    }
  }
  size_t close = settings.rfind("</oor:items>");
  if (close == std::string::npos) return {};
  return settings.insert(close, item + "\n");
}

}  // namespace

int CalcSetup(const Arguments& args) {
  ParsedOptions options(args, {});
  if (!options.Positional().empty()) throw UsageError{"calc-setup takes no arguments"};
  const std::string url = "pipe,name=" + excel::CalcPipeName() + ";urp;StarOffice.ComponentContext";
  if (OfficeRunning()) {
    std::fprintf(stderr,
                 "zpopup: LibreOffice is running, so its settings are left alone. Make it listen "
                 "now with\n  soffice '--accept=%s'\nor run 'zpopup calc-setup' again after "
                 "closing it, so that it listens whenever it starts.\n",
                 url.c_str());
    return kProblemsFound;
  }
  fs::path folder = ProfileFolder();
  fs::path file = folder / "registrymodifications.xcu";
  std::string settings =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<oor:items "
      "xmlns:oor=\"http://openoffice.org/2001/registry\" "
      "xmlns:xs=\"http://www.w3.org/2001/XMLSchema\" "
      "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n</oor:items>\n";
  if (fs::exists(file)) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    if (!in) throw FileError{file.string(), "cannot be read"};
    settings = text.str();
  }
  std::string changed = WithSetting(settings, SettingItem(url));
  if (changed.empty()) throw FileError{file.string(), "is no LibreOffice settings file"};
  std::error_code error;
  fs::create_directories(folder, error);
  fs::path work = file;
  work += ".zpopup";
  {
    std::ofstream out(work, std::ios::binary | std::ios::trunc);
    out << changed;
    if (!out.flush()) throw FileError{work.string(), "cannot be written"};
  }
  fs::rename(work, file, error);
  if (error) throw FileError{file.string(), error.message()};
  std::fprintf(stderr,
               "zpopup: LibreOffice Calc listens on the pipe '%s' from its next start (%s)\n",
               excel::CalcPipeName().c_str(), file.c_str());
  return kSuccess;
}

}  // namespace zephyr::cli
