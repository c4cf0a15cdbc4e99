#include "zelto/text/exceptions/conversion_exception.h"

#include "zelto/text/utf16_units.h"

#include <string>

namespace Zelto::Utilities {
namespace {

const char* NameOf(ConversionEncoding encoding) noexcept {
  switch (encoding) {
    case ConversionEncoding::Utf16:
      return "UTF-16";
    case ConversionEncoding::Utf8:
      return "UTF-8";
  }
  return "UNKNOWN";
}

std::string BytesOf(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  for (const wchar_t character : text) {
    ForEachUnit(character, [&bytes](char16_t unit) {
      bytes.push_back(static_cast<char>(unit & 0xFF));
      bytes.push_back(static_cast<char>(unit >> 8));
    });
  }
  return bytes;
}

std::string Compose(std::string_view message, std::string_view bytes, ConversionEncoding from, ConversionEncoding to) {
  std::string text(message);
  text += ". Can't convert bytes: ";
  for (const char byte : bytes) {
    text += std::to_string(static_cast<signed char>(byte));
  }
  text += ". from ";
  text += NameOf(from);
  text += " to ";
  text += NameOf(to);
  return text;
}

}  // namespace

ConversionException::ConversionException(std::string_view message, std::string_view bytes, ConversionEncoding from,
                                         ConversionEncoding to)
    : text_(Compose(message, bytes, from, to)) {}

ConversionException::ConversionException(std::string_view message, std::wstring_view text, ConversionEncoding from,
                                         ConversionEncoding to)
    : ConversionException(message, BytesOf(text), from, to) {}

const char* ConversionException::what() const noexcept {
  return text_.what();
}

}  // namespace Zelto::Utilities
