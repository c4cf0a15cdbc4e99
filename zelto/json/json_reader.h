/// @file
/// Reads JSON text.
#pragma once

#include <zelto/export.h>
#include <zelto/json/data_object.h>
#include <zelto/json/lexer.h>

#include <memory>
#include <string>

namespace Zelto::Json {

class DocumentBuilder;

/// Reads a subset of JSON into `DataObject`s. The root is an object; scalars are strings, integers of any length,
/// booleans and null; arrays hold strings, integers, booleans or objects, not arrays or null. An empty array reads as
/// null. Of an array of mixed items remains what `DataValue::AddStringValue` and its sisters make of them.
///
/// Beyond JSON, accepted by design: a comma before a closing brace or bracket, a property without a value (it is left
/// out), leading zeros and plus signs, a sign alone as an integer, raw control characters in strings, and anything
/// after the root's closing brace. A null under an empty key is left out.
///
/// Objects within objects beyond `MAXIMUM_NESTING` are a syntax error, arrays between them do not count; at the limit
/// 256 KiB of stack are enough. Linear in the text, apart from sorting the keys of objects whose keys are not in order.
class ZELTO_API JsonReader {
 public:
  /// So many objects may be open at the same time, the root included.
  static const unsigned int MAXIMUM_NESTING = 512;

  /// Reads a document.
  ///
  /// @param allow_duplicates  a repeated key replaces the value before; otherwise it is an error
  /// @return  the root, or an empty pointer when the text was not accepted
  /// @throws std::runtime_error     "Duplicate attribute"
  /// @throws std::invalid_argument  "invalid stoul argument": no hexadecimal digit where a "\u" wants them
  /// @throws std::range_error       "bad conversion": a character above U+10FFFF (only where a `wchar_t` has 32 bits)
  /// @throws std::length_error      "JSON text too long": one object with 2 GiB of texts
  static std::shared_ptr<DataObject> Decode(const std::wstring& text, bool allow_duplicates);

  /// Makes the whole `text` the input, as one line.
  void InitializeReader(const std::wstring& text);

 protected:
  /// Reads a document, once per reader. Result and exceptions as of `Decode`.
  std::shared_ptr<DataObject> Parse(const std::wstring& text);

  /// Reads what stands behind an opening brace, up to the closing one. `Lexer::HasError` tells of syntax errors; the
  /// result is then what was read before.
  std::shared_ptr<DataObject> ParseObject();

  /// Reads what stands behind an opening bracket, up to the closing one, and adds the items to `value`.
  void ParseArray(DataValue& value);

 private:
  template <typename Read>
  void WithBuilder(const Read& read);
  std::shared_ptr<DataObject> ReadObject(DocumentBuilder& builder);
  bool ReadMembers(DocumentBuilder& builder);
  bool ReadMember(DocumentBuilder& builder);
  bool ReadItems(DocumentBuilder& builder);
  bool BeginObject(DocumentBuilder& builder);
  inline bool ReadScalar(UnitStack& text, DataValue::EType& kind);

  Lexer lexer_;
  bool allow_duplicates_ = false;
};

}  // namespace Zelto::Json
