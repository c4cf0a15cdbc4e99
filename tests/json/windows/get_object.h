/// @file
/// The same call from translation units that include the system's header in every order.
#pragma once

#include "zelto/json/data_object.h"

#include <memory>

namespace Zelto::Json {

struct NestedObject {
  std::shared_ptr<DataObject> ours;
  int systems;  // the result of the system's own function of the same name
};

NestedObject BeforeAnsi(const DataValue& value);
NestedObject BeforeUnicode(const DataValue& value);
NestedObject AfterAnsi(const DataValue& value);
NestedObject AfterUnicode(const DataValue& value);

}  // namespace Zelto::Json
