// What lies in the store is not trusted: whatever is damaged or foreign is a missing value or no key, and a later write
// puts things right.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "os/posix/registry_name.h"
#include "unit/os/registry_place.h"

namespace os {
namespace {

namespace fs = std::filesystem;
using std::string_literals::operator""s;
using Strings = std::vector<std::string>;

// A key with the value "Value" in the file "=value", and one more beside it.
class HostileStore : public RegistryPlace {
 protected:
  HostileStore() {
    folder = store + "/HKEY_CURRENT_USER/software/veltrix/kest test " + std::to_string(getpid());
    file = folder + "/=value";
    EXPECT_EQ(errorSuccess, Set(key, "Value", typeString, data));
    EXPECT_EQ(errorSuccess, Set(key, "other", typeString, "intact"));
    bytes = ReadFile(file);
    EXPECT_FALSE(bytes.empty());
  }
  static std::string ReadFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  static void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
  }
  // A record in good order.
  static std::string Record(const std::string& name, const std::string& content = "") {
    std::string record = "KESTREG1\1\0\0\0"s;
    for (const std::size_t length : {name.size(), content.size()}) {
      for (int shift = 0; shift < 32; shift += 8) record += static_cast<char>(length >> shift & 0xFF);
    }
    record += name + content;
    std::uint64_t hash = 14695981039346656037u;
    for (const unsigned char byte : record) hash = (hash ^ byte) * 1099511628211u;
    for (int shift = 0; shift < 64; shift += 8) record += static_cast<char>(hash >> shift & 0xFF);
    return record;
  }
  void ExpectMissing(const std::string& what) const {
    EXPECT_EQ(errorFileNotFound, Get(key, "Value").error) << what;
    EXPECT_EQ(Strings{"other"}, ValueNames(key)) << what;
    EXPECT_EQ("intact", Get(key, "other").data);
  }
  void ExpectWritable() const {
    EXPECT_EQ(errorSuccess, Set(key, "Value", typeString, data));
    EXPECT_EQ(data, Get(key, "Value").data);
  }
  std::string MakeKey(const char* name) const {
    OpenedKey made;
    EXPECT_EQ(errorSuccess, made.Create(key, name));
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.is_directory()) return entry.path();
    }
    return "";
  }

  const std::string data = "twelve bytes"s;
  std::string folder, file, bytes;
};

TEST_F(HostileStore, AFileCutAtAnyLengthIsAMissingValue) {
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    WriteFile(file, bytes.substr(0, length));
    ExpectMissing("cut to " + std::to_string(length));
  }
  ExpectWritable();
}

TEST_F(HostileStore, AFileWithAChangedByteIsAMissingValue) {
  for (std::size_t place = 0; place < bytes.size(); ++place) {
    for (const int change : {0x01, 0x20, 0x80, 0xFF}) {
      std::string changed = bytes;
      changed[place] = static_cast<char>(changed[place] ^ change);
      WriteFile(file, changed);
      ExpectMissing("byte " + std::to_string(place));
    }
  }
  ExpectWritable();
}

TEST_F(HostileStore, AFileWithMoreBytesIsAMissingValue) {
  WriteFile(file, bytes + '\0');
  ExpectMissing("one more");
  WriteFile(file, bytes + bytes);
  ExpectMissing("twice");
}

TEST_F(HostileStore, AFileOfAnotherNameIsAMissingValue) {
  fs::copy_file(folder + "/=other", file, fs::copy_options::overwrite_existing);
  ExpectMissing("another value's file");
}

TEST_F(HostileStore, AFileOfAnotherNameGivesWay) {
  fs::copy_file(folder + "/=other", file, fs::copy_options::overwrite_existing);
  ExpectWritable();
  EXPECT_EQ((Strings{"other", "Value"}), ValueNames(key));
}

TEST_F(HostileStore, WhereNamesAreCutAnotherValuesPlaceIsNotTakenAway) {
  const std::string longName(250, 'v'), cut = folder + "/" + posix::FileNameOfValue(longName).text;
  const std::string another = Record(std::string(250, 'w'), "data");
  WriteFile(cut, another);
  EXPECT_EQ(errorWriteFault, Set(key, longName.c_str(), typeString, data));
  EXPECT_EQ(another, ReadFile(cut));
}

TEST_F(HostileStore, APipeIsAMissingValue) {
  fs::remove(file);
  ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
  ExpectMissing("pipe");
  ExpectWritable();
}

TEST_F(HostileStore, ASocketIsAMissingValue) {
  fs::remove(file);
  const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(file.size(), sizeof address.sun_path);
  std::strcpy(address.sun_path, file.c_str());
  ASSERT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address));
  ExpectMissing("socket");
  close(listener);
  ExpectWritable();
}

TEST_F(HostileStore, ALinkIsAMissingValueAndIsNotWrittenThrough) {
  const std::string elsewhere = store + "/elsewhere";
  fs::rename(file, elsewhere);
  fs::create_symlink(elsewhere, file);
  ExpectMissing("link");
  ExpectWritable();
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file)));
  EXPECT_EQ(bytes, ReadFile(elsewhere));
}

TEST_F(HostileStore, ADirectoryIsAMissingValue) {
  fs::remove(file);
  fs::create_directory(file);
  ExpectMissing("directory");
  EXPECT_EQ(errorWriteFault, Set(key, "Value", typeString, data));
  EXPECT_EQ(Strings{}, KeyNames(key));
}

TEST_F(HostileStore, AHugeFileIsAMissingValue) {
  fs::resize_file(file, std::uintmax_t{1} << 40);
  ExpectMissing("a terabyte of nothing");
  // One in good order is too large all the same.
  WriteFile(file, Record("Value", std::string((64 << 20) + 1, 'x')));
  ExpectMissing("one byte too many");
  ExpectWritable();
}

TEST_F(HostileStore, AValueThatIsTooLargeIsNotWritten) {
  const std::string large((64 << 20) + 1, 'x');
  EXPECT_EQ(errorInvalidParameter, Set(key, "Value", typeBinary, large));
  EXPECT_EQ(data, Get(key, "Value").data);
}

TEST_F(HostileStore, ForeignNamesAreNeitherKeysNorValues) {
  for (const char* name : {"=Value", "=%76alue", "=x%", "=other~", "plain", ".new-1-1", ".hidden", "@"}) {
    fs::copy_file(file, folder + "/" + name);
  }
  for (const char* name : {"Capital", "%", "%4", "%zz", "%2E", "%61", "%5c", "%00", ".", "..", ".dir", "=dir", "a~b",
                           "cut~0123456789abcdef"}) {
    fs::create_directory(folder + "/" + name);
  }
  fs::create_directory_symlink(store, folder + "/link");
  EXPECT_EQ(Strings{}, KeyNames(key));
  EXPECT_EQ((Strings{"other", "Value"}), ValueNames(key));
  OpenedKey link, plain;
  EXPECT_EQ(errorFileNotFound, link.Open(key, "link"));
  EXPECT_EQ(errorFileNotFound, plain.Open(key, "plain"));
  EXPECT_TRUE(fs::is_regular_file(folder + "/plain"));
}

TEST_F(HostileStore, WhatIsNoDirectoryGivesWayToAKey) {
  WriteFile(store + "/elsewhere", "kept");
  fs::create_directory(store + "/outside");
  WriteFile(folder + "/plain", "x");
  fs::create_symlink(store + "/elsewhere", folder + "/to a file");
  fs::create_directory_symlink(store + "/outside", folder + "/to a directory");
  fs::create_symlink(store + "/nowhere", folder + "/to nothing");
  ASSERT_EQ(0, mkfifo((folder + "/pipe").c_str(), 0600));
  for (const char* name : {"plain", "to a file", "TO A DIRECTORY", "to nothing", "Pipe"}) {
    OpenedKey made;
    ASSERT_EQ(errorSuccess, made.Create(key, (name + "\\below"s).c_str())) << name;
    EXPECT_EQ(errorSuccess, Set(made, "value", typeString, data));
  }
  EXPECT_EQ((Strings{"Pipe", "plain", "TO A DIRECTORY", "to a file", "to nothing"}), KeyNames(key));
  EXPECT_EQ("kept", ReadFile(store + "/elsewhere"));
  EXPECT_TRUE(fs::is_empty(store + "/outside"));
  EXPECT_FALSE(fs::exists(store + "/nowhere"));
}

TEST_F(HostileStore, ALinkInTheRootsPlaceIsNoRoot) {
  const std::string root = store + "/HKEY_CURRENT_USER", outside = store + "/outside";
  fs::rename(root, outside);
  fs::create_directory_symlink(outside, root);
  OpenedKey opened, made;
  EXPECT_EQ(errorFileNotFound, opened.Open(CurrentUser(), path.c_str()));
  EXPECT_EQ(errorSuccess, made.Create(CurrentUser(), "new"));
  EXPECT_TRUE(fs::is_directory(fs::symlink_status(root)));
  EXPECT_FALSE(fs::exists(outside + "/new"));
  EXPECT_EQ(data, Get(key, "Value").data);
}

TEST_F(HostileStore, ANameWithAZeroByteIsNoName) {
  WriteFile(folder + "/=new", Record("new"));
  WriteFile(folder + "/=a%00b", Record("a\0b"s));
  EXPECT_EQ((Strings{"new", "other", "Value"}), ValueNames(key));
}

TEST_F(HostileStore, ForeignDirectoriesOfGoodNamesAreKeys) {
  fs::create_directory(folder + "/%7bplain%7d");
  EXPECT_EQ(Strings{"{plain}"}, KeyNames(key));
  OpenedKey opened;
  EXPECT_EQ(errorSuccess, opened.Open(key, "{PLAIN}"));
}

TEST_F(HostileStore, AKeyWhoseNameIsDamagedShowsItsSmallName) {
  const std::string name = MakeKey("Receipts") + "/.name", good = ReadFile(name);
  ASSERT_FALSE(good.empty());
  for (std::size_t length = 0; length < good.size(); ++length) {
    WriteFile(name, good.substr(0, length));
    EXPECT_EQ(Strings{"receipts"}, KeyNames(key));
  }
  for (std::size_t place = 0; place < good.size(); ++place) {
    std::string changed = good;
    changed[place] = static_cast<char>(changed[place] ^ 0x01);
    WriteFile(name, changed);
    EXPECT_EQ(Strings{"receipts"}, KeyNames(key)) << "byte " << place;
  }
  for (const char* wrong : {"Value", "A\\b", ""}) {
    WriteFile(name, Record(wrong));
    EXPECT_EQ(Strings{"receipts"}, KeyNames(key));
  }
  WriteFile(name, Record("RECEIPTS"));
  EXPECT_EQ(Strings{"RECEIPTS"}, KeyNames(key));
  OpenedKey opened;
  EXPECT_EQ(errorSuccess, opened.Open(key, "Receipts"));
}

TEST_F(HostileStore, AKeyOfALongNameNeedsItsName) {
  const std::string longName(250, 'L'), name = MakeKey(longName.c_str()) + "/.name";
  OpenedKey opened, missing, made;
  EXPECT_EQ(errorSuccess, opened.Open(key, longName.c_str()));
  fs::copy_file(file, name, fs::copy_options::overwrite_existing);
  EXPECT_EQ(errorFileNotFound, missing.Open(key, longName.c_str()));
  EXPECT_EQ(errorAccessDenied, made.Create(key, longName.c_str()));
  EXPECT_EQ(Strings{}, KeyNames(key));
  fs::remove(name);
  EXPECT_EQ(errorFileNotFound, missing.Open(key, longName.c_str()));
}

TEST_F(HostileStore, AKeyThatWasTakenAwayTakesNoValues) {
  fs::remove_all(folder);
  EXPECT_EQ(errorFileNotFound, Get(key, "Value").error);
  EXPECT_NE(errorSuccess, Set(key, "Value", typeString, data));
  char name[16];
  std::uint32_t characters = sizeof name;
  EXPECT_NE(errorSuccess, Native().RegEnumValueA(key, 0, name, &characters));
  OpenedKey below;
  EXPECT_NE(errorSuccess, below.Create(key, "below"));
}

TEST_F(HostileStore, LeftoversAreTakenAwayByTheNextWriterAlone) {
  WriteFile(folder + "/.new-1-1", "half a val");
  fs::create_directory(folder + "/.new-1-2");
  WriteFile(folder + "/.new-1-2/.name", "half a na");
  WriteFile(folder + "/.other", "not ours");
  EXPECT_EQ(Strings{}, KeyNames(key));
  OpenedKey reader, writer;
  ASSERT_EQ(errorSuccess, reader.Open(CurrentUser(), path.c_str()));
  EXPECT_TRUE(fs::exists(folder + "/.new-1-1"));
  ASSERT_EQ(errorSuccess, writer.Create(CurrentUser(), path.c_str()));
  EXPECT_FALSE(fs::exists(folder + "/.new-1-1"));
  EXPECT_FALSE(fs::exists(folder + "/.new-1-2"));
  EXPECT_TRUE(fs::exists(folder + "/.other"));
  EXPECT_TRUE(fs::exists(folder + "/.name"));
}

TEST_F(HostileStore, LeftoversAreTakenAwayWhereverAKeyIsMade) {
  fs::create_directory(folder + "/.new-1-1");
  WriteFile(store + "/.new-1-1", "x");
  OpenedKey deep, top;
  ASSERT_EQ(errorSuccess, deep.Create(key, "a\\b"));
  EXPECT_FALSE(fs::exists(folder + "/.new-1-1"));
  fs::rename(store + "/HKEY_CURRENT_USER", store + "/elsewhere");
  ASSERT_EQ(errorSuccess, top.Create(CurrentUser(), ""));
  EXPECT_FALSE(fs::exists(store + "/.new-1-1"));
}

TEST_F(HostileStore, ALeftoverWithADirectoryInItStays) {
  fs::create_directories(folder + "/.new-1-1/inner");
  OpenedKey writer;
  EXPECT_EQ(errorSuccess, writer.Create(CurrentUser(), path.c_str()));
  EXPECT_TRUE(fs::exists(folder + "/.new-1-1/inner"));
  EXPECT_EQ(Strings{}, KeyNames(key));
}

}  // namespace
}  // namespace os
