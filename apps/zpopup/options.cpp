#include "options.h"

#include "usage_error.h"

namespace zephyr::cli {

ParsedOptions::ParsedOptions(const std::vector<std::string>& args,
                             std::initializer_list<OptionRule> rules) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg.size() < 2 || arg[0] != '-') {
      positional_.push_back(arg);
      continue;
    }
    size_t equals = arg.find('=');
    std::string name = arg.substr(0, equals);
    const OptionRule* rule = nullptr;
    for (const OptionRule& candidate : rules) {
      if (name == candidate.name) rule = &candidate;
    }
    if (!rule) throw UsageError{"unknown option " + name};
    if (!rule->takes_value) {
      if (equals != std::string::npos) throw UsageError{name + " takes no value"};
      given_.emplace_back(name, "");
    } else if (equals != std::string::npos) {
      given_.emplace_back(name, arg.substr(equals + 1));
    } else {
      if (i + 1 >= args.size()) throw UsageError{name + " needs a value"};
      given_.emplace_back(name, args[++i]);
    }
  }
}

bool ParsedOptions::Has(const std::string& name) const {
  for (const auto& [given, value] : given_) {
    if (given == name) return true;
  }
  return false;
}

std::optional<std::string> ParsedOptions::Value(const std::string& name) const {
  std::optional<std::string> last;
  for (const auto& [given, value] : given_) {
    if (given == name) last = value;
  }
  return last;
}

std::vector<std::string> ParsedOptions::Values(const std::string& name) const {
  std::vector<std::string> values;
  for (const auto& [given, value] : given_) {
    if (given == name) values.push_back(value);
  }
  return values;
}

}  // namespace zephyr::cli
