// Built with optimisation and without the sanitizers' own check of null pointers.
#include "zelto/json/data_object.h"
#include "zelto/json/json_reader.h"

#include <gtest/gtest.h>

#include <memory>

namespace Zelto::Json {
namespace {

// Asks first and checks its pointer afterwards: whether the answer is right, and the check survived the compiler.
template <typename Ask>
__attribute__((noinline)) bool AnswersAndStaysNull(const DataObject* object, const Ask& is_right) {
  const bool right = is_right(object);
  return object == nullptr && right;
}

TEST(NullObject, QueriesBehaveAsForAMissingKeyAndCallersOwnChecksSurvive) {
  const auto root = JsonReader::Decode(L"{\"user\":null}", false);
  const std::shared_ptr<const DataObject> user = root->GetDataObject(L"user");
  using Object = const DataObject*;
  EXPECT_TRUE(AnswersAndStaysNull(user.get(), [](Object o) { return !o->Contains(L"k"); }));
  EXPECT_TRUE(AnswersAndStaysNull(user.get(), [](Object o) { return o->GetStringValue(L"k", L"or") == L"or"; }));
  EXPECT_TRUE(AnswersAndStaysNull(user.get(), [](Object o) { return o->GetIntValue(L"k", 3) == 3; }));
  EXPECT_TRUE(AnswersAndStaysNull(user.get(), [](Object o) { return o->GetUint64Value(L"k", 4) == 4; }));
  EXPECT_TRUE(AnswersAndStaysNull(user.get(), [](Object o) { return o->GetBooleanValue(L"k", true); }));
  EXPECT_TRUE(AnswersAndStaysNull(user.get(), [](Object o) { return o->GetDataObject(L"k") == nullptr; }));
  EXPECT_TRUE(AnswersAndStaysNull(user.get(), [](Object o) { return o->IsNullValue(L"k"); }));
}

}  // namespace
}  // namespace Zelto::Json
