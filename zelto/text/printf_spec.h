/// @file
/// Conversions of printf, with the conventions of Windows. Not installed.
#pragma once

namespace Zelto::Utilities {

/// The size prefix of a conversion.
enum class PrintfSize {
  Default,
  Char,        // hh
  Short,       // h; narrow text for s, S, c, C
  Long,        // l; 32 bits for numbers, wide text for s, S, c, C
  Wide,        // w; wide text only
  Int32,       // I32
  Int64,       // I64, ll, j
  Pointer,     // I, z, t: as wide as a pointer
  LongDouble,  // L
};

/// What a conversion takes from the arguments.
enum class PrintfArgument {
  Int32,
  Int64,
  PointerSize,
  Double,
  LongDouble,
  Pointer,
};

/// One conversion, from "%" to its letter.
struct PrintfSpec {
  static constexpr int kNoPrecision = -1;

  /// The greatest width, and the greatest precision of a number. Strings may have any precision, which only cuts them.
  static constexpr int kMaximumField = 65535;

  bool left = false;       // '-'
  bool plus = false;       // '+'
  bool blank = false;      // ' '
  bool zero = false;       // '0'
  bool alternate = false;  // '#'
  bool width_from_argument = false;
  bool precision_from_argument = false;
  int width = 0;
  int precision = kNoPrecision;
  PrintfSize size = PrintfSize::Default;
  wchar_t conversion = 0;

  /// Of the letters of the conversions.
  bool IsText() const noexcept;
  bool IsReal() const noexcept;

  /// Whether a text or character conversion takes narrow text: s and c are wide by themselves, S and C narrow.
  bool TakesNarrowText() const noexcept;

  PrintfArgument Argument() const noexcept;

  /// Takes a width or precision given as an argument: a negative width means `left`, a negative precision none.
  void SetWidth(int value) noexcept;
  void SetPrecision(int value) noexcept;

  /// Whether width and precision are within `kMaximumField`.
  bool IsWithinLimits() const noexcept;
};

/// Reads the conversion behind a "%" and moves `at` behind it.
///
/// @param at  zero-terminated; at the unit after the "%"
/// @return    false when it is not a valid one; `at` is then anywhere up to the terminator
bool ParsePrintfSpec(const wchar_t*& at, PrintfSpec& spec) noexcept;

}  // namespace Zelto::Utilities
