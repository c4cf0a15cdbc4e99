#include "zelto/json/data_object.h"

#include "zelto/json/object_storage.h"
#include "zelto/json/value_access.h"

namespace Zelto::Json {
namespace {

// The value under a key. The object may be null: it is looked at only here, as a plain argument.
const DataValue* FindValue(const DataObject* object, const std::wstring& key) {
  if (object == nullptr) {
    return nullptr;
  }
  const ObjectStorage* storage = ObjectStorage::Of(*object);
  if (storage == nullptr) {
    return nullptr;
  }
  const PropertyNode* node = storage->Find(key);
  return node == nullptr ? nullptr : &node->value;
}

}  // namespace

DataObject::DataObject(const DataObject& other) : storage_(ObjectStorage::Copy(other.storage_)) {}

DataObject::DataObject(DataObject&& other) noexcept : storage_(std::exchange(other.storage_, nullptr)) {}

DataObject& DataObject::operator=(const DataObject& other) {
  if (this != &other) {
    DataObject copy(other);
    *this = std::move(copy);
  }
  return *this;
}

DataObject& DataObject::operator=(DataObject&& other) noexcept {
  if (this != &other) {
    // The old contents go last: they may be all that keeps `other` alive.
    const DataObject old(std::move(*this));
    storage_ = std::exchange(other.storage_, nullptr);
  }
  return *this;
}

DataObject::~DataObject() {
  ObjectStorage::Destroy(storage_);
}

bool DataObject::IsEmpty() const noexcept {
  return storage_ == nullptr || storage_->Size() == 0;
}

DataObject::Iterator DataObject::begin() const noexcept {
  if (storage_ == nullptr) {
    return {};
  }
  storage_->SetOwning();
  return {this, storage_->First()};
}

DataObject::Property DataObject::Iterator::operator*() const {
  return {ToWide(node_->Key()), node_->value};
}

DataObject::Iterator& DataObject::Iterator::operator++() {
  node_ = ObjectStorage::Of(*object_)->Next(*node_);
  return *this;
}

bool DataObject::Contains(const std::wstring& key) const {
  return FindValue(this, key) != nullptr;
}

DataValue& DataObject::GetValue(const std::wstring& key) {
  if (storage_ == nullptr) {
    storage_ = ObjectStorage::Allocate(0, 0);
  }
  storage_->SetOwning();
  return storage_->FindOrInsert(key).value;
}

std::wstring DataObject::GetStringValue(const std::wstring& key, const std::wstring& default_value) const {
  const DataValue* value = FindValue(this, key);
  return value == nullptr ? default_value : value->GetStringValue();
}

std::int32_t DataObject::GetIntValue(const std::wstring& key, std::int32_t default_value) const {
  const DataValue* value = FindValue(this, key);
  return value == nullptr ? default_value : value->GetIntValue(default_value);
}

std::uint64_t DataObject::GetUint64Value(const std::wstring& key, std::uint64_t default_value) const {
  const DataValue* value = FindValue(this, key);
  return value == nullptr ? default_value : value->GetUint64Value(default_value);
}

bool DataObject::GetBooleanValue(const std::wstring& key, bool default_value) const {
  const DataValue* value = FindValue(this, key);
  return value == nullptr ? default_value : value->GetBooleanValue(default_value);
}

std::shared_ptr<const DataObject> DataObject::GetDataObject(const std::wstring& key) const {
  const DataValue* value = FindValue(this, key);
  return value == nullptr ? nullptr : value->GetObject();
}

const std::vector<std::shared_ptr<DataObject>>& DataObject::GetObjectArray(const std::wstring& key) const {
  const DataValue* value = FindValue(this, key);
  return value == nullptr ? kNoObjects.value : value->GetObjectArray();
}

bool DataObject::IsNullValue(const std::wstring& key) const {
  const DataValue* value = FindValue(this, key);
  return value == nullptr || value->IsNullValue();
}

void DataObject::SetValue(const std::wstring& key, std::wstring value) {
  GetValue(key).SetValue(std::move(value));
}

void DataObject::SetIntValue(const std::wstring& key, std::int32_t value) {
  GetValue(key).SetIntValue(IntegerToken(value));
}

void DataObject::SetIntValue(const std::wstring& key, IntegerToken value) {
  GetValue(key).SetIntValue(std::move(value));
}

void DataObject::SetUint64Value(const std::wstring& key, std::uint64_t value) {
  GetValue(key).SetIntValue(IntegerToken(value));
}

void DataObject::SetBooleanValue(const std::wstring& key, bool value) {
  GetValue(key).SetBooleanValue(BooleanToken(value));
}

void DataObject::SetBooleanValue(const std::wstring& key, BooleanToken value) {
  GetValue(key).SetBooleanValue(std::move(value));
}

void DataObject::SetObject(const std::wstring& key, std::shared_ptr<DataObject> object) {
  GetValue(key).SetObject(std::move(object));
}

void DataObject::SetObjectArray(const std::wstring& key, std::vector<std::shared_ptr<DataObject>> objects) {
  DataValue value;
  value.SetEmptyObjectArray();
  for (std::shared_ptr<DataObject>& object : objects) {
    value.AddObject(std::move(object));
  }
  GetValue(key) = std::move(value);
}

void DataObject::SetNullValue(const std::wstring& key) {
  if (!key.empty()) {
    GetValue(key).SetNull();
  }
}

void DataObject::SetEmptyObjectArrayValue(const std::wstring& key) {
  if (!key.empty()) {
    GetValue(key).SetEmptyObjectArray();
  }
}

void DataObject::SetEmptyStringArrayValue(const std::wstring& key) {
  if (!key.empty()) {
    GetValue(key).SetEmptyStringArray();
  }
}

}  // namespace Zelto::Json
