#include "zelto/text/exceptions/win32_exception.h"
#include "zelto/text/string_utilities.h"
#include "zelto/time/utc_time.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Zelto::Utilities {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;
using Form = UtcTime::StringValue;
using Account = UtcTime::LocaleUserAccount;

UtcTime Read(std::wstring_view text) {
  return UtcTime(text, Form::ISO8601, false);
}

auto Reading(std::wstring_view text, Form form) {
  return [=] { UtcTime(text, form, false); };
}

TEST(UtcTimeText, PrintsTheFixedForms) {
  const UtcTime time(2017, 11, 8, 15, 44, 56, 789, false);
  EXPECT_EQ(time.ToString(Form::DateTime, false), L"2017-11-08 15:44:56");
  EXPECT_EQ(time.ToString(Form::ISO8601, false), L"2017-11-08T15:44:56");
  EXPECT_EQ(UtcTime().ToString(Form::ISO8601, false), L"1601-01-01T00:00:00");
  EXPECT_EQ(UtcTime::FromTicks((std::uint64_t{1} << 63) - 1).ToString(Form::DateTime, false), L"30828-09-14 02:48:05");
  EXPECT_EQ(UtcTime::FromTicks(1).ToString(Form::Hex, false), L"0000000000000001");
  EXPECT_EQ(UtcTime::FromTicks(0xFEDCBA9876543210).ToString(Form::Hex, false), L"fedcba9876543210");
  for (const Form form : {Form{3}, Form{0xFFFFFFFF}}) {
    EXPECT_THROW(time.ToString(form, false), std::invalid_argument);
    EXPECT_THAT(Reading(L"2017-11-08T15:44:56", form), ThrowsMessage<std::invalid_argument>("unknown argument value"));
  }
}

TEST(UtcTimeText, ReadsHexadecimalAsLenientlyAsScanf) {
  const auto ticks = [](const wchar_t* text) { return UtcTime(text, Form::Hex, false).GetTime(); };
  EXPECT_EQ(ticks(L"01d358a8c4e3f3aa"), 0x01d358a8c4e3f3aaU);
  EXPECT_EQ(ticks(L"01D358A8C4E3F3AAzz"), 0x01d358a8c4e3f3aaU);
  EXPECT_EQ(ticks(L" \t\n1\r\v\f2 3"), 0x0000000100000002U);
  EXPECT_EQ(ticks(L"123456789"), 0x1234567800000009U);
  EXPECT_EQ(ticks(L"0x12345678"), 0x0012345600000078U);
  EXPECT_EQ(ticks(L"0X12+34"), 0x0000001200000034U);
  EXPECT_EQ(ticks(L"-0x00001-2"), 0xFFFFFFFFFFFFFFFEU);
  EXPECT_THAT(Reading(L"", Form::Hex),
              ThrowsMessage<std::invalid_argument>("Can't convert empty hex value to utc object"));
  EXPECT_THAT(Reading(L"\u00E9", Form::Hex),
              ThrowsMessage<std::invalid_argument>("Can't convert value: \xC3\xA9 to utc object"));
  for (const wchar_t* text : {L" ", L"12345678", L"1 g", L"- 1 2", L"0x 1", L"1,2", L"\uFF11 1"}) {
    EXPECT_THROW(Reading(text, Form::Hex)(), std::invalid_argument) << StringUtilities::Utf16ToUtf8(text);
  }
  EXPECT_THROW(Reading({L"1\0 2", 4}, Form::Hex)(), std::invalid_argument);
}

TEST(UtcTimeText, ReadsIso8601AtFixedPositions) {
  const UtcTime time(2017, 11, 8, 15, 44, 56, 0, false);
  for (const wchar_t* text :
       {L"2017-11-08T15:44:56", L"2017-11-08 15:44:56", L"2017-11-08,15:44:56", L"2017-11-08T15:44:56.123+01:00",
        L"2017-11-08T15:44:56Z", L"2017-11-08T15:44:56,123.456", L"2017-11-08T15:44:56T01:02:03"}) {
    EXPECT_EQ(Read(text), time) << StringUtilities::Utf16ToUtf8(text);
    EXPECT_EQ(UtcTime(text, Form::DateTime, false), time);
  }
  // These pass the test and are read at the wrong places: a field is garbage, or lies at or behind the end.
  for (const wchar_t* text : {L"20171108T15:44:56Z", L"2017-11-08T25:44:56", L"2017-02-30T00:00:00",
                              L"1600-12-31T23:59:59", L"20171108ZZZZZZZZZ", L"2017-11-08Z-90:00"}) {
    EXPECT_THAT(Reading(text, Form::ISO8601),
                ThrowsMessage<Win32Exception>(HasSubstr("Can't convert system time to file time")))
        << StringUtilities::Utf16ToUtf8(text);
  }
  for (const wchar_t* text : {L"2017-11-08", L"20171108", L"15:44:56", L"2017-11-08Z"}) {
    EXPECT_THAT(Reading(text, Form::ISO8601), ThrowsMessage<std::out_of_range>("invalid string position"));
  }
  EXPECT_EQ(Read(L"2017-1108T15:44:56").ToString(Form::ISO8601, false), L"2017-11-08T05:04:06");
  EXPECT_EQ(Read(L"20171108 15:44:56").ToString(Form::ISO8601, false), L"2017-10-01T00:00:00");
  EXPECT_EQ(Read(L"2017-11-08Z+90:00").ToString(Form::ISO8601, false), L"2017-11-08T09:00:00");
  // A position that equals the length reads as 0.
  EXPECT_EQ(Read(L"2017-11-08ZZZZZZZ").ToString(Form::ISO8601, false), L"2017-11-08T00:00:00");
  for (const wchar_t* text : {L"", L"2017", L"2017-11-08x", L"2017-11-08T15:44", L"today"}) {
    EXPECT_THAT(Reading(text, Form::ISO8601), ThrowsMessage<std::invalid_argument>("Is not a valid ISO8601 string"));
  }
}

TEST(UtcTimeText, WritesPictures) {
  const UtcTime afternoon(2017, 11, 8, 15, 4, 6, 0, false);
  const UtcTime midnight(2005, 5, 1, 0, 44, 56, 0, false);
  const auto expect = [&](const wchar_t* date, const wchar_t* time, const wchar_t* in_afternoon,
                          const wchar_t* at_midnight) {
    EXPECT_EQ(afternoon.ToString(date, L"|", time, false), in_afternoon);
    EXPECT_EQ(midnight.ToString(date, L"|", time, false), at_midnight);
  };
  expect(L"d dd ddd dddd", L"", L"8 08 Wed Wednesday|", L"1 01 Sun Sunday|");
  expect(L"M MM MMM MMMM", L"", L"11 11 Nov November|", L"5 05 May May|");
  expect(L"y yy yyyy", L"", L"17 17 2017|", L"5 05 2005|");
  expect(L"", L"h hh H HH", L"|3 03 15 15", L"|12 12 0 00");
  expect(L"", L"m mm s ss t tt", L"|4 04 6 06 P PM", L"|44 44 56 56 A AM");
  expect(L"yyyyyy MMMMM ddddd", L"hhh HHH mmm sss ttt", L"2017 November Wednesday|03 15 04 06 PM",
         L"2005 May Sunday|12 00 44 56 AM");
  expect(L"'d' dd' o''clock'", L"'it''s 'H", L"d 08 o'clock|it's 15", L"d 01 o'clock|it's 0");
  expect(L"''''d''", L"'open H", L"'8|open H", L"'1|open H");
  expect(L"HH.x\u00E9d", L"dM.H", L"HH.x\u00E98|dM.15", L"HH.x\u00E91|dM.0");
}

TEST(UtcTimeText, WritesWhatTheLocaleWants) {
  const UtcTime time(2017, 11, 8, 15, 44, 56, 0, false);
  for (const Account account : {Account::User, Account::System}) {
    const std::wstring date = time.ToLocalDateString(account, false);
    const std::wstring clock = time.ToLocalTimeString(account, false);
    EXPECT_NE(date.find(L"17"), std::wstring::npos);
    EXPECT_NE(clock.find(L"44"), std::wstring::npos);
    EXPECT_EQ(time.ToLocalString(account, false), date + L" " + clock);
  }
  EXPECT_EQ(UtcTime::GetLocale(Account::User), 0x400U);
  EXPECT_EQ(UtcTime::GetLocale(Account::System), 0x800U);
  EXPECT_THROW(UtcTime::GetLocale(Account{2}), std::invalid_argument);
  EXPECT_THROW(time.ToLocalString(Account{2}, false), std::invalid_argument);
}

}  // namespace
}  // namespace Zelto::Utilities
