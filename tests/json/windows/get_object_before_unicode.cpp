// <windows.h> comes before our header, with UNICODE.
#define UNICODE

// clang-format off
#include <windows.h>
#include <wingdi.h>
#include "zelto/json/data_object.h"
// clang-format on

#include "tests/json/windows/get_object.h"

#ifndef GetObject
#error "the macro of the system's header is gone"
#endif

namespace Zelto::Json {

NestedObject BeforeUnicode(const DataValue& value) {
  BITMAP bitmap{};
  return {value.GetObject(), GetObject(nullptr, sizeof(bitmap), &bitmap)};
}

}  // namespace Zelto::Json
