/// @file
/// The room's own view of how a value is held. Not installed.
#pragma once

#include "zelto/json/compact_text.h"
#include "zelto/json/data_value.h"
#include "zelto/text/never_destroyed.h"

#include <memory>
#include <vector>

namespace Zelto::Json {

/// A value's texts and objects as lists.
struct DataValue::Parts {
  std::vector<std::wstring> strings;
  std::vector<std::shared_ptr<DataObject>> objects;
};

/// What stands for the objects of a value that is no array, or is not there.
inline constinit const Utilities::NeverDestroyed<std::vector<std::shared_ptr<DataObject>>> kNoObjects;

class ValueAccess {
 public:
  /// Makes a new value one text, or (`list`) several, of somebody else's units, which outlive the value.
  static void Borrow(DataValue& value, std::u16string_view units, DataValue::EType kind, bool list) noexcept {
    value.PlaceText(units, kind, false);
    if (list) {
      value.form_ = DataValue::Form::kTextList;
      value.is_array_ = true;
    }
  }

  /// Ends a borrowing; does nothing to a value that does not borrow.
  static void Own(DataValue& value) {
    if (HasUnits(value) && !value.owns_text_) {
      value.ToParts();
    }
  }

  /// Moves what another value owns into a new one.
  static void Take(DataValue& value, DataValue& other) noexcept { value.TakeFrom(other); }

  /// Makes a new value one object.
  static void PlaceObject(DataValue& value, std::shared_ptr<DataObject> object) noexcept {
    value.SetObject(std::move(object));
  }

  /// The units that a copy of the value needs besides the value itself.
  static std::u16string_view UnitsOf(const DataValue& value) noexcept {
    return HasUnits(value) ? std::u16string_view(value.units_.text, value.length_) : std::u16string_view();
  }

  /// Makes a new value a copy of another whose units have been copied to `text`.
  static void CopyTo(DataValue& value, const DataValue& other, const char16_t* text) {
    if (HasUnits(other)) {
      value.PlaceText({text, other.length_}, other.GetType(), false);
      value.form_ = other.form_;
      value.is_array_ = other.is_array_;
    } else {
      value = other;
    }
  }

  static void ShrinkToFit(DataValue& value) {
    if (value.form_ == DataValue::Form::kParts) {
      DataValue::Parts& parts = *value.units_.parts.load(std::memory_order_relaxed);
      parts.strings.shrink_to_fit();
      parts.objects.shrink_to_fit();
    }
  }

  /// Whether the value is a string, an integer or a boolean that is held as units, as most are.
  static bool IsCompactScalar(const DataValue& value) noexcept {
    return value.form_ == DataValue::Form::kText && !value.is_array_ && value.kind_ <= DataValue::Integer;
  }

  /// Calls `use` with the first text, as a view of 16-bit units or of wide characters; false when there is none.
  template <typename Use>
  static bool WithFirstText(const DataValue& value, const Use& use) {
    switch (value.form_) {
      case DataValue::Form::kText:
        use(std::u16string_view(value.units_.text, value.length_));
        return true;
      case DataValue::Form::kTextList: {
        std::u16string_view text;
        TextList({value.units_.text, value.length_}).Next(text);
        use(text);
        return true;
      }
      case DataValue::Form::kParts: {
        const DataValue::Parts& parts = *value.units_.parts.load(std::memory_order_relaxed);
        if (parts.strings.empty()) {
          return false;
        }
        use(std::wstring_view(parts.strings.front()));
        return true;
      }
      default:
        return false;
    }
  }

  /// Calls `use` with each text.
  template <typename Use>
  static void ForEachText(const DataValue& value, const Use& use) {
    if (value.form_ == DataValue::Form::kTextList) {
      TextList list({value.units_.text, value.length_});
      std::u16string_view text;
      while (list.Next(text)) {
        use(text);
      }
    } else if (value.form_ == DataValue::Form::kParts) {
      for (const std::wstring& text : value.units_.parts.load(std::memory_order_relaxed)->strings) {
        use(std::wstring_view(text));
      }
    } else {
      WithFirstText(value, use);
    }
  }

  /// Calls `use` with each object that the value holds, be it written or not.
  template <typename Use>
  static void ForEachObject(const DataValue& value, const Use& use) {
    if (value.form_ == DataValue::Form::kObject) {
      use(*value.object_);
    } else if (value.form_ == DataValue::Form::kParts) {
      for (const auto& object : value.units_.parts.load(std::memory_order_relaxed)->objects) {
        if (object != nullptr) {
          use(*object);
        }
      }
    }
  }

  /// What `GetObject` gives, without a share in it.
  static const DataObject* FirstObject(const DataValue& value) noexcept {
    if (value.form_ == DataValue::Form::kObject) {
      return value.kind_ == DataValue::Object ? value.object_.get() : nullptr;
    }
    if (value.form_ != DataValue::Form::kParts || value.kind_ != DataValue::Object) {
      return nullptr;
    }
    const DataValue::Parts& parts = *value.units_.parts.load(std::memory_order_relaxed);
    return parts.objects.empty() ? nullptr : parts.objects.front().get();
  }

 private:
  static bool HasUnits(const DataValue& value) noexcept {
    return value.form_ == DataValue::Form::kText || value.form_ == DataValue::Form::kTextList;
  }
};

}  // namespace Zelto::Json
