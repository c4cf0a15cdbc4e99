#include "zelto/json/json_reader.h"

#include "zelto/json/document_builder.h"
#include "zelto/json/json_encoder.h"
#include "zelto/json/lexer_inline.h"

#include <utility>

namespace Zelto::Json {

std::shared_ptr<DataObject> JsonReader::Decode(const std::wstring& text, bool allow_duplicates) {
  JsonReader reader;
  reader.allow_duplicates_ = allow_duplicates;
  return reader.Parse(text);
}

void JsonReader::InitializeReader(const std::wstring& text) {
  lexer_.SetReadLine([text](std::wstring& line) {
    // An empty text has no line; to give it as one again and again would never end.
    if (!line.empty() || text.empty()) {
      return false;
    }
    line = text;
    return true;
  });
}

std::shared_ptr<DataObject> JsonReader::Parse(const std::wstring& text) {
  struct Release {
    ~Release() { lexer.ReleaseText(); }
    Lexer& lexer;
  };
  lexer_.ReadText(text);
  const Release release{lexer_};
  lexer_.ExpectChar(L'{');
  std::shared_ptr<DataObject> object = ParseObject();
  lexer_.ExpectChar(L'}');
  return lexer_.HasError() ? nullptr : object;
}

std::shared_ptr<DataObject> JsonReader::ParseObject() {
  std::shared_ptr<DataObject> object;
  WithBuilder([this, &object](DocumentBuilder& builder) { object = ReadObject(builder); });
  return object;
}

void JsonReader::ParseArray(DataValue& value) {
  WithBuilder([this, &value](DocumentBuilder& builder) { ReadItems(builder, value); });
}

// A key that was repeated before something else was thrown counts first.
template <typename Read>
void JsonReader::WithBuilder(const Read& read) {
  DocumentBuilder builder(allow_duplicates_);
  try {
    read(builder);
  } catch (...) {
    builder.CheckOpenObjects();
    throw;
  }
}

std::shared_ptr<DataObject> JsonReader::ReadObject(DocumentBuilder& builder) {
  builder.OpenObject();
  while (lexer_.Peek() == L'"') {
    std::wstring_view key;
    bool escaped = false;
    if (!lexer_.TakeQuotedString(key, escaped)) {
      break;
    }
    builder.AddKey(key, escaped);
    lexer_.ExpectChar(L':');
    ReadMember(builder);
    if (!lexer_.TakeChar(L',')) {
      break;
    }
  }
  return builder.CloseObject();
}

// Takes a string, an integer or a boolean, if there is one.
bool JsonReader::ReadScalar(std::wstring_view& text, bool& escaped, DataValue::EType& kind) {
  escaped = false;
  switch (lexer_.Peek()) {
    case L'"':
      kind = DataValue::String;
      return lexer_.TakeQuotedString(text, escaped);
    case L't':
      kind = DataValue::Boolean;
      text = L"true";
      return lexer_.TakeText(text);
    case L'f':
      kind = DataValue::Boolean;
      text = L"false";
      return lexer_.TakeText(text);
    case L'+':
    case L'-':
    case L'0':
    case L'1':
    case L'2':
    case L'3':
    case L'4':
    case L'5':
    case L'6':
    case L'7':
    case L'8':
    case L'9':
      kind = DataValue::Integer;
      text = lexer_.TakeInteger();
      return true;
    default:
      return false;
  }
}

// Reads a property's value, if there is one.
void JsonReader::ReadMember(DocumentBuilder& builder) {
  std::wstring_view text;
  bool escaped = false;
  auto kind = DataValue::Null;
  switch (lexer_.Peek()) {
    case L'{':
      builder.SetObject(ReadNestedObject(builder));
      break;
    case L'[':
      lexer_.TakeChar(L'[');
      ReadArray(builder);
      lexer_.ExpectChar(L']');
      break;
    case L'n':
      if (lexer_.TakeText(L"null")) {
        builder.SetNull();
      }
      break;
    default:
      if (ReadScalar(text, escaped, kind)) {
        builder.SetText(text, escaped, kind);
      }
      break;
  }
}

// Reads an object from its opening to its closing brace.
std::shared_ptr<DataObject> JsonReader::ReadNestedObject(DocumentBuilder& builder) {
  if (builder.Depth() >= MAXIMUM_NESTING) {
    lexer_.SetError();
    return nullptr;
  }
  lexer_.TakeChar(L'{');
  std::shared_ptr<DataObject> object = ReadObject(builder);
  lexer_.ExpectChar(L'}');
  return object;
}

// Reads a property's items. Texts stay compact; from the first object on the items are a value of their own.
void JsonReader::ReadArray(DocumentBuilder& builder) {
  std::wstring_view text;
  bool escaped = false;
  auto kind = DataValue::Null;
  auto array_kind = DataValue::Null;
  builder.BeginItems();
  do {
    if (ReadScalar(text, escaped, kind)) {
      array_kind = array_kind == DataValue::Null ? kind : array_kind;
      builder.AddItem(text, escaped);
    } else if (lexer_.Peek() == L'{') {
      DataValue value;
      builder.AbandonItems(value, array_kind);
      ReadItems(builder, value);
      builder.SetValue(std::move(value));
      return;
    }
  } while (lexer_.TakeChar(L','));
  builder.EndItems(array_kind);
}

void JsonReader::ReadItems(DocumentBuilder& builder, DataValue& value) {
  std::wstring_view text;
  bool escaped = false;
  auto kind = DataValue::Null;
  do {
    if (!ReadScalar(text, escaped, kind)) {
      if (lexer_.Peek() == L'{') {
        value.AddObject(ReadNestedObject(builder));
      }
    } else if (kind == DataValue::String) {
      value.AddStringValue(Utilities::JsonEncoder::FromEscapedString(std::wstring(text)));
    } else if (kind == DataValue::Integer) {
      value.AddIntValue(std::wstring(text));
    } else {
      value.AddBooleanValue(std::wstring(text));
    }
  } while (lexer_.TakeChar(L','));
}

}  // namespace Zelto::Json
