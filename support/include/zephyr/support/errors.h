// Errors raised by the component, modelled on the automation errors a host
// application catches: every error carries a number, a source and a
// description. Hosts catch `zephyr::Error` and test `Number()`, or catch one
// of the two kinds below.
#ifndef ZEPHYR_SUPPORT_ERRORS_H_
#define ZEPHYR_SUPPORT_ERRORS_H_

#include <cstdint>
#include <stdexcept>
#include <string>

namespace zephyr {

// Base of every error the component raises. what() returns the description.
class Error : public std::runtime_error {
 public:
  Error(int32_t number, std::string source, std::string description);

  int32_t Number() const noexcept { return number_; }
  const std::string& Source() const noexcept { return source_; }
  const std::string& Description() const noexcept { return description_; }

 private:
  int32_t number_;
  std::string source_;
  std::string description_;
};

// The object-error base that component-defined error numbers are added to.
inline constexpr int32_t kObjectErrorBase = static_cast<int32_t>(0x80040000u);

// A component-defined error, numbered from kObjectErrorBase (for example the
// table engine's 0x80040200 + n with source "dBase Class").
class AutomationError : public Error {
 public:
  using Error::Error;
};

// The platform's run-time error numbers that the component raises.
enum class RuntimeErrorCode : int32_t {
  kInvalidArgument = 5,  // "Invalid procedure call or argument"
  kOverflow = 6,
  kOutOfMemory = 7,
  kOutOfStackSpace = 28,
  kSubscriptOutOfRange = 9,
  kTypeMismatch = 13,
  kBadFileNameOrNumber = 52,
  kFileNotFound = 53,
  kFileAlreadyOpen = 55,
  kDiskFull = 61,
  kInputPastEndOfFile = 62,
  kFileAlreadyExists = 58,
  kPermissionDenied = 70,
  kPathFileAccessError = 75,
  kPathNotFound = 76,
  kInvalidFileFormat = 321,
  kObjectRequired = 424,
  kCannotCreateObject = 429,  // "ActiveX component can't create object"
  kDuplicateKey = 457,
};

// The source every run-time error carries: the component's project name.
inline constexpr const char* kRuntimeErrorSource = "ZephyrPopup60";

// A run-time error of the platform (invalid argument, overflow, subscript
// out of range, ...). The description starts with the platform's standard text
// for the number, followed by ": " and the detail (file, line, value) when given.
class RuntimeError : public Error {
 public:
  RuntimeError(RuntimeErrorCode code, const std::string& detail = {});

  RuntimeErrorCode Code() const noexcept { return static_cast<RuntimeErrorCode>(Number()); }
};

// The platform's standard text for a run-time error number.
const char* StandardErrorText(RuntimeErrorCode code);

// Maps an errno value from a failed file operation to the nearest run-time
// error and raises it; the description names the operation and the path.
[[noreturn]] void RaiseFileError(int errno_value, const std::string& operation,
                                 const std::string& path);

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_ERRORS_H_
