#include "zelto/json/lexer.h"

#include "zelto/json/compact_text.h"
#include "zelto/json/escapes.h"
#include "zelto/json/lexer_inline.h"
#include "zelto/json/number_text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Zelto::Json {
namespace {

// Appends what a text with escape sequences stands for.
void AppendDecoded(const wchar_t* at, const wchar_t* end, UnitStack& to) {
  char16_t* const start = to.Room((kWideCharacters ? 2 : 1) * static_cast<std::size_t>(end - at) + 8);
  char16_t* end_of_units = start;
  const auto put = [&end_of_units](wchar_t character) {
    UseUnits(character, [&end_of_units](char16_t unit) { *end_of_units++ = unit; });
  };
  while (at != end) {
    if (end - at >= 8 && UnitBlock<8>::TooWide(at) == 0) {
      // Eight are copied, and taken up to a backslash.
      const UnitBlock<8> block(at);
      block.Store(end_of_units);
      const BlockFlags flags = block.QuotesAndBackslashes();
      const std::size_t taken = flags == 0 ? 8 : FirstFlag(flags);
      at += taken;
      end_of_units += taken;
      if (flags == 0) {
        continue;
      }
    }
    if (*at == L'\\') {
      at = DecodeEscape(at, end, put);
    } else {
      put(*at++);
    }
  }
  to.Advance(static_cast<std::size_t>(end_of_units - start));
}

}  // namespace

Lexer::Lexer(const Lexer& other) {
  *this = other;
}

Lexer& Lexer::operator=(const Lexer& other) {
  if (this != &other) {
    const bool own_line = other.end_ == other.line_.data() + other.line_.size();
    // Whatever can throw comes first: what is left must not be in a line that is gone.
    LineSource read_line = other.read_line_;
    line_ = other.line_;
    read_line_ = std::move(read_line);
    error_ = other.error_;
    keep_white_spaces_ = other.keep_white_spaces_;
    end_ = own_line ? line_.data() + line_.size() : other.end_;
    at_ = end_ - other.Left();
  }
  return *this;
}

void Lexer::SetReadLine(LineSource read_line) {
  read_line_ = std::move(read_line);
}

void Lexer::ReadText(std::wstring_view text) noexcept {
  read_line_ = nullptr;
  at_ = text.data();
  end_ = at_ + text.size();
}

void Lexer::ReleaseText() noexcept {
  at_ = end_ = nullptr;
}

// The next line, in which nothing is taken yet; false at the end of the input.
bool Lexer::ReadLine() {
  const bool read = read_line_ && read_line_(line_);
  end_ = line_.data() + line_.size();
  at_ = read ? line_.data() : end_;
  return read;
}

bool Lexer::GetReady() {
  if (error_) {
    return false;
  }
  if (keep_white_spaces_) {
    return CharactersAvailable();
  }
  Skip();
  while (!CharactersAvailable()) {
    if (!ReadLine()) {
      return false;
    }
    Skip();
  }
  return true;
}

bool Lexer::ReadLineIfEmpty() {
  return Ready();
}

void Lexer::SkipWhiteSpaces() {
  Skip();
}

bool Lexer::CheckChar(wchar_t c) {
  return TakeChar(c);
}

void Lexer::GetChar(wchar_t c) {
  ExpectChar(c);
}

bool Lexer::CheckString(const std::wstring& text) {
  return TakeText(text);
}

// The next double quote that is not escaped, or the line's end.
const wchar_t* Lexer::FindEndingQuote() const noexcept {
  const wchar_t* at = at_;
  for (;;) {
    BlockFlags flags = 0;
    while (end_ - at >= 8 && flags == 0) {
      flags = UnitBlock<8>(at).QuotesAndBackslashes();
      at += flags == 0 ? 8 : FirstFlag(flags);
    }
    // What was found may be a character above U+FFFF whose low bits are the same.
    while (at != end_ && *at != L'"' && *at != L'\\') {
      ++at;
    }
    if (at == end_ || *at == L'"') {
      return at;
    }
    at += end_ - at > 1 ? 2 : 1;
  }
}

bool Lexer::CheckEndingDoubleQuotes() {
  at_ = FindEndingQuote();
  return CharactersAvailable();
}

// Goes on with a quoted string at its first escape sequence or character above U+FFFF, or fails where the line ends.
// Nothing is decoded before the string's end is found.
bool Lexer::TakeRestOfQuotedString(UnitStack& to) {
  const wchar_t* const quote = FindEndingQuote();
  if (quote == end_) {
    error_ = true;
    return false;
  }
  AppendDecoded(at_, quote, to);
  at_ = quote + 1;
  return true;
}

bool Lexer::CheckQuotedString(std::wstring& out) {
  if (!TakeChar(L'"')) {
    return false;
  }
  const wchar_t* const quote = FindEndingQuote();
  if (quote == end_) {
    return false;
  }
  out.assign(at_, quote);
  at_ = quote + 1;
  return true;
}

std::wstring Lexer::GetQuotedString() {
  if (!Ready()) {
    error_ = true;
    return {};
  }
  ExpectChar(L'"');
  const wchar_t* const quote = FindEndingQuote();
  if (quote == end_) {
    error_ = true;
    return {};
  }
  std::wstring text(at_, quote);
  at_ = quote + 1;
  return text;
}

// Where a character is available.
std::wstring_view Lexer::TakeInteger() {
  const wchar_t* const start = at_;
  at_ += *at_ == L'+' || *at_ == L'-' ? 1 : 0;
  at_ = std::find_if_not(at_, end_, Utilities::Ascii::IsDigit);
  return {start, static_cast<std::size_t>(at_ - start)};
}

bool Lexer::CheckInteger(IntegerToken& out) {
  const wchar_t next = Peek();
  if (next != L'+' && next != L'-' && !Utilities::Ascii::IsDigit(next)) {
    return false;
  }
  out = IntegerToken(std::wstring(TakeInteger()));
  return true;
}

bool Lexer::CheckInteger(int& out) {
  IntegerToken token;
  if (!CheckInteger(token)) {
    return false;
  }
  const ScannedNumber number = ScanNumber(std::wstring_view(token.GetText()));
  using Limits = std::numeric_limits<int>;
  out = ToInt32(number).value_or(number.negative ? Limits::min() : Limits::max());
  return true;
}

IntegerToken Lexer::GetInteger() {
  if (!ReadLineIfEmpty()) {
    error_ = true;
    return {};
  }
  return IntegerToken(std::wstring(TakeInteger()));
}

bool Lexer::CheckJsonBoolean(BooleanToken& out) {
  for (const bool value : {true, false}) {
    if (TakeText(value ? L"true" : L"false")) {
      out = BooleanToken(value);
      return true;
    }
  }
  return false;
}

std::wstring Lexer::GetStringUntil(wchar_t c) {
  if (!ReadLineIfEmpty()) {
    error_ = true;
    return {};
  }
  const wchar_t* const start = at_;
  at_ = std::find(at_, end_, c);
  return std::wstring(start, at_);
}

}  // namespace Zelto::Json
