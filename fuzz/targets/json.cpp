// JSON text beside a plain reader of the same language, and through writing and reading again: the same text, where it
// can hold the document.
#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "fuzz/models/plain_json_reader.h"
#include "fuzz/models/utf.h"
#include "zelto/json/data_object.h"
#include "zelto/json/json_reader.h"
#include "zelto/json/json_writer.h"

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace Zelto::Fuzz {
namespace {

using Json::DataObject;
using Json::JsonReader;
using Json::JsonWriter;

constexpr wchar_t kRefused[] = L"refused";

// What becomes of a text: what the writer makes of the document, or why there is none.
template <typename Read>
std::wstring OutcomeOf(const Read& read) {
  try {
    const std::shared_ptr<DataObject> object = read();
    return object ? JsonWriter::Encode(*object) : kRefused;
  } catch (const std::exception& error) {
    const std::string what = error.what();
    return {what.begin(), what.end()};
  }
}

// What every caller may do with any document.
void Use(const DataObject& object) {
  for (const auto& [key, value] : object) {
    Require(object.Contains(key), "a key that is there is found");
    Require(object.GetStringValue(key, L"?") == value.GetStringValue(), "a value is found by its key");
    object.GetIntValue(key, 1);
    object.GetUint64Value(key, 1);
    object.GetBooleanValue(key, true);
  }
}

void Run(Bytes bytes) {
  const std::vector<wchar_t> units = LenientText(bytes);
  const std::wstring text(units.begin(), units.end());
  for (const bool allow_duplicates : {false, true}) {
    PlainJsonReader plain(text, allow_duplicates);
    const std::wstring written = OutcomeOf([&] {
      const auto object = JsonReader::Decode(text, allow_duplicates);
      if (object) {
        Use(*object);
        Require(JsonWriter::Encode(*object, true).size() <= JsonWriter::EncodeSorted(*object).size(),
                "leaving out empty values makes no text longer");
      }
      return object;
    });
    Require(written == OutcomeOf([&] { return plain.Read(); }) || (written == L"bad conversion" && !InUnits(text)),
            "a text is read as it is read plainly");
    if (plain.ComesBack() && written.starts_with(L'{')) {
      Require(OutcomeOf([&] { return JsonReader::Decode(written, false); }) == written, "a document comes back equal");
    }
  }
}

const Target target("json", Run);

}  // namespace
}  // namespace Zelto::Fuzz
