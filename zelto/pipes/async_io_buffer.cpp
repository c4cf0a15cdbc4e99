#include "zelto/pipes/async_io_buffer.h"

#include "zelto/text/bad_conversion.h"
#include "zelto/text/string_utilities.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <cstring>

namespace Zelto::Utilities {

namespace {

constexpr std::size_t UnitSize(NamedPipeMessageEncoding encoding) {
  return encoding == NamedPipeMessageEncoding::Utf8 ? 1 : 2;
}

// How many bytes of the last zero unit are kept; one more is the terminator that every string has.
constexpr std::size_t OwnTerminator(NamedPipeMessageEncoding encoding) {
  return UnitSize(encoding) - 1;
}

std::string EncodeUtf16(std::wstring_view message) {
  const auto is_pair = [](wchar_t unit) { return ValueOf(unit) > 0xFFFFU; };
  const auto pairs = static_cast<std::size_t>(std::count_if(message.begin(), message.end(), is_pair));
  std::string data((message.size() + pairs) * 2 + OwnTerminator(NamedPipeMessageEncoding::Utf16), '\0');
  char* end = data.data();
  for (const wchar_t unit : message) {
    if (ValueOf(unit) > kMaximumCodePoint) {
      ThrowBadConversion();
    }
    ForEachUnit(unit, [&end](char16_t part) {
      *end++ = static_cast<char>(part & 0xFFU);
      *end++ = static_cast<char>(part >> 8U);
    });
  }
  return data;
}

}  // namespace

AsyncIOBuffer::AsyncIOBuffer(NamedPipeMessageEncoding encoding, std::wstring_view message)
    : data_(encoding == NamedPipeMessageEncoding::Utf8 ? StringUtilities::Utf16ToUtf8(message) : EncodeUtf16(message)),
      encoding_(encoding) {}

AsyncIOBuffer::AsyncIOBuffer(NamedPipeMessageEncoding encoding, std::size_t capacity)
    : data_(capacity * UnitSize(encoding) + OwnTerminator(encoding), '\0'), encoding_(encoding) {}

void AsyncIOBuffer::Clear() noexcept {
  std::fill(data_.begin(), data_.end(), '\0');
}

std::size_t AsyncIOBuffer::TransferSize() const noexcept {
  return data_.size() - OwnTerminator(encoding_);
}

std::wstring AsyncIOBuffer::Text(std::size_t size) const {
  if (encoding_ == NamedPipeMessageEncoding::Utf8) {
    return StringUtilities::Utf8ToUtf16(std::string_view(data_.data(), size));
  }
  const std::uint8_t* const bytes = TransferData();
  const std::size_t whole_units = size / 2;
  std::wstring text(whole_units + size % 2, L'\0');
  for (std::size_t i = 0; i < whole_units; ++i) {
    text[i] = static_cast<wchar_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
  }
  if (size % 2 != 0) {
    text.back() = static_cast<wchar_t>(bytes[size - 1]);
  }
  text.resize(std::min(text.find(L'\0'), text.size()));
  return text;
}

}  // namespace Zelto::Utilities
