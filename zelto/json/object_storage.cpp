#include "zelto/json/object_storage.h"

#include "zelto/json/value_access.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

namespace Zelto::Json {
namespace {

// Up to so many nodes a key is looked for one by one.
constexpr std::size_t kLinearSearchLimit = 8;

// What remains to be destroyed on this thread while a document is destroyed: the destructors of nested objects add to
// it instead of recursing.
struct Doomed {
  bool running;
  ObjectStorage* first;
};
thread_local constinit Doomed doomed{false, nullptr};

}  // namespace

static_assert(sizeof(ObjectStorage) % alignof(PropertyNode) == 0);

ObjectStorage* ObjectStorage::Allocate(std::size_t count, std::size_t units) {
  constexpr std::size_t kMaximumBytes = std::numeric_limits<std::int32_t>::max();
  if (count > kMaximumBytes / sizeof(PropertyNode) || units > kMaximumBytes / sizeof(char16_t) ||
      count * sizeof(PropertyNode) + units * sizeof(char16_t) > kMaximumBytes) {
    throw std::length_error("JSON text too long");
  }
  void* memory = ::operator new(sizeof(ObjectStorage) + count * sizeof(PropertyNode) + units * sizeof(char16_t));
  auto* storage = new (memory) ObjectStorage(static_cast<std::uint32_t>(count), static_cast<std::uint32_t>(units));
  std::uninitialized_value_construct_n(storage->Nodes(), count);
  return storage;
}

ObjectStorage* ObjectStorage::Copy(const ObjectStorage* storage) {
  if (storage == nullptr) {
    return nullptr;
  }
  std::size_t units = 0;
  Cursor sizes(storage);
  while (const PropertyNode* node = sizes.Next()) {
    units += node->key_length + ValueAccess::UnitsOf(node->value).size();
  }
  std::unique_ptr<ObjectStorage, Deleter> copy(Allocate(storage->Size(), units), &Destroy);
  copy->SetOwning();
  copy->SetLengthHint(storage->LengthHint());
  PropertyNode* target = copy->Nodes();
  char16_t* text = copy->Text();
  Cursor nodes(storage);
  while (const PropertyNode* node = nodes.Next()) {
    const std::u16string_view key = node->Key();
    target->key_offset = static_cast<std::uint32_t>(reinterpret_cast<char*>(text) - reinterpret_cast<char*>(target));
    target->key_length = node->key_length;
    text = std::copy(key.begin(), key.end(), text);
    const std::u16string_view value = ValueAccess::UnitsOf(node->value);
    const char16_t* value_text = text;
    text = std::copy(value.begin(), value.end(), text);
    ValueAccess::CopyTo(target->value, node->value, value_text);
    ++target;
  }
  return copy.release();
}

void ObjectStorage::Destroy(ObjectStorage* storage) noexcept {
  if (storage == nullptr) {
    return;
  }
  if (storage->index_ == nullptr && !storage->IsOwning()) {
    ::operator delete(storage);
    return;
  }
  Doomed& list = doomed;
  storage->next_doomed_ = list.first;
  list.first = storage;
  if (list.running) {
    return;
  }
  list.running = true;
  while (list.first != nullptr) {
    ObjectStorage* next = list.first;
    list.first = next->next_doomed_;
    DestroyOne(next);
  }
  list.running = false;
}

void ObjectStorage::DestroyOne(ObjectStorage* storage) noexcept {
  if (storage->index_ != nullptr) {
    for (PropertyNode* node : *storage->index_) {
      if (!storage->IsOwnNode(node)) {
        node->~PropertyNode();
        ::operator delete(node);
      }
    }
    delete storage->index_;
  }
  std::destroy_n(storage->Nodes(), storage->count_);
  ::operator delete(storage);
}

const PropertyNode* ObjectStorage::Find(std::wstring_view key) const {
  if (!HasWideCharacters(key)) {
    return FindUnits(key);
  }
  return IsText(key) ? FindUnits(WithSurrogatePairs(std::wstring(key))) : nullptr;
}

const PropertyNode* ObjectStorage::FindUnits(std::wstring_view key) const noexcept {
  if (index_ != nullptr) {
    const auto found = index_->find(key);
    return found == index_->end() ? nullptr : *found;
  }
  const PropertyNode* node = Nodes();
  const PropertyNode* const end = node + count_;
  if (count_ <= kLinearSearchLimit) {
    node = std::find_if(node, end, [key](const PropertyNode& candidate) {
      return candidate.key_length == key.size() && CompareUnits(key, candidate.Key()) == 0;
    });
  } else {
    node = std::lower_bound(node, end, key, [](const PropertyNode& candidate, std::wstring_view wanted) {
      return CompareUnits(wanted, candidate.Key()) > 0;
    });
    if (node != end && CompareUnits(key, node->Key()) != 0) {
      node = end;
    }
  }
  return node == end ? nullptr : node;
}

void ObjectStorage::MakeIndex() {
  auto index = std::make_unique<Index>();
  for (std::size_t i = 0; i < count_; ++i) {
    index->insert(index->end(), Nodes() + i);
  }
  index_ = index.release();
}

PropertyNode& ObjectStorage::FindOrInsert(std::wstring_view key) {
  if (HasWideCharacters(key)) {
    return FindOrInsert(WithSurrogatePairs(std::wstring(key)));
  }
  if (const PropertyNode* found = FindUnits(key)) {
    return const_cast<PropertyNode&>(*found);
  }
  if (index_ == nullptr) {
    MakeIndex();
  }
  const std::uint32_t length = CheckedLength(key.size());
  struct FreeNode {
    void operator()(PropertyNode* node) const noexcept {
      node->~PropertyNode();
      ::operator delete(node);
    }
  };
  void* memory = ::operator new(sizeof(PropertyNode) + length * sizeof(char16_t));
  std::unique_ptr<PropertyNode, FreeNode> node(new (memory) PropertyNode);
  node->key_offset = sizeof(PropertyNode);
  node->key_length = length;
  TryNarrow(key.data(), length, reinterpret_cast<char16_t*>(node.get() + 1));
  index_->insert(node.get());
  return *node.release();
}

const PropertyNode* ObjectStorage::First() const noexcept {
  if (index_ != nullptr) {
    return index_->empty() ? nullptr : *index_->begin();
  }
  return count_ == 0 ? nullptr : Nodes();
}

const PropertyNode* ObjectStorage::Next(const PropertyNode& node) const {
  if (index_ != nullptr) {
    const auto next = index_->upper_bound(const_cast<PropertyNode*>(&node));
    return next == index_->end() ? nullptr : *next;
  }
  const PropertyNode* next = &node + 1;
  return next == Nodes() + count_ ? nullptr : next;
}

}  // namespace Zelto::Json
