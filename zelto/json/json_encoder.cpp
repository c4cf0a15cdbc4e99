#include "zelto/json/json_encoder.h"

#include "zelto/json/escapes.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Zelto::Utilities {
namespace {

std::wstring_view ViewOf(const wchar_t* text) {
  return text == nullptr ? std::wstring_view() : std::wstring_view(text);
}

// The length of the escaped text; 0 when nothing needs escaping.
std::size_t EscapedLength(std::wstring_view text) noexcept {
  std::size_t length = 0;
  bool escapes = false;
  for (const wchar_t c : text) {
    const bool masked = Json::EscapeLetterOf(c) != 0;
    const bool non_printing = !masked && Json::IsNonPrinting(c);
    length += masked ? 2 : (non_printing ? Json::kUnicodeEscapeLength : 1);
    escapes |= masked || non_printing;
  }
  return escapes ? length : 0;
}

}  // namespace

bool JsonEncoder::IsMaskedCharacter(wchar_t c) noexcept {
  return Json::EscapeLetterOf(c) != 0;
}

bool JsonEncoder::IsMaskedCharacter(wchar_t c, int& index) noexcept {
  const auto& masked = Json::kMaskedCharacters;
  const auto found = std::find(masked.begin(), masked.end(), c);
  if (found == masked.end()) {
    return false;
  }
  index = static_cast<int>(found - masked.begin());
  return true;
}

bool JsonEncoder::IsNonPrintingCharacter(wchar_t c) noexcept {
  return Json::IsNonPrinting(c);
}

bool JsonEncoder::NeedsEscaping(const std::wstring& text) noexcept {
  return std::any_of(text.begin(), text.end(), [](wchar_t c) { return IsMaskedCharacter(c); });
}

bool JsonEncoder::IsEscaped(const std::wstring& text) noexcept {
  return text.find(L'\\') != std::wstring::npos;
}

int JsonEncoder::CalculateOutputLength(const wchar_t* text) noexcept {
  constexpr std::size_t kLargest = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(EscapedLength(ViewOf(text)), kLargest));
}

void JsonEncoder::EncodeNonPrintCharacter(std::wstring& out, std::size_t& pos, wchar_t c) {
  out.resize(std::max(out.size(), pos + Json::kUnicodeEscapeLength));
  Json::WriteUnicodeEscape(c, out.data() + pos);
  pos += Json::kUnicodeEscapeLength;
}

bool JsonEncoder::AppendEscapedCharacter(wchar_t c, std::wstring& out, std::size_t& pos) {
  if (const char letter = Json::EscapeLetterOf(c)) {
    out.resize(std::max(out.size(), pos + 2));
    out[pos++] = L'\\';
    out[pos++] = static_cast<wchar_t>(letter);
    return true;
  }
  if (IsNonPrintingCharacter(c)) {
    EncodeNonPrintCharacter(out, pos, c);
    return true;
  }
  return false;
}

void JsonEncoder::VerifyOutputLength(std::size_t expected, std::size_t written) {
  if (expected != written) {
    throw std::logic_error("ToEscapedString: wrong length calculation.");
  }
}

std::wstring JsonEncoder::ToEscapedString(const wchar_t* text) {
  const std::wstring copy(ViewOf(text));
  return ToEscapedString(copy);
}

std::wstring JsonEncoder::ToEscapedString(const std::wstring& text) {
  const std::size_t expected = EscapedLength(text);
  if (expected == 0) {
    return text;
  }
  std::wstring out(expected, L'\0');
  std::size_t pos = 0;
  for (const wchar_t c : text) {
    if (!AppendEscapedCharacter(c, out, pos)) {
      out[pos++] = c;
    }
  }
  VerifyOutputLength(expected, pos);
  return out;
}

std::wstring JsonEncoder::ToEscapedString(std::wstring&& text) {
  return NeedsEscaping(text) ? ToEscapedString(std::as_const(text)) : std::move(text);
}

std::string JsonEncoder::ToEscapedUtf8String(const wchar_t* text) {
  return StringUtilities::Utf16ToUtf8(ToEscapedString(text));
}

std::string JsonEncoder::ToEscapedUtf8String(const char* text) {
  const std::wstring wide = StringUtilities::Utf8ToUtf16(text == nullptr ? "" : text);
  return StringUtilities::Utf16ToUtf8(ToEscapedString(wide));
}

std::wstring JsonEncoder::FromEscapedString(const std::wstring& text) {
  std::wstring out;
  out.reserve(text.size());
  const wchar_t* const end = text.data() + text.size();
  for (const wchar_t* at = text.data(); at != end;) {
    const wchar_t* const backslash = std::find(at, end, L'\\');
    out.append(at, backslash);
    at = backslash == end ? end : Json::DecodeEscape(backslash, end, [&out](wchar_t c) { out.push_back(c); });
  }
  return out;
}

std::wstring JsonEncoder::FromEscapedString(std::wstring&& text) {
  return IsEscaped(text) ? FromEscapedString(std::as_const(text)) : std::move(text);
}

}  // namespace Zelto::Utilities
