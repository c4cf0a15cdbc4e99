#include "zelto/data/data_filter.h"

#include "zelto/text/exceptions/win32_exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelto::Utilities {
namespace {

using enum FilterOperator;
using testing::ThrowsMessage;

constexpr auto kUnknown = static_cast<FilterOperator>(6);
constexpr FilterOperator kAll[] = {Equal,           NotEqual, GreaterThan, LessThan, GreaterThanOrEqual,
                                   LessThanOrEqual, kUnknown};

DataFilter Filter(const wchar_t* field, FilterOperator filter_operator, const wchar_t* values) {
  DataFilter filter;
  filter.SetField(field);
  filter.SetFilterOperator(filter_operator);
  filter.SetValue(values);
  return filter;
}

// A letter for each operator that passes the candidate, in the order of `kAll`: = ! > < g(>=) l(<=) ?(unknown).
template <typename Value>
std::string Passing(Value candidate, const wchar_t* values) {
  std::string passing;
  for (std::size_t i = 0; i < std::size(kAll); ++i) {
    if (DataFilter::FilterField(L"f", candidate, {Filter(L"f", kAll[i], values)})) {
      passing += "=!><gl?"[i];
    }
  }
  return passing;
}

// What judges a candidate, for a value that is not of its type.
template <typename Value>
auto Judging(Value candidate, const wchar_t* values) {
  return [=] { DataFilter::FilterField(L"f", candidate, {Filter(L"f", Equal, values)}); };
}

TEST(DataFilter, KeepsTheBareFieldAndTheSplitValues) {
  DataFilter filter = Filter(L"\r\n  \ta b\t \r\n", Equal, L"a, b,,c,");
  EXPECT_EQ(filter.GetField(), L"\ta b\t");
  EXPECT_EQ(filter.GetValue(), (std::vector<std::wstring>{L"a", L" b", L"", L"c", L""}));
  filter.SetValue(filter.GetValue()[3]);
  EXPECT_EQ(filter.GetValue(), std::vector<std::wstring>{L"c"});
  filter.SetValue(L"");
  EXPECT_EQ(filter.GetValue(), std::vector<std::wstring>{L""});
  EXPECT_EQ(DataFilter().GetFilterOperator(), Equal);
  EXPECT_TRUE(DataFilter().GetValue().empty());
}

TEST(DataFilter, RendersItsOperatorAsSql) {
  const wchar_t* const texts[] = {L"=", L"<>", L">", L"<", L">=", L"<="};
  for (std::uint32_t i = 0; i < std::size(texts); ++i) {
    EXPECT_EQ(DataFilter::OperatorToSQL(static_cast<FilterOperator>(i)), texts[i]);
  }
  EXPECT_THAT([] { DataFilter::OperatorToSQL(kUnknown); },
              ThrowsMessage<std::runtime_error>("Given operator is unknown and cannot converted to SQL operator"));
}

TEST(DataFilter, ComparesTextWithAnyOfTheValues) {
  EXPECT_EQ(Passing(L"b", L"a,b"), "=>gl?");
  EXPECT_EQ(Passing(L"b", L"a,c"), "!><gl?");
  EXPECT_EQ(Passing(L"b", L"B"), "!>g?");
  EXPECT_EQ(Passing(L"10", L"9"), "!<l?");
  EXPECT_EQ(Passing(L"ab", L"a"), "!>g?");
  const wchar_t* const nothing = nullptr;
  EXPECT_EQ(Passing(nothing, L""), "=gl?");
  EXPECT_EQ(Passing(nothing, L"a"), "!<l?");
  EXPECT_EQ(Passing(L"\uFFFF", L"\U0001F600"), "!>g?");
  EXPECT_EQ(Passing(L"\U0001F600", L"\U0001F601"), "!<l?");
  EXPECT_EQ(Passing(L"\U0001F600", L"\xD83D\xDE00"), "=gl?");
  if constexpr (sizeof(wchar_t) > sizeof(char16_t)) {
    const std::wstring no_character(1, static_cast<wchar_t>(std::uint32_t{0x110041}));
    EXPECT_EQ(Passing(no_character.c_str(), L"A,\uFFFF"), "!>g?");
  }
}

TEST(DataFilter, ComparesNumbersAndTimesByValue) {
  EXPECT_EQ(Passing(10, L"9"), "!>g?");
  EXPECT_EQ(Passing(-5, L" \t-5 apples,7"), "=<gl?");
  EXPECT_EQ(Passing(-2147483647 - 1, L"-2147483648,+2147483647"), "=<gl?");
  EXPECT_EQ(Passing(10ULL, L"9"), "!>g?");
  EXPECT_EQ(Passing(18446744073709551615ULL, L"18446744073709551615"), "=gl?");
  EXPECT_EQ(Passing(18446744073709551611ULL, L"-5"), "=gl?");
  const UtcTime time(2017, 11, 8, 15, 44, 56, 0, false);
  EXPECT_EQ(Passing(time, L"2017-11-08 15:44:56"), "=gl?");
  EXPECT_EQ(Passing(time, L"2017-11-08T15:44:57"), "!<l?");
  EXPECT_EQ(Passing(time, L"2016-12-31 23:59:59,2018-01-01 00:00:00"), "!><gl?");
}

TEST(DataFilter, ReportsAValueThatIsNotOfTheType) {
  for (const wchar_t* text : {L"", L"x1", L"-", L" ", L"+-1", L"\uFF11", L"7,", L"5,x"}) {
    EXPECT_THAT(Judging(5, text), ThrowsMessage<std::invalid_argument>("invalid stoi argument"));
    EXPECT_THAT(Judging(5ULL, text), ThrowsMessage<std::invalid_argument>("invalid stoull argument"));
  }
  for (const wchar_t* text : {L"2147483648", L"-2147483649", L"18446744073709551621"}) {
    EXPECT_THAT(Judging(5, text), ThrowsMessage<std::out_of_range>("stoi argument out of range"));
  }
  for (const wchar_t* text : {L"18446744073709551616", L"-18446744073709551616", L"99999999999999999999999999"}) {
    EXPECT_THAT(Judging(5ULL, text), ThrowsMessage<std::out_of_range>("stoull argument out of range"));
  }
  EXPECT_THAT(Judging(UtcTime(), L"yesterday"), ThrowsMessage<std::invalid_argument>("Is not a valid ISO8601 string"));
  EXPECT_THAT(Judging(UtcTime(), L"2017-02-30 00:00:00"),
              testing::Throws<Win32Exception>(testing::Property(&Win32Exception::GetErrorCode, 87U)));

  // What is not judged is not read.
  EXPECT_TRUE(DataFilter::FilterField(L"f", 5, {Filter(L"g", Equal, L"x"), Filter(L"f", kUnknown, L"x")}));
  EXPECT_FALSE(DataFilter::FilterField(L"f", 5, {Filter(L"f", LessThan, L"5"), Filter(L"f", Equal, L"x")}));
}

TEST(DataFilter, PassesWhatAllFiltersOfTheFieldPass) {
  const std::vector<DataFilter> filters = {Filter(L"risk", GreaterThan, L"3"), Filter(L"name", Equal, L"x"),
                                           Filter(L"risk", LessThan, L"7")};
  for (const int risk : {3, 4, 6, 7}) {
    EXPECT_EQ(DataFilter::FilterField(L"risk", risk, filters), risk == 4 || risk == 6) << risk;
  }
  EXPECT_TRUE(DataFilter::FilterField(L"Risk", 0, filters));
  EXPECT_TRUE(DataFilter::FilterField(L"risk", L"any", {}));
  EXPECT_TRUE(DataFilter::FilterField(L"\U0001F600", L"", {Filter(L"\xD83D\xDE00", NotEqual, L"x")}));
  EXPECT_FALSE(DataFilter::FilterField(L"\U0001F600", L"x", {Filter(L"\xD83D\xDE00", NotEqual, L"x")}));

  for (const FilterOperator filter_operator : kAll) {
    DataFilter without_values;
    without_values.SetField(L"f");
    without_values.SetFilterOperator(filter_operator);
    const bool passes = filter_operator == NotEqual || filter_operator == kUnknown;
    EXPECT_EQ(DataFilter::FilterField(L"f", L"x", {without_values}), passes);
  }
}

}  // namespace
}  // namespace Zelto::Utilities
