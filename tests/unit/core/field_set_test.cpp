#include "core/field_set.h"

#include <gtest/gtest.h>

#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::ReferencesOf;

TEST(FieldSet, BeginsWithoutErrorAndFieldsInVersionOne) {
  const FieldSet fields;
  EXPECT_EQ(0, fields.ErrorCode());
  EXPECT_STREQ("1.0", fields.Version().Text());
  EXPECT_EQ(0u, fields.Fields().Count());
}

TEST(FieldSet, ClearingEmptiesTheFieldsAndKeepsTheErrorCode) {
  FieldSet fields;
  fields.Add("a", "1");
  fields.SetErrorCode(102);
  fields.Clear();
  EXPECT_EQ(0u, fields.Fields().Count());
  EXPECT_STREQ("1.0", fields.Version().Text());
  EXPECT_EQ(102, fields.ErrorCode());
}

TEST(FieldSet, ClearingLeavesACopysVersionAlone) {
  FieldSet fields;
  const FieldSet copy(fields);
  fields.Clear();
  EXPECT_STREQ("1.0", copy.Version().Text());
  EXPECT_EQ(1u, ReferencesOf(copy.Version()));
}

TEST(FieldSet, IsRenderedAsHeaderLinesInListOrder) {
  FieldSet fields;
  fields.Add("GUID", "g");
  fields.Add("VERSIONID", "");
  fields.Add("GUID", "h");
  EXPECT_STREQ("GUID: g\r\nVERSIONID: \r\nGUID: h\r\n", fields.Format().Text());
}

TEST(FieldSet, WithoutFieldsItIsRenderedAsNothing) { EXPECT_TRUE(FieldSet().Format().IsEmpty()); }

TEST(FieldSet, ItsKindIsTwo) { EXPECT_EQ(2, FieldSet().Kind()); }

TEST(FieldSet, GettingGivesTheFirstValueWhateverTheCase) {
  FieldSet fields;
  fields.Add("KEST-TxN", "1");
  fields.Add("kest-txn", "2");
  EXPECT_STREQ("1", fields.Get("Kest-Txn").Text());
  EXPECT_TRUE(fields.Get("other").IsEmpty());
  EXPECT_TRUE(fields.Get(nullptr).IsEmpty());
}

TEST(FieldSet, SettingReplacesAndAddingAppends) {
  FieldSet fields;
  fields.Set("Name", "1");
  fields.Set("NAME", "2");
  fields.Add("NAME", "3");
  EXPECT_STREQ("Name: 2\r\nNAME: 3\r\n", fields.Format().Text());
}

TEST(FieldSet, ACopyHasErrorCodeVersionAndFieldsOfItsOwn) {
  FieldSet fields;
  fields.SetErrorCode(-7);
  fields.Add("a", "1");
  FieldSet copy(fields);
  FieldSet assigned;
  assigned.Add("b", "2");
  assigned = fields;
  fields.Set("a", "9");
  fields.SetErrorCode(0);
  for (const FieldSet* each : {&copy, &assigned}) {
    EXPECT_EQ(-7, each->ErrorCode());
    EXPECT_STREQ("1.0", each->Version().Text());
    EXPECT_STREQ("a: 1\r\n", each->Format().Text());
  }
}

TEST(FieldSet, AssigningItselfIsHarmless) {
  FieldSet fields;
  fields.Add("a", "1");
  const FieldSet& itself = fields;
  fields = itself;
  EXPECT_STREQ("a: 1\r\n", fields.Format().Text());
}

TEST(FieldSet, TheVirtualOperationsReachDerivedClasses) {
  class Derived : public FieldSet {
   public:
    String Format() const override { return "derived"; }
    int Kind() const override { return 9; }
    String Get(const char*) const override { return "got"; }
    void Clear() override { SetErrorCode(5); }
  };
  Derived derived;
  FieldSet& base = derived;
  base.Clear();
  EXPECT_EQ(5, base.ErrorCode());
  EXPECT_STREQ("derived", base.Format().Text());
  EXPECT_EQ(9, base.Kind());
  EXPECT_STREQ("got", base.Get("a").Text());
}

}  // namespace
}  // namespace kest
