/// @file
/// How an object holds its properties. Not installed.
#pragma once

#include "zelto/json/compact_text.h"
#include "zelto/json/data_object.h"
#include "zelto/json/data_value.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string_view>

namespace Zelto::Json {

/// One property. Its key stands in the same piece of memory, behind it.
struct PropertyNode {
  std::u16string_view Key() const noexcept {
    return {reinterpret_cast<const char16_t*>(reinterpret_cast<const char*>(this) + key_offset), key_length};
  }

  std::uint32_t key_offset = 0;  // in bytes, from the node's own address
  std::uint32_t key_length = 0;
  DataValue value;
};

/// The properties of one object. A document that is read or copied is one piece of memory per object: this header, the
/// nodes in the order of their keys, the text of keys and values. A property that is added later is a node of its own,
/// and a tree of all nodes then tells the order. Nodes never move.
class ObjectStorage {
 public:
  using Deleter = void (*)(ObjectStorage*);

  /// Storage with `count` nodes of empty keys and null values, which the caller fills in the order of their keys, and
  /// room for `units` of text.
  ///
  /// @throws std::length_error  "JSON text too long"
  static ObjectStorage* Allocate(std::size_t count, std::size_t units);

  /// A copy, all in one piece. @param storage  may be null
  static ObjectStorage* Copy(const ObjectStorage* storage);

  /// Destroys the storage and all nested objects that nobody else holds, without recursion. @param storage  may be null
  static void Destroy(ObjectStorage* storage) noexcept;

  static void Attach(DataObject& object, ObjectStorage* storage) noexcept { object.storage_ = storage; }
  static const ObjectStorage* Of(const DataObject& object) noexcept { return object.storage_; }

  PropertyNode* Nodes() noexcept { return reinterpret_cast<PropertyNode*>(this + 1); }
  const PropertyNode* Nodes() const noexcept { return reinterpret_cast<const PropertyNode*>(this + 1); }
  char16_t* Text() noexcept { return reinterpret_cast<char16_t*>(Nodes() + count_); }

  std::size_t Size() const noexcept { return index_ == nullptr ? count_ : index_->size(); }

  /// The node of a key, or null.
  const PropertyNode* Find(std::wstring_view key) const;

  /// The node of a key, made when there is none.
  PropertyNode& FindOrInsert(std::wstring_view key);

  /// The first node, and the one behind `node`; null at the end.
  const PropertyNode* First() const noexcept;
  const PropertyNode* Next(const PropertyNode& node) const;

  /// Says that somebody may have given a value something that it must release.
  void SetOwning() noexcept {
    const std::uint32_t state = state_.load(std::memory_order_relaxed);
    if ((state & kOwning) == 0) {
      state_.store(state | kOwning, std::memory_order_relaxed);
    }
  }
  bool IsOwning() const noexcept { return (state_.load(std::memory_order_relaxed) & kOwning) != 0; }

  /// About how many characters the JSON text of the object as it was made has, nested objects included; 0 when it is
  /// not known. Later changes do not count.
  std::size_t LengthHint() const noexcept { return length_hint_; }
  void SetLengthHint(std::size_t length) noexcept { length_hint_ = length; }
  /// What the object itself, without nested objects, adds to such a hint.
  std::size_t OwnLength() const noexcept {
    constexpr std::size_t kAroundObject = 3;    // braces and a comma
    constexpr std::size_t kAroundProperty = 6;  // the quotes of a key and a text, a colon and a comma
    return kAroundObject + kAroundProperty * Size() + TextSize();
  }

  /// The units behind the nodes.
  std::size_t TextSize() const noexcept { return state_.load(std::memory_order_relaxed) & ~kOwning; }

  class Cursor;

 private:
  struct Before {
    using is_transparent = void;
    bool operator()(const PropertyNode* left, const PropertyNode* right) const noexcept {
      return left->Key() < right->Key();
    }
    bool operator()(const PropertyNode* left, std::wstring_view right) const noexcept {
      return CompareUnits(right, left->Key()) > 0;
    }
    bool operator()(std::wstring_view left, const PropertyNode* right) const noexcept {
      return CompareUnits(left, right->Key()) < 0;
    }
  };
  using Index = std::set<PropertyNode*, Before>;

  static constexpr std::uint32_t kOwning = 0x80000000U;

  ObjectStorage(std::uint32_t count, std::uint32_t units) noexcept : count_(count), state_(units) {}

  bool IsOwnNode(const PropertyNode* node) const noexcept { return node >= Nodes() && node < Nodes() + count_; }
  const PropertyNode* FindUnits(std::wstring_view key) const noexcept;
  void MakeIndex();
  static void DestroyOne(ObjectStorage* storage) noexcept;

  Index* index_ = nullptr;  // of all nodes, once one has been added
  union {
    std::size_t length_hint_ = 0;
    ObjectStorage* next_doomed_;  // while a document is destroyed
  };
  const std::uint32_t count_;         // of the nodes behind this header
  std::atomic<std::uint32_t> state_;  // the text's size, and whether something must be released
};

/// Goes through the nodes in the order of their keys.
class ObjectStorage::Cursor {
 public:
  /// @param storage  may be null; must not change while the cursor is used
  explicit Cursor(const ObjectStorage* storage) noexcept {
    if (storage == nullptr) {
      return;
    }
    if (storage->index_ == nullptr) {
      node_ = storage->Nodes();
      end_ = node_ + storage->count_;
    } else {
      indexed_ = storage->index_;
      position_ = indexed_->begin();
    }
  }

  /// The next node, or null at the end.
  const PropertyNode* Next() noexcept {
    if (indexed_ != nullptr) {
      return position_ == indexed_->end() ? nullptr : *position_++;
    }
    return node_ == end_ ? nullptr : node_++;
  }

  /// What `Next` will give.
  const PropertyNode* Peek() const noexcept {
    if (indexed_ != nullptr) {
      return position_ == indexed_->end() ? nullptr : *position_;
    }
    return node_ == end_ ? nullptr : node_;
  }

 private:
  const PropertyNode* node_ = nullptr;
  const PropertyNode* end_ = nullptr;
  const Index* indexed_ = nullptr;
  Index::const_iterator position_;
};

}  // namespace Zelto::Json
