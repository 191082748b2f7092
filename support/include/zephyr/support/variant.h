// Variant: the loosely typed value of the automation interface. It holds
// nothing (empty), text, a 16- or 32-bit integer, a floating-point number, a
// boolean, an object reference or an array of variants. Variants are values:
// copying one copies its text or array; object references are shared.
#ifndef ZEPHYR_SUPPORT_VARIANT_H_
#define ZEPHYR_SUPPORT_VARIANT_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zephyr {

// Base of every object a Variant can refer to.
class Object {
 public:
  virtual ~Object() = default;
};

class VariantArray;

class Variant {
 public:
  enum class Type { kEmpty, kText, kInt16, kInt32, kDouble, kBoolean, kObject, kArray };

  Variant() = default;
  Variant(std::string text) : value_(std::move(text)) {}
  Variant(std::string_view text) : value_(std::string(text)) {}
  Variant(const char* text) : value_(std::string(text)) {}
  Variant(int16_t number) : value_(number) {}
  Variant(int32_t number) : value_(number) {}
  Variant(double number) : value_(number) {}
  Variant(bool flag) : value_(flag) {}
  Variant(std::shared_ptr<Object> object) : value_(std::move(object)) {}
  Variant(VariantArray array);

  Variant(const Variant& other);
  Variant(Variant&& other) noexcept = default;
  Variant& operator=(const Variant& other);
  Variant& operator=(Variant&& other) noexcept = default;
  ~Variant();

  Type GetType() const { return static_cast<Type>(value_.index()); }
  bool IsEmpty() const { return GetType() == Type::kEmpty; }
  bool IsText() const { return GetType() == Type::kText; }
  bool IsObject() const { return GetType() == Type::kObject; }
  bool IsArray() const { return GetType() == Type::kArray; }
  bool IsNumeric() const;

  // The value as text: empty gives "", numbers their shortest decimal form
  // ("3", "1.5", "1E+20"), booleans "True" / "False". An object or an array
  // raises a type-mismatch run-time error.
  std::string ToText() const;
  // Conversions with the platform's rules: text is parsed as a number, a
  // fraction is rounded half to even, a value out of range raises overflow (6),
  // text that is no number raises type mismatch (13).
  int16_t ToInt16() const;
  int32_t ToInt32() const;
  double ToDouble() const;

  // The held text; precondition: IsText().
  const std::string& Text() const { return std::get<std::string>(value_); }
  // The held object reference, or null when the variant holds no object.
  std::shared_ptr<Object> AsObject() const;
  // The held array, or null when the variant holds no array.
  VariantArray* AsArray();
  const VariantArray* AsArray() const;

  friend bool operator==(const Variant& a, const Variant& b);

 private:
  using ArrayBox = std::unique_ptr<VariantArray>;
  std::variant<std::monostate, std::string, int16_t, int32_t, double, bool, std::shared_ptr<Object>,
               ArrayBox>
      value_;
};

// An array of variants with one or two dimensions, each with its own lower and
// upper bound. Element (i, j) of a two-dimensional array is stored with i
// varying fastest, so the elements of one value of j (a "row" of a table
// array indexed (column, row)) lie side by side.
class VariantArray {
 public:
  struct Bounds {
    int32_t lower;
    int32_t upper;
    int32_t Count() const { return upper - lower + 1; }
    friend bool operator==(const Bounds&, const Bounds&) = default;
  };

  // A one-dimensional array; raises subscript out of range when upper < lower - 1.
  explicit VariantArray(Bounds dimension1);
  // A two-dimensional array.
  VariantArray(Bounds dimension1, Bounds dimension2);
  // The table array (1 .. columns, 1 .. rows).
  static VariantArray Table(int32_t columns, int32_t rows);

  int Dimensions() const { return static_cast<int>(bounds_.size()); }
  // Bounds of dimension 1 or 2; any other dimension raises subscript out of range.
  int32_t LBound(int dimension = 1) const;
  int32_t UBound(int dimension = 1) const;

  // Element access with one or two subscripts; a subscript count that does not
  // match the dimensions, or a subscript outside its bounds, raises subscript
  // out of range (9).
  Variant& At(int32_t i);
  const Variant& At(int32_t i) const;
  Variant& At(int32_t i, int32_t j);
  const Variant& At(int32_t i, int32_t j) const;

  // Changes the upper bound of the last dimension keeping the contents; an upper
  // bound below the lower bound raises subscript out of range.
  void RedimPreserve(int32_t new_upper);

  // All elements in storage order.
  std::vector<Variant>& Elements() { return elements_; }
  const std::vector<Variant>& Elements() const { return elements_; }

  friend bool operator==(const VariantArray& a, const VariantArray& b) = default;

 private:
  size_t Offset(int32_t i, int32_t j) const;

  std::vector<Bounds> bounds_;
  std::vector<Variant> elements_;
};

// Parses text as a number the way the platform converts text to a number:
// surrounding blanks are allowed, then an optional sign, digits with an optional
// decimal point and an optional exponent, or "&H" / "&O" with hex / octal
// digits. Returns false when the text is no number.
bool ParseNumber(std::string_view text, double* result);

// Rounds half to even and range-checks: overflow (6) when out of range.
int16_t ToInt16Checked(double value);
int32_t ToInt32Checked(double value);

// Text conversions with the platform's error numbers: type mismatch (13) for
// text that is no number, overflow (6) for a number out of range.
int16_t TextToInt16(std::string_view text);
int32_t TextToInt32(std::string_view text);

// The shortest decimal text of a number, as the platform prints it.
std::string NumberToText(double value);

}  // namespace zephyr

#endif  // ZEPHYR_SUPPORT_VARIANT_H_
