/// @file
/// One value of a JSON document.
#pragma once

#include <zelto/export.h>
#include <zelto/json/tokens.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// <windows.h> makes `GetObject` a macro, for GetObjectA or GetObjectW. The members below exist under all three names,
// so that it does not matter whether, when and with which character set that header is included.
#pragma push_macro("GetObject")
#undef GetObject

namespace Zelto::Json {

class DataObject;

/// One property's value: a kind, a list of texts, a list of nested objects and an array flag.
///
/// A scalar (string, integer, boolean) is its text, the only one of its `strings`; numbers and booleans are converted
/// when a caller asks for them, and what cannot be converted gives the caller's default. A nested object is the only
/// one of the `objects`. With the array flag set, each text or object is one item.
///
/// The scalar setters leave the array flag and the other list as they are (`SetNull` alone clears both lists, and it
/// too leaves the flag): what was an array and shall be a scalar is a new `DataValue`.
///
/// Nested objects are shared with whoever holds them; a copy of a value shares them too. Texts are units of UTF-16; a
/// character above U+FFFF, which a `wchar_t` of 32 bits can hold, is stored as its surrogate pair, and one above
/// U+10FFFF is refused with `std::range_error` "bad conversion" wherever a text is set. A scalar's text has at most
/// 2,147,483,647 units (`std::length_error` "JSON text too long").
///
/// Threads: any number may call const members at the same time; whoever changes a value must be alone. References that
/// const members return stay valid until the value is changed or destroyed.
class ZELTO_API DataValue {
 public:
  /// What the value is. With the array flag it is what the items are. 3 is no kind.
  enum EType : std::int32_t {
    String = 0,
    Boolean = 1,
    Integer = 2,  ///< the text of a signed 32-bit or an unsigned 64-bit integer
    Object = 4,
    Null = 5,
  };

  /// A null: no texts, no objects, not an array.
  DataValue() noexcept : units_{} {}
  /// Copies the texts and shares the nested objects.
  DataValue(const DataValue& other);
  /// Leaves a null behind. Texts that stand in the memory of a document are copied out of it, so this may throw; then
  /// both values are as before.
  DataValue(DataValue&& other) noexcept(false);
  DataValue& operator=(const DataValue& other);
  DataValue& operator=(DataValue&& other) noexcept(false);
  ~DataValue() {
    if (form_ != Form::kEmpty) {
      Release();
    }
  }

  EType GetType() const noexcept { return static_cast<EType>(kind_); }

  bool IsStringValue() const noexcept { return kind_ == String && !is_array_; }
  bool IsStringArray() const noexcept { return kind_ == String && is_array_; }
  bool IsBoolean() const noexcept { return kind_ == Boolean && !is_array_; }
  bool IsIntValue() const noexcept { return kind_ == Integer && !is_array_; }
  bool IsObject() const noexcept { return kind_ == Object && !is_array_; }
  bool IsObjectArray() const noexcept { return kind_ == Object && is_array_; }
  /// The array flag alone, whatever the kind.
  bool IsArray() const noexcept { return is_array_; }
  bool IsNullValue() const noexcept { return kind_ == Null; }
  /// True for a null, for an object or object array without objects, and for any other kind without texts.
  bool IsEmpty() const noexcept;

  /// The first text; of an array, and where there is no text, one shared empty string.
  const std::wstring& GetString() const;
  /// The first text, whatever the kind and the array flag; empty when there is none.
  std::wstring GetStringValue() const;

  /// The first text as a number.
  ///
  /// Of an integer: white space, a sign and digits up to the first other character, no digits being 0. Of any other
  /// kind only a text of decimal digits alone counts (the empty one is 0, "-5" is not a number).
  ///
  /// @return  `default_value` when there is no text, it is not a number, or the number does not fit
  std::int32_t GetIntValue(std::int32_t default_value) const;

  /// As `GetIntValue`. A negative integer is taken modulo 2 to the 64th, as the C library's unsigned conversion does:
  /// "-5" gives 18446744073709551611.
  std::uint64_t GetUint64Value(std::uint64_t default_value) const;

  /// Whether the first text of a boolean is "true"; `default_value` for any other kind, and when the text is neither
  /// "true" nor "false".
  bool GetBooleanValue(bool default_value) const;

  /// The first object when the kind is `Object`, else an empty pointer. The array flag does not matter.
  std::shared_ptr<DataObject> GetObject() const;
  /// `GetObject` under the name that a Windows header makes of it.
  std::shared_ptr<DataObject> GetObjectA() const { return GetObject(); }
  /// `GetObject` under the name that a Windows header makes of it.
  std::shared_ptr<DataObject> GetObjectW() const { return GetObject(); }

  /// The objects when the array flag is set, else one shared empty list.
  const std::vector<std::shared_ptr<DataObject>>& GetObjectArray() const;
  /// The texts when the array flag is set, else one shared empty list.
  const std::vector<std::wstring>& GetStringArray() const;

  /// Makes `value` the only text, kind `String`.
  void SetValue(std::wstring value) { SetValue(std::move(value), String); }
  /// Makes the token's text the only text, kind `Integer`.
  void SetIntValue(IntegerToken value) { SetValue(std::move(value).GetText(), Integer); }
  /// Makes the token's text the only text, kind `Boolean`.
  void SetBooleanValue(BooleanToken value) { SetValue(std::move(value).GetText(), Boolean); }
  /// Makes `object` the only object, kind `Object`; an empty pointer leaves no object.
  void SetObject(std::shared_ptr<DataObject> object);
  /// No texts, no objects, kind `Null`; the array flag stays.
  void SetNull() noexcept;
  /// An array of objects without items.
  void SetEmptyObjectArray() noexcept;
  /// An array of strings without items.
  void SetEmptyStringArray() noexcept;

  /// Appends a text. Only when there is none yet, the value becomes an array of strings; after a scalar's text kind and
  /// flag stay as they are.
  void AddStringValue(std::wstring value) { AddText(std::move(value), String); }
  /// As `AddStringValue`, for an array of integers.
  void AddIntValue(std::wstring value) { AddText(std::move(value), Integer); }
  /// As `AddStringValue`, for an array of booleans.
  void AddBooleanValue(std::wstring value) { AddText(std::move(value), Boolean); }
  /// Appends an object, which may be an empty pointer, and sets the array flag. A value of another kind becomes
  /// `Object` and loses its texts.
  void AddObject(std::shared_ptr<DataObject> object);

 protected:
  /// Makes `value` the only text and sets the kind.
  void SetValue(const std::wstring& value, EType kind);
  void SetValue(std::wstring&& value, EType kind);

 private:
  friend class ValueAccess;

  struct Parts;

  // How the value is held. The lists of wide strings and objects are made when a caller asks for them by reference, or
  // when the value is more than one text or one object.
  enum class Form : std::uint8_t {
    kEmpty,     // no texts, no objects
    kText,      // one text, in `units_`
    kTextList,  // several texts, in `units_`
    kObject,    // one object, no array, in `object_`
    kParts,     // whatever `units_.parts` holds
  };

  struct Units {
    std::atomic<Parts*> parts{nullptr};  // besides `text` the same in lists, once a const member has made them
    const char16_t* text = nullptr;
  };

  void AddText(std::wstring&& text, EType kind);
  void PlaceText(std::u16string_view text, EType kind, bool owned) noexcept;
  void Release() noexcept;
  void Clear() noexcept;
  void TakeFrom(DataValue& other) noexcept;
  bool HasObjects() const noexcept;
  bool HasTexts() const noexcept;
  const Parts& Materialise() const;
  Parts& ToParts();

  union {
    Units units_;
    std::shared_ptr<DataObject> object_;
  };
  std::uint32_t length_ = 0;  // of `units_.text`
  std::uint8_t kind_ = Null;
  Form form_ = Form::kEmpty;
  bool is_array_ = false;
  bool owns_text_ = false;
};

}  // namespace Zelto::Json

#pragma pop_macro("GetObject")
