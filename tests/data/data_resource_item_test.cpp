#include "zelto/data/data_resource_item.h"

#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"
#include "zelto/text/exceptions/win32_exception.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelto::Utilities {
namespace {

using Json::DataObject;
using Json::DataValue;

std::wstring TextOf(IDataResourceItem& item) {
  return Json::JsonWriter::Encode(item.AsDataObject());
}

DataResourceItem WithAttributes(const wchar_t* attributes) {
  return DataResourceItem(std::wstring(L"{\"attributes\":{") + attributes + L"}}");
}

TEST(DataResourceItem, HasAttributesWhateverItIsMadeOf) {
  // With the text of the item when the attribute "k" has been set.
  const auto expect = [](const wchar_t* json, const wchar_t* id, const wchar_t* text) {
    DataResourceItem item{std::wstring(json)};
    EXPECT_EQ(item.GetId(), id);
    item.SetStringValue(L"k", L"v");
    EXPECT_EQ(TextOf(item), text);
    if (std::shared_ptr<DataObject> root = Json::JsonReader::Decode(json, true)) {
      DataResourceItem wrapping(root);
      wrapping.SetStringValue(L"k", L"v");
      EXPECT_EQ(Json::JsonWriter::Encode(root), text);
    }
  };
  expect(L"{\"id\":\"1\",\"type\":\"t\",\"attributes\":{\"a\":1}}", L"1",
         L"{\"attributes\":{\"a\":1,\"k\":\"v\"},\"id\":\"1\",\"type\":\"t\"}");
  expect(L"{\"id\":\"1\",\"id\":\"2\"}", L"2", L"{\"attributes\":{\"k\":\"v\"},\"id\":\"2\"}");
  expect(L"{\"id\":7}", L"7", L"{\"attributes\":{\"k\":\"v\"},\"id\":7}");
  for (const wchar_t* json : {L"{\"attributes\":\"text\"}", L"{\"attributes\":null}", L"{\"attributes\":[]}",
                              L"{\"attributes\":[\"a\",\"b\"]}", L"{\"id\":\"1\"", L""}) {
    expect(json, L"", L"{\"attributes\":{\"k\":\"v\"}}");
  }
  expect(L"{\"attributes\":[{\"a\":1},{\"a\":2}]}", L"", L"{\"attributes\":[{\"a\":1,\"k\":\"v\"},{\"a\":2}]}");
  DataResourceItem of_nothing{std::shared_ptr<DataObject>()};
  EXPECT_EQ(TextOf(of_nothing), L"{\"attributes\":{}}");
  EXPECT_THROW(DataResourceItem(L"{\"a\":\"\\uZZZZ\"}"), std::invalid_argument);

  auto array_of_nothing = std::make_shared<DataObject>();
  array_of_nothing->SetObjectArray(L"attributes", {nullptr});
  DataResourceItem item(array_of_nothing);
  EXPECT_EQ(TextOf(item), L"{\"attributes\":{}}");
}

TEST(DataResourceItem, LeavesOutAnEmptyIdAndType) {
  DataResourceItem bare(L"", L"");
  EXPECT_EQ(TextOf(bare), L"{\"attributes\":{}}");
  EXPECT_EQ(bare.GetId() + bare.GetType(), L"");
  DataResourceItem item(L"1", L"device");
  EXPECT_EQ(TextOf(item), L"{\"attributes\":{},\"id\":\"1\",\"type\":\"device\"}");
  bare.SetId(L"1");
  bare.SetType(L"device");
  EXPECT_EQ(TextOf(bare), TextOf(item));
}

TEST(DataResourceItem, KeepsTypedValuesInItsAttributes) {
  const std::unique_ptr<IDataResourceItem> item = std::make_unique<DataResourceItem>(L"1", L"t");
  item->SetBoolValue(L"bool", true);
  item->SetDateValue(L"date", UtcTime(2017, 11, 8, 15, 44, 56, 789, false));
  item->SetIntValue(L"int", std::numeric_limits<int>::min());
  auto object = std::make_shared<DataObject>();
  item->SetObjectValue(L"object", object);
  item->SetObjectArrayValue(L"objects", {object, object});
  item->SetUint64Value(L"uint64", std::numeric_limits<std::uint64_t>::max());
  object->SetIntValue(L"n", 1);
  EXPECT_EQ(TextOf(*item),
            L"{\"attributes\":{\"bool\":true,\"date\":\"2017-11-08T15:44:56\",\"int\":-2147483648,\"object\":{\"n\":1},"
            L"\"objects\":[{\"n\":1},{\"n\":1}],\"uint64\":18446744073709551615},\"id\":\"1\",\"type\":\"t\"}");
  EXPECT_TRUE(item->GetBoolValue(L"bool"));
  EXPECT_EQ(item->GetDateValue(L"date"), UtcTime(2017, 11, 8, 15, 44, 56, 0, false));
  EXPECT_EQ(item->GetIntValue(L"int"), std::numeric_limits<int>::min());
  EXPECT_EQ(item->GetObjectValue(L"object"), object);
  EXPECT_EQ(item->GetObjectArrayValue(L"objects").size(), 2U);
  EXPECT_EQ(item->GetUint64Value(L"uint64"), std::numeric_limits<std::uint64_t>::max());
}

TEST(DataResourceItem, FallsBackWithoutCreatingAttributes) {
  for (const wchar_t* attributes : {L"", L"\"k\":\"x\"", L"\"k\":null", L"\"k\":{}"}) {
    DataResourceItem item = WithAttributes(attributes);
    const std::wstring before = TextOf(item);
    EXPECT_EQ(item.GetIntValue(L"k"), 0);
    EXPECT_EQ(item.GetUint64Value(L"k"), 0U);
    EXPECT_FALSE(item.GetBoolValue(L"k"));
    EXPECT_TRUE(item.GetStringArrayValue(L"k").empty());
    EXPECT_TRUE(item.GetObjectArrayValue(L"k").empty());
    EXPECT_THROW(item.GetDateValue(L"k"), std::invalid_argument);
    EXPECT_EQ(TextOf(item), before);
  }
  DataResourceItem item(L"", L"");
  EXPECT_EQ(item.GetObjectValue(L"k"), nullptr);
  EXPECT_EQ(&item.GetStringArrayValue(L"k"), &item.GetStringArrayValue(L"l"));
  EXPECT_THROW(item.SetDateValue(L"k", UtcTime::FromTicks(1ULL << 63)), Win32Exception);
  EXPECT_EQ(TextOf(item), L"{\"attributes\":{}}");
}

TEST(DataResourceItem, AppendsTexts) {
  const auto expect = [](const wchar_t* before, const std::vector<std::wstring>& added, const wchar_t* after) {
    DataResourceItem item = WithAttributes(before);
    item.SetStringArrayValue(L"k", added);
    EXPECT_EQ(TextOf(item), std::wstring(L"{\"attributes\":{") + after + L"}}");
  };
  expect(L"", {}, L"\"k\":[]");
  expect(L"", {L"a", L"b"}, L"\"k\":[\"a\",\"b\"]");
  expect(L"\"k\":[\"a\"]", {}, L"\"k\":[\"a\"]");
  expect(L"\"k\":[\"a\"]", {L"b", L"a"}, L"\"k\":[\"a\",\"b\",\"a\"]");
  expect(L"\"k\":null", {}, L"\"k\":null");
  expect(L"\"k\":null", {L"a"}, L"\"k\":[\"a\"]");
  // Key and texts may be those that change.
  DataResourceItem item = WithAttributes(L"\"k\":[\"k\",\"l\"]");
  const std::vector<std::wstring>& texts = item.GetStringArrayValue(L"k");
  item.SetStringArrayValue(texts[0], texts);
  EXPECT_EQ(item.GetStringArrayValue(L"k"), (std::vector<std::wstring>{L"k", L"l", L"k", L"l"}));
}

}  // namespace
}  // namespace Zelto::Utilities
