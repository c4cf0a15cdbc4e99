#include "zelto/json/data_value.h"

#include "zelto/json/data_object.h"
#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace Zelto::Json {
namespace {

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

// All that can be asked of a value: "K[] scalar (texts) objects", "+" where it has an object, "!" where it is empty.
std::wstring Described(const DataValue& value) {
  std::wstring texts;
  for (const std::wstring& text : value.GetStringArray()) {
    texts += L' ' + text;
  }
  return L"SBI?ON"[value.GetType()] + std::wstring(value.IsArray() ? L"[] " : L" ") + value.GetStringValue() + L" (" +
         texts + L" ) " + std::to_wstring(value.GetObjectArray().size()) + (value.GetObject() ? L"+" : L"") +
         (value.IsEmpty() ? L"!" : L"");
}

TEST(DataValue, SettersAndItemsChangeWhatIsTheirs) {
  struct Step {
    void (*act)(DataValue& value);
    const wchar_t* after;
  };
  using V = DataValue;
  static const auto kObject = std::make_shared<DataObject>();
  const std::vector<Step> stories[] = {
      {{[](V& v) { v.AddStringValue(L"a"); }, L"S[] a ( a ) 0"},
       {[](V& v) { v.AddStringValue(L"b"); }, L"S[] a ( a b ) 0"},
       {[](V& v) { v.SetValue(L"one"); }, L"S[] one ( one ) 0"},
       {[](V& v) { v.SetObject(kObject); }, L"O[] one ( one ) 1+"},
       {[](V& v) { v.SetIntValue(IntegerToken(5)); }, L"I[] 5 ( 5 ) 1"},
       {[](V& v) { v.SetNull(); }, L"N[]  ( ) 0!"}},
      {{[](V& v) { v.SetValue(L"text"); }, L"S text ( ) 0"}, {[](V& v) { v.SetObject(nullptr); }, L"O text ( ) 0!"}},
      {{[](V& v) { v.AddIntValue(L"1"); }, L"I[] 1 ( 1 ) 0"},
       {[](V& v) { v.AddStringValue(L"two"); }, L"I[] 1 ( 1 two ) 0"},
       {[](V& v) { v.AddBooleanValue(L"true"); }, L"I[] 1 ( 1 two true ) 0"}},
      {{[](V& v) { v.SetValue(L"first"); }, L"S first ( ) 0"},
       {[](V& v) { v.AddIntValue(L"2"); }, L"S first ( ) 0"},
       {[](V& v) { v.AddObject(kObject); }, L"O[]  ( ) 1+"},
       {[](V& v) { v.AddStringValue(L"again"); }, L"S[] again ( again ) 1"}},
      {{[](V& v) { v.SetObject(kObject); }, L"O  ( ) 0+"}, {[](V& v) { v.AddObject(nullptr); }, L"O[]  ( ) 2+"}},
      {{[](V& v) { v.SetValue(L""); }, L"S  ( ) 0"},
       {[](V& v) { v.SetEmptyStringArray(); }, L"S[]  ( ) 0!"},
       {[](V& v) { v.SetEmptyObjectArray(); }, L"O[]  ( ) 0!"}},
  };
  for (const bool asked_at_each_step : {true, false}) {
    for (const auto& story : stories) {
      DataValue value;
      for (const Step& step : story) {
        step.act(value);
        if (asked_at_each_step || &step == &story.back()) {
          EXPECT_EQ(Described(value), step.after);
        }
      }
    }
  }
  EXPECT_EQ(Described(DataValue()), L"N  ( ) 0!");
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
  // What was moved out of a document stays when that goes.
  auto document = JsonReader::Decode(L"{\"a\":\"text of some length\",\"b\":[1,2],\"c\":[\"x\",{}]}", false);
  std::vector<DataValue> values;
  for (const wchar_t* key : {L"a", L"b", L"c"}) {
    values.push_back(std::move(document->GetValue(key)));
    EXPECT_TRUE(document->IsNullValue(key));
  }
  document.reset();
  EXPECT_EQ(values[0].GetStringValue(), L"text of some length");
  EXPECT_EQ(values[1].GetStringArray(), (std::vector<std::wstring>{L"1", L"2"}));
  EXPECT_EQ(values[2].GetObjectArray().size(), 1U);
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
