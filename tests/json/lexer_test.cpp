#include "zelto/json/lexer.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace Zelto::Json {
namespace {

// A source of lines, given the text in front of each line feed.
Lexer::LineSource Lines(std::vector<std::wstring> lines) {
  return [lines = std::move(lines), next = std::size_t{0}](std::wstring& line) mutable {
    if (next == lines.size()) {
      return false;
    }
    line = lines[next++];
    return true;
  };
}

Lexer LexerOf(std::vector<std::wstring> lines) {
  Lexer lexer;
  lexer.SetReadLine(Lines(std::move(lines)));
  return lexer;
}

// All pieces of an input, one after the other.
std::wstring PiecesOf(Lexer lexer) {
  std::wstring pieces;
  while (!lexer.HasError()) {
    std::wstring text;
    IntegerToken integer;
    BooleanToken boolean;
    if (lexer.CheckQuotedString(text)) {
      pieces += L"q" + text;
    } else if (lexer.CheckInteger(integer)) {
      pieces += L"i" + integer.GetText();
    } else if (lexer.CheckJsonBoolean(boolean)) {
      pieces += L"b" + boolean.GetText();
    } else if (lexer.CheckString(L"null")) {
      pieces += L"n";
    } else if (lexer.CheckChar(L',')) {
      pieces += L"c";
    } else {
      lexer.GetChar(L':');
      pieces += lexer.HasError() ? L"." : L":";
    }
    pieces += L' ';
  }
  return pieces;
}

TEST(Lexer, LinesGiveWhatTheWholeTextGives) {
  const std::wstring pieces = PiecesOf(LexerOf({L"  \"a b\\\"\" :true,+12 ,-, false null : \"\",  007 "}));
  EXPECT_EQ(pieces, L"qa b\\\" : btrue c i+12 c i- c bfalse n : q c i007 . ");
  // Pieces that begin where the line before was skipped to, blank lines, white space at both ends, no lines at all.
  const std::vector<std::wstring> lines = {L"",        L"  \"a b\\\"\"", L"   ",        L":true",  L",+12", L"", L" ,-",
                                           L", false", L"null",          L"    : \"\"", L",  007", L"",     L" "};
  EXPECT_EQ(PiecesOf(LexerOf(lines)), pieces);
  EXPECT_EQ(PiecesOf(LexerOf({L"   ,", L"1  ,1", L"  ,"})), PiecesOf(LexerOf({L"   , 1  ,1   ,"})));
  EXPECT_EQ(PiecesOf(LexerOf({})), L". ");
  EXPECT_EQ(PiecesOf(LexerOf({L"", L"  "})), L". ");
  EXPECT_EQ(PiecesOf(Lexer()), L". ");
}

TEST(Lexer, ReadsOnWhenThereAreLinesAgain) {
  Lexer lexer;
  EXPECT_FALSE(lexer.CheckChar(L'a'));
  lexer.SetReadLine(Lines({L"a"}));
  EXPECT_TRUE(lexer.CheckChar(L'a'));
  EXPECT_FALSE(lexer.CheckChar(L'b'));
  lexer.SetReadLine(Lines({L"", L" b"}));
  EXPECT_TRUE(lexer.CheckChar(L'b'));
}

TEST(Lexer, ErrorsStayAndStopEverything) {
  Lexer lexer = LexerOf({L"a \"text\" 12"});
  lexer.GetChar(L'b');
  EXPECT_TRUE(lexer.HasError());
  std::wstring text = L"before";
  int number = 0;
  EXPECT_FALSE(lexer.CheckChar(L'a'));
  EXPECT_FALSE(lexer.CheckQuotedString(text));
  EXPECT_FALSE(lexer.CheckInteger(number));
  EXPECT_FALSE(lexer.CheckString(L""));
  EXPECT_EQ(lexer.GetQuotedString(), L"");
  EXPECT_EQ(lexer.GetStringUntil(L' '), L"");
  EXPECT_EQ(text, L"before");
  EXPECT_TRUE(lexer.HasError());
}

TEST(Lexer, UnterminatedStringsLeaveNoErrorAndTakeTheQuote) {
  for (const wchar_t* line : {L"  \"abc", L"\"abc\\\"", L"\"abc\\"}) {
    Lexer lexer = LexerOf({line, L"\"next\""});
    std::wstring text;
    EXPECT_FALSE(lexer.CheckQuotedString(text)) << line;
    EXPECT_FALSE(lexer.HasError());
    EXPECT_TRUE(lexer.CheckString(L"abc")) << line;
  }
  Lexer lexer = LexerOf({L"\"abc"});
  EXPECT_EQ(lexer.GetQuotedString(), L"");
  EXPECT_TRUE(lexer.HasError());
  lexer = LexerOf({L"abc\" d"});
  EXPECT_EQ(lexer.GetQuotedString(), L"abc");
  EXPECT_TRUE(lexer.HasError());
}

TEST(Lexer, IntegersHaveAsciiDigits) {
  struct Case {
    const wchar_t* line;
    std::wstring text;
    int number;
  };
  for (const Case& c :
       {Case{L"+", L"+", 0}, Case{L"-x", L"-", 0}, Case{L"--1", L"-", 0}, Case{L"007.5", L"007", 7},
        Case{L"1\u0661", L"1", 1}, Case{L"99999999999", L"99999999999", INT_MAX},
        Case{L"-99999999999", L"-99999999999", INT_MIN}, Case{L"-2147483648", L"-2147483648", INT_MIN}}) {
    Lexer lexer = LexerOf({c.line});
    Lexer other(lexer);
    IntegerToken token;
    EXPECT_TRUE(lexer.CheckInteger(token));
    EXPECT_EQ(token.GetText(), c.text);
    int number = -1;
    EXPECT_TRUE(other.CheckInteger(number));
    EXPECT_EQ(number, c.number);
  }
  IntegerToken token;
  EXPECT_FALSE(LexerOf({L"\uFF11"}).CheckInteger(token));
  Lexer lexer = LexerOf({L"x"});
  EXPECT_EQ(lexer.GetInteger().GetText(), L"");
  EXPECT_FALSE(lexer.HasError());
  lexer = Lexer();
  lexer.GetInteger();
  EXPECT_TRUE(lexer.HasError());
}

TEST(Lexer, TakesTextUntilACharacterOfTheLine) {
  Lexer lexer = LexerOf({L"  key = value", L"rest"});
  EXPECT_EQ(lexer.GetStringUntil(L'='), L"key ");
  lexer.GetChar(L'=');
  EXPECT_EQ(lexer.GetStringUntil(L'='), L"value");
  EXPECT_EQ(lexer.GetStringUntil(L'='), L"rest");
  EXPECT_FALSE(lexer.HasError());
  EXPECT_EQ(lexer.GetStringUntil(L'='), L"");
  EXPECT_TRUE(lexer.HasError());
}

TEST(Lexer, CopiesReadOnIndependently) {
  Lexer lexer = LexerOf({L"1 2", L"3"});
  int number = 0;
  EXPECT_TRUE(lexer.CheckInteger(number));
  Lexer copy(lexer);
  lexer = LexerOf({L"other, longer line"});
  EXPECT_TRUE(copy.CheckInteger(number));
  EXPECT_EQ(number, 2);
  EXPECT_TRUE(copy.CheckInteger(number));
  EXPECT_EQ(number, 3);
  EXPECT_TRUE(lexer.CheckString(L"other"));
}

}  // namespace
}  // namespace Zelto::Json
