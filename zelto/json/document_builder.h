/// @file
/// Gathers the objects of a document while it is read. Not installed.
#pragma once

#include "zelto/json/data_object.h"
#include "zelto/json/unit_stack.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace Zelto::Json {

class ObjectStorage;
struct PropertyNode;

/// Keys, values and texts of the objects that are open stand on stacks; closing an object packs its share into the
/// object's own storage.
///
/// A repeated key, where it is an error, is an error at the moment when the key is read. It is found later, when the
/// object's keys are sorted: on closing it, which happens to every open object when a syntax error ends the reading,
/// and in `CheckOpenObjects` when an exception does.
class DocumentBuilder {
 public:
  explicit DocumentBuilder(bool allow_duplicates);

  /// How many objects are open.
  std::size_t Depth() const noexcept { return open_.size(); }

  void OpenObject();
  /// @throws std::runtime_error  "Duplicate attribute"
  std::shared_ptr<DataObject> CloseObject();
  /// @throws std::runtime_error  "Duplicate attribute"
  void CheckOpenObjects();

  /// Where the reader puts the text of a key or a value before it says what that is.
  UnitStack& Text() noexcept { return text_; }

  /// Begins a property, whose key is the text from `first` on. It is part of the object only when one of the calls
  /// below gives it a value.
  void AddKey(std::size_t first) {
    members_.push_back({PrefixOf(text_.Data() + first, text_.Size() - first), OffsetOf(first), LengthFrom(first), 0, 0,
                        static_cast<std::uint32_t>(members_.size()), Content::kNothing, DataValue::Null});
  }

  /// The property's value is the text from `first` on.
  void SetText(std::size_t first, DataValue::EType kind) {
    Member& member = members_.back();
    member.text = OffsetOf(first);
    member.text_length = LengthFrom(first);
    member.kind = static_cast<std::uint8_t>(kind);
    member.content = Content::kText;
  }

  /// A null; leaves a property with an empty key without a value.
  void SetNull() { members_.back().content = members_.back().key_length == 0 ? Content::kNothing : Content::kNull; }

  void SetObject(std::shared_ptr<DataObject> object);

  /// Begins a list of items, at first of texts. `EndItems` without items makes the property a null.
  void BeginItems();
  /// Before the text of an item is put; returns the place for `AddItem` or `DropItem`.
  std::size_t BeginItem();
  void AddItem(std::size_t item, DataValue::EType kind);
  void DropItem(std::size_t item) noexcept { text_.CutTo(item); }
  void EndItems();

  /// Makes the list a value of its own, to which objects can be added, too. `EndItems` then does nothing.
  ///
  /// @throws std::length_error  "JSON text too long"
  void BeginObjectItems();
  /// Whether the innermost property is such a list.
  bool InItems() const noexcept { return members_.back().content == Content::kValue; }
  void AddObjectItem(std::shared_ptr<DataObject> object);

  /// Adds a text by the rules of the model.
  static void AddItemTo(DataValue& value, std::u16string_view text, DataValue::EType kind);

 private:
  enum class Content : std::uint8_t {
    kNothing,
    kNull,
    kText,
    kItems,
    kObject,
    kValue
  };

  struct Member {
    std::uint64_t prefix;  // the first four units of the key, so that most keys compare as numbers
    std::uint32_t key;     // offsets into the object's share of the text
    std::uint32_t key_length;
    std::uint32_t text;  // of an object or a value: the place on its stack, within the object's share
    std::uint32_t text_length;
    std::uint32_t position;  // in the input
    Content content;
    std::uint8_t kind;
  };

  // A list that owns what it holds, so that it moves without copying texts.
  struct ListValue {
    ListValue() = default;
    ListValue(ListValue&& other) noexcept;
    DataValue value;
  };

  struct OpenShare {
    std::size_t members;
    std::size_t text;
    std::size_t objects;
    std::size_t values;
    std::size_t length;  // of the text of what had been closed before
  };

  static constexpr std::size_t kPrefixUnits = 4;

  // A place in the text, within the object's share. Offsets and lengths are checked before a value is made of them.
  std::uint32_t OffsetOf(std::size_t place) const noexcept { return static_cast<std::uint32_t>(place - text_base_); }
  std::uint32_t LengthFrom(std::size_t first) const noexcept {
    return static_cast<std::uint32_t>(text_.Size() - first);
  }

  // The first units as one number, the first one on top and zeros for missing ones. Four units are read in any case.
  static std::uint64_t PrefixOf(const char16_t* key, std::size_t length) noexcept {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t units = 0;
    std::memcpy(&units, key, sizeof(units));
    units = units << 32 | units >> 32;
    units = (units & 0x0000FFFF0000FFFFU) << 16 | (units >> 16 & 0x0000FFFF0000FFFFU);
    return length >= kPrefixUnits ? units : units & ~(~std::uint64_t{0} >> 16 * length);
  }

  void SortMembers(std::size_t first);
  bool Precedes(const Member& left, const Member& right) const;
  int CompareKeys(const Member& left, const Member& right) const;
  void DropRepeatedKeys(std::size_t first);
  void PlaceProperty(const Member& member, const OpenShare& share, ObjectStorage& storage, PropertyNode& node);
  void CutToShare();

  bool allow_duplicates_;
  std::size_t text_base_ = 0;      // where the innermost object's share begins
  std::size_t closed_length_ = 0;  // of the text of all closed objects, about
  std::vector<OpenShare> open_;
  std::vector<Member> members_;
  UnitStack text_;
  std::vector<std::shared_ptr<DataObject>> objects_;
  std::vector<ListValue> values_;
};

}  // namespace Zelto::Json
