/// @file
/// Gathers the objects of a document while it is read. Not installed.
#pragma once

#include "zelto/json/compact_text.h"
#include "zelto/json/data_object.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Zelto::Json {

/// Keys, values and texts of the objects that are open stand on stacks; closing an object packs its share into the
/// object's own storage.
///
/// A repeated key, where it is an error, is an error at the moment when the key is read. It is found later, when the
/// object's keys are sorted: on closing it, which happens to every open object when a syntax error ends the reading,
/// and in `CheckOpenObjects` when an exception does.
class DocumentBuilder {
 public:
  explicit DocumentBuilder(bool allow_duplicates) : allow_duplicates_(allow_duplicates) {}

  /// How many objects are open.
  std::size_t Depth() const noexcept { return open_.size(); }

  void OpenObject();
  /// @throws std::runtime_error  "Duplicate attribute"
  std::shared_ptr<DataObject> CloseObject();
  /// @throws std::runtime_error  "Duplicate attribute"
  void CheckOpenObjects();

  /// Begins a property. It is part of the object only when one of the calls below gives it a value.
  void AddKey(std::wstring_view text, bool escaped) {
    Member member{};
    member.key = TextOffset();
    AppendText(text, escaped);
    member.key_length = CheckedLength(TextOffset() - member.key);
    member.prefix = PrefixOf({text_.Data() + text_.Size() - member.key_length, member.key_length});
    member.position = static_cast<std::uint32_t>(members_.size());
    members_.push_back(member);
  }

  void SetText(std::wstring_view text, bool escaped, DataValue::EType kind) {
    Member& member = members_.back();
    member.text = TextOffset();
    AppendText(text, escaped);
    member.text_length = CheckedLength(TextOffset() - member.text);
    member.kind = static_cast<std::uint8_t>(kind);
    member.content = Content::kText;
  }

  /// A null; leaves a property with an empty key without a value.
  void SetNull() { members_.back().content = members_.back().key_length == 0 ? Content::kNothing : Content::kNull; }

  void SetObject(std::shared_ptr<DataObject> object);

  /// Begins a list of items, at first of texts. `EndItems` without items makes the property a null.
  void BeginItems();
  void AddItem(std::wstring_view text, bool escaped, DataValue::EType kind);
  void EndItems();

  /// Makes the list a value of its own, to which objects can be added, too. It needs no `EndItems`.
  void BeginObjectItems();
  /// Whether the innermost property is such a list.
  bool InItems() const noexcept { return members_.back().content == Content::kValue; }
  void AddObjectItem(std::shared_ptr<DataObject> object);

  /// Adds a text by the rules of the model.
  static void AddItemTo(DataValue& value, std::wstring_view text, bool escaped, DataValue::EType kind);

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

  struct OpenShare {
    std::size_t members;
    std::size_t text;
    std::size_t objects;
    std::size_t values;
  };

  // Where the next text goes, within the object's share.
  std::uint32_t TextOffset() const { return CheckedLength(text_.Size() - open_.back().text); }

  void AppendText(std::wstring_view text, bool escaped) {
    if (escaped) {
      AppendEscaped(text);
    } else {
      text_.Append(text);
    }
  }

  static std::uint64_t PrefixOf(std::u16string_view key) noexcept {
    std::uint64_t prefix = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      prefix = prefix << 16 | (i < key.size() ? key[i] : 0U);
    }
    return prefix;
  }

  void AppendEscaped(std::wstring_view text);
  void SortMembers(std::size_t first);
  bool Precedes(const Member& left, const Member& right) const;
  int CompareKeys(const Member& left, const Member& right) const;
  void DropRepeatedKeys(std::size_t first);

  bool allow_duplicates_;
  std::vector<OpenShare> open_;
  std::vector<Member> members_;
  UnitStack text_;
  std::vector<std::shared_ptr<DataObject>> objects_;
  std::vector<DataValue> values_;
};

}  // namespace Zelto::Json
