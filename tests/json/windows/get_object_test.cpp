#include "tests/json/windows/get_object.h"

#include <gtest/gtest.h>

namespace Zelto::Json {
namespace {

TEST(GetObject, IsReachedHoweverTheSystemsHeaderNamesIt) {
  DataValue value;
  const auto object = std::make_shared<DataObject>();
  value.SetObject(object);
  EXPECT_EQ(value.GetObject(), object);
  for (const auto get : {&BeforeAnsi, &BeforeUnicode, &AfterAnsi, &AfterUnicode}) {
    EXPECT_EQ(get(value).ours, object);
    EXPECT_EQ(get(value).systems, 0);
  }
}

}  // namespace
}  // namespace Zelto::Json
