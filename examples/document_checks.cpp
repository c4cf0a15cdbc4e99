#include "document_checks.h"

#include <zelto/json/json_reader.h>
#include <zelto/json/lexer.h>

#include <exception>

using Zelto::Json::BooleanToken;
using Zelto::Json::IntegerToken;
using Zelto::Json::Lexer;

namespace {

/// Walks the tokens of a text that the reader has accepted, and compares the kinds of each array's items: the model
/// keeps one kind for an array, so only the text tells.
class MixedArrayFinder {
 public:
  static bool Find(const std::wstring& text) {
    MixedArrayFinder finder;
    finder.lexer_.SetReadLine([&text](std::wstring& line) {
      const bool first = line.empty();
      line = first ? text : line;
      return first;
    });
    finder.WalkValue();
    return finder.found_;
  }

 private:
  enum class Kind {
    None,
    Object,
    Array,
    String,
    Integer,
    Boolean,
  };

  Kind WalkValue() {
    std::wstring string;
    IntegerToken integer;
    BooleanToken boolean;
    if (lexer_.CheckChar(L'{')) {
      WalkObject();
      return Kind::Object;
    }
    if (lexer_.CheckChar(L'[')) {
      WalkArray();
      return Kind::Array;
    }
    return lexer_.CheckQuotedString(string)   ? Kind::String
           : lexer_.CheckInteger(integer)     ? Kind::Integer
           : lexer_.CheckJsonBoolean(boolean) ? Kind::Boolean
                                              : (lexer_.CheckString(L"null"), Kind::None);
  }

  void WalkObject() {
    std::wstring key;
    while (lexer_.CheckQuotedString(key)) {
      lexer_.GetChar(L':');
      WalkValue();
      lexer_.CheckChar(L',');
    }
    lexer_.GetChar(L'}');
  }

  void WalkArray() {
    const Kind kind = WalkValue();
    while (lexer_.CheckChar(L',')) {
      const Kind next = WalkValue();
      found_ = found_ || (next != Kind::None && next != kind);
    }
    lexer_.GetChar(L']');
  }

  Lexer lexer_;
  bool found_ = false;
};

}  // namespace

CheckedDocument CheckDocument(const std::wstring& text) {
  CheckedDocument document;
  try {
    document.object = Zelto::Json::JsonReader::Decode(text, false);
  } catch (const std::exception& failure) {  // a repeated key, or an escape that is no number
    document.reason = failure.what();
    return document;
  }
  if (!document.object) {
    document.reason = "Not a JSON object";
  } else if (MixedArrayFinder::Find(text)) {
    document.object.reset();
    document.reason = "Array of mixed kinds";
  }
  return document;
}
