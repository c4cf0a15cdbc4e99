// Built four times, by the definitions at the target: <windows.h> before or behind our header, with UNICODE or without.
// clang-format off
#ifdef ZELTO_TEST_SYSTEM_FIRST
#include <windows.h>
#include <wingdi.h>
#endif
#include "zelto/json/data_object.h"
#include <windows.h>
#include <wingdi.h>
// clang-format on

#include "tests/json/windows/get_object.h"

#ifndef GetObject
#error "the macro of the system's header is gone"
#endif

namespace Zelto::Json {

NestedObject ZELTO_TEST_ORDER(const DataValue& value) {
  BITMAP bitmap{};
  return {value.GetObject(), GetObject(nullptr, sizeof(bitmap), &bitmap)};
}

}  // namespace Zelto::Json
