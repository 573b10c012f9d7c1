#include "core/product_record.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "support/allocation_system.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::SystemInForce;

// name=value;name=value; of what `text` stands for.
std::string Parsed(const char* text) {
  ProductRecord record;
  record.Add("old", "1");
  record.Parse(text);
  std::string content;
  for (std::uint32_t i = 0; i < record.Fields().Count(); ++i) {
    const NameValuePair& pair = record.Fields().At(i);
    content += testing::Content(pair.Name()) + "=" + testing::Content(pair.Value()) + ";";
  }
  return content;
}

TEST(ProductRecordParse, AValueMayHoldColons) { EXPECT_EQ("a=1;b=2:3;", Parsed("a:1^b:2:3")); }

TEST(ProductRecordParse, APairWithoutColonAtTheEndIsDropped) {
  EXPECT_EQ("a=1;", Parsed("a:1^b"));
  EXPECT_EQ("a=1;", Parsed("a:1^"));
}

TEST(ProductRecordParse, ATextWithoutColonGivesAnEmptyRecord) {
  EXPECT_EQ("", Parsed("abc"));
  EXPECT_EQ("", Parsed("a^b^c"));
  EXPECT_EQ("", Parsed(""));
  EXPECT_EQ("", Parsed(nullptr));
}

TEST(ProductRecordParse, ARepeatedNameGivesASecondFieldAndGetFindsTheFirst) {
  EXPECT_EQ("a=1;a=2;", Parsed("a:1^a:2"));
  ProductRecord record;
  record.Parse("a:1^a:2");
  EXPECT_STREQ("1", record.Get("a").Text());
}

TEST(ProductRecordParse, APairWithoutColonInTheMiddleJoinsTheNextName) {
  EXPECT_EQ("a=1;xyz^b=2;", Parsed("a:1^xyz^b:2"));
}

TEST(ProductRecordParse, NamesAndValuesMayBeEmpty) {
  EXPECT_EQ("=;", Parsed(":"));
  EXPECT_EQ("a=;=1;", Parsed("a:^:1"));
  EXPECT_EQ("=:;", Parsed("::"));
  EXPECT_EQ("^a=1;", Parsed("^a:1"));
}

TEST(ProductRecordParse, TheErrorCodeStays) {
  ProductRecord record;
  record.SetErrorCode(7);
  record.Parse("a:1");
  EXPECT_EQ(7, record.ErrorCode());
}

TEST(ProductRecordParse, ARecordThatWasMovedFromIsWholeAgain) {
  ProductRecord record;
  const ProductRecord taken(std::move(record));
  record.Parse("a:1");
  EXPECT_STREQ("1.0", record.Version().Text());
  EXPECT_STREQ("KEST-Product: a:1\r\n", record.Format().Text());
}

TEST(ProductRecordParse, TheTextMayBeAFieldOfTheRecord) {
  ProductRecord record;
  record.Add("text", "a:1^b:2");
  record.Parse(record.Fields().At(0).Value());
  EXPECT_STREQ("KEST-Product: a:1^b:2\r\n", record.Format().Text());
}

TEST(ProductRecordParse, ManyPairsAreTakenInOrder) {
  std::string text;
  for (int i = 0; i < 100; ++i) text += (i != 0 ? "^n" : "n") + std::to_string(i) + ":v" + std::to_string(i);
  ProductRecord record;
  record.Parse(text.c_str());
  ASSERT_EQ(100u, record.Fields().Count());
  EXPECT_STREQ("v99", record.Get("N99").Text());
  EXPECT_EQ("KEST-Product: " + text + "\r\n", testing::Content(record.Format()));
}

TEST(ProductRecordParse, RoomForAllPairsIsMadeAtOnce) {
  const auto allocations = [](int pairs) {
    std::string text;
    for (int i = 0; i < pairs; ++i) text += "a:^";
    const String value(text.c_str());
    testing::AllocationSystem memory;
    testing::SystemInForce inForce(memory);
    ProductRecord record;
    memory.Restart();
    record.Parse(value);
    EXPECT_EQ(static_cast<std::uint32_t>(pairs), record.Fields().Count());
    return memory.Allocations();
  };
  // One block for the list, one for each name; empty values have none.
  EXPECT_EQ(101u, allocations(100));
  EXPECT_EQ(10001u, allocations(10000));
}

TEST(ProductRecordFormat, IsTheInverse) {
  for (const char* text : {"a:1", "a:1^b:2:3", "a:1^a:2", "a:1^xyz^b:2", "a:^:1", ":"}) {
    ProductRecord record;
    record.Parse(text);
    EXPECT_EQ("KEST-Product: " + std::string(text) + "\r\n", testing::Content(record.Format()));
  }
}

TEST(ProductRecordFormat, WithoutPairsTheLineIsEmpty) {
  EXPECT_STREQ("KEST-Product: \r\n", ProductRecord().Format().Text());
}

TEST(ProductRecordFormat, IsReachedThroughTheBase) {
  ProductRecord record;
  record.Set("SKU", "12");
  record.Set("Quantity", "3");
  const FieldSet& base = record;
  EXPECT_STREQ("KEST-Product: SKU:12^Quantity:3\r\n", base.Format().Text());
  EXPECT_EQ(2, base.Kind());
}

TEST(ProductRecordFormat, TheLengthIsKnownBeforehandAndAskedForOnce) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  for (int pairs = 0; pairs < 40; ++pairs) {
    ProductRecord record;
    for (int i = 0; i < pairs; ++i) record.Add("name", "value");
    memory.Restart();
    const String line = record.Format();
    EXPECT_EQ(line.Length(), record.LineLength()) << pairs;
    EXPECT_EQ(1u, memory.Allocations()) << pairs;
  }
}

TEST(ProductRecordFormat, ALineGoesBehindTheTextThatIsThere) {
  ProductRecord record;
  record.Parse("a:1");
  String text("x");
  record.AppendLine(text);
  record.AppendLine(text);
  EXPECT_STREQ("xKEST-Product: a:1\r\nKEST-Product: a:1\r\n", text.Text());
}

}  // namespace
}  // namespace kest
