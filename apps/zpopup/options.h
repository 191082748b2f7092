// The options of a zpopup command: "--name value" or "--name=value" for
// options that take a value, "--name" alone for switches; "-" is a
// positional argument (standard input or output).
#ifndef ZEPHYR_APPS_ZPOPUP_OPTIONS_H_
#define ZEPHYR_APPS_ZPOPUP_OPTIONS_H_

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zephyr::cli {

struct OptionRule {
  const char* name;  // with its dashes: "--levels"
  bool takes_value;
};

class ParsedOptions {
 public:
  // Raises a UsageError naming an unknown option, a value missing after an
  // option that takes one, or a value given to a switch.
  ParsedOptions(const std::vector<std::string>& args, std::initializer_list<OptionRule> rules);

  const std::vector<std::string>& Positional() const { return positional_; }
  bool Has(const std::string& name) const;
  // The last value given, if any.
  std::optional<std::string> Value(const std::string& name) const;
  // Every value given, in order.
  std::vector<std::string> Values(const std::string& name) const;

 private:
  std::vector<std::string> positional_;
  std::vector<std::pair<std::string, std::string>> given_;
};

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_OPTIONS_H_
