// Built with optimisation and without the sanitizers' own check of null pointers.
#include "zelto/json/data_object.h"
#include "zelto/json/json_reader.h"

#include <gtest/gtest.h>

#include <memory>

namespace Zelto::Json {
namespace {

// Each asks first and checks its pointer afterwards: the answer is whether the check survived the compiler.
template <typename Ask>
__attribute__((noinline)) bool IsNullAfter(DataObject* object, const Ask& ask) {
  ask(object);
  return object == nullptr;
}

TEST(NullObject, QueriesBehaveAsForAMissingKey) {
  const auto root = JsonReader::Decode(L"{\"user\":null}", false);
  const std::shared_ptr<const DataObject> user = root->GetDataObject(L"user");
  EXPECT_FALSE(user->Contains(L"k"));
  EXPECT_EQ(user->GetStringValue(L"k", L"default"), L"default");
  EXPECT_EQ(user->GetIntValue(L"k", 3), 3);
  EXPECT_EQ(user->GetUint64Value(L"k", 4), 4U);
  EXPECT_TRUE(user->GetBooleanValue(L"k", true));
  EXPECT_EQ(user->GetDataObject(L"k")->GetDataObject(L"l"), nullptr);
  EXPECT_TRUE(user->IsNullValue(L"k"));
}

TEST(NullObject, CallersOwnChecksSurvive) {
  // Not known to the compiler.
  DataObject* volatile nothing = nullptr;
  DataObject* const null = nothing;
  EXPECT_TRUE(IsNullAfter(null, [](DataObject* o) { return o->Contains(L"k"); }));
  EXPECT_TRUE(IsNullAfter(null, [](DataObject* o) { return o->GetStringValue(L"k", L"").empty(); }));
  EXPECT_TRUE(IsNullAfter(null, [](DataObject* o) { return o->GetIntValue(L"k", 1) == 1; }));
  EXPECT_TRUE(IsNullAfter(null, [](DataObject* o) { return o->GetUint64Value(L"k", 1) == 1; }));
  EXPECT_TRUE(IsNullAfter(null, [](DataObject* o) { return o->GetBooleanValue(L"k", true); }));
  EXPECT_TRUE(IsNullAfter(null, [](DataObject* o) { return o->GetDataObject(L"k") == nullptr; }));
  EXPECT_TRUE(IsNullAfter(null, [](DataObject* o) { return o->IsNullValue(L"k"); }));
}

}  // namespace
}  // namespace Zelto::Json
