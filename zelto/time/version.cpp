#include "zelto/time/version.h"

#include "zelto/platform/errors.h"
#include "zelto/text/ascii.h"
#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/printf_field.h"
#include "zelto/text/printf_spec.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <cstddef>

namespace Zelto::Utilities {
namespace {

constexpr std::size_t kParts = 4;
constexpr std::size_t kMaximumTextSize = 255;
constexpr wchar_t kDefaultFormat[] = L"%d.%d.%d.%d";

[[noreturn]] void ThrowInvalidVersion() {
  throw Win32Exception("String is not a valid version string", Platform::kInvalidParameter);
}

[[noreturn]] void ThrowInvalidFormat() {
  throw Win32Exception("Can't generate a valid version string", Platform::kInvalidParameter);
}

// Reads one "%u" from the front, as scanf does, and removes it.
bool TakeNumber(std::wstring_view& text, std::uint32_t& value) noexcept {
  while (!text.empty() && Ascii::IsSpace(text.front())) {
    text.remove_prefix(1);
  }
  const bool negative = !text.empty() && text.front() == L'-';
  if (negative || (!text.empty() && text.front() == L'+')) {
    text.remove_prefix(1);
  }
  std::uint32_t number = 0;
  std::size_t digits = 0;
  for (; digits < text.size() && Ascii::IsDigit(text[digits]); ++digits) {
    number = number * 10 + static_cast<std::uint32_t>(text[digits] - L'0');
  }
  text.remove_prefix(digits);
  if (digits != 0) {
    value = negative ? 0 - number : number;
  }
  return digits != 0;
}

// A caller's format must not ask for more than a part: no text, no pointer, no real number, no width from an argument.
bool TakesOnePart(const PrintfSpec& spec) noexcept {
  return std::wstring_view(L"diuxXo").find(spec.conversion) != std::wstring_view::npos &&
         spec.Argument() == PrintfArgument::Int32 && !spec.width_from_argument && !spec.precision_from_argument;
}

}  // namespace

Version::Version(const _CVersion& version) noexcept {
  SetVersion(version);
}

Version::Version(std::string_view text) {
  SetVersion(text);
}

Version::Version(std::wstring_view text) {
  SetVersion(text);
}

Version::Version(std::uint32_t major_part, std::uint32_t minor_part, std::uint32_t build,
                 std::uint32_t revision) noexcept
    : parts_{major_part, minor_part, build, revision} {}

void Version::SetVersion(const _CVersion& version) noexcept {
  parts_ = {version.major, version.minor, version.build, version.revision};
}

void Version::SetVersion(std::string_view text) {
  SetVersion(StringUtilities::Utf8ToUtf16(text));
}

void Version::SetVersion(std::wstring_view text) {
  CheckCompleteVersionFormat(text);
  std::array<std::uint32_t, kParts> parts{};
  if (!TakeNumber(text, parts[0])) {
    ThrowInvalidVersion();
  }
  for (std::size_t i = 1; i < kParts && !text.empty() && text.front() == L'.'; ++i) {
    text.remove_prefix(1);
    if (!TakeNumber(text, parts[i])) {
      break;
    }
  }
  parts_ = parts;
}

void Version::SetVersion(std::uint32_t major_part, std::uint32_t minor_part, std::uint32_t build,
                         std::uint32_t revision) noexcept {
  parts_ = {major_part, minor_part, build, revision};
}

_CVersion Version::GetCVerison() const noexcept {
  return {GetRevision(), GetBuild(), GetMinor(), GetMajor()};
}

int Version::Compare(const Version& other) const noexcept {
  if (parts_ == other.parts_) {
    return 0;
  }
  return parts_ < other.parts_ ? -1 : 1;
}

void Version::CheckCompleteVersionFormat(std::wstring_view text) {
  if (std::count(text.begin(), text.end(), L'.') != kParts - 1) {
    ThrowInvalidVersion();
  }
}

std::wstring Version::ToString() const {
  return ToString(kDefaultFormat);
}

std::wstring Version::ToString(const wchar_t* format) const {
  if (format == nullptr) {
    ThrowInvalidFormat();
  }
  std::wstring text;
  std::size_t part = 0;
  for (const wchar_t* at = format; *at != 0;) {
    if (*at != L'%' || at[1] == L'%') {
      if (!AppendUnits(text, std::wstring_view(at, 1))) {
        ThrowInvalidFormat();
      }
      at += *at == L'%' ? 2 : 1;
      continue;
    }
    ++at;
    PrintfSpec spec;
    if (part == parts_.size() || !ParsePrintfSpec(at, spec) || !TakesOnePart(spec) ||
        !AppendField(text, spec, {parts_[part++], 0})) {
      ThrowInvalidFormat();
    }
  }
  if (text.empty() || text.size() > kMaximumTextSize) {
    ThrowInvalidFormat();
  }
  return text;
}

std::string Version::ToCharString() const {
  return StringUtilities::Utf16ToUtf8(ToString());
}

}  // namespace Zelto::Utilities
