#include "zelto/json/json_writer.h"

#include "zelto/json/json_encoder.h"
#include "zelto/json/json_reader.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <limits>
#include <locale>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

namespace Zelto::Json {
namespace {

class OpenedWriter : public JsonWriter {
 public:
  using JsonWriter::JsonWriter;
  using JsonWriter::WriteObjectArray;
  using JsonWriter::WriteStringArray;
  using JsonWriter::WriteValue;
};

std::wstring Written(const std::function<void(OpenedWriter&)>& write) {
  std::wostringstream stream;
  OpenedWriter writer(stream);
  write(writer);
  return stream.str();
}

TEST(JsonWriter, SkipsWhatIsNullOrEmpty) {
  DataObject object;
  object.SetNullValue(L"null");
  object.SetEmptyObjectArrayValue(L"objects");
  object.SetEmptyStringArrayValue(L"strings");
  object.SetObject(L"no object", nullptr);
  object.SetObject(L"object", std::make_shared<DataObject>());
  object.SetObjectArray(L"one null", {nullptr, std::make_shared<DataObject>()});
  object.SetValue(L"text", L"");
  DataValue& flagged = object.GetValue(L"flagged");
  flagged.AddIntValue(L"1");
  flagged.SetNull();
  EXPECT_EQ(JsonWriter::Encode(object),
            L"{\"flagged\":[],\"no object\":{},\"null\":null,\"object\":{},\"objects\":[],"
            L"\"one null\":[null,{}],\"strings\":[],\"text\":\"\"}");
  EXPECT_EQ(JsonWriter::Encode(object, true), L"{\"object\":{},\"one null\":[null,{}],\"text\":\"\"}");
  EXPECT_EQ(JsonWriter::EncodeSorted(object, true), JsonWriter::Encode(object, true));
  EXPECT_EQ(JsonWriter::Encode(std::make_shared<DataObject>(object), true), JsonWriter::Encode(object, true));
  EXPECT_EQ(JsonWriter::Encode(std::shared_ptr<const DataObject>()), L"{}");
}

TEST(JsonWriter, DecidesByKindAndFlagTogether) {
  const auto nested = std::make_shared<DataObject>();
  DataValue value;
  value.AddStringValue(L"a/b");
  value.AddStringValue(L"");
  EXPECT_EQ(Written([&](auto& w) { w.WriteValue(value); }), L"[\"a\\/b\",\"\"]");
  EXPECT_EQ(Written([&](auto& w) { w.WriteStringArray(value); }), L"\"a\\/b\",\"\"");
  EXPECT_EQ(Written([&](auto& w) { w.WriteObjectArray(value); }), L"");
  value.SetIntValue(IntegerToken(L"a/b"));
  EXPECT_EQ(Written([&](auto& w) { w.WriteValue(value); }), L"[a/b]");
  value.AddObject(nested);
  EXPECT_EQ(Written([&](auto& w) { w.WriteValue(value); }), L"[{}]");
  EXPECT_EQ(Written([&](auto& w) { w.WriteObjectArray(value); }), L"{}");
  value.AddBooleanValue(L"true");
  EXPECT_EQ(Written([&](auto& w) { w.WriteValue(value); }), L"[true]");

  DataValue scalar;
  EXPECT_EQ(Written([&](auto& w) { w.WriteValue(scalar); }), L"null");
  EXPECT_EQ(Written([&](auto& w) { w.SetSkipNullOrEmpty(true), w.WriteValue(scalar); }), L"");
  scalar.SetObject(nullptr);
  EXPECT_EQ(Written([&](auto& w) { w.WriteValue(scalar); }), L"{}");
  EXPECT_EQ(Written([&](auto& w) { w.SetSkipNullOrEmpty(true), w.WriteValue(scalar); }), L"");
  scalar.SetValue(L"x");
  scalar.AddIntValue(L"2");
  EXPECT_EQ(Written([&](auto& w) { w.WriteValue(scalar); }), L"\"x\"");
  EXPECT_EQ(Written([&](auto& w) { w.WriteStringArray(scalar); }), L"");
}

TEST(JsonWriter, EscapesStringsThatHoldAMaskedCharacter) {
  EXPECT_EQ(Written([](auto& w) { w.WriteStringValue(L"\x01\x0b"); }), L"\"\x01\x0b\"");
  EXPECT_EQ(Written([](auto& w) { w.WriteStringValue(L"\x01\x0b\x1f/"); }), L"\"\\u0001\\u000;\x1f\\/\"");
  DataObject object;
  object.SetValue(L"k\"", L"long enough to be sure that the escape comes late \\");
  object.SetValue(L"\x01", L"\x02");
  EXPECT_EQ(JsonWriter::Encode(object),
            L"{\"\x01\":\"\x02\",\"k\\\"\":\"long enough to be sure that the escape comes late \\\\\"}");
}

// Texts are scanned and copied in steps of several units: a character that matters counts at every place of every
// length.
TEST(JsonWriter, TextsOfEveryLengthComeBackAsTheyWere) {
  for (const wchar_t* special : {L"\"", L"\\", L"/", L"\n", L"\x01", L"\x13", L"\x14", L"\u0122", L"\u5c22",
                                 L"\U00010022", L"\U0001005C", L"\"\\", L"\x01/", L"\U0001002F/"}) {
    for (std::size_t length = 0; length < 27; ++length) {
      for (std::size_t place = 0; place <= length; ++place) {
        std::wstring text;
        for (std::size_t i = 0; i < length; ++i) {
          text += static_cast<wchar_t>(L'a' + i);
        }
        text.insert(place, special);
        DataObject object;
        object.SetValue(text, text);
        object.GetValue(L"list").AddStringValue(text);
        const std::wstring held = object.GetValue(text).GetStringValue();
        const std::wstring written =
            L'"' +
            (Utilities::JsonEncoder::NeedsEscaping(held) ? Utilities::JsonEncoder::ToEscapedString(held) : held) + L'"';
        const std::wstring encoded = JsonWriter::Encode(object);
        ASSERT_NE(encoded.find(written + L':' + written), std::wstring::npos) << encoded;
        ASSERT_NE(encoded.find(L"\"list\":[" + written + L"]"), std::wstring::npos) << encoded;
        const auto read = JsonReader::Decode(encoded, false);
        ASSERT_EQ(read ? JsonWriter::Encode(*read) : L"refused", encoded);
        // What is written without a document has its wide characters replaced, too.
        ASSERT_EQ(Written([&text](auto& w) { w.WriteStringValue(text); }), written);
      }
    }
  }
}

TEST(JsonWriter, StreamsPropertiesAndNestedObjects) {
  const std::wstring text = Written([](OpenedWriter& w) {
    w.WriteObject([&w] {
      w.WriteProperty(L"raw\"key", std::wstring(L"v\""));
      w.WriteProperty(L"skipped", std::wstring());
      w.WriteObject(L"nested", [](JsonWriter& nested) {
        nested.WriteProperty(L"int", std::numeric_limits<int>::min());
        nested.WriteProperty(L"unsigned", std::numeric_limits<unsigned>::max());
        nested.WriteObject(L"empty", [] {});
        nested.WriteProperty(L"large", std::numeric_limits<std::uint64_t>::max());
        nested.WriteProperty(L"long", 4294967295UL);
        nested.WriteProperty(L"long long", 18446744073709551615ULL);
      });
      w.SetSkipEmptyStringValues(false);
      w.WriteProperty(L"kept", L"");
      w.WriteBooleanProperty(L"yes", true);
      w.WriteBooleanProperty(L"no", false);
    });
    w.WriteSeparatorIfNeeded();
    w.PopSeparatorNeeded();
    w.WriteProperty(L"outside", 0);
  });
  EXPECT_EQ(text,
            L"{\"raw\"key\":\"v\\\"\",\"nested\":{\"int\":-2147483648,\"unsigned\":4294967295,\"empty\":{},"
            L"\"large\":18446744073709551615,\"long\":4294967295,\"long "
            L"long\":18446744073709551615},\"kept\":\"\",\"yes\":true,\"no\":false}\"outside\":0");
}

TEST(JsonWriter, ACallbackThatThrowsClosesItsLevel) {
  const std::wstring text = Written([](OpenedWriter& w) {
    w.PushSeparatorNeeded();
    EXPECT_THROW(w.WriteObject(L"a", [&w] { w.WriteProperty(L"b", 1), throw std::runtime_error("stop"); }),
                 std::runtime_error);
    w.WriteProperty(L"c", 2);
  });
  EXPECT_EQ(text, L"\"a\":{\"b\":1,\"c\":2");
}

struct Grouping : std::numpunct<wchar_t> {
  wchar_t do_thousands_sep() const override { return L'.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(JsonWriter, FormattingOfTheStreamDoesNotMatter) {
  std::wostringstream stream;
  stream.imbue(std::locale(std::locale::classic(), new Grouping));
  stream << std::hex << std::showbase << std::setw(12) << std::setfill(L'*');
  JsonWriter(stream).WriteProperty(L"k", 1234567);
  EXPECT_EQ(stream.str(), L"\"k\":1234567");
}

TEST(JsonWriter, StreamAndStringGetTheSame) {
  std::wstring text = L"{";
  for (int i = 0; i < 3000; ++i) {
    text += L"\"k" + std::to_wstring(i) + L"\":{\"text\":\"some /text/ \\u20ac\",\"l\":[1,2],\"o\":[{},{\"x\":null}]},";
  }
  const auto object = JsonReader::Decode(text + L"}", false);
  ASSERT_NE(object, nullptr);
  const std::wstring encoded = JsonWriter::Encode(object);
  EXPECT_TRUE(Written([&](OpenedWriter& w) { w.Write(*object); }) == encoded);
  EXPECT_TRUE(Written([&](OpenedWriter& w) { w.WriteSorted(*object); }) == encoded);
  EXPECT_TRUE(JsonWriter::Encode(JsonReader::Decode(encoded, false)) == encoded);
}

// Copies of a long document in which little is left take no more memory than what is left.
TEST(JsonWriter, MemoryIsThatOfTheText) {
  DataObject source;
  source.SetObject(L"payload", std::make_shared<DataObject>());
  source.GetValue(L"payload").GetObject()->SetValue(L"text", std::wstring(100000, L'x'));
  const auto long_document = JsonReader::Decode(JsonWriter::Encode(source), false);
  DataObject object;
  for (int i = 0; i < 1000; ++i) {
    auto copy = std::make_shared<DataObject>(*long_document);
    copy->SetNullValue(L"payload");
    object.GetValue(L"copies").AddObject(std::move(copy));
  }
  const std::wstring text = JsonWriter::Encode(object);
  EXPECT_TRUE(text.starts_with(L"{\"copies\":[{\"payload\":null},{"));
  EXPECT_LT(text.capacity(), 3 * text.size());
}

TEST(JsonWriter, ObjectsNestedInThemselvesAreRefused) {
  for (const int period : {1, 2, 3, 7}) {
    const auto first = std::make_shared<DataObject>();
    auto last = first;
    for (int i = 1; i < period; ++i) {
      const auto next = std::make_shared<DataObject>();
      last->SetObjectArray(L"next", {std::make_shared<DataObject>(), next});
      last = next;
    }
    last->SetObject(L"next", first);
    EXPECT_THROW(JsonWriter::Encode(*first), std::runtime_error);
    last->SetNullValue(L"next");
    EXPECT_FALSE(JsonWriter::Encode(*first).empty());
  }
  const auto shared = std::make_shared<DataObject>();
  DataObject twice;
  twice.SetObject(L"a", shared);
  twice.SetObjectArray(L"b", {shared, shared});
  EXPECT_EQ(JsonWriter::Encode(twice), L"{\"a\":{},\"b\":[{},{}]}");
}

}  // namespace
}  // namespace Zelto::Json
