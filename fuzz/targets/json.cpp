// JSON text through reading, writing and reading again: equal documents, where the text can hold them.
#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "zelto/json/data_object.h"
#include "zelto/json/json_encoder.h"
#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Json::DataObject;
using Json::DataValue;
using Json::JsonReader;
using Json::JsonWriter;
using Utilities::JsonEncoder;

struct Reading {
  std::shared_ptr<DataObject> root;
  std::string error;  // what was thrown
};

Reading Read(const std::wstring& text, bool allow_duplicates) {
  try {
    return {JsonReader::Decode(text, allow_duplicates), {}};
  } catch (const std::invalid_argument& error) {
    return {nullptr, error.what()};
  } catch (const std::runtime_error& error) {
    return {nullptr, error.what()};
  }
}

// Whether an escaped text comes back: the escapes of three control characters hold no hexadecimal digits.
bool ComesBack(const std::wstring& text) {
  return !JsonEncoder::NeedsEscaping(text) || text.find_first_of(L"\x0B\x0E\x0F") == std::wstring::npos;
}

bool IsInteger(const std::wstring& text) {
  const bool sign = !text.empty() && (text[0] == L'+' || text[0] == L'-');
  return !text.empty() && std::all_of(text.begin() + (sign ? 1 : 0), text.end(),
                                      [](wchar_t unit) { return unit >= L'0' && unit <= L'9'; });
}

bool IsBoolean(const std::wstring& text) {
  return text == L"true" || text == L"false";
}

// Whether a value's text says all that the value holds. What arrays of mixed kinds became need not.
bool ComesBack(const DataValue& value) {
  std::vector<std::wstring> texts = value.GetStringArray();
  if (!value.IsArray()) {
    texts.push_back(value.GetStringValue());
  }
  switch (value.GetType()) {
    case DataValue::String:
      return value.GetObjectArray().empty() &&
             std::all_of(texts.begin(), texts.end(), [](const std::wstring& text) { return ComesBack(text); });
    case DataValue::Integer:
      return value.GetObjectArray().empty() && std::all_of(texts.begin(), texts.end(), IsInteger);
    case DataValue::Boolean:
      return value.GetObjectArray().empty() && std::all_of(texts.begin(), texts.end(), IsBoolean);
    default:
      return true;
  }
}

// The nested objects of a value.
std::vector<std::shared_ptr<DataObject>> Children(const DataValue& value) {
  if (value.IsObjectArray()) {
    return value.GetObjectArray();
  }
  return value.IsObject() ? std::vector{value.GetObject()} : std::vector<std::shared_ptr<DataObject>>{};
}

// Objects nest as deep as the reader allows, which is little enough for a recursion.
bool ComesBack(const DataObject& object) {
  for (const auto& [key, value] : object) {
    const std::vector<std::shared_ptr<DataObject>> children = Children(value);
    // A null under an empty key is left out when it is read.
    if (!ComesBack(key) || (key.empty() && value.IsNullValue()) || !ComesBack(value) ||
        !std::all_of(children.begin(), children.end(), [](const auto& child) { return ComesBack(*child); })) {
      return false;
    }
  }
  return true;
}

bool Equal(const DataObject& left, const DataObject& right) {
  auto other = right.begin();
  for (const auto& [key, value] : left) {
    if (other == right.end() || (*other).key != key) {
      return false;
    }
    const DataValue& same = (*other).value;
    const std::vector<std::shared_ptr<DataObject>> children = Children(value);
    const std::vector<std::shared_ptr<DataObject>> others = Children(same);
    if (value.GetType() != same.GetType() || value.IsArray() != same.IsArray() ||
        value.GetStringValue() != same.GetStringValue() || value.GetStringArray() != same.GetStringArray() ||
        !std::equal(children.begin(), children.end(), others.begin(), others.end(),
                    [](const auto& a, const auto& b) { return Equal(*a, *b); })) {
      return false;
    }
    ++other;
  }
  return other == right.end();
}

// What every caller may do with any document.
void Use(const DataObject& object) {
  for (const auto& [key, value] : object) {
    Require(object.Contains(key), "a key that is there is found");
    Require(object.GetStringValue(key, L"?") == value.GetStringValue(), "a value is found by its key");
    object.GetIntValue(key, 1);
    object.GetUint64Value(key, 1);
    object.GetBooleanValue(key, true);
    for (const std::shared_ptr<DataObject>& child : Children(value)) {
      Use(*child);
    }
  }
}

void Run(Bytes bytes) {
  const std::vector<wchar_t> units = LenientText(bytes);
  const std::wstring text(units.begin(), units.end());
  const Reading strict = Read(text, false);
  const Reading first = Read(text, true);
  Require(strict.error.empty() || strict.error == "Duplicate attribute" || strict.error == first.error,
          "only repeated keys make a difference");
  Require(first.error.empty() || first.error == "invalid stoul argument" || first.error == "bad conversion",
          "the errors of reading");
  if (!first.root) {
    Require(!strict.root, "what is refused with repeated keys is refused without");
    return;
  }
  Require(strict.root || !strict.error.empty(), "only a repeated key makes the flag refuse a document");
  Require(!strict.root || Equal(*first.root, *strict.root), "without repeated keys the flag makes no difference");
  Use(*first.root);

  const std::wstring written = JsonWriter::Encode(*first.root);
  const std::wstring shorter = JsonWriter::Encode(*first.root, true);
  Require(shorter.size() <= written.size(), "leaving out empty values makes no text longer");
  Require(JsonWriter::EncodeSorted(*first.root) == written, "properties are in order already");
  Read(shorter, true);
  const Reading second = Read(written, false);
  if (ComesBack(*first.root)) {
    Require(second.root && Equal(*first.root, *second.root), "a document comes back equal");
    Require(JsonWriter::Encode(*second.root) == written, "and is written the same again");
  }
}

const Target target("json", Run);

}  // namespace
}  // namespace Zelto::Fuzz
