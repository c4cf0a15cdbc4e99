/// @file
/// The exception for text that does not convert.
#pragma once

#include <zelto/export.h>
#include <zelto/text/exceptions/conversion_encoding.h>

#include <exception>
#include <stdexcept>
#include <string_view>

namespace Zelto::Utilities {

/// Bytes of one encoding have no counterpart in another.
///
/// Its text is the message, ". Can't convert bytes: ", the bytes, ". from ", the name of the one encoding, " to " and
/// that of the other. Each byte is written as a signed decimal number, with nothing between two bytes: C3 28 reads
/// -6140. The names are "UTF-16", "UTF-8" and, for any other value, "UNKNOWN".
class ZELTO_API ConversionException : public std::exception {
 public:
  ConversionException(std::string_view message, std::string_view bytes, ConversionEncoding from, ConversionEncoding to);

  /// @param text  the offending units; each counts as two bytes, the low one first. Where `wchar_t` has 32 bits, a unit
  ///              above 0xFFFF counts as its surrogate pair.
  ConversionException(std::string_view message, std::wstring_view text, ConversionEncoding from, ConversionEncoding to);

  const char* what() const noexcept override;

 private:
  std::runtime_error text_;  // copies without throwing, as an exception should
};

}  // namespace Zelto::Utilities
