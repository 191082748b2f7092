// The popup key format. A popup of L levels stores every item key as text of
// exactly 2 x L characters: the item's own two-digit code in the last two
// positions, its ancestors' codes left-aligned from position 1 (top level
// first), blanks between. For L = 3: "    01", "01  02", "010201".
// Every part of the system makes and compares keys through these helpers.
#ifndef ZEPHYR_RUNTIME_POPUP_KEY_H_
#define ZEPHYR_RUNTIME_POPUP_KEY_H_

#include <string>
#include <string_view>

namespace zephyr {

// The key with every blank removed: two digits per level ("01  02" -> "0102").
std::string CompactPath(std::string_view key);

// The item's own two-digit code: the last two characters of its key (the key
// itself when it is shorter).
std::string OwnCode(std::string_view key);

// The 1-based depth of a key: compact length / 2.
int KeyLevel(std::string_view key);

// The child-match pattern of the item with this key in a popup of `levels`
// levels: 2 x levels - 2 blanks and "*", overwritten from the start by the
// key's compact path (never lengthened). The empty key gives the root pattern.
// Raises invalid argument (5) when levels is below 1.
std::string ChildPattern(std::string_view key, int levels);

// True when a stored key belongs to the children of the pattern's item: its
// first (pattern length - 1) characters followed by "*" equal the pattern.
// A plain comparison: the child's own code is not compared.
bool MatchesChildPattern(std::string_view stored_key, std::string_view pattern);

// The key without its last two characters, trimmed; for a stored key this is
// the parent's compact path. A key shorter than two characters gives "".
std::string GetParentKey(std::string_view key);

// The stored key for a base key: right-trimmed, its last two characters kept
// as the own code and written into the last two of 2 x levels positions, the
// rest left-aligned and blank-padded ("0102" with 3 levels -> "01  02").
std::string FormatStoredKey(std::string_view base_key, int levels);

}  // namespace zephyr

#endif  // ZEPHYR_RUNTIME_POPUP_KEY_H_
