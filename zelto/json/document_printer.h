/// @file
/// Prints documents as compact JSON. Not installed.
#pragma once

#include "zelto/json/object_storage.h"
#include "zelto/json/text_output.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Zelto::Json {

/// About how many characters the object's text will have: enough for most documents. Looks at a limited number of
/// objects.
std::size_t EstimateLength(const DataObject& object);

/// Prints objects and values, nested ones without recursion.
class DocumentPrinter {
 public:
  DocumentPrinter(TextOutput& output, bool skip_null_or_empty)
      : output_(output), skip_null_or_empty_(skip_null_or_empty) {
    levels_.reserve(8);
  }

  /// @throws std::runtime_error  "Cyclic JSON object" when an object is nested in itself
  void PrintObject(const DataObject& object);
  /// A value, arrays with their brackets. @throws as `PrintObject`
  void PrintValue(const DataValue& value);
  /// An array's objects without the brackets. @throws as `PrintObject`
  void PrintObjects(const DataValue& value);
  /// An array's texts without the brackets.
  void PrintTexts(const DataValue& value);

 private:
  using Objects = std::vector<std::shared_ptr<DataObject>>;

  // An object or an array of objects that has been begun.
  struct Level {
    const DataObject* object;  // null for an array
    ObjectStorage::Cursor members;
    const Objects* items;
    std::size_t next_item;
    bool needs_separator;
    bool closes;  // a bracket follows the array
  };

  void Begin(const DataObject& object);
  void Begin(const Objects& items, bool closes);
  void Begin(const DataValue& value);
  void PrintAll();
  bool PrintMembers();
  bool PrintItems();

  TextOutput& output_;
  const bool skip_null_or_empty_;
  std::vector<Level> levels_;
  // An object that was begun some levels ago: it can only be met again when it is nested in itself.
  std::size_t watched_ = 0;
};

}  // namespace Zelto::Json
