#include "zelto/json/data_value.h"

#include "zelto/json/data_object.h"
#include "zelto/json/json_writer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelto::Json {
namespace {

using Strings = std::vector<std::wstring>;

DataValue Scalar(std::wstring text, DataValue::EType kind = DataValue::String) {
  DataValue value;
  switch (kind) {
    case DataValue::Integer:
      value.SetIntValue(IntegerToken(std::move(text)));
      break;
    case DataValue::Boolean:
      value.SetBooleanValue(BooleanToken(std::move(text)));
      break;
    default:
      value.SetValue(std::move(text));
      break;
  }
  return value;
}

TEST(DataValue, NumbersAreReadFromTextOrGiveTheDefault) {
  struct Case {
    DataValue::EType kind;
    const wchar_t* text;
    std::int32_t number;
    std::uint64_t unsigned_number;
  };
  constexpr auto kLargest = std::numeric_limits<std::uint64_t>::max();
  for (const Case& c : {Case{DataValue::String, L"123", 123, 123},
                        {DataValue::String, L"-5", 77, 88},
                        {DataValue::String, L"+5", 77, 88},
                        {DataValue::String, L" 5", 77, 88},
                        {DataValue::String, L"", 0, 0},
                        {DataValue::String, L"\uFF11", 77, 88},
                        {DataValue::String, L"2147483648", 77, 2147483648U},
                        {DataValue::Boolean, L"true", 77, 88},
                        {DataValue::Boolean, L"12", 12, 12},
                        {DataValue::Integer, L"-5", -5, kLargest - 4},
                        {DataValue::Integer, L"+007", 7, 7},
                        {DataValue::Integer, L" \t12x", 12, 12},
                        {DataValue::Integer, L"-", 0, 0},
                        {DataValue::Integer, L"x", 0, 0},
                        {DataValue::Integer, L"2147483647", 2147483647, 2147483647},
                        {DataValue::Integer, L"2147483648", 77, 2147483648U},
                        {DataValue::Integer, L"-2147483648", std::numeric_limits<int>::min(), kLargest - 2147483647U},
                        {DataValue::Integer, L"-2147483649", 77, kLargest - 2147483648U},
                        {DataValue::Integer, L"18446744073709551615", 77, kLargest},
                        {DataValue::Integer, L"18446744073709551616", 77, 88},
                        {DataValue::Integer, L"-18446744073709551616", 77, 88},
                        {DataValue::Integer, L"99999999999999999999999999999999999999", 77, 88}}) {
    const DataValue value = Scalar(c.text, c.kind);
    errno = ERANGE;
    EXPECT_EQ(value.GetIntValue(77), c.number) << c.kind << c.text;
    EXPECT_EQ(value.GetUint64Value(88), c.unsigned_number) << c.kind << c.text;
    EXPECT_EQ(errno, ERANGE);
  }
  EXPECT_EQ(DataValue().GetIntValue(77), 77);
}

TEST(DataValue, OnlyBooleansWithOneOfTheTwoTextsAreBooleans) {
  EXPECT_TRUE(Scalar(L"true", DataValue::Boolean).GetBooleanValue(false));
  EXPECT_FALSE(Scalar(L"false", DataValue::Boolean).GetBooleanValue(true));
  for (const bool fallback : {true, false}) {
    EXPECT_EQ(Scalar(L"True", DataValue::Boolean).GetBooleanValue(fallback), fallback);
    EXPECT_EQ(Scalar(L"true1", DataValue::Boolean).GetBooleanValue(fallback), fallback);
    EXPECT_EQ(Scalar(L"true").GetBooleanValue(fallback), fallback);
    EXPECT_EQ(DataValue().GetBooleanValue(fallback), fallback);
  }
}

TEST(DataValue, ScalarSettersLeaveTheArrayFlagAndTheOtherList) {
  const auto object = std::make_shared<DataObject>();
  DataValue value;
  value.AddStringValue(L"a");
  value.AddStringValue(L"b");
  value.SetValue(L"one");
  EXPECT_TRUE(value.IsStringArray());
  EXPECT_EQ(value.GetStringArray(), Strings{L"one"});

  value.SetObject(object);
  EXPECT_TRUE(value.IsObjectArray());
  EXPECT_EQ(value.GetStringValue(), L"one");
  EXPECT_EQ(value.GetObjectArray().size(), 1U);
  value.SetIntValue(IntegerToken(5));
  EXPECT_EQ(value.GetObjectArray().at(0), object);
  EXPECT_EQ(value.GetObject(), nullptr);

  value.SetNull();
  EXPECT_TRUE(value.IsNullValue());
  EXPECT_TRUE(value.IsArray());
  EXPECT_TRUE(value.GetObjectArray().empty());
  EXPECT_EQ(value.GetStringValue(), L"");

  DataValue scalar = Scalar(L"text");
  scalar.SetObject(nullptr);
  EXPECT_TRUE(scalar.IsObject());
  EXPECT_TRUE(scalar.IsEmpty());
  EXPECT_EQ(scalar.GetStringValue(), L"text");
  EXPECT_EQ(scalar.GetString(), L"text");
}

TEST(DataValue, ItemsAreAddedByTheirRules) {
  DataValue integers;
  integers.AddIntValue(L"1");
  integers.AddStringValue(L"two");
  integers.AddBooleanValue(L"true");
  EXPECT_TRUE(integers.IsArray());
  EXPECT_EQ(integers.GetType(), DataValue::Integer);
  EXPECT_EQ(integers.GetStringArray(), (Strings{L"1", L"two", L"true"}));

  DataValue scalar = Scalar(L"first");
  scalar.AddIntValue(L"2");
  EXPECT_TRUE(scalar.IsStringValue());
  EXPECT_EQ(scalar.GetString(), L"first");
  EXPECT_TRUE(scalar.GetStringArray().empty());

  const auto object = std::make_shared<DataObject>();
  scalar.AddObject(object);
  EXPECT_TRUE(scalar.IsObjectArray());
  EXPECT_TRUE(scalar.GetStringArray().empty());
  scalar.AddStringValue(L"again");
  EXPECT_TRUE(scalar.IsStringArray());
  EXPECT_EQ(scalar.GetObjectArray().size(), 1U);

  DataValue single;
  single.SetObject(object);
  EXPECT_TRUE(single.GetObjectArray().empty());
  single.AddObject(nullptr);
  EXPECT_EQ(single.GetObjectArray().size(), 2U);
  EXPECT_EQ(single.GetObject(), object);
}

TEST(DataValue, EmptyArraysAreEmptyArrays) {
  DataValue value = Scalar(L"gone");
  value.SetEmptyStringArray();
  EXPECT_TRUE(value.IsStringArray());
  EXPECT_TRUE(value.IsEmpty());
  value.SetEmptyObjectArray();
  EXPECT_TRUE(value.IsObjectArray());
  EXPECT_TRUE(value.IsEmpty());
  EXPECT_FALSE(Scalar(L"").IsEmpty());
  EXPECT_TRUE(DataValue().IsEmpty());
}

TEST(DataValue, ReferencesToArraysAreNotReferencesToTheirFirstItem) {
  DataValue value;
  value.AddStringValue(L"first");
  EXPECT_EQ(value.GetString(), L"");
  EXPECT_EQ(value.GetStringValue(), L"first");
  EXPECT_EQ(&value.GetString(), &DataValue().GetString());
}

TEST(DataValue, CopiesOwnTheirTextsAndShareTheirObjects) {
  const auto object = std::make_shared<DataObject>();
  for (const bool lists : {false, true}) {
    DataValue value = Scalar(L"text");
    if (lists) {
      value.SetObject(object);
    }
    const std::wstring* const before = &value.GetString();
    DataValue copy(value);
    copy.SetIntValue(IntegerToken(18446744073709551615ULL));
    EXPECT_EQ(value.GetStringValue(), L"text");
    EXPECT_EQ(&value.GetString(), before);
    EXPECT_EQ(copy.GetUint64Value(0), 18446744073709551615U);
    copy = value;
    copy = *&copy;
    EXPECT_EQ(copy.GetString(), L"text");
    EXPECT_EQ(copy.GetObject(), value.GetObject());
    DataValue moved(std::move(copy));
    EXPECT_EQ(moved.GetStringValue(), L"text");
    moved.SetValue(moved.GetString() + L"!");
    EXPECT_EQ(moved.GetString(), L"text!");
  }
  // Assigning to a value a part of what it alone keeps alive.
  DataValue outer;
  auto inner = std::make_shared<DataObject>();
  inner->SetValue(L"k", L"kept");
  outer.SetObject(std::move(inner));
  outer = outer.GetObject()->GetValue(L"k");
  EXPECT_EQ(outer.GetString(), L"kept");
}

}  // namespace
}  // namespace Zelto::Json
