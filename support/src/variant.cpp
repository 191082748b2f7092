#include "zephyr/support/variant.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "zephyr/support/errors.h"

namespace zephyr {

Variant::Variant(VariantArray array) : value_(std::make_unique<VariantArray>(std::move(array))) {}

Variant::Variant(const Variant& other) {
  *this = other;
}

Variant& Variant::operator=(const Variant& other) {
  if (this == &other) return *this;
  if (const auto* array = std::get_if<ArrayBox>(&other.value_)) {
    value_ = std::make_unique<VariantArray>(**array);
  } else {
    std::visit(
        [this](const auto& held) {
          using T = std::decay_t<decltype(held)>;
          if constexpr (!std::is_same_v<T, ArrayBox>) value_ = held;
        },
        other.value_);
  }
  return *this;
}

Variant::~Variant() = default;

bool Variant::IsNumeric() const {
  switch (GetType()) {
    case Type::kInt16:
    case Type::kInt32:
    case Type::kDouble:
    case Type::kBoolean:
    case Type::kEmpty:
      return true;
    case Type::kText: {
      double ignored;
      return ParseNumber(Text(), &ignored);
    }
    default:
      return false;
  }
}

std::string Variant::ToText() const {
  switch (GetType()) {
    case Type::kEmpty:
      return {};
    case Type::kText:
      return Text();
    case Type::kInt16:
      return std::to_string(std::get<int16_t>(value_));
    case Type::kInt32:
      return std::to_string(std::get<int32_t>(value_));
    case Type::kDouble:
      return NumberToText(std::get<double>(value_));
    case Type::kBoolean:
      return std::get<bool>(value_) ? "True" : "False";
    case Type::kObject:
    case Type::kArray:
      break;
  }
  throw RuntimeError(RuntimeErrorCode::kTypeMismatch, "an object or array has no text value");
}

double Variant::ToDouble() const {
  switch (GetType()) {
    case Type::kEmpty:
      return 0;
    case Type::kText: {
      double number;
      if (!ParseNumber(Text(), &number)) {
        throw RuntimeError(RuntimeErrorCode::kTypeMismatch, "'" + Text() + "' is not a number");
      }
      return number;
    }
    case Type::kInt16:
      return std::get<int16_t>(value_);
    case Type::kInt32:
      return std::get<int32_t>(value_);
    case Type::kDouble:
      return std::get<double>(value_);
    case Type::kBoolean:
      return std::get<bool>(value_) ? -1 : 0;
    case Type::kObject:
    case Type::kArray:
      break;
  }
  throw RuntimeError(RuntimeErrorCode::kTypeMismatch, "an object or array is not a number");
}

int16_t Variant::ToInt16() const {
  return ToInt16Checked(ToDouble());
}

int32_t Variant::ToInt32() const {
  return ToInt32Checked(ToDouble());
}

std::shared_ptr<Object> Variant::AsObject() const {
  if (const auto* object = std::get_if<std::shared_ptr<Object>>(&value_)) return *object;
  return nullptr;
}

VariantArray* Variant::AsArray() {
  if (auto* array = std::get_if<ArrayBox>(&value_)) return array->get();
  return nullptr;
}

const VariantArray* Variant::AsArray() const {
  if (const auto* array = std::get_if<ArrayBox>(&value_)) return array->get();
  return nullptr;
}

bool operator==(const Variant& a, const Variant& b) {
  if (a.value_.index() != b.value_.index()) return false;
  if (const VariantArray* left = a.AsArray()) return *left == *b.AsArray();
  return a.value_ == b.value_;
}

// --- VariantArray -----------------------------------------------------------

namespace {

void CheckBounds(VariantArray::Bounds bounds) {
  if (bounds.upper < bounds.lower - 1) {
    throw RuntimeError(
        RuntimeErrorCode::kSubscriptOutOfRange,
        "array bounds " + std::to_string(bounds.lower) + " to " + std::to_string(bounds.upper));
  }
}

[[noreturn]] void RaiseSubscript(int32_t i, int32_t j, int given) {
  std::string where = "(" + std::to_string(i);
  if (given == 2) where += ", " + std::to_string(j);
  throw RuntimeError(RuntimeErrorCode::kSubscriptOutOfRange, "array element " + where + ")");
}

}  // namespace

VariantArray::VariantArray(Bounds dimension1) : bounds_{dimension1} {
  CheckBounds(dimension1);
  elements_.resize(static_cast<size_t>(dimension1.Count()));
}

VariantArray::VariantArray(Bounds dimension1, Bounds dimension2) : bounds_{dimension1, dimension2} {
  CheckBounds(dimension1);
  CheckBounds(dimension2);
  elements_.resize(static_cast<size_t>(dimension1.Count()) *
                   static_cast<size_t>(dimension2.Count()));
}

VariantArray VariantArray::Table(int32_t columns, int32_t rows) {
  return VariantArray({1, columns}, {1, rows});
}

int32_t VariantArray::LBound(int dimension) const {
  if (dimension < 1 || dimension > Dimensions()) RaiseSubscript(dimension, 0, 1);
  return bounds_[static_cast<size_t>(dimension - 1)].lower;
}

int32_t VariantArray::UBound(int dimension) const {
  if (dimension < 1 || dimension > Dimensions()) RaiseSubscript(dimension, 0, 1);
  return bounds_[static_cast<size_t>(dimension - 1)].upper;
}

size_t VariantArray::Offset(int32_t i, int32_t j) const {
  const Bounds& first = bounds_[0];
  if (i < first.lower || i > first.upper) RaiseSubscript(i, j, Dimensions());
  size_t offset = static_cast<size_t>(i - first.lower);
  if (Dimensions() == 2) {
    const Bounds& second = bounds_[1];
    if (j < second.lower || j > second.upper) RaiseSubscript(i, j, 2);
    offset += static_cast<size_t>(j - second.lower) * static_cast<size_t>(first.Count());
  }
  return offset;
}

Variant& VariantArray::At(int32_t i) {
  if (Dimensions() != 1) RaiseSubscript(i, 0, 1);
  return elements_[Offset(i, 0)];
}

const Variant& VariantArray::At(int32_t i) const {
  if (Dimensions() != 1) RaiseSubscript(i, 0, 1);
  return elements_[Offset(i, 0)];
}

Variant& VariantArray::At(int32_t i, int32_t j) {
  if (Dimensions() != 2) RaiseSubscript(i, j, 2);
  return elements_[Offset(i, j)];
}

const Variant& VariantArray::At(int32_t i, int32_t j) const {
  if (Dimensions() != 2) RaiseSubscript(i, j, 2);
  return elements_[Offset(i, j)];
}

void VariantArray::RedimPreserve(int32_t new_upper) {
  Bounds& last = bounds_.back();
  if (new_upper < last.lower) {
    throw RuntimeError(RuntimeErrorCode::kSubscriptOutOfRange,
                       "cannot resize an array to upper bound " + std::to_string(new_upper));
  }
  last.upper = new_upper;
  size_t per_step = Dimensions() == 2 ? static_cast<size_t>(bounds_[0].Count()) : 1;
  elements_.resize(per_step * static_cast<size_t>(last.Count()));
}

// --- Numbers ---------------------------------------------------------------

namespace {

std::string_view TrimBlanks(std::string_view text) {
  size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  size_t end = text.find_last_not_of(" \t");
  return text.substr(begin, end - begin + 1);
}

bool ParseRadix(std::string_view digits, int radix, double* result) {
  if (digits.empty()) return false;
  uint64_t value = 0;
  auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, radix);
  if (error != std::errc() || end != digits.data() + digits.size()) return false;
  *result = static_cast<double>(value);
  return true;
}

}  // namespace

bool ParseNumber(std::string_view text, double* result) {
  std::string_view body = TrimBlanks(text);
  if (body.size() > 2 && body[0] == '&') {
    char kind = static_cast<char>(body[1] | 0x20);
    if (kind == 'h') return ParseRadix(body.substr(2), 16, result);
    if (kind == 'o') return ParseRadix(body.substr(2), 8, result);
    return false;
  }
  size_t pos = 0;
  bool negative = false;
  if (pos < body.size() && (body[pos] == '+' || body[pos] == '-')) {
    negative = body[pos] == '-';
    ++pos;
  }
  std::string_view unsigned_part = body.substr(pos);
  // from_chars accepts neither a sign nor "inf"/"nan" in this form, which is
  // what we want: only plain decimal notation counts as a number.
  if (unsigned_part.empty() ||
      !(std::isdigit(static_cast<unsigned char>(unsigned_part[0])) || unsigned_part[0] == '.')) {
    return false;
  }
  double value = 0;
  auto [end, error] =
      std::from_chars(unsigned_part.data(), unsigned_part.data() + unsigned_part.size(), value,
                      std::chars_format::general);
  if (error == std::errc::result_out_of_range) {
    value = std::numeric_limits<double>::infinity();
  } else if (error != std::errc() || end != unsigned_part.data() + unsigned_part.size()) {
    return false;
  }
  *result = negative ? -value : value;
  return true;
}

namespace {

template <typename Int>
Int RoundChecked(double value) {
  double rounded = std::nearbyint(value);  // the default rounding mode is half to even
  if (!(rounded >= std::numeric_limits<Int>::min() && rounded <= std::numeric_limits<Int>::max())) {
    throw RuntimeError(RuntimeErrorCode::kOverflow, NumberToText(value) + " is out of range");
  }
  return static_cast<Int>(rounded);
}

template <typename Int>
Int TextToInt(std::string_view text) {
  double number;
  if (!ParseNumber(text, &number)) {
    throw RuntimeError(RuntimeErrorCode::kTypeMismatch,
                       "'" + std::string(text) + "' is not a number");
  }
  return RoundChecked<Int>(number);
}

}  // namespace

int16_t ToInt16Checked(double value) {
  return RoundChecked<int16_t>(value);
}
int32_t ToInt32Checked(double value) {
  return RoundChecked<int32_t>(value);
}
int16_t TextToInt16(std::string_view text) {
  return TextToInt<int16_t>(text);
}
int32_t TextToInt32(std::string_view text) {
  return TextToInt<int32_t>(text);
}

std::string NumberToText(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
  if (value == 0) return "0";
  // Fifteen significant digits, plain notation for magnitudes in [1e-15, 1e15)
  // and scientific notation ("1E+20", "1.5E-16") outside, as the platform prints.
  char buffer[64];
  double magnitude = std::fabs(value);
  if (magnitude >= 1e15 || magnitude < 1e-15) {
    std::snprintf(buffer, sizeof buffer, "%.14E", value);
    std::string text = buffer;
    size_t e = text.find('E');
    std::string mantissa = text.substr(0, e);
    std::string exponent = text.substr(e + 1);
    while (mantissa.back() == '0') mantissa.pop_back();
    if (mantissa.back() == '.') mantissa.pop_back();
    char sign = exponent[0];
    std::string digits = exponent.substr(1);
    while (digits.size() > 1 && digits[0] == '0') digits.erase(0, 1);
    return mantissa + "E" + sign + digits;
  }
  std::snprintf(buffer, sizeof buffer, "%.15g", value);
  std::string text = buffer;
  if (text.find('e') != std::string::npos) {
    // %g switched to exponent form for small numbers; print them plainly.
    std::snprintf(buffer, sizeof buffer, "%.15f", value);
    text = buffer;
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
  }
  return text;
}

}  // namespace zephyr
