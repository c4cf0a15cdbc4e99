/// @file
/// UTF-8 and UTF-16 by the book, one code point at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Fuzz {

using CodePoints = std::vector<std::uint32_t>;

/// Nothing when the bytes are not well-formed. Zero bytes are characters.
std::optional<CodePoints> DecodeUtf8(std::string_view bytes);

/// Nothing on a lone surrogate and above U+10FFFF. A `wchar_t` above U+FFFF is a code point by itself.
std::optional<CodePoints> DecodeUtf16(std::wstring_view units);

std::string EncodeUtf8(const CodePoints& text);

/// One unit for each code point, as the library decodes.
std::wstring OneUnitEach(const CodePoints& text);

/// Text in UTF-16: a `wchar_t` above U+FFFF becomes a pair, surrogates stay.
/// @return nothing above U+10FFFF
std::optional<std::wstring> InUnits(std::wstring_view text);

}  // namespace Zelto::Fuzz
