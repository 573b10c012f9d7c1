// The registry calls, as every system makes them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "unit/os/registry_place.h"

namespace os {
namespace {

using std::string_literals::operator""s;
using Strings = std::vector<std::string>;

class Registry : public RegistryPlace {};

TEST_F(Registry, AValueKeepsTypeAndBytes) {
  ASSERT_EQ(errorSuccess, Set(key, "text", typeString, "price\0"s));
  ASSERT_EQ(errorSuccess, Set(key, "number", typeNumber, "\x01\x00\xFF\x80"s));
  ASSERT_EQ(errorSuccess, Set(key, "bytes", typeBinary, "\0\xFF\0\n\r\x1A\0"s));
  EXPECT_EQ((StoredValue{errorSuccess, typeString, "price\0"s}), Get(key, "text"));
  EXPECT_EQ((StoredValue{errorSuccess, typeNumber, "\x01\x00\xFF\x80"s}), Get(key, "number"));
  EXPECT_EQ((StoredValue{errorSuccess, typeBinary, "\0\xFF\0\n\r\x1A\0"s}), Get(key, "bytes"));
}

TEST_F(Registry, AValueOfNoBytesIsAValue) {
  ASSERT_EQ(errorSuccess, Set(key, "empty", typeBinary, ""));
  EXPECT_EQ((StoredValue{errorSuccess, typeBinary, ""}), Get(key, "empty"));
  ASSERT_EQ(errorSuccess, Native().RegSetValueExA(key, "null", typeBinary, nullptr, 0));
  EXPECT_EQ((StoredValue{errorSuccess, typeBinary, ""}), Get(key, "null"));
}

TEST_F(Registry, AMegabyteIsKept) {
  std::string data(1 << 20, '\0');
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * i >> 3);
  ASSERT_EQ(errorSuccess, Set(key, "large", typeBinary, data));
  EXPECT_TRUE((StoredValue{errorSuccess, typeBinary, data}) == Get(key, "large"));
}

TEST_F(Registry, AWriteReplacesTypeAndBytes) {
  ASSERT_EQ(errorSuccess, Set(key, "value", typeBinary, "the longer data"));
  ASSERT_EQ(errorSuccess, Set(key, "value", typeNumber, "\1\2\3\4"));
  EXPECT_EQ((StoredValue{errorSuccess, typeNumber, "\1\2\3\4"}), Get(key, "value"));
}

TEST_F(Registry, ANewHandleSeesWhatWasWritten) {
  ASSERT_EQ(errorSuccess, Set(key, "value", typeBinary, "data"));
  OpenedKey second;
  ASSERT_EQ(errorSuccess, second.Open(CurrentUser(), path.c_str()));
  EXPECT_EQ("data", Get(second, "value").data);
}

TEST_F(Registry, TheSizeIsToldWithoutAnArea) {
  ASSERT_EQ(errorSuccess, Set(key, "value", typeBinary, "12345"));
  std::uint32_t type = 0, size = 1;
  EXPECT_EQ(errorSuccess, Native().RegQueryValueExA(key, "value", &type, nullptr, &size));
  EXPECT_EQ(5u, size);
  EXPECT_EQ(typeBinary, type);
}

TEST_F(Registry, AnAreaThatIsTooSmallLearnsTheSize) {
  ASSERT_EQ(errorSuccess, Set(key, "value", typeBinary, "12345"));
  char area[8];
  std::uint32_t size = 4;
  EXPECT_EQ(errorMoreData, Native().RegQueryValueExA(key, "value", nullptr, area, &size));
  EXPECT_EQ(5u, size);
  EXPECT_EQ(errorSuccess, Native().RegQueryValueExA(key, "value", nullptr, area, &size));
  EXPECT_EQ(0, std::memcmp("12345", area, 5));
}

TEST_F(Registry, AMissingValueIsNotFound) {
  EXPECT_EQ(errorFileNotFound, Get(key, "missing").error);
  EXPECT_EQ(errorFileNotFound, Get(key, "").error);
}

TEST_F(Registry, TheEmptyNameIsTheDefaultValue) {
  ASSERT_EQ(errorSuccess, Set(key, "", typeBinary, "default"));
  EXPECT_EQ("default", Get(key, nullptr).data);
  ASSERT_EQ(errorSuccess, Set(key, nullptr, typeBinary, "other"));
  EXPECT_EQ("other", Get(key, "").data);
}

TEST_F(Registry, ValuesAreFoundWhateverTheCaseOfLetters) {
  ASSERT_EQ(errorSuccess, Set(key, "Merchant", typeBinary, "a"));
  EXPECT_EQ("a", Get(key, "mERCHANT").data);
  ASSERT_EQ(errorSuccess, Set(key, "MERCHANT", typeBinary, "b"));
  EXPECT_EQ("b", Get(key, "Merchant").data);
  EXPECT_EQ(Strings{"Merchant"}, ValueNames(key));
}

TEST_F(Registry, KeysAreFoundWhateverTheCaseOfLetters) {
  OpenedKey first, second, third;
  ASSERT_EQ(errorSuccess, first.Create(key, "Receipts\\One"));
  ASSERT_EQ(errorSuccess, Set(first, "value", typeBinary, "a"));
  ASSERT_EQ(errorSuccess, second.Open(key, "RECEIPTS\\one"));
  EXPECT_EQ("a", Get(second, "value").data);
  ASSERT_EQ(errorSuccess, third.Create(key, "receipts\\ONE"));
  EXPECT_EQ("a", Get(third, "value").data);
  EXPECT_EQ(Strings{"Receipts"}, KeyNames(key));
}

TEST_F(Registry, KeysAndValuesOfOneNameAreApart) {
  OpenedKey subkey;
  ASSERT_EQ(errorSuccess, subkey.Create(key, "name"));
  EXPECT_EQ(errorFileNotFound, Get(key, "name").error);
  ASSERT_EQ(errorSuccess, Set(key, "name", typeBinary, "outer"));
  ASSERT_EQ(errorSuccess, Set(subkey, "name", typeBinary, "inner"));
  EXPECT_EQ("outer", Get(key, "name").data);
  EXPECT_EQ("inner", Get(subkey, "name").data);
}

TEST_F(Registry, CreatingMakesWhatIsMissingAbove) {
  OpenedKey deep, above;
  ASSERT_EQ(errorSuccess, deep.Create(key, "a\\b\\c"));
  EXPECT_EQ(errorSuccess, above.Open(key, "a\\b"));
  EXPECT_EQ(Strings{"c"}, KeyNames(above));
}

TEST_F(Registry, AKeyOpenedForReadingTakesNoValues) {
  ASSERT_EQ(errorSuccess, Set(key, "value", typeBinary, "data"));
  OpenedKey opened;
  ASSERT_EQ(errorSuccess, opened.Open(CurrentUser(), path.c_str()));
  EXPECT_EQ(errorAccessDenied, Set(opened, "value", typeBinary, "other"));
  EXPECT_EQ(errorAccessDenied, Set(opened, "new", typeBinary, "other"));
  EXPECT_EQ("data", Get(opened, "value").data);
  EXPECT_EQ(Strings{"value"}, ValueNames(opened));
}

TEST_F(Registry, AKeyMadeForReadingTakesNoValues) {
  RegistryHandle made = nullptr;
  ASSERT_EQ(errorSuccess, Native().RegCreateKeyExA(key, "made", 0, keyRead, &made));
  EXPECT_EQ(errorAccessDenied, Set(made, "value", typeBinary, "data"));
  EXPECT_EQ(Strings{}, ValueNames(made));
  EXPECT_EQ(errorSuccess, Native().RegCloseKey(made));
}

TEST_F(Registry, AKeyOpenedForSettingValuesTakesThem) {
  RegistryHandle opened = nullptr;
  ASSERT_EQ(errorSuccess, Native().RegOpenKeyExA(CurrentUser(), path.c_str(), 0, keySetValue, &opened));
  EXPECT_EQ(errorSuccess, Set(opened, "value", typeBinary, "data"));
  EXPECT_EQ(errorSuccess, Native().RegCloseKey(opened));
  EXPECT_EQ("data", Get(key, "value").data);
}

// Who may make a key is a matter of the key above it, not of the handle to that.
TEST_F(Registry, BelowAKeyOpenedForReadingKeysAreMade) {
  OpenedKey opened, made;
  ASSERT_EQ(errorSuccess, opened.Open(CurrentUser(), path.c_str()));
  ASSERT_EQ(errorSuccess, made.Create(opened, "made"));
  EXPECT_EQ(errorSuccess, Set(made, "value", typeBinary, "data"));
}

TEST_F(Registry, OpeningMakesNothing) {
  OpenedKey missing;
  EXPECT_EQ(errorFileNotFound, missing.Open(key, "missing"));
  EXPECT_EQ(errorFileNotFound, missing.Open(key, "missing\\below"));
  EXPECT_EQ(nullptr, static_cast<RegistryHandle>(missing));
  EXPECT_EQ(Strings{}, KeyNames(key));
}

TEST_F(Registry, TheEmptyPathIsTheKeyItself) {
  ASSERT_EQ(errorSuccess, Set(key, "value", typeBinary, "here"));
  OpenedKey same, alsoSame;
  ASSERT_EQ(errorSuccess, same.Open(key, ""));
  EXPECT_EQ("here", Get(same, "value").data);
  ASSERT_EQ(errorSuccess, alsoSame.Open(key, nullptr));
  EXPECT_EQ("here", Get(alsoSame, "value").data);
}

TEST_F(Registry, NamesMayHoldWhatFileNamesMayNot) {
  for (const char* name : {".", "..", "=", "%2e", "a/b", "x:y", "*", "{6F1A}", " ", "~", "con"}) {
    OpenedKey subkey;
    ASSERT_EQ(errorSuccess, subkey.Create(key, name)) << name;
    ASSERT_EQ(errorSuccess, Set(subkey, name, typeBinary, name)) << name;
  }
  EXPECT_EQ((Strings{" ", "%2e", "*", ".", "..", "=", "a/b", "con", "x:y", "{6F1A}", "~"}), KeyNames(key));
  for (const std::string& name : KeyNames(key)) {
    OpenedKey subkey;
    ASSERT_EQ(errorSuccess, subkey.Open(key, name.c_str())) << name;
    EXPECT_EQ(Strings{name}, ValueNames(subkey));
    EXPECT_EQ(name, Get(subkey, name.c_str()).data);
  }
}

TEST_F(Registry, KeysAreListedByNameWhateverTheCaseOfLetters) {
  for (const char* name : {"b", "C", "10-2-1998", "a", "3-7-1998", "ab", "10", "2"}) {
    OpenedKey subkey;
    ASSERT_EQ(errorSuccess, subkey.Create(key, name));
  }
  EXPECT_EQ((Strings{"10", "10-2-1998", "2", "3-7-1998", "a", "ab", "b", "C"}), KeyNames(key));
}

TEST_F(Registry, ANameThatDoesNotFitIsNotGiven) {
  OpenedKey subkey;
  ASSERT_EQ(errorSuccess, subkey.Create(key, "name"));
  ASSERT_EQ(errorSuccess, Set(key, "value", typeBinary, ""));
  char name[6] = "?????";
  std::uint32_t characters = 4;
  EXPECT_EQ(errorMoreData, Native().RegEnumKeyExA(key, 0, name, &characters));
  characters = 5;
  EXPECT_EQ(errorSuccess, Native().RegEnumKeyExA(key, 0, name, &characters));
  EXPECT_STREQ("name", name);
  EXPECT_EQ(4u, characters);
  characters = 5;
  EXPECT_EQ(errorMoreData, Native().RegEnumValueA(key, 0, name, &characters));
  characters = 6;
  EXPECT_EQ(errorSuccess, Native().RegEnumValueA(key, 0, name, &characters));
  EXPECT_STREQ("value", name);
}

TEST_F(Registry, AnyIndexMayBeAskedFirst) {
  for (const char* name : {"a", "b", "c"}) {
    OpenedKey subkey;
    ASSERT_EQ(errorSuccess, subkey.Create(key, name));
  }
  char name[8];
  std::uint32_t characters = sizeof name;
  EXPECT_EQ(errorSuccess, Native().RegEnumKeyExA(key, 2, name, &characters));
  EXPECT_STREQ("c", name);
  characters = sizeof name;
  EXPECT_EQ(errorNoMoreItems, Native().RegEnumKeyExA(key, 3, name, &characters));
}

TEST_F(Registry, AWalkFromTheStartSeesWhatWasAdded) {
  OpenedKey first, second;
  ASSERT_EQ(errorSuccess, first.Create(key, "b"));
  EXPECT_EQ(Strings{"b"}, KeyNames(key));
  ASSERT_EQ(errorSuccess, second.Create(key, "a"));
  EXPECT_EQ((Strings{"a", "b"}), KeyNames(key));
}

TEST_F(Registry, NamesOfKeysHaveUpTo255Characters) {
  const std::string longest(255, 'K'), other = longest.substr(1) + "x";
  OpenedKey first, second, opened;
  ASSERT_EQ(errorSuccess, first.Create(key, longest.c_str()));
  ASSERT_EQ(errorSuccess, second.Create(key, other.c_str()));
  ASSERT_EQ(errorSuccess, Set(first, "value", typeBinary, "data"));
  ASSERT_EQ(errorSuccess, opened.Open(key, std::string(255, 'k').c_str()));
  EXPECT_EQ("data", Get(opened, "value").data);
  EXPECT_EQ((Strings{longest, other}), KeyNames(key));
}

TEST_F(Registry, LongNamesOfValuesAreKept) {
  const std::string name = std::string(300, 'a') + "Z", other = std::string(300, 'a') + "Y";
  ASSERT_EQ(errorSuccess, Set(key, name.c_str(), typeBinary, "z"));
  ASSERT_EQ(errorSuccess, Set(key, other.c_str(), typeBinary, "y"));
  EXPECT_EQ("z", Get(key, (std::string(300, 'A') + "z").c_str()).data);
  EXPECT_EQ("y", Get(key, other.c_str()).data);
  EXPECT_EQ(2u, ValueNames(key).size());
}

TEST_F(Registry, NoKeyCannotBeClosed) {
  EXPECT_EQ(errorInvalidHandle, Native().RegCloseKey(nullptr));
}

TEST_F(Registry, ARootMayBeClosedAndGoesOnWorking) {
  EXPECT_EQ(errorSuccess, Native().RegCloseKey(CurrentUser()));
  OpenedKey again;
  EXPECT_EQ(errorSuccess, again.Open(CurrentUser(), path.c_str()));
}

TEST_F(Registry, ARootIsWalkedAsAKey) {
  const Strings names = KeyNames(CurrentUser());
  EXPECT_NE(names.end(), std::find(names.begin(), names.end(), "Software"));
}

}  // namespace
}  // namespace os
