#include "zelto/json/document_builder.h"

#include "zelto/json/compact_text.h"
#include "zelto/json/object_storage.h"
#include "zelto/json/value_access.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace Zelto::Json {
namespace {

// Up to so many keys are sorted by insertion.
constexpr std::size_t kInsertionSortLimit = 32;

}  // namespace

// What a message of usual size needs is allocated once.
DocumentBuilder::DocumentBuilder(bool allow_duplicates) : allow_duplicates_(allow_duplicates) {
  open_.reserve(8);
  members_.reserve(32);
  objects_.reserve(8);
}

DocumentBuilder::ListValue::ListValue(ListValue&& other) noexcept {
  ValueAccess::Take(value, other.value);
}

void DocumentBuilder::OpenObject() {
  text_base_ = text_.Size();
  open_.push_back({members_.size(), text_base_, objects_.size(), values_.size(), closed_length_});
}

void DocumentBuilder::SetObject(std::shared_ptr<DataObject> object) {
  Member& member = members_.back();
  member.text = static_cast<std::uint32_t>(objects_.size() - open_.back().objects);
  member.content = Content::kObject;
  objects_.push_back(std::move(object));
}

void DocumentBuilder::BeginItems() {
  Member& member = members_.back();
  member.text = OffsetOf(text_.Size());
  member.kind = DataValue::Null;
}

std::size_t DocumentBuilder::BeginItem() {
  const std::size_t item = text_.Size();
  text_.Push(0);  // the length
  return item;
}

void DocumentBuilder::AddItem(std::size_t item, DataValue::EType kind) {
  const std::size_t length = CheckedLength(text_.Size() - item - 1);
  if (InItems()) {
    AddItemTo(values_.back().value, {text_.Data() + item + 1, length}, kind);
    text_.CutTo(item);
    return;
  }
  if (members_.back().kind == DataValue::Null) {
    members_.back().kind = static_cast<std::uint8_t>(kind);
  }
  if (TextList::HeaderSize(length) > 1) {
    text_.Push(0);
    char16_t* const text = text_.Data() + item + 1;
    std::memmove(text + 1, text, length * sizeof(char16_t));
  }
  TextList::WriteHeader(text_.Data() + item, length);
}

void DocumentBuilder::EndItems() {
  if (InItems()) {
    return;
  }
  Member& member = members_.back();
  member.text_length = LengthFrom(text_base_ + member.text);
  member.content = member.text_length == 0 ? Content::kNull : Content::kItems;
}

void DocumentBuilder::BeginObjectItems() {
  if (InItems()) {
    return;
  }
  CheckedLength(text_.Size() - text_base_);
  Member& member = members_.back();
  DataValue& value = values_.emplace_back().value;
  const std::size_t first = text_base_ + member.text;
  if (text_.Size() != first) {
    ValueAccess::Borrow(value, {text_.Data() + first, text_.Size() - first}, static_cast<DataValue::EType>(member.kind),
                        true);
    ValueAccess::Own(value);
    text_.CutTo(first);
  }
  member.text = static_cast<std::uint32_t>(values_.size() - 1 - open_.back().values);
  member.content = Content::kValue;
}

void DocumentBuilder::AddObjectItem(std::shared_ptr<DataObject> object) {
  values_.back().value.AddObject(std::move(object));
}

void DocumentBuilder::AddItemTo(DataValue& value, std::u16string_view text, DataValue::EType kind) {
  std::wstring item = ToWide(text);
  switch (kind) {
    case DataValue::Integer:
      value.AddIntValue(std::move(item));
      break;
    case DataValue::Boolean:
      value.AddBooleanValue(std::move(item));
      break;
    default:
      value.AddStringValue(std::move(item));
      break;
  }
}

int DocumentBuilder::CompareKeys(const Member& left, const Member& right) const {
  const char16_t* text = text_.Data() + text_base_;
  return std::u16string_view(text + left.key, left.key_length).compare({text + right.key, right.key_length});
}

// The order of the keys; equal ones in the order of the input.
bool DocumentBuilder::Precedes(const Member& left, const Member& right) const {
  if (left.prefix != right.prefix) {
    return left.prefix < right.prefix;
  }
  const int order = CompareKeys(left, right);
  return order != 0 ? order < 0 : left.position < right.position;
}

void DocumentBuilder::SortMembers(std::size_t first) {
  Member* const begin = members_.data() + first;
  Member* const end = members_.data() + members_.size();
  const auto precedes = [this](const Member& left, const Member& right) { return Precedes(left, right); };
  if (static_cast<std::size_t>(end - begin) > kInsertionSortLimit) {
    if (!std::is_sorted(begin, end, precedes)) {
      std::sort(begin, end, precedes);
    }
    return;
  }
  for (Member* next = begin + 1; next < end; ++next) {
    if (!Precedes(*next, next[-1])) {
      continue;
    }
    const Member member = *next;
    Member* hole = next;
    do {
      *hole = hole[-1];
      --hole;
    } while (hole != begin && Precedes(member, hole[-1]));
    *hole = member;
  }
}

// Of the members from `first` on, which are sorted, keeps the last one of each key that has a value, or throws.
void DocumentBuilder::DropRepeatedKeys(std::size_t first) {
  std::size_t kept = first;
  for (std::size_t i = first; i < members_.size(); ++i) {
    const Member& member = members_[i];
    const bool repeated =
        kept != first && members_[kept - 1].prefix == member.prefix && CompareKeys(members_[kept - 1], member) == 0;
    if (repeated && !allow_duplicates_) {
      throw std::runtime_error("Duplicate attribute");
    }
    if (member.content != Content::kNothing) {
      const std::size_t place = repeated ? kept - 1 : kept++;
      if (place != i) {
        members_[place] = member;
      }
    }
  }
  members_.resize(kept);
}

void DocumentBuilder::CheckOpenObjects() {
  while (!open_.empty()) {
    const std::size_t first = open_.back().members;
    SortMembers(first);
    DropRepeatedKeys(first);
    CutToShare();
  }
}

// Forgets what the innermost object has gathered.
void DocumentBuilder::CutToShare() {
  const OpenShare share = open_.back();
  open_.pop_back();
  members_.resize(share.members);
  text_.CutTo(share.text);
  objects_.resize(share.objects);
  values_.resize(share.values);
  text_base_ = open_.empty() ? 0 : open_.back().text;
}

// Fills in one property of an object that is being closed, whose text stands in its storage already.
inline void DocumentBuilder::PlaceProperty(const Member& member, const OpenShare& share, ObjectStorage& storage,
                                           PropertyNode& node) {
  char16_t* const text = storage.Text();
  node.key_offset =
      static_cast<std::uint32_t>(reinterpret_cast<const char*>(text + member.key) - reinterpret_cast<char*>(&node));
  node.key_length = member.key_length;
  const auto kind = static_cast<DataValue::EType>(member.kind);
  switch (member.content) {
    case Content::kText:
      ValueAccess::Borrow(node.value, {text + member.text, member.text_length}, kind, false);
      break;
    case Content::kItems:
      ValueAccess::Borrow(node.value, {text + member.text, member.text_length}, kind, true);
      break;
    case Content::kObject:
      storage.SetOwning();
      ValueAccess::PlaceObject(node.value, std::move(objects_[share.objects + member.text]));
      break;
    case Content::kValue:
      storage.SetOwning();
      node.value = std::move(values_[share.values + member.text].value);
      ValueAccess::ShrinkToFit(node.value);
      break;
    case Content::kNothing:
    case Content::kNull:
      break;
  }
}

std::shared_ptr<DataObject> DocumentBuilder::CloseObject() {
  const OpenShare share = open_.back();
  const std::size_t units = text_.Size() - share.text;
  CheckedLength(units);
  SortMembers(share.members);
  DropRepeatedKeys(share.members);
  auto object = std::make_shared<DataObject>();
  const std::size_t count = members_.size() - share.members;
  if (count != 0) {
    ObjectStorage* const storage = ObjectStorage::Allocate(count, units);
    ObjectStorage::Attach(*object, storage);
    closed_length_ += storage->OwnLength();
    storage->SetLengthHint(closed_length_ - share.length);
    std::copy_n(text_.Data() + share.text, units, storage->Text());
    PropertyNode* const nodes = storage->Nodes();
    for (std::size_t i = 0; i < count; ++i) {
      PlaceProperty(members_[share.members + i], share, *storage, nodes[i]);
    }
  }
  CutToShare();
  return object;
}

}  // namespace Zelto::Json
