/// @file
/// Writes JSON text.
#pragma once

#include <zelto/export.h>
#include <zelto/json/data_object.h>
#include <zelto/json/tokens.h>

#include <concepts>
#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace Zelto::Json {

class JsonWriter;

/// A callback that is handed the writer.
template <typename Write>
concept TakesWriter = std::invocable<const Write&, JsonWriter&> && !std::invocable<const Write&>;

/// Writes `DataObject`s as compact JSON, properties in the order of their keys, or a document property by property
/// without building it first. There is no white space in the output. Objects may be nested as deep as memory allows;
/// one that is nested in itself is refused with `std::runtime_error` "Cyclic JSON object", when a part of it has been
/// written.
///
/// Text is written unformatted: the stream's locale, width and flags do not matter, and its errors stay with the
/// stream. One of them is that a standard stream with a `wchar_t` of 16 bits may lose the unit U+FFFF, which is also
/// its mark for the end of a file; `Encode` keeps it. A writer, and its stream, belong to one thread at a time.
class ZELTO_API JsonWriter {
 public:
  /// @param stream  not owned; must outlive the writer and its copies
  explicit JsonWriter(std::wostream& stream);
  JsonWriter(const JsonWriter& other);
  ~JsonWriter();

  /// The JSON text of an object.
  ///
  /// @param skip_null_or_empty  leaves out properties whose value is null, an empty array, or an object value that
  ///                            holds no object; empty strings and objects without properties are still written
  static std::wstring Encode(const DataObject& object, bool skip_null_or_empty = false);
  /// An empty pointer gives "{}".
  static std::wstring Encode(const std::shared_ptr<DataObject>& object, bool skip_null_or_empty = false);
  static std::wstring Encode(const std::shared_ptr<const DataObject>& object, bool skip_null_or_empty = false);
  /// The same: objects keep their properties in order.
  static std::wstring EncodeSorted(const DataObject& object, bool skip_null_or_empty = false);

  /// Whether `WriteProperty` leaves out empty strings; true at first.
  void SetSkipEmptyStringValues(bool skip) noexcept { skip_empty_string_values_ = skip; }
  /// Whether `Write` leaves out empty values, as described at `Encode`; false at first.
  void SetSkipNullOrEmpty(bool skip) noexcept { skip_null_or_empty_ = skip; }

  /// Writes an object.
  void Write(const DataObject& object);
  /// The same: objects keep their properties in order.
  void WriteSorted(const DataObject& object);

  /// Writes a text in double quotes. With a masked character in it (see `JsonEncoder`) it is escaped, otherwise it is
  /// written as it is, non-printing characters included. A character above U+FFFF becomes its surrogate pair.
  ///
  /// @throws std::range_error  "bad conversion" above U+10FFFF
  void WriteStringValue(const std::wstring& text);

  /// Writes a property of the innermost object, with a comma in front where one is needed. Keys are written as they
  /// are, without escaping.
  void WriteProperty(const std::wstring& key, const std::wstring& value);
  void WriteProperty(const std::wstring& key, int value);
  void WriteProperty(const std::wstring& key, unsigned int value);
  void WriteProperty(const std::wstring& key, std::uint64_t value);
  template <UnsignedNumber Value>
  void WriteProperty(const std::wstring& key, Value value) {
    WriteProperty(key, std::uint64_t{value});
  }
  /// Not for booleans, which would be written as numbers: `WriteBooleanProperty` is.
  template <std::same_as<bool> Value>
  void WriteProperty(const std::wstring& key, Value value) = delete;
  void WriteBooleanProperty(const std::wstring& key, bool value);

  /// Writes an object whose properties the callback writes through this writer, under a key or as the root.
  void WriteObject(const std::wstring& key, const std::function<void()>& write_members);
  void WriteObject(const std::function<void()>& write_members);
  /// The same with a callback that is handed this writer.
  template <TakesWriter Write>
  void WriteObject(const std::wstring& key, const Write& write_members) {
    WriteObject(key, std::function<void()>([&] { write_members(*this); }));
  }
  template <TakesWriter Write>
  void WriteObject(const Write& write_members) {
    WriteObject(std::function<void()>([&] { write_members(*this); }));
  }

  /// Writes a comma unless this is the first call on the innermost level. Outside of any level it writes nothing.
  void WriteSeparatorIfNeeded();
  void PushSeparatorNeeded();
  /// Without an open level it does nothing.
  void PopSeparatorNeeded() noexcept;

 protected:
  /// Writes a value, arrays with their brackets; nothing for a null that is to be skipped.
  void WriteValue(const DataValue& value);
  /// Write an array's items without the brackets, objects or texts.
  void WriteObjectArray(const DataValue& value);
  void WriteStringArray(const DataValue& value);

 private:
  template <typename Print>
  void PrintWith(const Print& print);
  void WriteText(std::wstring_view text);
  void WriteKey(const std::wstring& key);

  std::wostream& stream_;
  std::vector<bool> separator_needed_;
  int top_ = -1;
  bool skip_empty_string_values_ = true;
  bool skip_null_or_empty_ = false;
};

}  // namespace Zelto::Json
