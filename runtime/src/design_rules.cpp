#include "zephyr/runtime/design_rules.h"

#include "zephyr/support/text.h"
#include "zephyr/support/variant.h"

namespace zephyr {

namespace {

bool HasDoubleQuote(const std::string& text) {
  return text.find('"') != std::string::npos;
}

bool StartsWithLetter(std::string_view text) {
  unsigned char first = static_cast<unsigned char>(text[0]);
  if (first >= 'a' && first <= 'z') first = static_cast<unsigned char>(first - 'a' + 'A');
  return first >= 'A' && first <= 'Z';
}

DesignViolation Broken(const char* message, DesignPlace place, int row = 0) {
  return {message, place, row};
}

std::optional<DesignViolation> CheckTitle(const std::string& title) {
  if (Trim(title).empty()) {
    return Broken("Missing Title.  You must enter a Title", DesignPlace::kTitle);
  }
  if (HasDoubleQuote(title)) {
    return Broken("Double Quotes are not permited in Title", DesignPlace::kTitle);
  }
  if (title.find('\'') != std::string::npos) {
    return Broken("Single Quotes are not permited in Title", DesignPlace::kTitle);
  }
  return std::nullopt;
}

std::optional<DesignViolation> CheckLevels(const std::vector<std::string>& levels) {
  if (levels.empty()) return Broken("Popup must contain at least 1 Level", DesignPlace::kLevels);
  int row = 0;
  for (const std::string& level : levels) {
    ++row;
    if (HasDoubleQuote(level)) {
      return Broken("Double Quotes are not permited in Level Descriptions", DesignPlace::kLevels,
                    row);
    }
  }
  row = 0;
  for (const std::string& level : levels) {
    ++row;
    std::string_view trimmed = Trim(level);
    if (trimmed.empty()) {
      return Broken("Missing Level Descritpion. Please Enter Level Description",
                    DesignPlace::kLevels, row);
    }
    // The untrimmed text is tested: a leading blank is no letter either.
    if (!StartsWithLetter(level)) {
      return Broken(
          "The First Character of the level name is numeric. The first character must be a "
          "letter.",
          DesignPlace::kLevels, row);
    }
  }
  if (levels.size() > kMaxDesignLevels) {
    return Broken("Only 127 Levels are permited. Please Delete extra levels", DesignPlace::kLevels);
  }
  return std::nullopt;
}

std::optional<DesignViolation> CheckFields(const std::vector<DesignDraft::Field>& fields) {
  if (fields.empty()) return Broken("Popup must contain at least 1 Field ", DesignPlace::kFields);
  int row = 0;
  for (const auto& field : fields) {
    ++row;
    if (HasDoubleQuote(field.name)) {
      return Broken("Double Quotes are not permited in Field Names", DesignPlace::kFields, row);
    }
    double length = 0;
    if (!ParseNumber(field.length, &length)) {
      return Broken("Fields Length must be numeric", DesignPlace::kFields, row);
    }
    // The message has always said 250 while lengths up to 254 pass.
    if (length > kMaxFieldLength) {
      return Broken("Fields Length must be less than 250", DesignPlace::kFields, row);
    }
    // A column of no width would lose every value typed into it.
    if (length < 1) return Broken(kFieldLengthBelowOne, DesignPlace::kFields, row);
  }
  if (fields.size() > kMaxDesignFields) {
    return Broken("Only 254 Fields are permited. Please Delete extra Fields", DesignPlace::kFields);
  }
  return std::nullopt;
}

}  // namespace

std::optional<DesignViolation> CheckDesign(const DesignDraft& draft) {
  if (auto broken = CheckTitle(draft.title)) return broken;
  if (auto broken = CheckLevels(draft.levels)) return broken;
  return CheckFields(draft.fields);
}

}  // namespace zephyr
