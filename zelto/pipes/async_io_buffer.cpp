#include "zelto/pipes/async_io_buffer.h"

#include "zelto/text/string_utilities.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace Zelto::Utilities {

namespace {

constexpr std::size_t UnitSize(NamedPipeMessageEncoding encoding) {
  return encoding == NamedPipeMessageEncoding::Utf8 ? 1 : 2;
}

std::vector<std::uint8_t> EncodeUtf8(std::wstring_view message) {
  const std::string bytes = StringUtilities::Utf16ToUtf8(message);
  const auto* first = reinterpret_cast<const std::uint8_t*>(bytes.c_str());
  return {first, first + bytes.size() + 1};
}

std::vector<std::uint8_t> EncodeUtf16(std::wstring_view message) {
  const auto is_pair = [](wchar_t unit) { return ValueOf(unit) > 0xFFFFU; };
  const auto pairs = static_cast<std::size_t>(std::count_if(message.begin(), message.end(), is_pair));
  std::vector<std::uint8_t> data((message.size() + pairs + 1) * 2);
  std::uint8_t* end = data.data();
  for (const wchar_t unit : message) {
    if (ValueOf(unit) > kMaximumCodePoint) {
      throw std::range_error("bad conversion");
    }
    ForEachUnit(unit, [&end](char16_t part) {
      *end++ = static_cast<std::uint8_t>(part & 0xFFU);
      *end++ = static_cast<std::uint8_t>(part >> 8U);
    });
  }
  return data;
}

}  // namespace

AsyncIOBuffer::AsyncIOBuffer(NamedPipeMessageEncoding encoding, std::wstring_view message)
    : data_(encoding == NamedPipeMessageEncoding::Utf8 ? EncodeUtf8(message) : EncodeUtf16(message)),
      encoding_(encoding) {}

AsyncIOBuffer::AsyncIOBuffer(NamedPipeMessageEncoding encoding, std::size_t capacity)
    : data_((capacity + 1) * UnitSize(encoding)), encoding_(encoding) {}

void AsyncIOBuffer::Clear() noexcept {
  std::fill(data_.begin(), data_.end(), std::uint8_t{0});
}

std::size_t AsyncIOBuffer::TransferSize() const noexcept {
  return data_.size() - UnitSize(encoding_);
}

std::wstring AsyncIOBuffer::Text() const {
  if (encoding_ == NamedPipeMessageEncoding::Utf8) {
    return StringUtilities::Utf8ToUtf16({reinterpret_cast<const char*>(data_.data()), TransferSize()});
  }
  std::wstring text;
  text.reserve(TransferSize() / 2);
  for (std::size_t i = 0; i < TransferSize(); i += 2) {
    const auto unit = static_cast<wchar_t>(data_[i] | data_[i + 1] << 8);
    if (unit == 0) {
      break;
    }
    text.push_back(unit);
  }
  return text;
}

}  // namespace Zelto::Utilities
