/// @file
/// Splits JSON text into the pieces that the reader asks for.
#pragma once

#include <zelto/export.h>
#include <zelto/json/tokens.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace Zelto::Json {

class UnitStack;

/// Delivers characters, quoted strings, integers and booleans from a sequence of input lines, which give the same
/// pieces as the whole text in one line; only a quoted string does not go on in the next line.
///
/// Every operation first skips white space (ASCII blank, tab, line feed, vertical tab, form feed, carriage return) and
/// reads further lines when the current one is used up. What a Get operation does not find sets the error flag; once it
/// is set, nothing is found any more. A Check operation never leaves an error of its own behind.
///
/// One thread at a time. Copies read on independently, from a copy of the line source.
class ZELTO_API Lexer {
 public:
  /// Puts the next line into its argument, without a line end, and returns true; returns false at the end of the input.
  /// It is handed the line before, at first an empty string. What it throws comes out of the operation that wanted the
  /// line; the next one asks again. It must leave the lexer alone.
  using LineSource = std::function<bool(std::wstring&)>;

  Lexer() = default;
  Lexer(const Lexer& other);
  Lexer& operator=(const Lexer& other);
  ~Lexer() = default;

  /// Where lines come from. Without a source the input is empty. A source must end: empty lines are read over.
  void SetReadLine(LineSource read_line);

  bool HasError() const noexcept { return error_; }

  /// Takes the next character if it is `c`.
  bool CheckChar(wchar_t c);
  /// Takes the next character, which must be `c`; another one, or the end of the input, is an error.
  void GetChar(wchar_t c);
  /// Takes `text` if the rest of the current line begins with it.
  bool CheckString(const std::wstring& text);

  /// Takes a quoted string. An unterminated one is not taken, but its opening quote is.
  ///
  /// @param out  the characters between the quotes as they are written, escapes included; unchanged when there is none
  bool CheckQuotedString(std::wstring& out);
  /// As `CheckQuotedString`; it is an error if there is none, and the result is empty.
  std::wstring GetQuotedString();

  /// Takes an integer: "+" or "-" or neither, and decimal digits. A sign alone is one, too.
  bool CheckInteger(IntegerToken& out);
  /// As the other form. A number out of range gives the limit that it is beyond, a sign alone gives 0.
  bool CheckInteger(int& out);
  /// What `CheckInteger` takes, possibly nothing; an error at the end of the input.
  IntegerToken GetInteger();

  /// Takes "true" or "false", whatever follows.
  bool CheckJsonBoolean(BooleanToken& out);

  /// Takes what stands on the current line before the next `c`, or all of its rest. An error at the end of the input.
  std::wstring GetStringUntil(wchar_t c);

 protected:
  bool CharactersAvailable() const noexcept { return at_ != end_; }
  /// Goes to the next unescaped double quote of the line; false, at its end, when there is none.
  bool CheckEndingDoubleQuotes();
  /// Skips white space and reads lines until a character is there; false at the end of the input and after an error.
  bool ReadLineIfEmpty();
  void SkipWhiteSpaces();

 private:
  friend class JsonReader;

  // Reads a text in place, as one line; nothing follows it. The text must stay until `ReleaseText`.
  void ReadText(std::wstring_view text) noexcept;
  void ReleaseText() noexcept;
  bool GetReady();
  bool ReadLine();
  void SetError() noexcept { error_ = true; }

  // What the operations above are made of, for the lexer and the reader alone; the reader's inner loops are inline.
  inline void Skip();
  inline bool Ready();
  inline wchar_t Peek();
  inline bool TakeChar(wchar_t c);
  inline void ExpectChar(wchar_t c);
  inline bool TakeText(std::wstring_view text);
  inline bool TakeQuotedString(UnitStack& to);
  bool TakeRestOfQuotedString(UnitStack& to);
  inline void TakeInteger(UnitStack& to);
  inline bool TakeBoolean(UnitStack& to);
  std::wstring_view TakeInteger();
  const wchar_t* FindEndingQuote() const noexcept;
  std::size_t Left() const noexcept { return static_cast<std::size_t>(end_ - at_); }

  bool error_ = false;
  bool keep_white_spaces_ = false;  // white space before a piece is not skipped
  std::wstring line_;
  LineSource read_line_;
  // What is left of the current line: of `line_`, or of the text that is read in place.
  const wchar_t* at_ = nullptr;
  const wchar_t* end_ = nullptr;
};

}  // namespace Zelto::Json
