#include "zelto/data/data_filter.h"

#include "zelto/data/unit_order.h"
#include "zelto/json/number_text.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <compare>
#include <cstddef>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Zelto::Utilities {
namespace {

// In the order of the enumeration.
constexpr const wchar_t* kSqlOperators[] = {L"=", L"<>", L">", L"<", L">=", L"<="};

bool IsKnown(FilterOperator filter_operator) noexcept {
  return static_cast<std::size_t>(filter_operator) < std::size(kSqlOperators);
}

template <typename Value>
std::strong_ordering Compare(const Value& left, const Value& right) noexcept {
  return left <=> right;
}

std::strong_ordering Compare(std::wstring_view left, std::wstring_view right) noexcept {
  return CompareByUnit(left, right);
}

// Whether a candidate of this order to a value matches it. `NotEqual` matches what it then rejects.
bool Matches(FilterOperator filter_operator, std::strong_ordering order) noexcept {
  switch (filter_operator) {
    case FilterOperator::GreaterThan:
      return std::is_gt(order);
    case FilterOperator::LessThan:
      return std::is_lt(order);
    case FilterOperator::GreaterThanOrEqual:
      return std::is_gteq(order);
    case FilterOperator::LessThanOrEqual:
      return std::is_lteq(order);
    default:
      return std::is_eq(order);
  }
}

template <typename Value, typename ReadValue>
bool Passes(const DataFilter& filter, const Value& candidate, const ReadValue& read_value) {
  const FilterOperator filter_operator = filter.GetFilterOperator();
  if (!IsKnown(filter_operator)) {
    return true;
  }
  // The loop goes on behind a match: a value that cannot be read is reported whatever the candidate.
  bool matched = false;
  for (const std::wstring& text : filter.GetValue()) {
    matched = Matches(filter_operator, Compare(candidate, read_value(text))) || matched;
  }
  return matched != (filter_operator == FilterOperator::NotEqual);
}

template <typename Value, typename ReadValue>
bool PassesAll(const std::wstring& field, const Value& candidate, const std::vector<DataFilter>& filters,
               const ReadValue& read_value) {
  return std::all_of(filters.begin(), filters.end(), [&](const DataFilter& filter) {
    return std::is_neq(CompareByUnit(filter.GetField(), field)) || Passes(filter, candidate, read_value);
  });
}

}  // namespace

void DataFilter::SetField(const std::wstring& field) {
  std::wstring name = field;
  StringUtilities::Trim(name, L"\r\n ");
  field_ = std::move(name);
}

void DataFilter::SetValue(const std::wstring& value) {
  values_ = StringUtilities::Split(value, L",");
}

std::wstring DataFilter::OperatorToSQL(FilterOperator filterOperator) {
  if (!IsKnown(filterOperator)) {
    throw std::runtime_error("Given operator is unknown and cannot converted to SQL operator");
  }
  return kSqlOperators[static_cast<std::size_t>(filterOperator)];
}

template <>
int DataFilter::Convert<int>(const std::wstring& text) {
  const Json::ScannedNumber number = Json::ScanNumber(std::wstring_view(text));
  if (!number.has_digits) {
    throw std::invalid_argument("invalid stoi argument");
  }
  const std::optional<std::int32_t> value = Json::ToInt32(number);
  if (!value) {
    throw std::out_of_range("stoi argument out of range");
  }
  return *value;
}

template <>
unsigned long long DataFilter::Convert<unsigned long long>(const std::wstring& text) {
  const Json::ScannedNumber number = Json::ScanNumber(std::wstring_view(text));
  if (!number.has_digits) {
    throw std::invalid_argument("invalid stoull argument");
  }
  const std::optional<std::uint64_t> value = Json::ToUint64(number);
  if (!value) {
    throw std::out_of_range("stoull argument out of range");
  }
  return *value;
}

template <>
UtcTime DataFilter::Convert<UtcTime>(const std::wstring& text) {
  return UtcTime(text, UtcTime::StringValue::DateTime, false);
}

template <>
bool DataFilter::FilterField<const wchar_t*>(const std::wstring& field, const wchar_t* value,
                                             const std::vector<DataFilter>& filters) {
  const std::wstring_view candidate = value == nullptr ? std::wstring_view() : std::wstring_view(value);
  return PassesAll(field, candidate, filters, [](const std::wstring& text) { return std::wstring_view(text); });
}

template <>
bool DataFilter::FilterField<int>(const std::wstring& field, int value, const std::vector<DataFilter>& filters) {
  return PassesAll(field, value, filters, Convert<int>);
}

template <>
bool DataFilter::FilterField<unsigned long long>(const std::wstring& field, unsigned long long value,
                                                 const std::vector<DataFilter>& filters) {
  return PassesAll(field, value, filters, Convert<unsigned long long>);
}

template <>
bool DataFilter::FilterField<UtcTime>(const std::wstring& field, UtcTime value,
                                      const std::vector<DataFilter>& filters) {
  return PassesAll(field, value, filters, Convert<UtcTime>);
}

}  // namespace Zelto::Utilities
