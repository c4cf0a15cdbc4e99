/// @file
/// A second reader of JSON text, to hold the library's against.
#pragma once

#include "zelto/json/data_object.h"
#include "zelto/json/json_encoder.h"
#include "zelto/json/json_reader.h"
#include "zelto/json/lexer.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace Zelto::Fuzz {

/// Reads the language of `Json::JsonReader` with the lexer's and the document's public operations alone.
class PlainJsonReader {
 public:
  PlainJsonReader(const std::wstring& text, bool allow_duplicates) : allow_duplicates_(allow_duplicates) {
    lexer_.SetReadLine([text, is_read = text.empty()](std::wstring& line) mutable {
      line = text;
      return !std::exchange(is_read, true);
    });
  }

  /// @return  nothing when the text is refused
  std::shared_ptr<Json::DataObject> Read() {
    lexer_.GetChar(L'{');
    auto object = ReadObject(1);
    lexer_.GetChar(L'}');
    return lexer_.HasError() ? nullptr : object;
  }

  /// Whether what was read is read from the writer's text, too: no array mixes kinds, no empty key holds a null, and no
  /// text holds one of the control characters whose escapes are no hexadecimal digits.
  bool ComesBack() const { return comes_back_; }

 private:
  bool ReadString(std::wstring& text) {
    const Json::Lexer before = lexer_;
    if (!lexer_.CheckQuotedString(text)) {
      lexer_ = before;
      if (lexer_.CheckChar(L'"')) {
        lexer_ = Json::Lexer();  // its end is missing: nothing follows, which is an error
      }
      return false;
    }
    text = Utilities::JsonEncoder::FromEscapedString(text);
    comes_back_ = comes_back_ && text.find_first_of(L"\x0B\x0E\x0F") == std::wstring::npos;
    return true;
  }

  std::shared_ptr<Json::DataObject> ReadObject(unsigned int depth) {
    auto object = std::make_shared<Json::DataObject>();
    if (depth > Json::JsonReader::MAXIMUM_NESTING) {
      lexer_ = Json::Lexer();  // nothing follows, which is an error
    }
    std::wstring key;
    while (ReadString(key)) {
      if (object->Contains(key) && !allow_duplicates_) {
        throw std::runtime_error("Duplicate attribute");
      }
      lexer_.GetChar(L':');
      Json::DataValue value;
      if (ReadArray(value, depth) || ReadItem(value, depth) || (lexer_.CheckString(L"null") && !key.empty())) {
        comes_back_ = comes_back_ && !(key.empty() && value.IsNullValue());
        object->GetValue(key) = value;
      }
      if (!lexer_.CheckChar(L',')) {
        break;
      }
    }
    return object;
  }

  bool ReadArray(Json::DataValue& array, unsigned int depth) {
    if (!lexer_.CheckChar(L'[')) {
      return false;
    }
    do {
      if (Json::DataValue item; ReadItem(item, depth)) {
        comes_back_ = comes_back_ && (array.IsNullValue() || array.GetType() == item.GetType());
        AddItem(array, item);
      }
    } while (lexer_.CheckChar(L','));
    lexer_.GetChar(L']');
    return true;
  }

  bool ReadItem(Json::DataValue& value, unsigned int depth) {
    std::wstring text;
    Json::IntegerToken integer;
    Json::BooleanToken boolean;
    if (ReadString(text)) {
      value.SetValue(text);
    } else if (lexer_.CheckInteger(integer)) {
      value.SetIntValue(integer);
    } else if (lexer_.CheckJsonBoolean(boolean)) {
      value.SetBooleanValue(boolean);
    } else if (lexer_.CheckChar(L'{')) {
      value.SetObject(ReadObject(depth + 1));
      lexer_.GetChar(L'}');
    }
    return !value.IsNullValue();
  }

  static void AddItem(Json::DataValue& array, const Json::DataValue& item) {
    switch (item.GetType()) {
      case Json::DataValue::Object:
        return array.AddObject(item.GetObject());
      case Json::DataValue::Integer:
        return array.AddIntValue(item.GetStringValue());
      case Json::DataValue::Boolean:
        return array.AddBooleanValue(item.GetStringValue());
      default:
        return array.AddStringValue(item.GetStringValue());
    }
  }

  Json::Lexer lexer_;
  bool allow_duplicates_;
  bool comes_back_ = true;
};

}  // namespace Zelto::Fuzz
