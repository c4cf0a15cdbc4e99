#include "zelto/time/date_picture.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <bit>
#include <string>

namespace Zelto::Utilities {
namespace {

TEST(DatePicture, WritesWhatTheSystemWrites) {
  for (const Platform::CalendarFields& fields :
       {Platform::CalendarFields{2017, 11, 3, 8, 15, 4, 6, 0}, Platform::CalendarFields{2005, 5, 0, 1, 0, 44, 56, 0},
        Platform::CalendarFields{1601, 1, 1, 1, 12, 0, 0, 0},
        Platform::CalendarFields{9999, 12, 5, 31, 23, 59, 59, 0}}) {
    const auto system = std::bit_cast<SYSTEMTIME>(fields);
    wchar_t expected[200] = L"";
    for (const wchar_t* picture : {L"yyyy'-'MM'-'dd", L"d dd ddd dddd", L"M MM MMM MMMM", L"yy yyyy yyyyy",
                                   L"'it''s' d", L"d''d", L"x.d/M", L"MMMMMM ddddddd"}) {
      ASSERT_NE(::GetDateFormatEx(LOCALE_NAME_INVARIANT, 0, &system, picture, expected, 200, nullptr), 0);
      std::wstring text;
      DatePicture::AppendDate(fields, picture, text);
      EXPECT_EQ(text, expected);
    }
    for (const wchar_t* picture : {L"HH:mm:ss", L"h hh H HH", L"m mm s ss", L"t tt", L"hhh HHH mmm sss", L"'H' H"}) {
      ASSERT_NE(::GetTimeFormatEx(LOCALE_NAME_INVARIANT, 0, &system, picture, expected, 200), 0);
      std::wstring text;
      DatePicture::AppendTime(fields, picture, text);
      EXPECT_EQ(text, expected);
    }
  }
}

}  // namespace
}  // namespace Zelto::Utilities
