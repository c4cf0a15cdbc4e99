#include "zelto/json/json_reader.h"

#include "fuzz/models/plain_json_reader.h"
#include "tests/support/words.h"
#include "zelto/json/json_writer.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelto::Json {
namespace {

// What becomes of a text: what the writer makes of the document, "-" when it is not accepted, or the exception's text.
std::string OutcomeOf(const std::function<std::shared_ptr<DataObject>()>& read) {
  try {
    const auto object = read();
    if (object == nullptr) {
      return "-";
    }
    std::string outcome;
    for (const wchar_t c : JsonWriter::Encode(*object)) {
      outcome += c < 0x7F ? std::string(1, static_cast<char>(c)) : '<' + std::to_string(static_cast<unsigned>(c)) + '>';
    }
    return outcome;
  } catch (const std::exception& e) {
    return e.what();
  }
}

std::string OutcomeOf(const std::wstring& text, bool allow_duplicates) {
  return OutcomeOf([&] { return JsonReader::Decode(text, allow_duplicates); });
}

constexpr char kNotAccepted[] = "-";
constexpr char kDuplicate[] = "Duplicate attribute";
constexpr char kNoDigit[] = "invalid stoul argument";

TEST(JsonReader, ReadsItsLanguage) {
  struct Case {
    std::wstring text;
    std::string outcome;
  };
  const Case cases[] = {
      // The root.
      {L"{}", "{}"},
      {L" \t\r\n\v\f{ \n } garbage \"", "{}"},
      {L"{}}{", "{}"},
      // Scalars.
      {L"{\"a\":\"x\",\"b\":-12,\"c\":true,\"d\":false,\"e\":null}",
       R"({"a":"x","b":-12,"c":true,"d":false,"e":null})"},
      {L" { \"b\" : 1 , \"a\" : 2 } ", R"({"a":2,"b":1})"},
      {L"{\"a\":+5,\"b\":007,\"c\":-,\"d\":+}", R"({"a":+5,"b":007,"c":-,"d":+})"},
      {L"{\"a\":123456789012345678901234567890}", R"({"a":123456789012345678901234567890})"},
      // Commas, and properties without a value.
      {L"{\"a\":1,}", R"({"a":1})"},
      {L"{\"a\":[1,2,],}", R"({"a":[1,2]})"},
      {L"{\"a\":}", "{}"},
      {L"{\"a\":,\"b\":1}", R"({"b":1})"},
      {L"{\"a\":,}", "{}"},
      {L"{\"\":null}", "{}"},
      {L"{\"\":1}", R"({"":1})"},
      {L"{\"\":[]}", R"({"":null})"},
      // Arrays.
      {L"{\"a\":[]}", R"({"a":null})"},
      {L"{\"a\":[,]}", R"({"a":null})"},
      {L"{\"a\":[1,,2]}", R"({"a":[1,2]})"},
      {L"{\"a\":[,1]}", R"({"a":[1]})"},
      {L"{\"a\":[\"\"]}", R"({"a":[""]})"},
      {L"{\"a\":[true,false]}", R"({"a":[true,false]})"},
      {L"{\"a\":[1,\"x\",true]}", R"({"a":[1,x,true]})"},
      {L"{\"a\":[\"x\",1,true]}", R"({"a":["x","1","true"]})"},
      {L"{\"a\":[{},{\"b\":[{}]}]}", R"({"a":[{},{"b":[{}]}]})"},
      {L"{\"a\":[\"x\",{\"b\":1}]}", R"({"a":[{"b":1}]})"},
      {L"{\"a\":[{\"b\":1},\"x\"]}", R"({"a":["x"]})"},
      {L"{\"a\":[\"y\",{\"b\":1},\"x\"]}", R"({"a":["x"]})"},
      {L"{\"a\":[{\"b\":1},2,true,{\"c\":3}]}", R"({"a":[{"b":1},{"c":3}]})"},
      // Strings.
      {L"{\"a\\n\":\"\\u0041\\/\"}", R"({"a\n":"A\/"})"},
      {L"{\"a\":\"\n\t\x01\"}", R"({"a":"\n\t\u0001"})"},
      {L"{\"a\":\"\x01\"}", "{\"a\":\"\x01\"}"},
      {L"{\"\\u00e9\":\"\u20ac\\ud83d\\ude00\"}", R"({"<233>":"<8364><55357><56832>"})"},
      {L"{\"a\":\"\\uzzzz\"}", kNoDigit},
      {L"{\"\\uzzzz\":1}", kNoDigit},
      {L"{\"a\":[\"\\uzzzz\"]}", kNoDigit},
      {L"{\"a\":[{},\"\\uzzzz\"]}", kNoDigit},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(OutcomeOf(c.text, false), c.outcome) << c.text;
    EXPECT_EQ(OutcomeOf(c.text, true), c.outcome) << c.text;
  }
}

TEST(JsonReader, RefusesWhatTheLanguageLeavesOut) {
  // In the last line strings without an end, wherever their quote stands.
  auto texts = Testing::Words(
      LR"(
      [] "a" { } {,} {a:1} {"a"} {"a":1.5} {"a":1e5} {"a":--1} {"a":trueish} {"a":true1} {"a":tru} {"a":nullx}
      {"a":True} {"a":1,,} {"a":[[1]]} {"a":[1,[2]]} {"a":[null]} {"a":[1,null]} {"a":[1} {"a":{]} {"a":[{]}
      {"a":[{}{}]} {"a":[{}"x"]}
      {"a":" {"a":"} {"a":"\"} {"a":"\ {"} {"a":1,"} {"a":["]} {"a":[1,"]} {"a":[{},"]} {"a":{"}} {"a":"2,\"b})");
  texts.insert(texts.end(), {L"", L" \t\r\n\v\f", L"\uFEFF{}", L"\u00A0{}", L"{\"a\":\uFF11}", L"{\"a\":1 2}",
                             L"{\"a\":1 \"b\":2}", L"{\"a\" 1}", L"{\"a\":[1 2]}"});
  for (const std::wstring& text : texts) {
    EXPECT_EQ(OutcomeOf(text, false), kNotAccepted) << text;
    EXPECT_EQ(OutcomeOf(text, true), kNotAccepted) << text;
  }
}

TEST(JsonReader, RepeatedKeysThrowOrReplaceWholly) {
  struct Case {
    std::wstring text;
    std::string refused;
    std::string allowed;
  };
  const Case cases[] = {
      {L"{\"a\":1,\"a\":2}", kDuplicate, R"({"a":2})"},
      {L"{\"a\":[1],\"a\":[2]}", kDuplicate, R"({"a":[2]})"},
      {L"{\"a\":[1],\"a\":2}", kDuplicate, R"({"a":2})"},
      {L"{\"a\":\"x\",\"a\":[\"y\"]}", kDuplicate, R"({"a":["y"]})"},
      {L"{\"a\":[{}],\"a\":\"y\"}", kDuplicate, R"({"a":"y"})"},
      {L"{\"a\":{\"b\":1},\"a\":{\"c\":2}}", kDuplicate, R"({"a":{"c":2}})"},
      {L"{\"a\":1,\"a\":[]}", kDuplicate, R"({"a":null})"},
      {L"{\"a\":1,\"a\":}", kDuplicate, R"({"a":1})"},
      {L"{\"\":1,\"\":null}", kDuplicate, R"({"":1})"},
      {L"{\"x\":1,\"\\u0078\":2}", kDuplicate, R"({"x":2})"},
      // What has no value is not there.
      {L"{\"a\":,\"a\":1}", R"({"a":1})", R"({"a":1})"},
      {L"{\"\":null,\"\":1}", R"({"":1})", R"({"":1})"},
      {L"{\"a\":1,\"b\":{\"a\":2}}", R"({"a":1,"b":{"a":2}})", R"({"a":1,"b":{"a":2}})"},
      // What comes first counts: the repeated key, or what is wrong before it.
      {L"{\"a\":1,\"a\"", kDuplicate, kNotAccepted},
      {L"{\"a\":1,\"a\":1.5}", kDuplicate, kNotAccepted},
      {L"{\"a\":1,\"a\":2,\"b\":{\"c\":\"\\uzzzz\"}}", kDuplicate, kNoDigit},
      {L"{\"a\":1,\"b\":{\"c\":[{\"d\":1,\"d\":[[", kDuplicate, kNotAccepted},
      {L"{\"a\":1,\"a\":{\"b\":\"\\uzzzz\"}}", kDuplicate, kNoDigit},
      {L"{\"a\":1,\"\\uzzzz\":2,\"a\":3}", kNoDigit, kNoDigit},
      {L"{\"a\":1,\"b\":1.5,\"a\":2}", kNotAccepted, kNotAccepted},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(OutcomeOf(c.text, false), c.refused) << c.text;
    EXPECT_EQ(OutcomeOf(c.text, true), c.allowed) << c.text;
  }
}

TEST(JsonReader, SortsAndFindsRepeatedKeysInLargeObjects) {
  std::mt19937 random(7);
  for (const int count : {31, 33, 2000}) {
    std::wstring text = L"{";
    for (int i = 0; i < count; ++i) {
      text += L"\"key" + std::to_wstring(random() % 100000) + L"x" + std::to_wstring(i) + L"\":" + std::to_wstring(i) +
              L',';
    }
    const auto object = JsonReader::Decode(text + L'}', false);
    ASSERT_NE(object, nullptr);
    std::wstring last;
    int seen = 0;
    for (const auto& [key, value] : *object) {
      EXPECT_LT(last, key);
      EXPECT_EQ(key.substr(key.find(L'x') + 1), value.GetString());
      last = key;
      ++seen;
    }
    EXPECT_EQ(seen, count);
    const std::wstring repeated = text + L'"' + last + L"\":-1}";
    EXPECT_THROW(JsonReader::Decode(repeated, false), std::runtime_error);
    EXPECT_EQ(JsonReader::Decode(repeated, true)->GetIntValue(last, 0), -1);
  }
}

TEST(JsonReader, LongTextsSurvive) {
  for (const std::size_t length : {std::size_t{0x7FFF}, std::size_t{0x8000}, std::size_t{200000}}) {
    const std::wstring text(length, L'\u20ac');
    const auto object = JsonReader::Decode(
        L"{\"" + text + L"\":\"" + text + L"\",\"l\":[\"" + text + L"\",\"\\n\",\"" + text + L"\"]}", false);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->GetStringValue(text, L""), text);
    EXPECT_EQ(object->GetValue(L"l").GetStringArray(), (std::vector<std::wstring>{text, L"\n", text}));
  }
}

class OpenedReader : public JsonReader {
 public:
  using JsonReader::Parse;
  using JsonReader::ParseArray;
  using JsonReader::ParseObject;
};

TEST(JsonReader, PartsCanBeReadByDerivedReaders) {
  OpenedReader reader;
  reader.InitializeReader(L"\"a\":[1,{\"b\":\"x\"}],\"c\":2} rest");
  OpenedReader copy(reader);
  EXPECT_EQ(OutcomeOf([&] { return reader.ParseObject(); }), R"({"a":[{"b":"x"}],"c":2})");

  DataValue value;
  value.AddIntValue(L"0");
  copy.InitializeReader(L"1,\"\\u0041\",true]");
  copy.ParseArray(value);
  EXPECT_EQ(value.GetStringArray(), (std::vector<std::wstring>{L"0", L"1", L"A", L"true"}));
  EXPECT_EQ(value.GetType(), DataValue::Integer);

  OpenedReader empty;
  EXPECT_EQ(empty.Parse(L""), nullptr);
  empty.InitializeReader(L"");
  EXPECT_TRUE(empty.ParseObject()->IsEmpty());
}

// Strings and numbers are read in steps of several characters: whatever stands at whichever place in one.
TEST(JsonReader, AgreesWithAPlainReaderAtEveryPlaceOfATextOfEveryLength) {
  const std::vector<std::wstring> in_strings = {L"",       L"\\n",    L"\\\"",       L"\\u0041",    L"\\u000\\\"x",
                                                L"\u0122", L"\u5C22", L"\U00010022", L"\U0001005C", L"\""};
  const std::vector<std::wstring> in_numbers = {L"", L"/", L":", L"-", L" ", L"\u0131", L"\uFF11", L"\U00010031"};
  const auto agrees = [](const std::wstring& text) {
    const std::string outcome = OutcomeOf(text, false);
    EXPECT_EQ(outcome, OutcomeOf([&] { return Fuzz::PlainJsonReader(text, false).Read(); })) << text;
    return outcome[0] == '{';
  };
  for (std::size_t length = 0; length <= 26; ++length) {
    for (std::size_t place = 0; place <= length; ++place) {
      for (const std::wstring& piece : in_strings) {
        const std::wstring string = std::wstring(length, L'x').insert(place, piece);
        const bool accepted = agrees(L"{\"" + string + L"\":[\"" + string + L"\",\"" + string + L"\"]}");
        if (piece != L"\"") {
          EXPECT_TRUE(accepted) << string;
          EXPECT_EQ(OutcomeOf(L"{\"a\":\"" + string + L"}", false), kNotAccepted) << string;
        }
      }
      for (const std::wstring& piece : in_numbers) {
        const std::wstring number = std::wstring(length, L'7').insert(place, piece);
        EXPECT_TRUE(agrees(L"{\"a\":" + number + L",\"b\":[+" + number + L"]}") || !piece.empty()) << number;
      }
    }
  }
}

}  // namespace
}  // namespace Zelto::Json
