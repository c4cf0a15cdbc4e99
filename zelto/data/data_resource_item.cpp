#include "zelto/data/data_resource_item.h"

#include "zelto/json/json_reader.h"
#include "zelto/text/never_destroyed.h"

#include <utility>

namespace Zelto::Utilities {
namespace {

using Json::DataObject;
using Json::DataValue;

constexpr const wchar_t* kId = L"id";
constexpr const wchar_t* kType = L"type";
constexpr const wchar_t* kAttributes = L"attributes";

constinit const NeverDestroyed<std::vector<std::wstring>> kNoTexts;

}  // namespace

DataResourceItem::DataResourceItem(const std::wstring& id, const std::wstring& type)
    : DataResourceItem(std::shared_ptr<DataObject>()) {
  if (!id.empty()) {
    root_->SetValue(kId, id);
  }
  if (!type.empty()) {
    root_->SetValue(kType, type);
  }
}

DataResourceItem::DataResourceItem(const std::wstring& json) : DataResourceItem(Json::JsonReader::Decode(json, true)) {}

DataResourceItem::DataResourceItem(std::shared_ptr<DataObject> object) : root_(std::move(object)) {
  if (!root_) {
    root_ = std::make_shared<DataObject>();
  }
  InitAttributesPointer();
}

void DataResourceItem::InitAttributesPointer() {
  DataValue& value = root_->GetValue(kAttributes);
  attributes_ = value.GetObject();
  if (!attributes_) {
    attributes_ = std::make_shared<DataObject>();
    // A setter would keep the array flag of what stood there.
    value = DataValue();
    value.SetObject(attributes_);
  }
}

std::wstring DataResourceItem::GetId() {
  return root_->GetStringValue(kId, L"");
}

void DataResourceItem::SetId(const std::wstring& id) {
  root_->SetValue(kId, id);
}

std::wstring DataResourceItem::GetType() {
  return root_->GetStringValue(kType, L"");
}

void DataResourceItem::SetType(const std::wstring& type) {
  root_->SetValue(kType, type);
}

std::wstring DataResourceItem::GetStringValue(const std::wstring& key) {
  return attributes_->GetStringValue(key, L"");
}

void DataResourceItem::SetStringValue(const std::wstring& key, const std::wstring& value) {
  attributes_->SetValue(key, value);
}

int DataResourceItem::GetIntValue(const std::wstring& key) {
  return attributes_->GetIntValue(key, 0);
}

UtcTime DataResourceItem::GetDateValue(const std::wstring& key) {
  return UtcTime(GetStringValue(key), UtcTime::StringValue::ISO8601, false);
}

void DataResourceItem::SetIntValue(const std::wstring& key, int value) {
  attributes_->SetIntValue(key, value);
}

std::uint64_t DataResourceItem::GetUint64Value(const std::wstring& key) {
  return attributes_->GetUint64Value(key, 0);
}

void DataResourceItem::SetUint64Value(const std::wstring& key, std::uint64_t value) {
  attributes_->SetUint64Value(key, value);
}

void DataResourceItem::SetDateValue(const std::wstring& key, UtcTime value) {
  attributes_->SetValue(key, value.ToString(UtcTime::StringValue::ISO8601, false));
}

bool DataResourceItem::GetBoolValue(const std::wstring& key) {
  return attributes_->GetBooleanValue(key, false);
}

void DataResourceItem::SetBoolValue(const std::wstring& key, bool value) {
  attributes_->SetBooleanValue(key, value);
}

std::shared_ptr<DataObject> DataResourceItem::AsDataObject() {
  return root_;
}

void DataResourceItem::SetStringArrayValue(const std::wstring& key, std::vector<std::wstring> values) {
  if (!attributes_->Contains(key)) {
    attributes_->SetEmptyStringArrayValue(key);
  }
  if (values.empty()) {
    return;
  }
  // The key may be one of the texts that change: it is looked up once.
  DataValue& array = attributes_->GetValue(key);
  for (std::wstring& value : values) {
    array.AddStringValue(std::move(value));
  }
}

const std::vector<std::wstring>& DataResourceItem::GetStringArrayValue(const std::wstring& key) {
  return attributes_->Contains(key) ? attributes_->GetValue(key).GetStringArray() : kNoTexts.value;
}

void DataResourceItem::SetObjectArrayValue(const std::wstring& key, std::vector<std::shared_ptr<DataObject>> objects) {
  attributes_->SetObjectArray(key, std::move(objects));
}

const std::vector<std::shared_ptr<DataObject>>& DataResourceItem::GetObjectArrayValue(const std::wstring& key) {
  return attributes_->GetObjectArray(key);
}

void DataResourceItem::SetObjectValue(const std::wstring& key, std::shared_ptr<DataObject> object) {
  attributes_->SetObject(key, std::move(object));
}

std::shared_ptr<const DataObject> DataResourceItem::GetObjectValue(const std::wstring& key) {
  return attributes_->GetDataObject(key);
}

}  // namespace Zelto::Utilities
