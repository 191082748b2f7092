// An error of the component met while a command worked on one file. zpopup
// prints it as "zpopup: FILE: DESCRIPTION", so that the line names the file
// whatever the description says.
#ifndef ZEPHYR_APPS_ZPOPUP_FILE_ERROR_H_
#define ZEPHYR_APPS_ZPOPUP_FILE_ERROR_H_

#include <string>

#include "zephyr/support/errors.h"

namespace zephyr::cli {

struct FileError {
  std::string file;
  std::string description;
};

// Runs work; an error of the component that it raises comes out as a
// FileError for `file`.
template <typename Work>
void ForFile(const std::string& file, Work&& work) {
  try {
    work();
  } catch (const Error& error) {
    throw FileError{file, error.Description()};
  }
}

// Raises a FileError when a popup cannot be saved into the folder: "No such
// folder" or "Permission denied" (the save writes work files beside the
// popup and renames them over it).
void RequireWritableFolder(const std::string& folder);

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_FILE_ERROR_H_
