#include "ole_color.h"

namespace zephyr::editor {

namespace {

constexpr uint32_t kSystemColorFlag = 0x80000000u;

// The desktop scheme's colour indices and the palette roles that match them.
QPalette::ColorRole RoleOfSystemColor(uint32_t index, QPalette::ColorGroup* group) {
  *group = QPalette::Active;
  switch (index) {
    case 1:   // desktop background
    case 4:   // menu
    case 15:  // button face
    case 22:  // 3-D light
      return QPalette::Button;
    case 5:  // window
      return QPalette::Base;
    case 6:   // window frame
    case 16:  // button shadow
      return QPalette::Mid;
    case 7:  // menu text
    case 8:  // window text
      return QPalette::WindowText;
    case 9:   // caption text
    case 14:  // highlighted text
      return QPalette::HighlightedText;
    case 12:  // application workspace
      return QPalette::Window;
    case 13:  // highlight
    case 2:   // active caption
      return QPalette::Highlight;
    case 17:  // grey text
      *group = QPalette::Disabled;
      return QPalette::Text;
    case 18:  // button text
      return QPalette::ButtonText;
    case 20:  // button highlight
      return QPalette::Light;
    case 21:  // 3-D dark shadow
      return QPalette::Shadow;
    case 23:  // tool-tip text
      return QPalette::ToolTipText;
    case 24:  // tool-tip background
      return QPalette::ToolTipBase;
    default:
      return QPalette::Window;
  }
}

}  // namespace

QColor ToQColor(uint32_t color, const QPalette& palette) {
  if (color & kSystemColorFlag) {
    QPalette::ColorGroup group;
    QPalette::ColorRole role = RoleOfSystemColor(color & 0xFFu, &group);
    return palette.color(group, role);
  }
  return QColor(static_cast<int>(color & 0xFFu), static_cast<int>((color >> 8) & 0xFFu),
                static_cast<int>((color >> 16) & 0xFFu));
}

}  // namespace zephyr::editor
