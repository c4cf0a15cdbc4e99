/// @file
/// The printf conversions of the library's formatters, by way of the C library's `snprintf`.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Zelto::Fuzz {

/// One conversion, from behind its "%" to its letter.
struct Conversion {
  std::wstring flags;
  int width = 0;
  int precision = -1;
  bool star_width = false;
  bool star_precision = false;
  std::wstring size;
  wchar_t letter = 0;

  bool IsText() const { return letter == L's' || letter == L'S'; }
  bool IsReal() const;
  bool IsNarrow() const;
  bool Has(wchar_t flag) const { return flags.find(flag) != std::wstring::npos; }
  void SetWidth(std::int32_t value);
  void SetPrecision(std::int32_t value) { precision = value < 0 ? -1 : value; }
  /// Whether width and precision are not too great.
  bool IsWithinLimits() const;
};

/// Takes a conversion from the front of a format behind its "%". @return nothing for a bad one
std::optional<Conversion> TakeConversion(std::wstring_view& format);

/// What is printed for a number, character or pointer given as a word, or for a real number.
/// @return nothing when the value is refused
std::optional<std::wstring> Print(const Conversion& conversion, std::uint64_t word, double real);

/// The arguments of a call with variable ones: words for numbers and pointers, and real numbers, which some targets
/// pass apart from them.
struct Arguments {
  static constexpr std::size_t kWords = 112;
  static constexpr std::size_t kReals = 8;

  std::array<std::uint64_t, kWords> words{};
  std::array<double, kReals> reals{};

  /// Calls `format_with(format, words..., reals...)`.
  template <typename FormatWith>
  std::wstring Call(FormatWith format_with, const wchar_t* format) const {
    return [&]<std::size_t... W, std::size_t... R>(std::index_sequence<W...>, std::index_sequence<R...>) {
      return format_with(format, words[W]..., reals[R]...);
    }
    (std::make_index_sequence<kWords>(), std::make_index_sequence<kReals>());
  }

  /// Whether a real number takes the place of a word, or has a place of its own.
  static bool RealsAreWords();
};

}  // namespace Zelto::Fuzz
