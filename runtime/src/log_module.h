// The module name every PopupClass procedure reports its diagnostic lines under.
#ifndef ZEPHYR_RUNTIME_LOG_MODULE_H_
#define ZEPHYR_RUNTIME_LOG_MODULE_H_

namespace zephyr {

inline constexpr const char* kPopupClassModule = "PopupClass";

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_LOG_MODULE_H_
