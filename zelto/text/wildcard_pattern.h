/// @file
/// File-name patterns with "*" and "?".
#pragma once

#include <zelto/export.h>

#include <memory>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

class WildcardMatcher;

/// A file-name pattern, compiled once and matched against any number of texts.
///
/// The pattern is turned into a regular expression of the ECMAScript grammar, which must match the whole text:
///
/// | In the pattern | Meaning |
/// |---|---|
/// | `?` | any one unit that is not a line end (U+000A, U+000D, U+2028, U+2029) |
/// | `*` | any number of such units, also none |
/// | `+` | the unit before it once or more often: `a+` is a, aa, ...; `?+` is any unit or more |
/// | anything else | itself, the backslash too; ASCII letters in either case |
///
/// Only ASCII letters have a case, whatever the locale. A surrogate pair is two units, so `??` matches it; on Linux one
/// unit above 0xFFFF counts as its pair, in the pattern and in the text.
///
/// A plus must have something to repeat. The same patterns are refused on every target (standard libraries differ):
///
/// | Pattern | Why | Accepted instead |
/// |---|---|---|
/// | `+`, `+a` | nothing stands before it | |
/// | `a++`, `?++` | what stands before it is repeated already | `a+`, `aa+`, `?+` |
/// | `*+`, `a*+` | the same | `*`, `*?+` |
///
/// Immutable but for assignment: any number of threads may match with one pattern. Copies share the compiled form.
class ZELTO_API WildcardPattern {
 public:
  /// Compiles a pattern; an empty one matches the empty text only. Linear in the pattern.
  ///
  /// @throws std::regex_error  with `error_badrepeat` on a plus with nothing to repeat, see the table
  /// @throws std::range_error  "bad conversion" on a unit above 0x10FFFF (Linux only)
  explicit WildcardPattern(std::wstring_view pattern);
  WildcardPattern(const WildcardPattern& other);
  WildcardPattern& operator=(const WildcardPattern& other);
  ~WildcardPattern();

  /// Whether the pattern matches the whole text.
  ///
  /// Time grows with the length of the text times the length of the pattern divided by 64, whatever both hold; the
  /// stack does not grow. The text is read only until the answer is known.
  ///
  /// @throws std::range_error  "bad conversion" when a unit above 0x10FFFF is read (Linux only)
  bool Match(std::wstring_view text) const;

 protected:
  /// The regular expression of a pattern, as the table says it: `*.txt` gives `.*\.txt`.
  static std::wstring ToRegexString(std::wstring_view pattern);

 private:
  std::shared_ptr<const WildcardMatcher> matcher_;
};

}  // namespace Zelto::Utilities
