#include "zelto/text/string_utilities.h"

#include "zelto/text/ascii.h"
#include "zelto/text/bad_conversion.h"
#include "zelto/text/utf16_units.h"

#include <algorithm>
#include <stdexcept>

namespace Zelto::Utilities {
namespace {

// Lengths are compared as unsigned 32-bit numbers, in which "not found" is one less than zero. So a suffix exactly one
// unit longer than the text counts as found at its end.
bool NotFoundLooksLikeTheEnd(std::wstring_view text, std::wstring_view suffix) noexcept {
  constexpr auto kNotFound = static_cast<std::uint32_t>(std::wstring_view::npos);
  return suffix.size() > text.size() && static_cast<std::uint32_t>(text.size() - suffix.size()) == kNotFound;
}

[[noreturn]] void ThrowInvalidPosition() {
  throw std::out_of_range("invalid string position");
}

std::uint32_t HexDigitAt(std::uint32_t value, unsigned index) noexcept {
  return (value >> (28 - 4 * index)) & 0xFU;
}

template <typename String>
String HexText(std::int32_t value) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  String text{'0', 'x'};
  for (unsigned index = 0; index < 8; ++index) {
    text.push_back(
        static_cast<typename String::value_type>(kDigits[HexDigitAt(static_cast<std::uint32_t>(value), index)]));
  }
  return text;
}

// The text while `ReplaceAll` works on it, cut in two where the search stands: what was searched and holds no
// occurrence, and what is still to be searched. A replacement goes back in front of the latter, and as occurrences of
// one length that begin first also end first, the next one to be completed is the one a search from the beginning would
// find.
class RepeatedReplacement {
 public:
  RepeatedReplacement(std::wstring_view text, std::wstring_view search, std::wstring_view replacement)
      : rest_(text),
        search_(search),
        replacement_(replacement),
        limit_(kGrowth + text.size() * (replacement.size() + 1)) {}

  std::wstring Run() {
    while (!AtEnd()) {
      searched_.push_back(Next());
      if (searched_.back() == search_.back() && searched_.ends_with(search_)) {
        searched_.resize(searched_.size() - search_.size());
        inserted_.append(replacement_.rbegin(), replacement_.rend());
        if (searched_.size() + inserted_.size() + rest_.size() > limit_) {
          throw std::length_error("The replacements of replace all do not come to an end");
        }
      }
    }
    return std::move(searched_);
  }

 private:
  static constexpr std::size_t kGrowth = std::size_t{16} << 20;

  bool AtEnd() const noexcept { return inserted_.empty() && rest_.empty(); }

  wchar_t Next() noexcept {
    wchar_t unit = 0;
    if (inserted_.empty()) {
      unit = rest_.front();
      rest_.remove_prefix(1);
    } else {
      unit = inserted_.back();
      inserted_.pop_back();
    }
    return unit;
  }

  std::wstring searched_;
  std::wstring inserted_;  // last unit first
  std::wstring_view rest_;
  std::wstring_view search_;
  std::wstring_view replacement_;
  std::size_t limit_;
};

}  // namespace

bool StringUtilities::StartsWith(std::wstring_view text, std::wstring_view prefix) noexcept {
  return text.starts_with(prefix);
}

bool StringUtilities::EndsWith(std::wstring_view text, std::wstring_view suffix) noexcept {
  return text.ends_with(suffix);
}

bool StringUtilities::VerifyContainsOnlyNumbers(std::wstring_view text) noexcept {
  return std::all_of(text.begin(), text.end(), Ascii::IsDigit);
}

bool StringUtilities::VerifyContainsOnlyHexNumbers(std::wstring_view text) noexcept {
  return std::all_of(text.begin(), text.end(), Ascii::IsHexDigit);
}

void StringUtilities::AddAtEndIfNotExists(std::wstring& text, std::wstring_view suffix) {
  if (!text.ends_with(suffix) && !NotFoundLooksLikeTheEnd(text, suffix)) {
    text.append(suffix);
  }
}

void StringUtilities::Replace(std::wstring& text, std::wstring_view search, std::wstring_view replacement) {
  if (text.empty() || search.empty()) {
    return;
  }
  std::size_t hit = text.find(search);
  if (hit == std::wstring::npos) {
    return;
  }
  std::wstring result;
  result.reserve(text.size());
  std::size_t copied = 0;
  for (; hit != std::wstring::npos; hit = text.find(search, copied)) {
    result.append(text, copied, hit - copied).append(replacement);
    copied = hit + search.size();
  }
  result.append(text, copied);
  text = std::move(result);
}

void StringUtilities::ReplaceAll(std::wstring& text, std::wstring_view search, std::wstring_view replacement) {
  if (text.empty() || search.empty()) {
    return;
  }
  if (replacement.find(search) != std::wstring_view::npos) {
    throw std::runtime_error("Replace shouldn't contain the search string for replace all");
  }
  if (text.find(search) != std::wstring::npos) {
    text = RepeatedReplacement(text, search, replacement).Run();
  }
}

void StringUtilities::ReplaceAtBegin(std::wstring& text, std::wstring_view search, std::wstring_view replacement) {
  if (!text.empty() && !search.empty() && text.starts_with(search)) {
    std::wstring result(replacement);
    result.append(text, search.size());
    text = std::move(result);
  }
}

void StringUtilities::ReplaceAtEnd(std::wstring& text, std::wstring_view search, std::wstring_view replacement) {
  if (text.empty() || search.empty()) {
    return;
  }
  if (NotFoundLooksLikeTheEnd(text, search)) {
    ThrowInvalidPosition();
  }
  if (text.ends_with(search)) {
    std::wstring result(text, 0, text.size() - search.size());
    result.append(replacement);
    text = std::move(result);
  }
}

void StringUtilities::Trim(std::wstring& text, std::wstring_view set) {
  const std::size_t first = text.find_first_not_of(set);
  if (first == std::wstring::npos) {
    text.clear();
    return;
  }
  text.erase(text.find_last_not_of(set) + 1);
  text.erase(0, first);
}

void StringUtilities::TrimLeft(std::wstring& text, std::wstring_view set) {
  text.erase(0, text.find_first_not_of(set));
}

void StringUtilities::TrimRight(std::wstring& text, std::wstring_view set) {
  text.erase(text.find_last_not_of(set) + 1);
}

void StringUtilities::ToLower(std::wstring& text) noexcept {
  std::transform(text.begin(), text.end(), text.begin(), Ascii::ToLower<wchar_t>);
}

void StringUtilities::ToUpper(std::wstring& text) noexcept {
  std::transform(text.begin(), text.end(), text.begin(), Ascii::ToUpper<wchar_t>);
}

void StringUtilities::ToUpper(std::string& text) noexcept {
  std::transform(text.begin(), text.end(), text.begin(), Ascii::ToUpper<char>);
}

std::wstring StringUtilities::Left(std::wstring_view text, std::size_t count) {
  return std::wstring(text.substr(0, count));
}

std::wstring StringUtilities::Mid(std::wstring_view text, std::size_t start) {
  if (start > text.size()) {
    ThrowInvalidPosition();
  }
  return std::wstring(text.substr(start));
}

std::vector<std::wstring> StringUtilities::Split(std::wstring_view text, std::wstring_view separator) {
  std::vector<std::wstring> parts;
  if (!separator.empty()) {
    for (std::size_t hit = text.find(separator); hit != std::wstring_view::npos; hit = text.find(separator)) {
      parts.emplace_back(text.substr(0, hit));
      text.remove_prefix(hit + separator.size());
    }
  }
  parts.emplace_back(text);
  return parts;
}

wchar_t* StringUtilities::GetBuffer(std::wstring& text, std::size_t length) {
  text.resize(length);
  return text.data();
}

void StringUtilities::ReleaseBuffer(std::wstring& text) {
  text.resize(std::char_traits<wchar_t>::length(text.c_str()));
}

std::wstring StringUtilities::ToHex(std::int32_t value) {
  return HexText<std::wstring>(value);
}

std::string StringUtilities::ToHexStr(std::int32_t value) {
  return HexText<std::string>(value);
}

std::string StringUtilities::ToAscii(std::wstring_view text) {
  text = text.substr(0, text.find(L'\0'));
  std::string result(text.size(), '\0');
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    bits |= ValueOf(text[i]);
    result[i] = static_cast<char>(text[i]);
  }
  if (bits > 0xFFU) {
    ThrowBadConversion();
  }
  return result;
}

}  // namespace Zelto::Utilities
