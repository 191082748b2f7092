// The rules a popup's design must pass before it is saved: a title, at least
// one level and one field, no double quotes where the files cannot hold
// them, level names that start with a letter, and the table's limits. The
// editor's validation and the command line apply these same rules.
#ifndef ZEPHYR_RUNTIME_DESIGN_RULES_H_
#define ZEPHYR_RUNTIME_DESIGN_RULES_H_

#include <optional>
#include <string>
#include <vector>

namespace zephyr {

inline constexpr int kMaxDesignLevels = 127;
inline constexpr int kMaxDesignFields = 254;
inline constexpr int kMaxFieldLength = 254;

// Our own rule after the component's length rules: a field holds at least
// one character, or every value given it would be lost at the save.
inline constexpr const char* kFieldLengthBelowOne = "Fields Length must be at least 1";

// A design as the user typed it: texts not yet trimmed, lengths as text.
struct DesignDraft {
  struct Field {
    std::string name;
    std::string length;
  };
  std::string title;
  std::vector<std::string> levels;  // level 1 first
  std::vector<Field> fields;        // companion fields, field 2 first
};

// Where a broken rule points the user.
enum class DesignPlace { kTitle, kLevels, kFields };

struct DesignViolation {
  std::string message;
  DesignPlace place;
  // The 1-based level or field the rule concerns; 0 for a rule on the whole list.
  int row;
};

// The first rule the design breaks, in the fixed order the user is told
// them, or nothing when the design passes.
std::optional<DesignViolation> CheckDesign(const DesignDraft& draft);

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_DESIGN_RULES_H_
