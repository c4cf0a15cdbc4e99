#include "zelto/json/data_value.h"

#include "zelto/json/compact_text.h"
#include "zelto/json/data_object.h"
#include "zelto/json/number_text.h"
#include "zelto/json/value_access.h"
#include "zelto/text/ascii.h"

#include <algorithm>
#include <new>

namespace Zelto::Json {
namespace {

const std::wstring& NoText() {
  static const Utilities::NeverDestroyed<std::wstring> text;
  return text.value;
}

constinit const Utilities::NeverDestroyed<std::vector<std::wstring>> kNoTexts;

template <typename Unit>
bool Equals(std::basic_string_view<Unit> text, std::string_view ascii) {
  return std::equal(text.begin(), text.end(), ascii.begin(), ascii.end(),
                    [](Unit unit, char character) { return unit == static_cast<Unit>(character); });
}

template <typename Unit>
bool ConsistsOfDigits(std::basic_string_view<Unit> text) {
  return std::all_of(text.begin(), text.end(),
                     [](Unit unit) { return Utilities::Ascii::IsDigit(static_cast<wchar_t>(unit)); });
}

// The first text of a value as a number; empty when there is none or it may not be read as one.
std::optional<ScannedNumber> NumberOf(const DataValue& value) {
  std::optional<ScannedNumber> number;
  ValueAccess::WithFirstText(value, [&](auto text) {
    if (value.GetType() == DataValue::Integer || ConsistsOfDigits(text)) {
      number = ScanNumber(text);
    }
  });
  return number;
}

}  // namespace

DataValue::DataValue(const DataValue& other) : units_{} {
  is_array_ = other.is_array_;
  kind_ = other.kind_;
  switch (other.form_) {
    case Form::kEmpty:
      break;
    case Form::kText:
    case Form::kTextList: {
      auto* text = new char16_t[other.length_];
      std::copy_n(other.units_.text, other.length_, text);
      PlaceText({text, other.length_}, other.GetType(), true);
      break;
    }
    case Form::kObject:
      units_.~Units();
      new (&object_) std::shared_ptr<DataObject>(other.object_);
      break;
    case Form::kParts:
      units_.parts.store(new Parts(*other.units_.parts.load(std::memory_order_relaxed)), std::memory_order_relaxed);
      break;
  }
  form_ = other.form_;
}

DataValue::DataValue(DataValue&& other) noexcept(false) : units_{} {
  ValueAccess::Own(other);
  TakeFrom(other);
}

DataValue& DataValue::operator=(const DataValue& other) {
  if (this != &other) {
    DataValue copy(other);
    *this = std::move(copy);
  }
  return *this;
}

DataValue& DataValue::operator=(DataValue&& other) noexcept(false) {
  if (this != &other) {
    ValueAccess::Own(other);
    // The old contents go last: `other` may be part of a nested object that only they keep alive.
    DataValue old;
    old.TakeFrom(*this);
    TakeFrom(other);
  }
  return *this;
}

// For a value that is empty. Leaves the other a null.
void DataValue::TakeFrom(DataValue& other) noexcept {
  kind_ = other.kind_;
  is_array_ = other.is_array_;
  length_ = other.length_;
  owns_text_ = other.owns_text_;
  form_ = other.form_;
  if (form_ == Form::kObject) {
    units_.~Units();
    new (&object_) std::shared_ptr<DataObject>(std::move(other.object_));
    other.object_.~shared_ptr();
    new (&other.units_) Units{};
  } else {
    units_.text = std::exchange(other.units_.text, nullptr);
    units_.parts.store(other.units_.parts.exchange(nullptr, std::memory_order_relaxed), std::memory_order_relaxed);
  }
  other.form_ = Form::kEmpty;
  other.kind_ = Null;
  other.is_array_ = false;
  other.owns_text_ = false;
  other.length_ = 0;
}

// Gives up what the value holds and leaves it without texts and objects.
void DataValue::Release() noexcept {
  if (form_ == Form::kObject) {
    const std::shared_ptr<DataObject> object = std::move(object_);
    object_.~shared_ptr();
    new (&units_) Units{};
    form_ = Form::kEmpty;
    return;
  }
  const std::unique_ptr<Parts> parts(units_.parts.exchange(nullptr, std::memory_order_relaxed));
  if (owns_text_) {
    delete[] units_.text;
  }
  units_.text = nullptr;
  owns_text_ = false;
  length_ = 0;
  form_ = Form::kEmpty;
}

void DataValue::Clear() noexcept {
  if (form_ != Form::kEmpty) {
    Release();
  }
}

// Makes an empty value one text. Owned units come from new[].
void DataValue::PlaceText(std::u16string_view text, EType kind, bool owned) noexcept {
  units_.text = text.data();
  length_ = static_cast<std::uint32_t>(text.size());
  owns_text_ = owned;
  kind_ = static_cast<std::uint8_t>(kind);
  form_ = Form::kText;
}

bool DataValue::HasTexts() const noexcept {
  return form_ == Form::kText || form_ == Form::kTextList ||
         (form_ == Form::kParts && !units_.parts.load(std::memory_order_relaxed)->strings.empty());
}

bool DataValue::HasObjects() const noexcept {
  return form_ == Form::kObject ||
         (form_ == Form::kParts && !units_.parts.load(std::memory_order_relaxed)->objects.empty());
}

// The lists, made when they are not there yet. Of two threads that make them at once one is the first.
const DataValue::Parts& DataValue::Materialise() const {
  auto& published = const_cast<std::atomic<Parts*>&>(units_.parts);
  Parts* present = published.load(std::memory_order_acquire);
  if (present != nullptr) {
    return *present;
  }
  auto made = std::make_unique<Parts>();
  ValueAccess::ForEachText(*this, [&made](auto text) { made->strings.push_back(ToWide(text)); });
  if (published.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel, std::memory_order_acquire)) {
    return *made.release();
  }
  return *present;
}

// From now on the lists are the value.
DataValue::Parts& DataValue::ToParts() {
  if (form_ == Form::kObject) {
    auto parts = std::make_unique<Parts>();
    parts->objects.push_back(object_);
    object_.~shared_ptr();
    new (&units_) Units{};
    units_.parts.store(parts.release(), std::memory_order_relaxed);
  } else if (form_ != Form::kParts) {
    Materialise();
    if (owns_text_) {
      delete[] units_.text;
    }
    units_.text = nullptr;
    owns_text_ = false;
    length_ = 0;
  }
  form_ = Form::kParts;
  return *units_.parts.load(std::memory_order_relaxed);
}

bool DataValue::IsEmpty() const noexcept {
  switch (kind_) {
    case Null:
      return true;
    case Object:
      return !HasObjects();
    default:
      return !HasTexts();
  }
}

const std::wstring& DataValue::GetString() const {
  return is_array_ || !HasTexts() ? NoText() : Materialise().strings.front();
}

std::wstring DataValue::GetStringValue() const {
  std::wstring result;
  ValueAccess::WithFirstText(*this, [&result](auto text) { result = ToWide(text); });
  return result;
}

std::int32_t DataValue::GetIntValue(std::int32_t default_value) const {
  const std::optional<ScannedNumber> number = NumberOf(*this);
  return number ? ToInt32(*number).value_or(default_value) : default_value;
}

std::uint64_t DataValue::GetUint64Value(std::uint64_t default_value) const {
  const std::optional<ScannedNumber> number = NumberOf(*this);
  return number ? ToUint64(*number).value_or(default_value) : default_value;
}

bool DataValue::GetBooleanValue(bool default_value) const {
  bool result = default_value;
  if (kind_ == Boolean) {
    ValueAccess::WithFirstText(*this, [&result](auto text) {
      if (Equals(text, "true")) {
        result = true;
      } else if (Equals(text, "false")) {
        result = false;
      }
    });
  }
  return result;
}

std::shared_ptr<DataObject> DataValue::GetObject() const {
  if (kind_ != Object || !HasObjects()) {
    return nullptr;
  }
  return form_ == Form::kObject ? object_ : units_.parts.load(std::memory_order_relaxed)->objects.front();
}

const std::vector<std::shared_ptr<DataObject>>& DataValue::GetObjectArray() const {
  return is_array_ && form_ == Form::kParts ? units_.parts.load(std::memory_order_relaxed)->objects : kNoObjects.value;
}

const std::vector<std::wstring>& DataValue::GetStringArray() const {
  return is_array_ && HasTexts() ? Materialise().strings : kNoTexts.value;
}

void DataValue::SetValue(const std::wstring& value, EType kind) {
  if (HasObjects()) {
    std::wstring text = WithSurrogatePairs(value);
    Parts& parts = ToParts();
    parts.strings.clear();
    parts.strings.push_back(std::move(text));
    kind_ = static_cast<std::uint8_t>(kind);
    return;
  }
  if (HasWideCharacters(value)) {
    SetValue(WithSurrogatePairs(value), kind);
    return;
  }
  // A copy before anything is given up: `value` may be this value's own text.
  const std::size_t length = CheckedLength(value.size());
  auto text = std::make_unique_for_overwrite<char16_t[]>(length);
  TryNarrow(value.data(), length, text.get());
  Clear();
  PlaceText({text.release(), length}, kind, true);
}

void DataValue::SetValue(std::wstring&& value, EType kind) {
  SetValue(static_cast<const std::wstring&>(value), kind);
}

void DataValue::SetObject(std::shared_ptr<DataObject> object) {
  if (HasTexts() || is_array_) {
    Parts& parts = ToParts();
    std::vector<std::shared_ptr<DataObject>> objects;
    if (object != nullptr) {
      objects.push_back(std::move(object));
    }
    parts.objects.swap(objects);
  } else {
    DataValue old;
    old.TakeFrom(*this);
    if (object != nullptr) {
      units_.~Units();
      new (&object_) std::shared_ptr<DataObject>(std::move(object));
      form_ = Form::kObject;
    }
  }
  kind_ = Object;
}

void DataValue::SetNull() noexcept {
  kind_ = Null;
  Clear();
}

void DataValue::SetEmptyObjectArray() noexcept {
  is_array_ = true;
  kind_ = Object;
  Clear();
}

void DataValue::SetEmptyStringArray() noexcept {
  is_array_ = true;
  kind_ = String;
  Clear();
}

void DataValue::AddText(std::wstring&& text, EType kind) {
  std::wstring item = WithSurrogatePairs(std::move(text));
  Parts& parts = ToParts();
  const bool first = parts.strings.empty();
  parts.strings.push_back(std::move(item));
  if (first) {
    kind_ = static_cast<std::uint8_t>(kind);
    is_array_ = true;
  }
}

void DataValue::AddObject(std::shared_ptr<DataObject> object) {
  Parts& parts = ToParts();
  parts.objects.push_back(std::move(object));
  if (kind_ != Object) {
    kind_ = Object;
    parts.strings.clear();
  }
  is_array_ = true;
}

}  // namespace Zelto::Json
