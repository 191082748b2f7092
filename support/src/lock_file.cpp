#include "zephyr/support/lock_file.h"

#include <pwd.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

namespace zephyr {
namespace {

constexpr std::string_view kEditorMark = "zpopup-edit:";

std::string Escaped(const std::string& field) {
  std::string out;
  for (char c : field) {
    if (c == ',' || c == ';' || c == '\\') out += '\\';
    out += c;
  }
  return out;
}

std::string HostName() {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0) return "localhost";
  return name;
}

std::string FileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

LockOwner LockOwner::Current() {
  LockOwner owner;
  if (const passwd* entry = getpwuid(geteuid())) {
    owner.user = entry->pw_name;
    std::string gecos = entry->pw_gecos ? entry->pw_gecos : "";
    owner.full_name = gecos.substr(0, gecos.find(','));
  }
  owner.host = HostName();
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char time[32];
  std::strftime(time, sizeof time, "%d.%m.%Y %H:%M", &local);
  owner.time = time;
  owner.pid = static_cast<int>(getpid());
  return owner;
}

std::string LockOwner::DisplayName() const {
  return full_name.empty() ? user : full_name;
}

std::string LockOwner::Describe() const {
  return "Opened by " + DisplayName() + " on " + host + " since " + time;
}

bool LockOwner::IsStale() const {
  if (pid <= 0 || host != HostName()) return false;
  return kill(pid, 0) != 0 && errno == ESRCH;
}

bool LockOwner::IsThisProcess() const {
  return pid == static_cast<int>(getpid()) && host == HostName();
}

std::string LockOwner::Format() const {
  return Escaped(full_name) + ',' + Escaped(user) + ',' + Escaped(host) + ',' + Escaped(time) +
         ',' + std::string(kEditorMark) + std::to_string(pid) + ';';
}

std::optional<LockOwner> LockOwner::Parse(const std::string& line) {
  std::vector<std::string> fields(1);
  bool ended = false;
  for (size_t i = 0; i < line.size() && !ended; ++i) {
    char c = line[i];
    if (c == '\\' && i + 1 < line.size()) {
      fields.back() += line[++i];
    } else if (c == ',') {
      fields.emplace_back();
    } else if (c == ';') {
      ended = true;
    } else {
      fields.back() += c;
    }
  }
  if (!ended || fields.size() != 5) return std::nullopt;
  LockOwner owner{fields[0], fields[1], fields[2], fields[3], 0};
  const std::string& last = fields[4];
  if (last.starts_with(kEditorMark)) {
    const char* digits = last.data() + kEditorMark.size();
    std::from_chars(digits, last.data() + last.size(), owner.pid);
  }
  return owner;
}

std::string LockFile::PathFor(const std::string& template_path) {
  std::filesystem::path path(template_path);
  return (path.parent_path() / (".~lock." + path.filename().string() + "#")).string();
}

std::optional<LockOwner> LockFile::Read(const std::string& template_path) {
  std::string path = PathFor(template_path);
  if (!std::filesystem::exists(path)) return std::nullopt;
  return LockOwner::Parse(FileText(path));
}

LockFile LockFile::Take(const std::string& template_path) {
  LockFile lock;
  lock.line_ = LockOwner::Current().Format() + "\n";
  std::string path = PathFor(template_path);
  // Written beside and renamed, so a reader never sees half a line.
  std::string work = path + "." + std::to_string(getpid());
  {
    std::ofstream out(work, std::ios::binary | std::ios::trunc);
    out << lock.line_;
    out.close();
    if (!out) {
      std::error_code error(errno ? errno : EIO, std::generic_category());
      std::filesystem::remove(work, error);
      throw std::system_error(error, "cannot write " + path);
    }
  }
  std::filesystem::rename(work, path);
  lock.path_ = path;
  return lock;
}

bool LockFile::IsFor(const std::string& template_path) const {
  std::error_code error;
  return Held() && std::filesystem::equivalent(path_, PathFor(template_path), error);
}

LockFile::~LockFile() {
  Release();
}

LockFile::LockFile(LockFile&& other) noexcept
    : path_(std::exchange(other.path_, {})), line_(std::move(other.line_)) {}

LockFile& LockFile::operator=(LockFile&& other) noexcept {
  if (this != &other) {
    Release();
    path_ = std::exchange(other.path_, {});
    line_ = std::move(other.line_);
  }
  return *this;
}

void LockFile::Release() {
  if (path_.empty()) return;
  // Another editor opened anyway and wrote its own: that one stays.
  if (FileText(path_) == line_) {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  path_.clear();
}

}  // namespace zephyr
