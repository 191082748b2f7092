// HeadlessOffice: a LibreOffice started without a window for tests and
// benchmarks, with a profile and a pipe of its own, killed by its process
// group when it goes.
#ifndef ZEPHYR_TESTS_HELPERS_HEADLESS_OFFICE_H_
#define ZEPHYR_TESTS_HELPERS_HEADLESS_OFFICE_H_

#include <sys/types.h>

#include <string>
#include <vector>

#include "helpers/temp_dir.h"

namespace zephyr::testing {

class HeadlessOffice {
 public:
  // Starts the office; Started() says whether there was one to start. Not
  // copied: the profile folder is its own.
  HeadlessOffice();
  ~HeadlessOffice();

  bool Started() const { return process_ > 0; }
  const std::string& Pipe() const { return pipe_; }
  // Opens a workbook without a window, works its formulas out and shows one
  // of its sheets (0-based), as a user's office would show it. Waits for the
  // office to listen first.
  void Show(const std::string& path, int sheet);
  // Closes every open document.
  void CloseAll();

 private:
  // Starts the office with these arguments; waits for it to end when asked.
  static pid_t Run(std::vector<std::string> args, bool wait);

  pid_t process_ = 0;
  std::string pipe_;
  TempDir profile_;
};

}  // namespace zephyr::testing

#endif  // ZEPHYR_TESTS_HELPERS_HEADLESS_OFFICE_H_
