#include "zelto/json/json_reader.h"

#include "zelto/json/document_builder.h"
#include "zelto/json/lexer_inline.h"

#include <utility>

namespace Zelto::Json {

const unsigned int JsonReader::MAXIMUM_NESTING;

// Takes a string, an integer or a boolean, if there is one, and appends its text. What an unterminated string leaves
// behind does not count.
inline bool JsonReader::ReadScalar(UnitStack& text, DataValue::EType& kind) {
  switch (lexer_.Peek()) {
    case L'"':
      kind = DataValue::String;
      return lexer_.TakeQuotedString(text);
    case L't':
    case L'f':
      kind = DataValue::Boolean;
      return lexer_.TakeBoolean(text);
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
      lexer_.TakeInteger(text);
      return true;
    default:
      return false;
  }
}

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
  WithBuilder([this, &value](DocumentBuilder& builder) {
    UnitStack text;
    DataValue::EType kind{};
    do {
      text.CutTo(0);
      if (ReadScalar(text, kind)) {
        DocumentBuilder::AddItemTo(value, {text.Data(), text.Size()}, kind);
      } else if (lexer_.TakeChar(L'{')) {
        value.AddObject(ReadObject(builder));
        lexer_.ExpectChar(L'}');
      }
    } while (lexer_.TakeChar(L','));
  });
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

// Reads an object behind its brace, and all objects in it: the builder keeps what is open, so that depth costs no
// stack.
std::shared_ptr<DataObject> JsonReader::ReadObject(DocumentBuilder& builder) {
  const std::size_t outer_depth = builder.Depth();
  builder.OpenObject();
  for (;;) {
    if (ReadMembers(builder)) {
      continue;
    }
    do {
      std::shared_ptr<DataObject> object = builder.CloseObject();
      if (builder.Depth() == outer_depth) {
        return object;
      }
      lexer_.ExpectChar(L'}');
      if (builder.InItems()) {
        builder.AddObjectItem(std::move(object));
        if (lexer_.TakeChar(L',') && ReadItems(builder)) {
          break;
        }
        lexer_.ExpectChar(L']');
      } else {
        builder.SetObject(std::move(object));
      }
    } while (!lexer_.TakeChar(L','));
  }
}

// Reads properties of the innermost object. True when another one has begun in it, false when there are no more.
bool JsonReader::ReadMembers(DocumentBuilder& builder) {
  do {
    const std::size_t key = builder.Text().Size();
    if (lexer_.Peek() != L'"' || !lexer_.TakeQuotedString(builder.Text())) {
      return false;
    }
    builder.AddKey(key);
    lexer_.ExpectChar(L':');
    if (ReadMember(builder)) {
      return true;
    }
  } while (lexer_.TakeChar(L','));
  return false;
}

// Reads a property's value, if there is one. True when an object has begun in it.
bool JsonReader::ReadMember(DocumentBuilder& builder) {
  const std::size_t text = builder.Text().Size();
  DataValue::EType kind{};
  if (ReadScalar(builder.Text(), kind)) {
    builder.SetText(text, kind);
    return false;
  }
  switch (lexer_.Peek()) {
    case L'{':
      return BeginObject(builder);
    case L'[':
      lexer_.TakeChar(L'[');
      builder.BeginItems();
      if (ReadItems(builder)) {
        return true;
      }
      builder.EndItems();
      lexer_.ExpectChar(L']');
      return false;
    case L'n':
      if (lexer_.TakeText(L"null")) {
        builder.SetNull();
      }
      return false;
    default:
      return false;
  }
}

// Reads items of the innermost property. True when an object has begun among them, false when there are no more.
bool JsonReader::ReadItems(DocumentBuilder& builder) {
  DataValue::EType kind{};
  do {
    const std::size_t item = builder.BeginItem();
    if (ReadScalar(builder.Text(), kind)) {
      builder.AddItem(item, kind);
      continue;
    }
    builder.DropItem(item);
    if (lexer_.Peek() == L'{') {
      builder.BeginObjectItems();
      return BeginObject(builder);
    }
  } while (lexer_.TakeChar(L','));
  return false;
}

// Takes an opening brace; false, and an error, when too many objects are open.
bool JsonReader::BeginObject(DocumentBuilder& builder) {
  if (builder.Depth() >= MAXIMUM_NESTING) {
    lexer_.SetError();
    return false;
  }
  lexer_.TakeChar(L'{');
  builder.OpenObject();
  return true;
}

}  // namespace Zelto::Json
