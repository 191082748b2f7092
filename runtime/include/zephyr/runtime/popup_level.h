// PopupLevel: one question level of a popup.
#ifndef ZEPHYR_RUNTIME_POPUP_LEVEL_H_
#define ZEPHYR_RUNTIME_POPUP_LEVEL_H_

#include <cstdint>

#include "zephyr/support/variant.h"

namespace zephyr {

class PopupLevel : public Object {
 public:
  // The level's position when it was loaded (0 for a level added in the
  // editor). The spelling is part of the public interface.
  int16_t IntialIndex() const { return intial_index_; }
  void IntialIndex(int16_t value) { intial_index_ = value; }

  // The question text; it may also hold an object reference, which reading
  // then returns.
  const Variant& Question() const { return question_; }
  void Question(Variant value) { question_ = std::move(value); }

  // A value the host may attach to the level (the third argument of
  // PopupLevels::Add); the runtime never reads it.
  const Variant& Tag() const { return tag_; }
  void Tag(Variant value) { tag_ = std::move(value); }

 private:
  int16_t intial_index_ = 0;
  Variant question_;
  Variant tag_;
};

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_LEVEL_H_
