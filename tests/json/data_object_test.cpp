#include "zelto/json/data_object.h"

#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace Zelto::Json {
namespace {

template <typename Value>
concept Boolean = requires(DataObject& object, Value value) {
  object.SetBooleanValue(L"k", value);
};
static_assert(Boolean<bool> && Boolean<BooleanToken> && !Boolean<const wchar_t*> && !Boolean<const char*>,
              "L\"false\" would be true");

std::wstring KeysOf(const DataObject& object) {
  std::wstring keys;
  for (const auto& [key, value] : object) {
    keys += key + L'=' + value.GetStringValue() + L' ';
  }
  return keys;
}

TEST(DataObject, GetValueInsertsANull) {
  DataObject object;
  EXPECT_TRUE(object.IsNullValue(L"k"));
  EXPECT_FALSE(object.Contains(L"k"));
  EXPECT_TRUE(object.IsEmpty());
  object.GetValue(L"k");
  EXPECT_TRUE(object.IsNullValue(L"k"));
  EXPECT_TRUE(object.Contains(L"k"));
  EXPECT_FALSE(object.IsEmpty());
  EXPECT_EQ(JsonWriter::Encode(object), L"{\"k\":null}");
}

TEST(DataObject, OnlySettersWithoutPayloadIgnoreTheEmptyKey) {
  DataObject object;
  object.SetNullValue(L"");
  object.SetEmptyObjectArrayValue(L"");
  object.SetEmptyStringArrayValue(L"");
  EXPECT_TRUE(object.IsEmpty());
  object.SetValue(L"", L"value");
  EXPECT_EQ(object.GetStringValue(L"", L"default"), L"value");
  object.SetNullValue(L"");
  EXPECT_FALSE(object.IsNullValue(L""));
}

TEST(DataObject, QueriesGiveTheDefaultForMissingKeys) {
  DataObject object;
  object.SetUint64Value(L"largest", std::numeric_limits<std::uint64_t>::max());
  object.SetIntValue(L"least", std::numeric_limits<std::int32_t>::min());
  object.SetBooleanValue(L"yes", true);
  object.SetIntValue(L"token", IntegerToken(12));
  object.SetBooleanValue(L"no", BooleanToken(false));
  object.SetObject(L"nested", std::make_shared<DataObject>());
  EXPECT_EQ(object.GetStringValue(L"largest", L""), L"18446744073709551615");
  EXPECT_EQ(object.GetUint64Value(L"largest", 1), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(object.GetIntValue(L"largest", 1), 1);
  EXPECT_TRUE(object.GetValue(L"largest").IsIntValue());
  EXPECT_EQ(object.GetStringValue(L"least", L""), L"-2147483648");
  EXPECT_EQ(object.GetIntValue(L"least", 1), std::numeric_limits<std::int32_t>::min());
  EXPECT_TRUE(object.GetBooleanValue(L"yes", false));
  EXPECT_EQ(object.GetIntValue(L"token", 1), 12);
  EXPECT_FALSE(object.GetBooleanValue(L"no", true));
  EXPECT_FALSE(object.GetValue(L"nested").IsObjectArray());
  EXPECT_NE(object.GetDataObject(L"nested"), nullptr);
  EXPECT_EQ(object.GetStringValue(L"x", L"default"), L"default");
  EXPECT_EQ(object.GetIntValue(L"x", 4), 4);
  EXPECT_EQ(object.GetUint64Value(L"x", 5), 5U);
  EXPECT_TRUE(object.GetBooleanValue(L"x", true));
  EXPECT_EQ(object.GetDataObject(L"x"), nullptr);
  EXPECT_TRUE(object.GetObjectArray(L"x").empty());
  EXPECT_FALSE(object.Contains(L"x"));
}

TEST(DataObject, QueriesOfKeysThatAreNoTextFindNothing) {
  // Above U+10FFFF where a character has 32 bits, a lone surrogate elsewhere.
  const std::wstring key(1, static_cast<wchar_t>(0x7FFFDC00));
  DataObject object;
  object.SetValue(L"key", L"");
  EXPECT_FALSE(object.Contains(key));
  EXPECT_TRUE(object.IsNullValue(key));
  EXPECT_EQ(object.GetIntValue(key, 5), 5);
  object.SetValue(L"\U0001F600", L"");
  EXPECT_TRUE(object.Contains(L"\U0001F600") && object.Contains({L'\xD83D', L'\xDE00'}));
}

TEST(DataObject, ObjectArraysHoldExactlyTheGivenPointers) {
  const auto first = std::make_shared<DataObject>();
  DataObject object;
  object.SetValue(L"a", L"text");
  object.SetObjectArray(L"a", {first, nullptr});
  EXPECT_TRUE(object.GetValue(L"a").IsObjectArray());
  EXPECT_EQ(object.GetObjectArray(L"a"), (std::vector<std::shared_ptr<DataObject>>{first, nullptr}));
  EXPECT_EQ(object.GetStringValue(L"a", L"x"), L"");
  object.SetObjectArray(L"a", {});
  EXPECT_TRUE(object.GetValue(L"a").IsObjectArray());
  EXPECT_TRUE(object.GetObjectArray(L"a").empty());
}

TEST(DataObject, KeysAreOrderedByUnit) {
  DataObject object;
  const std::wstring high_surrogate = {L'\xD83D', L'\xDE00'};
  const std::wstring with_zero = {L'a', L'\0'};
  for (const std::wstring& key : {std::wstring(L"\uFFFD"), high_surrogate, std::wstring(L"b"), std::wstring(L"B"),
                                  with_zero, std::wstring(L"a"), std::wstring(L"aa"), std::wstring()}) {
    object.SetValue(key, L"");
  }
  EXPECT_EQ(KeysOf(object), L"= B= a= " + with_zero + L"= aa= b= " + high_surrogate + L"= \uFFFD= ");
  const auto read = JsonReader::Decode(JsonWriter::Encode(object), false);
  EXPECT_EQ(KeysOf(*read), KeysOf(object));
}

TEST(DataObject, ReferencesAndIteratorsOutliveInsertions) {
  const auto object = JsonReader::Decode(L"{\"m\":\"middle\",\"z\":[1,2]}", false);
  DataValue& middle = object->GetValue(L"m");
  const std::wstring& text = middle.GetString();
  auto position = object->begin();
  std::mt19937 random(1);
  for (int i = 0; i < 500; ++i) {
    object->SetIntValue(std::to_wstring(random()), i);
    object->SetIntValue(L"n" + std::to_wstring(random()), i);
  }
  EXPECT_EQ(&object->GetValue(L"m"), &middle);
  EXPECT_EQ(text, L"middle");
  EXPECT_EQ((*position).key, L"m");
  int after = 0;
  std::wstring last = L"m";
  for (++position; position != object->end(); ++position, ++after) {
    EXPECT_LT(last, (*position).key);
    last = (*position).key;
  }
  EXPECT_EQ(after, 501);
  EXPECT_EQ(last, L"z");
}

// Every way in which an object can hold its properties: read, built by hand, read and then extended, copied.
TEST(DataObject, FindsEveryKeyHoweverTheObjectCameToBe) {
  for (const int count : {0, 1, 8, 9, 100}) {
    std::wstring text = L"{";
    DataObject built;
    for (int i = 0; i < count; ++i) {
      const std::wstring number = std::to_wstring(i * 7919 % 1000);
      text += L"\"k" + number + L"\":" + number + L",";
      built.SetValue(L"k" + number, number);
    }
    const auto read = JsonReader::Decode(text + L"}", false);
    ASSERT_NE(read, nullptr);
    DataObject extended(*read);
    extended.GetValue(L"zz");
    const DataObject copy(extended);
    for (const DataObject* object :
         {const_cast<const DataObject*>(read.get()), &std::as_const(built), &std::as_const(extended), &copy}) {
      for (int i = 0; i < 1000; ++i) {
        const std::wstring key = L"k" + std::to_wstring(i);
        EXPECT_EQ(object->GetIntValue(key, -1), built.Contains(key) ? i : -1);
      }
      EXPECT_FALSE(object->Contains(L""));
    }
    EXPECT_FALSE(read->Contains(L"zz"));
    EXPECT_TRUE(copy.IsNullValue(L"zz") && copy.Contains(L"zz"));
  }
}

TEST(DataObject, CopiesShareNestedObjectsOnly) {
  const auto source =
      JsonReader::Decode(L"{\"n\":{\"x\":1},\"l\":[{\"y\":2}],\"t\":[\"a\",\"b\"],\"s\":\"old\"}", false);
  DataObject copy(*source);
  EXPECT_EQ(JsonWriter::Encode(copy), JsonWriter::Encode(*source));
  copy.SetValue(L"s", L"new");
  copy.GetValue(L"t").AddStringValue(L"c");
  copy.GetValue(L"n").GetObject()->SetIntValue(L"x", 7);
  copy.GetObjectArray(L"l")[0]->SetIntValue(L"y", 8);
  EXPECT_EQ(JsonWriter::Encode(*source), L"{\"l\":[{\"y\":8}],\"n\":{\"x\":7},\"s\":\"old\",\"t\":[\"a\",\"b\"]}");
  EXPECT_EQ(JsonWriter::Encode(copy), L"{\"l\":[{\"y\":8}],\"n\":{\"x\":7},\"s\":\"new\",\"t\":[\"a\",\"b\",\"c\"]}");
  *source = *source->GetValue(L"n").GetObject();
  EXPECT_EQ(JsonWriter::Encode(*source), L"{\"x\":7}");
  DataObject moved(std::move(copy));
  copy = moved;
  EXPECT_EQ(JsonWriter::Encode(copy), JsonWriter::Encode(moved));
}

TEST(DataObject, ReplacingANestedObjectReleasesIt) {
  const auto source = JsonReader::Decode(L"{\"n\":{\"x\":1},\"l\":[{}]}", false);
  const std::weak_ptr<DataObject> nested = source->GetValue(L"n").GetObject();
  const std::weak_ptr<DataObject> item = source->GetObjectArray(L"l")[0];
  EXPECT_EQ(nested.use_count(), 1);
  EXPECT_EQ(item.use_count(), 1);
  source->SetNullValue(L"n");
  source->GetValue(L"l").SetEmptyStringArray();
  EXPECT_TRUE(nested.expired());
  EXPECT_TRUE(item.expired());
}

}  // namespace
}  // namespace Zelto::Json
