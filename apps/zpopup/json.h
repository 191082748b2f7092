// JSON text for the dump command.
#ifndef ZEPHYR_APPS_ZPOPUP_JSON_H_
#define ZEPHYR_APPS_ZPOPUP_JSON_H_

#include <string>
#include <string_view>

namespace zephyr::cli {

// The text as a JSON string literal, quotes included. Control characters are
// escaped; the text must be UTF-8.
std::string JsonString(std::string_view text);

}  // namespace zephyr::cli

#endif  // ZEPHYR_APPS_ZPOPUP_JSON_H_
