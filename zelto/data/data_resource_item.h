/// @file
/// Resource records in JSON documents.
#pragma once

#include <zelto/export.h>
#include <zelto/json/data_object.h>
#include <zelto/text/exceptions/data_exceptions.h>
#include <zelto/time/utc_time.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Zelto::Utilities {

/// What callers need of a resource record; see `DataResourceItem`.
class ZELTO_API IDataResourceItem {
 public:
  /// The record's "id" and "type"; empty when there is none.
  virtual std::wstring GetId() = 0;
  virtual void SetId(const std::wstring& id) = 0;
  virtual std::wstring GetType() = 0;
  virtual void SetType(const std::wstring& type) = 0;

  /// An attribute's text, whatever its kind; empty when there is none.
  virtual std::wstring GetStringValue(const std::wstring& key) = 0;
  virtual void SetStringValue(const std::wstring& key, const std::wstring& value) = 0;

  /// An attribute as a number; 0 when there is none or it is no number that fits.
  virtual int GetIntValue(const std::wstring& key) = 0;

  /// An attribute as a UTC time, from its text in the form `UtcTime::StringValue::ISO8601`.
  ///
  /// @throws std::invalid_argument  "Is not a valid ISO8601 string", also when there is no attribute
  /// @throws std::out_of_range      "invalid string position": a date without a time
  /// @throws Win32Exception         the calendar does not have this time (see `UtcTime`)
  virtual UtcTime GetDateValue(const std::wstring& key) = 0;

  virtual void SetIntValue(const std::wstring& key, int value) = 0;
  /// An attribute as a number; 0 when there is none or it is no number that fits.
  virtual std::uint64_t GetUint64Value(const std::wstring& key) = 0;
  virtual void SetUint64Value(const std::wstring& key, std::uint64_t value) = 0;

  /// Stores the text 2017-11-08T15:44:56, in UTC; fractions of a second are cut.
  ///
  /// @throws Win32Exception  "Can't convert file time to system time": ticks of 2 to the 63rd or more
  virtual void SetDateValue(const std::wstring& key, UtcTime value) = 0;

  /// Whether an attribute is the boolean true; false when there is none or it is of another kind.
  virtual bool GetBoolValue(const std::wstring& key) = 0;
  virtual void SetBoolValue(const std::wstring& key, bool value) = 0;
  /// Not for text: a pointer would count as true.
  template <typename T>
  void SetBoolValue(const std::wstring& key, const T* value) = delete;

  /// The whole record, shared with the item: changes on either side show on the other. Never an empty pointer.
  virtual std::shared_ptr<Json::DataObject> AsDataObject() = 0;

  /// Appends texts to an attribute, which becomes an array of strings when there was none, even without texts. What
  /// the attribute held before stays in front: two calls leave the texts of both.
  virtual void SetStringArrayValue(const std::wstring& key, std::vector<std::wstring> values) = 0;

  /// An attribute's texts when it is an array, otherwise one shared empty list. Never creates the attribute. The
  /// reference stays good until the attribute is changed or the record is gone.
  virtual const std::vector<std::wstring>& GetStringArrayValue(const std::wstring& key) = 0;

  /// The attribute becomes an array of exactly these objects, which it shares.
  virtual void SetObjectArrayValue(const std::wstring& key, std::vector<std::shared_ptr<Json::DataObject>> objects) = 0;

  /// An attribute's objects when it is an array, otherwise one shared empty list. The reference stays good until the
  /// attribute is changed or the record is gone.
  virtual const std::vector<std::shared_ptr<Json::DataObject>>& GetObjectArrayValue(const std::wstring& key) = 0;

  /// The attribute becomes this object, which it shares; an empty pointer leaves an object value without an object.
  virtual void SetObjectValue(const std::wstring& key, std::shared_ptr<Json::DataObject> object) = 0;

  /// An attribute's object, shared; an empty pointer when there is none. Its queries may be called all the same.
  virtual std::shared_ptr<const Json::DataObject> GetObjectValue(const std::wstring& key) = 0;

  virtual ~IDataResourceItem() = default;
};

/// One resource record: an object with the texts "id" and "type" and an object "attributes" with the record's own
/// fields. The item wraps the document and gives typed access to its attributes.
///
///     DataResourceItem device(L"17", L"device");
///     device.SetBoolValue(L"online", true);
///     JsonWriter::Encode(device.AsDataObject());  // {"attributes":{"online":true},"id":"17","type":"device"}
///
/// Setters keep what a `DataValue` keeps: an attribute that was an array stays one when a text or a number is set.
///
/// The item holds the attributes it found or made when it was constructed. When someone later puts another object under
/// "attributes" of the record, the item goes on with the one it has.
///
/// A copy of an item wraps the same record. Threads: as of `DataObject`, for all items of one record together; getters
/// are readers.
class ZELTO_API DataResourceItem : public IDataResourceItem {
 public:
  /// A new record with empty attributes. An empty `id` or `type` is left out.
  DataResourceItem(const std::wstring& id, const std::wstring& type);

  /// Reads a record from JSON text; of a repeated key the last value counts. A text that is not accepted gives a new
  /// record with nothing but empty attributes.
  ///
  /// @throws  what `Json::JsonReader::Decode` throws, as "invalid stoul argument" for an escape without digits
  explicit DataResourceItem(const std::wstring& json);

  /// Wraps a record, which is shared; an empty pointer gives a new one. Without an object under "attributes" it gains
  /// an empty one, in place of what stood there.
  explicit DataResourceItem(std::shared_ptr<Json::DataObject> object);

  // Without moves, which would leave an item without a record.
  DataResourceItem(const DataResourceItem& other) = default;
  DataResourceItem& operator=(const DataResourceItem& other) = default;
  ~DataResourceItem() override = default;

  std::wstring GetId() override;
  void SetId(const std::wstring& id) override;
  std::wstring GetType() override;
  void SetType(const std::wstring& type) override;
  std::wstring GetStringValue(const std::wstring& key) override;
  void SetStringValue(const std::wstring& key, const std::wstring& value) override;
  int GetIntValue(const std::wstring& key) override;
  UtcTime GetDateValue(const std::wstring& key) override;
  void SetIntValue(const std::wstring& key, int value) override;
  std::uint64_t GetUint64Value(const std::wstring& key) override;
  void SetUint64Value(const std::wstring& key, std::uint64_t value) override;
  void SetDateValue(const std::wstring& key, UtcTime value) override;
  bool GetBoolValue(const std::wstring& key) override;
  void SetBoolValue(const std::wstring& key, bool value) override;
  using IDataResourceItem::SetBoolValue;
  std::shared_ptr<Json::DataObject> AsDataObject() override;
  void SetStringArrayValue(const std::wstring& key, std::vector<std::wstring> values) override;
  const std::vector<std::wstring>& GetStringArrayValue(const std::wstring& key) override;
  void SetObjectArrayValue(const std::wstring& key, std::vector<std::shared_ptr<Json::DataObject>> objects) override;
  const std::vector<std::shared_ptr<Json::DataObject>>& GetObjectArrayValue(const std::wstring& key) override;
  void SetObjectValue(const std::wstring& key, std::shared_ptr<Json::DataObject> object) override;
  std::shared_ptr<const Json::DataObject> GetObjectValue(const std::wstring& key) override;

 protected:
  /// Takes the object under "attributes" of the record, of an array its first; when there is none, puts an empty one
  /// there.
  void InitAttributesPointer();

 private:
  // Neither is ever empty.
  std::shared_ptr<Json::DataObject> root_;
  std::shared_ptr<Json::DataObject> attributes_;  // part of the root
};

}  // namespace Zelto::Utilities
