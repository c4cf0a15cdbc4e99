/// @file
/// Conditions of a query over data resources.
#pragma once

#include <zelto/export.h>
#include <zelto/text/exceptions/data_exceptions.h>
#include <zelto/time/utc_time.h>

#include <concepts>
#include <cstdint>
#include <string>
#include <vector>

namespace Zelto::Utilities {

/// How a candidate value is compared with the values of a filter.
enum class FilterOperator : std::uint32_t {
  Equal = 0,
  NotEqual = 1,
  GreaterThan = 2,
  LessThan = 3,
  GreaterThanOrEqual = 4,
  LessThanOrEqual = 5,
};

/// The types of candidate values that filters can judge.
template <typename Value>
concept FilterValue = std::same_as<Value, const wchar_t*> || std::same_as<Value, int> ||
    std::same_as<Value, unsigned long long> || std::same_as<Value, UtcTime>;

/// One condition of a query: the name of a field, an operator, and values, any of which may match.
///
///     DataFilter risk;
///     risk.SetField(L"risk");
///     risk.SetFilterOperator(FilterOperator::GreaterThanOrEqual);
///     risk.SetValue(L"7");
///     bool shown = DataFilter::FilterField(L"risk", item.GetIntValue(L"risk"), {risk});
///
/// Objects are plain values; a new one has an empty field, operator `Equal` and no values.
class ZELTO_API DataFilter {
 public:
  const std::wstring& GetField() const noexcept { return field_; }
  /// Stores the name without the carriage returns, line feeds and blanks at both its ends. Tabs are kept.
  void SetField(const std::wstring& field);

  FilterOperator GetFilterOperator() const noexcept { return filter_operator_; }
  /// A value outside the enumeration is stored; such a filter passes everything and has no SQL text.
  void SetFilterOperator(FilterOperator filterOperator) noexcept { filter_operator_ = filterOperator; }

  /// The values to compare with. The reference stays good until the next `SetValue`.
  const std::vector<std::wstring>& GetValue() const noexcept { return values_; }
  /// Replaces the values by the parts of a text between its commas, empty parts included, nothing trimmed: L"" is one
  /// empty value, L"a,b" are two.
  void SetValue(const std::wstring& value);

  /// The comparison in SQL: "=", "<>", ">", "<", ">=" or "<=".
  ///
  /// @throws std::runtime_error  "Given operator is unknown and cannot converted to SQL operator"
  static std::wstring OperatorToSQL(FilterOperator filterOperator);

  /// Whether a candidate passes all filters that concern its field: those whose field is the same text, case included.
  ///
  /// Greater, less and their forms with "or equal" pass when the comparison holds for at least one of the filter's
  /// values, `Equal` when the candidate equals one, `NotEqual` when it equals none. So without values all but
  /// `NotEqual` reject. Any other operator is ignored. Filters are judged in order, up to the first that rejects.
  ///
  /// The type of the candidate decides how the filters' texts are read. Each value of a filter that is judged is read,
  /// so what throws does not depend on the candidate. A 64-bit number of another type is named:
  /// `FilterField<unsigned long long>(...)`.
  /// - `const wchar_t*`: as they are; compared by UTF-16 unit, so that L"10" is less than L"9". A null pointer is an
  ///   empty text. Throws nothing.
  /// - `int`: white space, a sign and decimal digits; what follows is ignored, as `std::stoi` does.
  /// - `unsigned long long`: the same; a negative number is taken modulo 2 to the 64th, as `std::stoull` does.
  /// - `UtcTime`: the form `UtcTime::StringValue::DateTime` in UTC; the other ISO 8601 forms are read, too.
  ///
  /// @throws std::invalid_argument  "invalid stoi argument", "invalid stoull argument": no digits; or the text is no
  ///                                date (see `UtcTime::SetTimeAsISO8601`)
  /// @throws std::out_of_range      "stoi argument out of range", "stoull argument out of range"; or a date without a
  ///                                time
  /// @throws Win32Exception         the calendar does not have the date
  template <FilterValue Value>
  static bool FilterField(const std::wstring& field, Value value, const std::vector<DataFilter>& filters);

 private:
  template <typename Value>
  static Value Convert(const std::wstring& text);

  std::wstring field_;
  FilterOperator filter_operator_ = FilterOperator::Equal;
  std::vector<std::wstring> values_;
};

template <>
ZELTO_API bool DataFilter::FilterField<const wchar_t*>(const std::wstring& field, const wchar_t* value,
                                                       const std::vector<DataFilter>& filters);
template <>
ZELTO_API bool DataFilter::FilterField<int>(const std::wstring& field, int value,
                                            const std::vector<DataFilter>& filters);
template <>
ZELTO_API bool DataFilter::FilterField<unsigned long long>(const std::wstring& field, unsigned long long value,
                                                           const std::vector<DataFilter>& filters);
template <>
ZELTO_API bool DataFilter::FilterField<UtcTime>(const std::wstring& field, UtcTime value,
                                                const std::vector<DataFilter>& filters);

}  // namespace Zelto::Utilities
