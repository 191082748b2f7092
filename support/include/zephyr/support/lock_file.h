// LockFile: who has a popup open in an editor. While an editor holds a popup
// it keeps a small file beside the template, ".~lock.NAME.ZPT#", in the
// format office programs use for their documents: one line of five
// comma-separated fields ending in ';' (full name, user name, host, time as
// "DD.MM.YYYY HH:MM", and a last field that office programs fill with their
// profile's address and this editor with "zpopup-edit:PID"). Commas,
// semicolons and backslashes inside a field are escaped with a backslash.
//
// The lock is advisory: programs that only read (the command line) never
// take it, and a second editor may open the popup anyway.
#ifndef ZEPHYR_SUPPORT_LOCK_FILE_H_
#define ZEPHYR_SUPPORT_LOCK_FILE_H_

#include <optional>
#include <string>

namespace zephyr {

struct LockOwner {
  std::string full_name;
  std::string user;
  std::string host;
  std::string time;  // as written: "DD.MM.YYYY HH:MM"
  int pid = 0;       // 0 when another kind of program wrote the lock

  // The person and process running this program, now.
  static LockOwner Current();
  // The full name when there is one, else the user name.
  std::string DisplayName() const;
  // "Opened by USER on HOST since TIME".
  std::string Describe() const;
  // True when the lock was written by an editor on this host whose process
  // is gone: nobody holds it any more.
  bool IsStale() const;
  // True when this very process wrote it.
  bool IsThisProcess() const;

  // One lock line, and back; a line that is not five fields gives nothing.
  std::string Format() const;
  static std::optional<LockOwner> Parse(const std::string& line);
};

class LockFile {
 public:
  // The lock file's path for a template at `template_path`.
  static std::string PathFor(const std::string& template_path);
  // The owner named by the lock beside the template, if there is one.
  static std::optional<LockOwner> Read(const std::string& template_path);

  LockFile() = default;
  // Writes this process's lock beside the template, replacing any other
  // (stale, or one the user chose to ignore). Raises std::system_error when
  // the folder cannot take the file.
  static LockFile Take(const std::string& template_path);
  // Removes the lock, if it is still this process's.
  ~LockFile();
  LockFile(LockFile&& other) noexcept;
  LockFile& operator=(LockFile&& other) noexcept;
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

  bool Held() const { return !path_.empty(); }
  // The lock file's path; empty when none is held.
  const std::string& Path() const { return path_; }
  // True when this is the held lock of the template, however it is named.
  bool IsFor(const std::string& template_path) const;
  // Removes the lock now (see the destructor).
  void Release();

 private:
  std::string path_;
  std::string line_;
};

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_LOCK_FILE_H_
