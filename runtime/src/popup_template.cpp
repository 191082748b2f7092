// The template file: the popup's title, question levels and companion field
// layout as a few lines of 8-bit text, each ending in CR LF.
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "log_module.h"
#include "zephyr/runtime/popup_class.h"
#include "zephyr/support/codepage.h"
#include "zephyr/support/debug_log.h"
#include "zephyr/support/errors.h"
#include "zephyr/support/file.h"
#include "zephyr/support/file_utils.h"

namespace zephyr {

namespace {

constexpr const char* kLineEnd = "\r\n";

// The lines of a template and their elements, raising errors that name the
// file and the 1-based line that failed.
class TemplateReader {
 public:
  TemplateReader(const std::string& text, std::string path) : path_(std::move(path)) {
    size_t start = 0;
    while (true) {
      size_t end = text.find(kLineEnd, start);
      if (end == std::string::npos) break;
      lines_.push_back(text.substr(start, end - start));
      start = end + 2;
    }
    if (start < text.size()) lines_.push_back(text.substr(start));
  }

  // Element `element` (1-based) of line `line`, quotes stripped and trimmed.
  std::string Element(int line, int element) const {
    if (line < 1 || static_cast<size_t>(line) > lines_.size()) {
      throw RuntimeError(RuntimeErrorCode::kSubscriptOutOfRange,
                         "template '" + path_ + "' ends before line " + std::to_string(line));
    }
    std::vector<std::string> elements = SplitLine(lines_[static_cast<size_t>(line - 1)]);
    if (static_cast<size_t>(element) > elements.size()) {
      throw RuntimeError(RuntimeErrorCode::kSubscriptOutOfRange,
                         "line " + std::to_string(line) + " of template '" + path_ + "' has " +
                             std::to_string(elements.size()) + " element(s), element " +
                             std::to_string(element) + " is missing");
    }
    return StripQuotes(elements[static_cast<size_t>(element - 1)]);
  }

  // Element converted to a 16-bit integer.
  int16_t Number(int line, int element) const {
    std::string text = Element(line, element);
    try {
      return TextToInt16(text);
    } catch (const RuntimeError& error) {
      throw RuntimeError(error.Code(), "line " + std::to_string(line) + " of template '" + path_ +
                                           "': '" + text +
                                           "' is not a number from -32768 to 32767");
    }
  }

 private:
  std::string path_;
  std::vector<std::string> lines_;
};

std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

}  // namespace

void PopupClass::LoadTemplate() {
  DebugLog(kPopupClassModule, "Load_Template", "Start");
  fields_ = std::make_shared<zephyr::PopupFields>();
  levels_ = std::make_shared<zephyr::PopupLevels>();
  std::string path = WithTrailingSlash(popup_path_) + template_file_name_;

  int error_number = 0;
  File file = File::TryOpen(path, File::Mode::kRead, &error_number);
  if (!file.IsOpen()) {
    throw RuntimeError(RuntimeErrorCode::kInvalidArgument,
                       "cannot read the template '" + path + "': " + std::strerror(error_number));
  }
  std::string text = ReadWholeFile(file, file.Size());
  file.Close();

  TemplateReader reader(text, path);
  Title(reader.Element(1, 1));
  levels_count_ = reader.Number(2, 1);
  int line = 3;
  for (int i = 1; i <= levels_count_; ++i, ++line) {
    levels_->Add(Variant(reader.Element(line, 2)), i, Variant(std::string()));
  }
  int16_t companion_count = reader.Number(line++, 1);
  fields_->Add("Popup Code", ToInt16Checked(2.0 * levels_count_), 0, 0);
  for (int i = 1; i <= companion_count; ++i, ++line) {
    std::string name = reader.Element(line, 3);
    int16_t length = reader.Number(line, 2);
    int16_t start = reader.Number(line, 1);
    fields_->Add(std::move(name), length, static_cast<int16_t>(i), start);
  }
  DebugLog(kPopupClassModule, "Load_Template", "Finish");
}

void PopupClass::WriteTemplate() {
  DebugLog(kPopupClassModule, "WriteTemplate", "Start");
  std::string path = WithTrailingSlash(popup_path_) + TemplateWorkFileName();
  DebugLog(kPopupClassModule, "WriteTemplate", "Filename Sorted out");
  if (PathExists(path)) ::unlink(path.c_str());
  DebugLog(kPopupClassModule, "WriteTemplate", "If file found delete");
  int error_number = 0;
  File file = File::TryOpen(path, File::Mode::kCreate, &error_number);
  if (!file.IsOpen()) return;
  DebugLog(kPopupClassModule, "WriteTemplate", "Create File Success");

  auto levels = PopupLevels();
  auto fields = PopupFields();
  std::string text = Quoted(title_) + kLineEnd;
  text += std::to_string(levels->Count()) + kLineEnd;
  for (const auto& level : *levels) text += "2," + Quoted(level->Question().ToText()) + kLineEnd;
  text += std::to_string(fields->Count() - 1) + kLineEnd;
  int32_t start = 2 * levels->Count() + 1;
  for (int32_t i = 2; i <= fields->Count(); ++i) {
    auto field = fields->Item(i);
    text += std::to_string(start) + "," + std::to_string(field->FieldLength()) + "," +
            Quoted(field->Name()) + kLineEnd;
    start += field->FieldLength();
  }
  DebugLog(kPopupClassModule, "WriteTemplate", "Write String Completed");

  std::string bytes = ToCodePage(text);
  file.WriteAt(0, bytes.data(), bytes.size());
  file.Sync();
  DebugLog(kPopupClassModule, "WriteTemplate", "Write Successful");
  file.Close();
  DebugLog(kPopupClassModule, "WriteTemplate", "Finish");
}

}  // namespace zephyr
