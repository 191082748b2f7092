#include "zephyr/support/codepage.h"

#include <iconv.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "zephyr/support/errors.h"

namespace zephyr {

namespace {

constexpr const char* kDefaultCodePage = "WINDOWS-1252";

class Iconv {
 public:
  Iconv(const std::string& to, const std::string& from)
      : handle_(iconv_open(to.c_str(), from.c_str())) {}
  ~Iconv() {
    if (Valid()) iconv_close(handle_);
  }
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;

  bool Valid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
  iconv_t Get() const { return handle_; }

 private:
  iconv_t handle_;
};

void AppendUtf8(char32_t code, std::string* out) {
  if (code < 0x80) {
    out->push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (code >> 6)));
    out->push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else if (code < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (code >> 12)));
    out->push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (code >> 18)));
    out->push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

// Decodes one UTF-8 sequence at *pos; returns false (and skips one byte) on
// a malformed sequence.
bool NextCodePoint(std::string_view text, size_t* pos, char32_t* code) {
  auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  unsigned char lead = byte(*pos);
  size_t length = lead < 0x80           ? 1
                  : (lead >> 5) == 0x6  ? 2
                  : (lead >> 4) == 0xE  ? 3
                  : (lead >> 3) == 0x1E ? 4
                                        : 0;
  if (length == 0 || *pos + length > text.size()) {
    ++*pos;
    return false;
  }
  char32_t value = length == 1 ? lead : lead & (0x7F >> length);
  for (size_t i = 1; i < length; ++i) {
    unsigned char next = byte(*pos + i);
    if ((next & 0xC0) != 0x80) {
      ++*pos;
      return false;
    }
    value = (value << 6) | (next & 0x3F);
  }
  *pos += length;
  *code = value;
  return true;
}

bool IsAscii(std::string_view text) {
  for (char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  }
  return true;
}

}  // namespace

CodePage::CodePage(std::string name) : name_(std::move(name)) {
  Iconv probe("UTF-8", name_);
  if (!probe.Valid()) {
    throw RuntimeError(
        RuntimeErrorCode::kInvalidArgument,
        "unknown code page '" + name_ + "' (set ZEPHYR_CODEPAGE to a name iconv knows)");
  }
  // A code page is single-byte when every byte on its own decodes to one
  // character or is undefined; then conversion runs from a table.
  single_byte_ = true;
  ascii_compatible_ = true;
  for (int b = 0; b < 256 && single_byte_; ++b) {
    iconv(probe.Get(), nullptr, nullptr, nullptr, nullptr);
    char in = static_cast<char>(b);
    char out[8];
    char* in_ptr = &in;
    char* out_ptr = out;
    size_t in_left = 1, out_left = sizeof out;
    size_t result = iconv(probe.Get(), &in_ptr, &in_left, &out_ptr, &out_left);
    if (result == static_cast<size_t>(-1)) {
      if (errno == EINVAL) single_byte_ = false;  // a lead byte of a longer sequence
      AppendUtf8(static_cast<char32_t>(b), &decode_[b]);
    } else {
      decode_[b].assign(out, out_ptr);
    }
    if (b < 0x80 && decode_[b] != std::string(1, static_cast<char>(b))) ascii_compatible_ = false;
  }
  if (single_byte_) {
    for (int b = 0; b < 256; ++b) {
      size_t pos = 0;
      char32_t code;
      if (NextCodePoint(decode_[b], &pos, &code))
        encode_.emplace(code, static_cast<unsigned char>(b));
    }
  }
  std::string ascii(128, '\0');
  for (size_t c = 0; c < ascii.size(); ++c) ascii[c] = static_cast<char>(c);
  keeps_ascii_ = ToUtf8(ascii) == ascii && FromUtf8(ascii) == ascii;
}

std::string CodePage::ToUtf8(std::string_view bytes) const {
  if (!single_byte_) return ConvertWithIconv(bytes, true);
  if (ascii_compatible_ && IsAscii(bytes)) return std::string(bytes);
  std::string out;
  out.reserve(bytes.size());
  for (char c : bytes) {
    unsigned char b = static_cast<unsigned char>(c);
    if (b < 0x80 && ascii_compatible_) {
      out.push_back(c);
    } else {
      out += decode_[b];
    }
  }
  return out;
}

std::string CodePage::FromUtf8(std::string_view text) const {
  if (!single_byte_) return ConvertWithIconv(text, false);
  if (ascii_compatible_ && IsAscii(text)) return std::string(text);
  std::string out;
  out.reserve(text.size());
  size_t pos = 0;
  while (pos < text.size()) {
    unsigned char b = static_cast<unsigned char>(text[pos]);
    if (b < 0x80 && ascii_compatible_) {
      out.push_back(static_cast<char>(b));
      ++pos;
      continue;
    }
    char32_t code;
    if (!NextCodePoint(text, &pos, &code)) {
      out.push_back('?');
      continue;
    }
    auto found = encode_.find(code);
    out.push_back(found == encode_.end() ? '?' : static_cast<char>(found->second));
  }
  return out;
}

size_t CodePage::CharacterCount(std::string_view text) const {
  if (single_byte_) {
    size_t count = 0;
    size_t pos = 0;
    char32_t code;
    while (pos < text.size()) {
      NextCodePoint(text, &pos, &code);
      ++count;
    }
    return count;
  }
  return FromUtf8(text).size();
}

std::string CodePage::ConvertWithIconv(std::string_view input, bool to_utf8) const {
  Iconv converter(to_utf8 ? "UTF-8" : name_, to_utf8 ? name_ : "UTF-8");
  std::string out;
  std::vector<char> buffer(input.size() * 4 + 16);
  char* in_ptr = const_cast<char*>(input.data());
  size_t in_left = input.size();
  while (in_left > 0) {
    char* out_ptr = buffer.data();
    size_t out_left = buffer.size();
    size_t result = iconv(converter.Get(), &in_ptr, &in_left, &out_ptr, &out_left);
    out.append(buffer.data(), out_ptr);
    if (result != static_cast<size_t>(-1) || errno == E2BIG) continue;
    // An unconvertible or malformed character: substitute and skip it.
    if (to_utf8) {
      AppendUtf8(static_cast<unsigned char>(*in_ptr), &out);
      ++in_ptr;
      --in_left;
    } else {
      out.push_back('?');
      size_t pos = static_cast<size_t>(in_ptr - input.data());
      char32_t ignored;
      NextCodePoint(input, &pos, &ignored);
      in_left -= pos - static_cast<size_t>(in_ptr - input.data());
      in_ptr = const_cast<char*>(input.data()) + pos;
    }
  }
  return out;
}

namespace {

std::mutex g_active_mutex;
// Every converter ever made active stays alive, so references handed out by
// ActiveCodePage() never dangle; there are only ever a handful.
std::vector<std::unique_ptr<const CodePage>> g_code_pages;
std::atomic<const CodePage*> g_active{nullptr};

}  // namespace

const CodePage& ActiveCodePage() {
  if (const CodePage* active = g_active.load(std::memory_order_acquire)) return *active;
  std::lock_guard lock(g_active_mutex);
  if (const CodePage* active = g_active.load(std::memory_order_relaxed)) return *active;
  const char* configured = std::getenv("ZEPHYR_CODEPAGE");
  g_code_pages.push_back(
      std::make_unique<const CodePage>(configured && *configured ? configured : kDefaultCodePage));
  g_active.store(g_code_pages.back().get(), std::memory_order_release);
  return *g_code_pages.back();
}

void SetActiveCodePage(const std::string& name) {
  auto replacement = std::make_unique<const CodePage>(name);
  std::lock_guard lock(g_active_mutex);
  g_code_pages.push_back(std::move(replacement));
  g_active.store(g_code_pages.back().get(), std::memory_order_release);
}

}  // namespace zephyr
