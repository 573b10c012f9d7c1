// Ordinals 100 to 110 as a host calls them.
#include <gtest/gtest.h>
#include <kestapi.h>

#include "support/commerce_fixture.h"

namespace kest {
namespace {

using testing::SealedServer;

class FieldSetExports : public ::testing::Test {
 protected:
  ~FieldSetExports() override { KestFreeFieldSet(set); }

  KestFieldSet* set = KestCreateFieldSet();
};

TEST_F(FieldSetExports, ANewSetIsEmptyWithoutError) {
  EXPECT_EQ(0, KestGetFieldCount(set));
  EXPECT_EQ(0, KestGetErrorCode(set));
  EXPECT_EQ(nullptr, KestGetField(set, "a"));
}

TEST_F(FieldSetExports, AddingANameTwiceGivesTwoFieldsAndTheFirstIsRead) {
  KestAddField(set, "a", "1");
  KestAddField(set, "A", "2");
  EXPECT_EQ(2, KestGetFieldCount(set));
  EXPECT_STREQ("1", KestGetField(set, "A"));
}

TEST_F(FieldSetExports, SettingReplacesTheFirstFieldOfTheNameInAnyLetterCase) {
  KestAddField(set, "KEST-TxN", "1");
  KestAddField(set, "KEST-TxN", "2");
  KestSetField(set, "kest-txn", "3");
  EXPECT_EQ(2, KestGetFieldCount(set));
  EXPECT_STREQ("KEST-TxN", KestGetFieldName(set, 0));
  EXPECT_STREQ("3", KestGetFieldValue(set, 0));
  EXPECT_STREQ("2", KestGetFieldValue(set, 1));
}

TEST_F(FieldSetExports, SettingANewNameAppends) {
  KestSetField(set, "a", "1");
  KestSetField(set, "b", "2");
  EXPECT_STREQ("b", KestGetFieldName(set, 1));
}

TEST_F(FieldSetExports, AnIndexOutOfRangeGivesNull) {
  KestAddField(set, "a", "1");
  for (const std::int32_t index : {1, 2, 2147483647, -1, -2147483647 - 1}) {
    EXPECT_EQ(nullptr, KestGetFieldName(set, index)) << index;
    EXPECT_EQ(nullptr, KestGetFieldValue(set, index)) << index;
  }
}

TEST_F(FieldSetExports, EmptyFieldsAreEmptyTextsNotNull) {
  KestAddField(set, nullptr, nullptr);
  KestAddField(set, "", "");
  KestAddField(set, "empty", nullptr);
  for (std::int32_t i = 0; i < 2; ++i) {
    EXPECT_STREQ("", KestGetFieldName(set, i));
    EXPECT_STREQ("", KestGetFieldValue(set, i));
  }
  EXPECT_STREQ("", KestGetField(set, "empty"));
  EXPECT_STREQ("", KestGetField(set, nullptr));
}

TEST_F(FieldSetExports, AReadTextLivesUntilItsFieldChanges) {
  KestAddField(set, "a", "1");
  const char* value = KestGetField(set, "a");
  for (int i = 0; i < 100; ++i) KestAddField(set, "more", "fields");
  EXPECT_STREQ("1", value);
  EXPECT_EQ(value, KestGetField(set, "a"));
}

TEST_F(FieldSetExports, AFieldMayBeSetToItsOwnText) {
  KestAddField(set, "a", "value");
  KestSetField(set, "a", KestGetField(set, "a"));
  EXPECT_STREQ("value", KestGetField(set, "a"));
}

TEST(NullFieldSet, GivesTheFailingResults) {
  KestFreeFieldSet(nullptr);
  EXPECT_EQ(nullptr, KestGetField(nullptr, "a"));
  EXPECT_EQ(nullptr, KestGetFieldName(nullptr, 0));
  EXPECT_EQ(nullptr, KestGetFieldValue(nullptr, 0));
  EXPECT_EQ(-1, KestGetFieldCount(nullptr));
  EXPECT_EQ(0, KestGetErrorCode(nullptr));
  KestAddField(nullptr, "a", "1");
  KestSetField(nullptr, "a", "1");
}

TEST(FieldSetMemory, WhatFindsNoMemoryLeavesTheSetAsItWas) {
  testing::AllocationSystem memory;
  testing::SystemInForce inForce(memory);
  for (const auto how : {testing::AllocationSystem::Failing::once, testing::AllocationSystem::Failing::fromThenOn}) {
    memory.FailAt(1, how);
    EXPECT_EQ(nullptr, KestCreateFieldSet());
    memory.FailAt(2, how);
    EXPECT_EQ(nullptr, KestCreateFieldSet());
    memory.FailNever();
    KestFieldSet* set = KestCreateFieldSet();
    ASSERT_NE(nullptr, set);
    KestAddField(set, "a", "1");
    for (std::uint64_t point = 1; point <= 2; ++point) {
      memory.FailAt(point, how);
      KestAddField(set, "b", "2");
      memory.FailAt(point, how);
      KestSetField(set, "c", "3");
      memory.FailAt(1, how);
      KestSetField(set, "a", "4");
      memory.FailNever();
      EXPECT_EQ(1, KestGetFieldCount(set));
      EXPECT_STREQ("1", KestGetField(set, "a"));
    }
    KestFreeFieldSet(set);
  }
  EXPECT_EQ(0, memory.Outstanding());
}

class ServerExports : public ::testing::Test {
 protected:
  ~ServerExports() override {
    KestSetServer(nullptr, 0, nullptr);
    KestSetProxy(nullptr, 0);
  }
};

TEST_F(ServerExports, OnlyTheLowSixteenBitsOfAPortCount) {
  EXPECT_EQ(1, KestSetServer("host", 0x00011F90, SealedServer::KeyText().c_str()));
  EXPECT_EQ(0x1F90, Settings().server.port);
  KestSetProxy("proxy", 0xFFFF0C38);
  EXPECT_EQ(0x0C38, Settings().proxy.port);
}

TEST_F(ServerExports, ABadKeyIsFalseAndKeepsHostAndPort) {
  EXPECT_EQ(0, KestSetServer("host", 81, "no key"));
  EXPECT_STREQ("host", Settings().server.host.Text());
  EXPECT_EQ(81, Settings().server.port);
}

TEST_F(ServerExports, AServerThatFindsNoMemoryIsFalse) {
  const std::string key = SealedServer::KeyText();
  testing::AllocationSystem memory;
  {
    testing::SystemInForce inForce(memory);
    memory.FailAt(1, testing::AllocationSystem::Failing::fromThenOn);
    EXPECT_EQ(0, KestSetServer("shop.example", 80, key.c_str()));
  }
}

TEST_F(ServerExports, NullTextsAreEmptyTexts) {
  EXPECT_EQ(0, KestSetServer(nullptr, 81, nullptr));
  EXPECT_TRUE(Settings().server.host.IsEmpty());
  KestSetProxy(nullptr, 1);
  EXPECT_TRUE(Settings().proxy.host.IsEmpty());
}

TEST_F(ServerExports, AProxyThatFindsNoMemoryIsNotStored) {
  KestSetProxy("before", 1);
  testing::AllocationSystem memory;
  testing::SystemInForce inForce(memory);
  memory.FailAt(1, testing::AllocationSystem::Failing::fromThenOn);
  KestSetProxy("after, and longer than fifty characters, so that a new block is needed", 2);
  EXPECT_STREQ("before", Settings().proxy.host.Text());
  EXPECT_EQ(1, Settings().proxy.port);
}

}  // namespace
}  // namespace kest
