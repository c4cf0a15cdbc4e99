#include "tests/support/small_stack_thread.h"
#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace Zelto::Json {
namespace {

// A text of `depth` objects within each other, each under a key of the one around it or in an array there.
std::wstring Nested(unsigned depth, bool arrays) {
  std::wstring text = L"{";
  for (unsigned i = 1; i < depth; ++i) {
    text += arrays ? L"\"a\":[{" : L"\"a\":{";
  }
  for (unsigned i = 1; i < depth; ++i) {
    text += arrays ? L"}]" : L"}";
  }
  return text + L"}";
}

TEST(Nesting, TheLimitIsReadAndNothingBeyond) {
  for (const bool arrays : {false, true}) {
    EXPECT_NE(JsonReader::Decode(Nested(JsonReader::MAXIMUM_NESTING, arrays), false), nullptr);
    EXPECT_EQ(JsonReader::Decode(Nested(JsonReader::MAXIMUM_NESTING + 1, arrays), false), nullptr);
    EXPECT_EQ(JsonReader::Decode(Nested(100000, arrays), false), nullptr);
  }
  std::wstring brackets = L"{\"a\":";
  EXPECT_EQ(JsonReader::Decode(brackets.append(1000000, L'['), false), nullptr);
}

// What was read up to the limit is a whole document, for a derived reader that asks for it.
TEST(Nesting, BeyondTheLimitRemainsWhatWasReadBefore) {
  class OpenedReader : public JsonReader {
   public:
    using JsonReader::ParseObject;
  };
  for (const bool arrays : {false, true}) {
    OpenedReader reader;
    reader.InitializeReader(Nested(JsonReader::MAXIMUM_NESTING + 1, arrays).substr(1));
    std::shared_ptr<DataObject> object = reader.ParseObject();
    unsigned depth = 0;
    for (; object != nullptr && !object->IsEmpty(); ++depth) {
      EXPECT_TRUE(object->GetValue(L"a").GetStringArray().empty());
      object = object->GetValue(L"a").GetObject();
    }
    EXPECT_EQ(depth, arrays ? JsonReader::MAXIMUM_NESTING : JsonReader::MAXIMUM_NESTING - 1);
  }
}

TEST(Nesting, TheLimitNeedsNoDeepStack) {
  Testing::RunOnSmallStack(ZELTO_TEST_STACK_KIB * 1024, [] {
    for (const bool arrays : {false, true}) {
      const std::wstring text = Nested(JsonReader::MAXIMUM_NESTING, arrays);
      auto object = JsonReader::Decode(text, false);
      ASSERT_NE(object, nullptr);
      EXPECT_TRUE(JsonWriter::Encode(object) == text);
      object.reset();
      EXPECT_EQ(JsonReader::Decode(text.substr(0, text.size() / 2), false), nullptr);
      const std::wstring throwing = text.substr(0, text.find(L'}')) + L"\"\\uzzzz\":1}";
      EXPECT_THROW(JsonReader::Decode(throwing, false), std::invalid_argument);
    }
  });
}

TEST(Nesting, DocumentsBuiltByHandMayBeDeeper) {
  constexpr unsigned kDepth = 1000000;
  for (const bool arrays : {false, true}) {
    Testing::RunOnSmallStack(ZELTO_TEST_STACK_KIB * 1024, [arrays] {
      auto object = std::make_shared<DataObject>();
      for (unsigned i = 1; i < kDepth; ++i) {
        auto outer = std::make_shared<DataObject>();
        if (arrays) {
          outer->GetValue(L"a").AddObject(std::move(object));
        } else {
          outer->SetObject(L"a", std::move(object));
        }
        object = std::move(outer);
      }
      EXPECT_TRUE(JsonWriter::Encode(object) == Nested(kDepth, arrays));
      DataObject copy(*object);
      object.reset();
      EXPECT_FALSE(copy.IsEmpty());
      DataValue value(copy.GetValue(L"a"));
      copy = DataObject();
    });
  }
}

}  // namespace
}  // namespace Zelto::Json
