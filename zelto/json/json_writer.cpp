#include "zelto/json/json_writer.h"

#include "zelto/json/document_printer.h"
#include "zelto/json/number_text.h"
#include "zelto/json/text_output.h"

namespace Zelto::Json {

JsonWriter::JsonWriter(std::wostream& stream) : stream_(stream) {}

JsonWriter::JsonWriter(const JsonWriter& other) = default;

JsonWriter::~JsonWriter() = default;

std::wstring JsonWriter::Encode(const DataObject& object, bool skip_null_or_empty) {
  TextOutput output(EstimateLength(object));
  DocumentPrinter(output, skip_null_or_empty).PrintObject(object);
  return output.Take();
}

std::wstring JsonWriter::Encode(const std::shared_ptr<const DataObject>& object, bool skip_null_or_empty) {
  return object == nullptr ? L"{}" : Encode(*object, skip_null_or_empty);
}

std::wstring JsonWriter::Encode(const std::shared_ptr<DataObject>& object, bool skip_null_or_empty) {
  return object == nullptr ? L"{}" : Encode(*object, skip_null_or_empty);
}

std::wstring JsonWriter::EncodeSorted(const DataObject& object, bool skip_null_or_empty) {
  return Encode(object, skip_null_or_empty);
}

template <typename Print>
void JsonWriter::PrintWith(const Print& print) {
  TextOutput output(stream_);
  DocumentPrinter printer(output, skip_null_or_empty_);
  print(printer);
  output.Flush();
}

void JsonWriter::Write(const DataObject& object) {
  PrintWith([&object](DocumentPrinter& printer) { printer.PrintObject(object); });
}

void JsonWriter::WriteSorted(const DataObject& object) {
  Write(object);
}

void JsonWriter::WriteValue(const DataValue& value) {
  PrintWith([&value](DocumentPrinter& printer) { printer.PrintValue(value); });
}

void JsonWriter::WriteObjectArray(const DataValue& value) {
  PrintWith([&value](DocumentPrinter& printer) { printer.PrintObjects(value); });
}

void JsonWriter::WriteStringArray(const DataValue& value) {
  PrintWith([&value](DocumentPrinter& printer) { printer.PrintTexts(value); });
}

void JsonWriter::WriteStringValue(const std::wstring& text) {
  if (HasWideCharacters(text)) {
    WriteStringValue(WithSurrogatePairs(text));
    return;
  }
  TextOutput output(stream_);
  output.PutString(std::wstring_view(text));
  output.Flush();
}

void JsonWriter::WriteText(std::wstring_view text) {
  stream_.write(text.data(), static_cast<std::streamsize>(text.size()));
}

void JsonWriter::WriteKey(const std::wstring& key) {
  WriteSeparatorIfNeeded();
  WriteText(L"\"");
  WriteText(key);
  WriteText(L"\":");
}

void JsonWriter::WriteProperty(const std::wstring& key, const std::wstring& value) {
  if (value.empty() && skip_empty_string_values_) {
    return;
  }
  WriteKey(key);
  WriteStringValue(value);
}

void JsonWriter::WriteProperty(const std::wstring& key, int value) {
  WriteKey(key);
  WriteText(DecimalText::OfSigned(value).View());
}

void JsonWriter::WriteProperty(const std::wstring& key, unsigned int value) {
  WriteProperty(key, std::uint64_t{value});
}

void JsonWriter::WriteProperty(const std::wstring& key, std::uint64_t value) {
  WriteKey(key);
  WriteText(DecimalText(value).View());
}

void JsonWriter::WriteBooleanProperty(const std::wstring& key, bool value) {
  WriteKey(key);
  WriteText(value ? L"true" : L"false");
}

void JsonWriter::WriteObject(const std::wstring& key, const std::function<void()>& write_members) {
  WriteKey(key);
  WriteObject(write_members);
}

void JsonWriter::WriteObject(const std::function<void()>& write_members) {
  struct Level {
    explicit Level(JsonWriter& owner) : writer(owner) { writer.PushSeparatorNeeded(); }
    ~Level() { writer.PopSeparatorNeeded(); }
    JsonWriter& writer;
  };
  WriteText(L"{");
  {
    const Level level(*this);
    write_members();
  }
  WriteText(L"}");
}

void JsonWriter::WriteSeparatorIfNeeded() {
  if (top_ < 0) {
    return;
  }
  const auto level = static_cast<std::size_t>(top_);
  if (separator_needed_[level]) {
    WriteText(L",");
  } else {
    separator_needed_[level] = true;
  }
}

void JsonWriter::PushSeparatorNeeded() {
  separator_needed_.push_back(false);
  ++top_;
}

void JsonWriter::PopSeparatorNeeded() noexcept {
  if (top_ >= 0) {
    separator_needed_.pop_back();
    --top_;
  }
}

}  // namespace Zelto::Json
