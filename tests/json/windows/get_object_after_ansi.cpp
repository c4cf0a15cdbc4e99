// <windows.h> comes after our header, without UNICODE.
#undef UNICODE

// clang-format off
#include "zelto/json/data_object.h"
#include <windows.h>
#include <wingdi.h>
// clang-format on

#include "tests/json/windows/get_object.h"

#ifndef GetObject
#error "the macro of the system's header is gone"
#endif

namespace Zelto::Json {

NestedObject AfterAnsi(const DataValue& value) {
  BITMAP bitmap{};
  return {value.GetObject(), GetObject(nullptr, sizeof(bitmap), &bitmap)};
}

}  // namespace Zelto::Json
