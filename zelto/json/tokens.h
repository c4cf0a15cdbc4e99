/// @file
/// The literal texts of numbers and booleans, on their way from the input or from a native value into a document.
#pragma once

#include <zelto/export.h>

#include <concepts>
#include <cstdint>
#include <string>
#include <utility>

namespace Zelto::Json {

/// A type of unsigned numbers. Which of them `std::uint64_t` is differs between the targets, so all of them are taken.
template <typename Value>
concept UnsignedNumber = std::unsigned_integral<Value> && !std::same_as<Value, bool>;

/// The text of an integer: an optional sign and digits. It is not checked: what is put in is what is written.
class ZELTO_API IntegerToken {
 public:
  /// An empty text.
  IntegerToken() = default;

  explicit IntegerToken(std::wstring text) : text_(std::move(text)) {}

  /// The decimal text of `value`, with "-" in front of a negative one (the format "%d").
  explicit IntegerToken(std::int32_t value);

  /// The decimal text of `value` (the format "%I64u").
  explicit IntegerToken(std::uint64_t value);

  template <UnsignedNumber Value>
  explicit IntegerToken(Value value) : IntegerToken(std::uint64_t{value}) {}

  const std::wstring& GetText() const& { return text_; }
  std::wstring GetText() && { return std::move(text_); }

 private:
  std::wstring text_;
};

/// The text of a boolean, "true" or "false" unless the caller puts in another.
class ZELTO_API BooleanToken {
 public:
  /// An empty text.
  BooleanToken() = default;

  explicit BooleanToken(std::wstring text) : text_(std::move(text)) {}

  explicit BooleanToken(bool value) : text_(value ? L"true" : L"false") {}

  /// A literal is a text, not a pointer that counts as true.
  explicit BooleanToken(const wchar_t* text) : text_(text) {}

  const std::wstring& GetText() const& { return text_; }
  std::wstring GetText() && { return std::move(text_); }

 private:
  std::wstring text_;
};

}  // namespace Zelto::Json
