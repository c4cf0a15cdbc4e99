#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Zelto::Json {
namespace {

const wchar_t kText[] =
    L"{\"list\":[\"a\",\"b\",\"c\"],\"nested\":{\"x\":[1,2,3],\"y\":\"why\"},\"number\":12,\"objects\":[{\"t\":\"one\"}"
    L",{\"t\":"
    L"\"two\"}],\"text\":\"some text\",\"yes\":true}";

// Everything that readers may do at the same time, what is made on demand included.
void ReadEverything(const std::shared_ptr<DataObject>& object) {
  EXPECT_EQ(object->GetValue(L"text").GetString(), L"some text");
  EXPECT_EQ(object->GetValue(L"list").GetStringArray().at(2), L"c");
  EXPECT_EQ(object->GetIntValue(L"number", 0), 12);
  EXPECT_EQ(object->GetValue(L"nested").GetObject()->GetValue(L"x").GetStringArray().size(), 3U);
  for (const auto& item : object->GetObjectArray(L"objects")) {
    EXPECT_EQ(item->GetValue(L"t").GetString().size(), 3U);
  }
  for (const auto& [key, value] : *object) {
    EXPECT_EQ(value.GetString().empty(), value.IsArray() || value.IsObject()) << key;
  }
  EXPECT_EQ(JsonWriter::Encode(object), kText);
  const DataObject copy(*object);
  EXPECT_EQ(copy.GetStringValue(L"text", L""), L"some text");
}

TEST(ConcurrentReaders, OneDocumentServesMany) {
  for (int round = 0; round < 100; ++round) {
    auto object = JsonReader::Decode(kText, false);
    ASSERT_NE(object, nullptr);
    std::atomic<int> waiting{4};
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i) {
      readers.emplace_back([object, &waiting] {
        --waiting;
        while (waiting != 0) {
          std::this_thread::yield();
        }
        ReadEverything(object);
      });
    }
    object.reset();  // the last reader destroys the document
    for (std::thread& reader : readers) {
      reader.join();
    }
  }
}

}  // namespace
}  // namespace Zelto::Json
