/// @file
/// One object of a JSON document: properties in the order of their keys.
#pragma once

#include <zelto/export.h>
#include <zelto/json/data_value.h>
#include <zelto/json/tokens.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Zelto::Json {

class ObjectStorage;
struct PropertyNode;

/// The properties of one JSON object: an ordered map from key to `DataValue`, one value per key, in the order of the
/// keys' UTF-16 units.
///
/// Queries fall back to the caller's default. `Contains`, `GetStringValue`, `GetIntValue`, `GetUint64Value`,
/// `GetBooleanValue`, `GetDataObject` and `IsNullValue` may be called through a null pointer and then behave as for a
/// missing key, so that a nested object that may be absent can be queried without a check:
///
///     auto user = message->GetDataObject(L"user");
///     int age = user->GetIntValue(L"age", -1);
///
/// (Programs need `-fno-delete-null-pointer-checks` for that with GCC and Clang; the library's CMake target and its
/// pkg-config file pass it on. UndefinedBehaviorSanitizer's check `null` reports such calls and must be off for them.)
///
/// Nested objects are shared with whoever holds them; a copy of an object shares them too. Objects may be nested as
/// deep as memory allows and are destroyed without recursion. An object that is made part of itself is never released.
///
/// Threads: any number may read an object at the same time, `GetValue` of keys that are present included; whoever
/// changes it must be alone. References and iterators stay valid while other properties are added. The texts of an
/// object that is read or copied as a whole are limited to 2 GiB (`std::length_error`).
class ZELTO_API DataObject {
 public:
  /// A property in an iteration.
  struct Property {
    std::wstring key;
    const DataValue& value;
  };

  /// Goes through the properties in the order of their keys. Stays valid while properties are added.
  class ZELTO_API Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Property;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Property;

    Iterator() noexcept = default;
    Property operator*() const;
    Iterator& operator++();
    Iterator operator++(int) {
      Iterator old = *this;
      ++*this;
      return old;
    }
    friend bool operator==(const Iterator& left, const Iterator& right) noexcept { return left.node_ == right.node_; }

   private:
    friend class DataObject;
    Iterator(const DataObject* object, const PropertyNode* node) noexcept : object_(object), node_(node) {}

    const DataObject* object_ = nullptr;
    const PropertyNode* node_ = nullptr;
  };

  DataObject() noexcept = default;
  /// Copies keys and values and shares the nested objects.
  DataObject(const DataObject& other);
  DataObject(DataObject&& other) noexcept;
  DataObject& operator=(const DataObject& other);
  DataObject& operator=(DataObject&& other) noexcept;
  ~DataObject();

  bool IsEmpty() const noexcept;

  /// The properties in the order of their keys: `for (const auto& [key, value] : object)`.
  Iterator begin() const noexcept;
  Iterator end() const noexcept { return {}; }

  /// Whether there is a value under the key, a null included. False through a null pointer.
  ZELTO_NULL_OBJECT_ALLOWED bool Contains(const std::wstring& key) const;

  /// The value under the key; a missing one is inserted as a null. The reference stays valid until this object is
  /// assigned to or destroyed.
  DataValue& GetValue(const std::wstring& key);

  /// `DataValue::GetStringValue` of the value under the key; `default_value` when there is none.
  ZELTO_NULL_OBJECT_ALLOWED std::wstring GetStringValue(const std::wstring& key,
                                                        const std::wstring& default_value) const;
  /// `DataValue::GetIntValue` of the value under the key; `default_value` when there is none.
  ZELTO_NULL_OBJECT_ALLOWED std::int32_t GetIntValue(const std::wstring& key, std::int32_t default_value) const;
  /// `DataValue::GetUint64Value` of the value under the key; `default_value` when there is none.
  ZELTO_NULL_OBJECT_ALLOWED std::uint64_t GetUint64Value(const std::wstring& key, std::uint64_t default_value) const;
  /// `DataValue::GetBooleanValue` of the value under the key; `default_value` when there is none.
  ZELTO_NULL_OBJECT_ALLOWED bool GetBooleanValue(const std::wstring& key, bool default_value) const;
  /// Not for text: a pointer would count as true.
  template <typename T>
  bool GetBooleanValue(const std::wstring& key, const T* default_value) const = delete;
  /// `DataValue::GetObject` of the value under the key; an empty pointer when there is none.
  ZELTO_NULL_OBJECT_ALLOWED std::shared_ptr<const DataObject> GetDataObject(const std::wstring& key) const;
  /// `DataValue::GetObjectArray` of the value under the key; one shared empty list when there is none.
  const std::vector<std::shared_ptr<DataObject>>& GetObjectArray(const std::wstring& key) const;
  /// True when there is no value under the key, or a null.
  ZELTO_NULL_OBJECT_ALLOWED bool IsNullValue(const std::wstring& key) const;

  /// `GetValue(key).SetValue(value)`.
  void SetValue(const std::wstring& key, std::wstring value);
  void SetIntValue(const std::wstring& key, std::int32_t value);
  void SetIntValue(const std::wstring& key, IntegerToken value);
  /// Stored as an integer; there is no kind for unsigned ones.
  void SetUint64Value(const std::wstring& key, std::uint64_t value);
  void SetBooleanValue(const std::wstring& key, bool value);
  void SetBooleanValue(const std::wstring& key, BooleanToken value);
  /// Not for text: a pointer would count as true. `BooleanToken(L"false")` holds one.
  template <typename T>
  void SetBooleanValue(const std::wstring& key, const T* value) = delete;
  /// `GetValue(key).SetObject(object)`.
  void SetObject(const std::wstring& key, std::shared_ptr<DataObject> object);
  /// The value becomes an array of exactly these objects.
  void SetObjectArray(const std::wstring& key, std::vector<std::shared_ptr<DataObject>> objects);
  /// `GetValue(key).SetNull()`; nothing when the key is empty.
  void SetNullValue(const std::wstring& key);
  /// `GetValue(key).SetEmptyObjectArray()`; nothing when the key is empty.
  void SetEmptyObjectArrayValue(const std::wstring& key);
  /// `GetValue(key).SetEmptyStringArray()`; nothing when the key is empty.
  void SetEmptyStringArrayValue(const std::wstring& key);

 private:
  friend class ObjectStorage;

  ObjectStorage* storage_ = nullptr;
};

}  // namespace Zelto::Json
