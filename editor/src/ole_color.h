// Colours in the component's encoding: 0x00BBGGRR for a plain colour, or
// 0x80000000 plus a system colour index for a colour of the desktop's scheme.
#ifndef ZEPHYR_EDITOR_OLE_COLOR_H_
#define ZEPHYR_EDITOR_OLE_COLOR_H_

#include <QColor>
#include <QPalette>
#include <cstdint>

namespace zephyr::editor {

// The colour for the palette; a system colour maps to the matching role
// (button face 0x8000000F -> QPalette::Button, window 0x80000005 ->
// QPalette::Base, highlight 0x8000000D -> QPalette::Highlight, ...).
QColor ToQColor(uint32_t color, const QPalette& palette);

}  // namespace zephyr::editor

#endif  // ZEPHYR_EDITOR_OLE_COLOR_H_
