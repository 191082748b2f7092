// Shared file routines: existence and read-only tests, whole-file reads, and
// the splitting of template lines into elements.
#ifndef ZEPHYR_SUPPORT_FILE_UTILS_H_
#define ZEPHYR_SUPPORT_FILE_UTILS_H_

#include <string>
#include <string_view>
#include <vector>

#include "zephyr/support/file.h"

namespace zephyr {

// True when path names an existing file or folder; any error answers false.
bool PathExists(const std::string& path);

// True when the file exists but cannot be opened for reading (access denied).
// A file that can be opened for reading counts as writable, and a missing file
// is not read-only, so saving to a new file is allowed.
bool isFileReadOnly(const std::string& path);

// Reads count bytes from the start of an open file in one read and converts
// them from the 8-bit code page; empty text when count is 0.
std::string ReadWholeFile(const File& file, size_t count);

// Splits a line into elements: at every tab when the line holds a tab,
// otherwise at every comma. Element N of the platform's 1-based numbering is
// result[N - 1]; an empty line gives one empty element.
std::vector<std::string> SplitLine(std::string_view line);

// Removes one pair of enclosing double quotes (only when the value both
// starts and ends with one, and is at least two characters long), then trims
// blanks. Quotes inside the text are left alone.
std::string StripQuotes(std::string_view value);

// The name of the file in folder that is `name` but for letter case: `name`
// itself when it exists, else the first such variant in name order
// ("Fruit.zpd" for "Fruit.ZPD"), else `name` unchanged. Files that come from
// systems with case-insensitive names keep working, and are saved back under
// the name they have.
std::string ResolveCaseVariant(const std::string& folder, const std::string& name);

// The folder with a "/" appended when it does not end in one; an empty folder
// becomes "./", the working folder.
std::string WithTrailingSlash(std::string_view folder);

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_FILE_UTILS_H_
