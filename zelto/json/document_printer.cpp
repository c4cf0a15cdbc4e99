#include "zelto/json/document_printer.h"

#include "zelto/json/prefetch.h"
#include "zelto/json/value_access.h"

#include <stdexcept>

namespace Zelto::Json {
namespace {

// The object in the next member's value, or null.
const DataObject* NextObject(const ObjectStorage::Cursor& members) noexcept {
  const PropertyNode* const member = members.Peek();
  return member == nullptr ? nullptr : ValueAccess::FirstObject(member->value);
}

}  // namespace

std::size_t EstimateLength(const DataObject& object) {
  constexpr std::size_t kMaximumObjects = 10000;
  // Objects that were changed since they were read may be far shorter than they say, and many may say so.
  constexpr std::size_t kEnough = std::size_t{1} << 20;
  constexpr std::size_t kLeast = 64;
  std::size_t length = kLeast;
  std::vector<const DataObject*> open;
  const DataObject* next = &object;
  for (std::size_t seen = 0; next != nullptr && seen < kMaximumObjects && length < kEnough; ++seen) {
    const ObjectStorage* storage = ObjectStorage::Of(*next);
    if (storage != nullptr && storage->LengthHint() != 0) {
      length += storage->LengthHint();
    } else if (storage != nullptr) {
      length += storage->OwnLength();
      ObjectStorage::Cursor members(storage);
      while (const PropertyNode* member = members.Next()) {
        ValueAccess::ForEachObject(member->value, [&open](const DataObject& nested) { open.push_back(&nested); });
      }
    }
    next = open.empty() ? nullptr : open.back();
    if (next != nullptr) {
      open.pop_back();
    }
  }
  return length + length / 16;
}

void DocumentPrinter::PrintObject(const DataObject& object) {
  Begin(object);
  PrintAll();
}

void DocumentPrinter::PrintValue(const DataValue& value) {
  Begin(value);
  PrintAll();
}

void DocumentPrinter::PrintObjects(const DataValue& value) {
  Begin(value.GetObjectArray(), false);
  PrintAll();
}

void DocumentPrinter::PrintTexts(const DataValue& value) {
  if (!value.IsArray()) {
    return;
  }
  bool first = true;
  ValueAccess::ForEachText(value, [&](auto text) {
    if (!first) {
      output_.Put(L',');
    }
    first = false;
    if (value.IsStringArray()) {
      output_.PutString(text);
    } else {
      output_.Put(text);
    }
  });
}

void DocumentPrinter::Begin(const DataObject& object) {
  // The watched level moves to the innermost one whenever the depth has doubled. In a document that is nested in itself
  // the levels repeat without end, so the watched object comes again; in any other no object is within itself.
  if (watched_ < levels_.size() && levels_[watched_].object == &object) {
    throw std::runtime_error("Cyclic JSON object");
  }
  if (levels_.size() >= 2 * watched_) {
    watched_ = levels_.size();
  }
  output_.Put(L'{');
  levels_.push_back({&object, ObjectStorage::Cursor(ObjectStorage::Of(object)), nullptr, 0, false, true});
}

void DocumentPrinter::Begin(const Objects& items, bool closes) {
  levels_.push_back({nullptr, ObjectStorage::Cursor(nullptr), &items, 0, false, closes});
}

// Prints a value, or its beginning when objects are nested in it.
void DocumentPrinter::Begin(const DataValue& value) {
  if (value.IsArray()) {
    output_.Put(L'[');
    if (value.IsObjectArray()) {
      Begin(value.GetObjectArray(), true);
    } else {
      PrintTexts(value);
      output_.Put(L']');
    }
    return;
  }
  switch (value.GetType()) {
    case DataValue::Null:
      if (!skip_null_or_empty_) {
        output_.Put(L"null");
      }
      break;
    case DataValue::String:
      if (!ValueAccess::WithFirstText(value, [this](auto text) { output_.PutString(text); })) {
        output_.Put(L"\"\"");
      }
      break;
    case DataValue::Object:
      if (const DataObject* object = ValueAccess::FirstObject(value)) {
        Begin(*object);
      } else if (!skip_null_or_empty_) {
        output_.Put(L"{}");
      }
      break;
    default:
      ValueAccess::WithFirstText(value, [this](auto text) { output_.Put(text); });
      break;
  }
}

void DocumentPrinter::PrintAll() {
  while (!levels_.empty()) {
    const bool done = levels_.back().object != nullptr ? PrintMembers() : PrintItems();
    if (done) {
      levels_.pop_back();
    }
  }
}

// Goes on with the innermost object; false when another level has been begun inside.
bool DocumentPrinter::PrintMembers() {
  const std::size_t depth = levels_.size();
  Level& level = levels_.back();
  while (const PropertyNode* member = level.members.Next()) {
    if (skip_null_or_empty_ && member->value.IsEmpty()) {
      continue;
    }
    output_.PutKey(level.needs_separator, member->Key());
    level.needs_separator = true;
    if (ValueAccess::IsCompactScalar(member->value)) {
      const std::u16string_view text = ValueAccess::UnitsOf(member->value);
      if (member->value.GetType() == DataValue::String) {
        output_.PutString(text);
      } else {
        output_.Put(text);
      }
      continue;
    }
    if (const DataObject* next = NextObject(level.members)) {
      Prefetch(*next);
    }
    Begin(member->value);
    if (levels_.size() != depth) {
      return false;
    }
  }
  output_.Put(L'}');
  return true;
}

// Goes on with the innermost array; false when another level has been begun inside.
bool DocumentPrinter::PrintItems() {
  Level& level = levels_.back();
  while (level.next_item < level.items->size()) {
    const DataObject* object = (*level.items)[level.next_item++].get();
    if (level.needs_separator) {
      output_.Put(L',');
    }
    level.needs_separator = true;
    if (object != nullptr) {
      Begin(*object);
      return false;
    }
    output_.Put(L"null");
  }
  if (level.closes) {
    output_.Put(L']');
  }
  return true;
}

}  // namespace Zelto::Json
