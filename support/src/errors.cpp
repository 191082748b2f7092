#include "zephyr/support/errors.h"

#include <cerrno>
#include <cstring>

namespace zephyr {

Error::Error(int32_t number, std::string source, std::string description)
    : std::runtime_error(description),
      number_(number),
      source_(std::move(source)),
      description_(std::move(description)) {}

const char* StandardErrorText(RuntimeErrorCode code) {
  switch (code) {
    case RuntimeErrorCode::kInvalidArgument:
      return "Invalid procedure call or argument";
    case RuntimeErrorCode::kOverflow:
      return "Overflow";
    case RuntimeErrorCode::kOutOfMemory:
      return "Out of memory";
    case RuntimeErrorCode::kOutOfStackSpace:
      return "Out of stack space";
    case RuntimeErrorCode::kSubscriptOutOfRange:
      return "Subscript out of range";
    case RuntimeErrorCode::kTypeMismatch:
      return "Type mismatch";
    case RuntimeErrorCode::kBadFileNameOrNumber:
      return "Bad file name or number";
    case RuntimeErrorCode::kFileNotFound:
      return "File not found";
    case RuntimeErrorCode::kFileAlreadyOpen:
      return "File already open";
    case RuntimeErrorCode::kDiskFull:
      return "Disk full";
    case RuntimeErrorCode::kInputPastEndOfFile:
      return "Input past end of file";
    case RuntimeErrorCode::kFileAlreadyExists:
      return "File already exists";
    case RuntimeErrorCode::kPermissionDenied:
      return "Permission denied";
    case RuntimeErrorCode::kPathFileAccessError:
      return "Path/File access error";
    case RuntimeErrorCode::kPathNotFound:
      return "Path not found";
    case RuntimeErrorCode::kObjectRequired:
      return "Object required";
    case RuntimeErrorCode::kCannotCreateObject:
      return "ActiveX component can't create object";
    case RuntimeErrorCode::kInvalidFileFormat:
      return "Invalid file format";
    case RuntimeErrorCode::kDuplicateKey:
      return "This key is already associated with an element of this collection";
  }
  return "Application-defined or object-defined error";
}

namespace {

std::string Describe(RuntimeErrorCode code, const std::string& detail) {
  std::string text = StandardErrorText(code);
  if (!detail.empty()) text += ": " + detail;
  return text;
}

RuntimeErrorCode CodeForErrno(int errno_value) {
  switch (errno_value) {
    case ENOENT:
      return RuntimeErrorCode::kFileNotFound;
    case ENOTDIR:
      return RuntimeErrorCode::kPathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
      return RuntimeErrorCode::kPermissionDenied;
    case ENOSPC:
    case EDQUOT:
      return RuntimeErrorCode::kDiskFull;
    case EEXIST:
      return RuntimeErrorCode::kFileAlreadyExists;
    case EBADF:
      return RuntimeErrorCode::kBadFileNameOrNumber;
    case ENOMEM:
      return RuntimeErrorCode::kOutOfMemory;
    default:
      return RuntimeErrorCode::kPathFileAccessError;
  }
}

}  // namespace

RuntimeError::RuntimeError(RuntimeErrorCode code, const std::string& detail)
    : Error(static_cast<int32_t>(code), kRuntimeErrorSource, Describe(code, detail)) {}

void RaiseFileError(int errno_value, const std::string& operation, const std::string& path) {
  throw RuntimeError(CodeForErrno(errno_value),
                     "cannot " + operation + " '" + path + "': " + std::strerror(errno_value));
}

}  // namespace zephyr
