// What views_test.py looks at.
#include "zelto/json/json_reader.h"
#include "zelto/json/object_storage.h"
#include "zelto/json/value_access.h"
#include "zelto/time/utc_time.h"
#include "zelto/time/version.h"

#include <memory>
#include <string>

using namespace Zelto;

namespace {

[[gnu::noinline]] void Look() {
  asm volatile("");
}

}  // namespace

int main() {
  const auto read = Json::JsonReader::Decode(
      LR"({"zero": null, "name": "Zo\u00EB \"x\"", "port": 4812, "on": true, "tags": ["a", "b"], "sizes": [1, 22],)"
      LR"("inner": {"deep": {"k": "v"}}, "list": [{"n": 1}, {"n": 2}], "empty": ""})",
      false);
  Json::DataObject grown = *read->GetDataObject(L"inner");
  for (const wchar_t* key : {L"m", L"c", L"x", L"a", L"s"}) {
    grown.SetValue(key, key);
  }
  Json::DataValue materialised;
  materialised.AddStringValue(std::wstring(40000, L'y'));
  materialised.AddStringValue(L"short");
  const Json::DataObject none;
  const Utilities::UtcTime time(L"2017-11-08T15:44:56", Utilities::UtcTime::StringValue::ISO8601, false);
  const Utilities::UtcTime no_time;
  const Utilities::UtcTime far = Utilities::UtcTime::FromTicks(0xFFFFFFFFFFFFFFFFU);
  const Utilities::Version version(4, 12, 0, 2201);
  Look();
  return read->IsEmpty() || time == no_time || far == time || version.GetMajor() != 4 || !none.IsEmpty() ? 1 : 0;
}
