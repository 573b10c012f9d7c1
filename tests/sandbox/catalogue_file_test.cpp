// Is a catalogue that changes sold as it is now, and does a bad one change nothing?
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "catalogue_file.h"
#include "money.h"
#include "sandbox/selling.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::string CatalogueOf(const std::string& price) {
  return R"({"applications": [{"guid": "g", "products": [{"SKU": 7, "Name": "n", "Price": ")" + price + R"("}]}]})";
}

void Write(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// As editors do it: the new file takes the place of the old one at once.
void Replace(const std::string& path, const std::string& text) {
  Write(path + ".new", text);
  std::filesystem::rename(path + ".new", path);
}

class CatalogueChange : public ::testing::Test {
 protected:
  CatalogueChange() { Write(path, CatalogueOf("1.00")); }
  void SetUp() override { file = std::make_unique<sandbox::CatalogueFile>(path); }

  std::string PriceNow() { return sandbox::AmountText(file->Current().FindSku(7, nullptr)->product->price); }

  // Looks at the file and returns what the log says of it.
  std::string Refresh() {
    words.str("");
    file->Refresh(log);
    return words.str();
  }

  TemporaryFolder folder;
  const std::string path = folder / "catalogue.json";
  std::unique_ptr<sandbox::CatalogueFile> file;
  std::ostringstream words;
  spdlog::logger log{"test", std::make_shared<spdlog::sinks::ostream_sink_mt>(words)};
};

TEST_F(CatalogueChange, NoneIsNotRead) {
  EXPECT_THAT(Refresh(), IsEmpty());
  EXPECT_EQ(PriceNow(), "1.00");
}

TEST_F(CatalogueChange, FileWrittenAnewIsRead) {
  Write(path, CatalogueOf("22.00"));
  EXPECT_THAT(Refresh(), HasSubstr("the catalogue has changed and was read: 1 applications"));
  EXPECT_EQ(PriceNow(), "22.00");
  EXPECT_THAT(Refresh(), IsEmpty());
}

TEST_F(CatalogueChange, FileOfTheSameLengthAndTimeThatReplacesTheOldOneIsRead) {
  const auto time = std::filesystem::last_write_time(path);
  Replace(path, CatalogueOf("3.00"));
  std::filesystem::last_write_time(path, time);
  Refresh();
  EXPECT_EQ(PriceNow(), "3.00");
}

TEST_F(CatalogueChange, BadFileKeepsTheOldOneAndIsToldOnce) {
  Write(path, "{\n\"applications\": [");
  const std::string told = Refresh();
  EXPECT_THAT(told, HasSubstr("error"));
  EXPECT_THAT(told, HasSubstr("the one before stays: " + path + ": line 2: this is not JSON"));
  EXPECT_EQ(PriceNow(), "1.00");
  EXPECT_THAT(Refresh(), IsEmpty());
}

TEST_F(CatalogueChange, FileThatIsMendedIsRead) {
  Write(path, "{");
  Refresh();
  Write(path, CatalogueOf("44.00"));
  Refresh();
  EXPECT_EQ(PriceNow(), "44.00");
}

TEST_F(CatalogueChange, FileThatIsGoneKeepsTheOldOneAndComesBack) {
  std::filesystem::remove(path);
  EXPECT_THAT(Refresh(), HasSubstr("the one before stays"));
  EXPECT_THAT(Refresh(), IsEmpty());
  EXPECT_EQ(PriceNow(), "1.00");
  Write(path, CatalogueOf("5.00"));
  Refresh();
  EXPECT_EQ(PriceNow(), "5.00");
}

// Whoever opened it would wait for its writer.
TEST_F(CatalogueChange, PipeInPlaceOfTheFileIsNotOpened) {
  std::filesystem::remove(path);
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_THAT(Refresh(), HasSubstr("is no file"));
  EXPECT_EQ(PriceNow(), "1.00");
}

class CatalogueOfAServer : public Selling {
 protected:
  std::string Products() const {
    const auto list = Client().Call("GetProductList", {{"GUID", "g"}}).value_or(Fields());
    return Value(list, "KEST-Error") + " " + Value(list, "KEST-Product");
  }
};

TEST_F(CatalogueOfAServer, IsSoldAsItIsNow) {
  ASSERT_EQ(Products(), "1101 (absent)");
  Replace(shop + "/catalogue.json", CatalogueOf("6.00"));
  ASSERT_TRUE(serve->WaitForLog("the catalogue has changed and was read"));
  EXPECT_EQ(Products(), "0 SKU:7^Name:n^Price:6.00");
  EXPECT_EQ(Value(Client().Call("BillCustomer", OrderOf(goodCard, 2)).value_or(Fields()), "KEST-TotalAmount"), "12.00");
}

TEST_F(CatalogueOfAServer, ThatIsBadKeepsTheOldOne) {
  Replace(shop + "/catalogue.json", "[]");
  ASSERT_TRUE(serve->WaitForLog("error the catalogue has changed and cannot be used, the one before stays"));
  EXPECT_EQ(ErrorCodeOf("BillCustomer", OrderOf(goodCard)), "0");
  Replace(shop + "/catalogue.json", CatalogueOf("7.00"));
  ASSERT_TRUE(serve->WaitForLog("the catalogue has changed and was read"));
  EXPECT_EQ(Products(), "0 SKU:7^Name:n^Price:7.00");
}

TEST_F(CatalogueOfAServer, DoesNotKeepItFromStopping) {
  Replace(shop + "/catalogue.json", CatalogueOf("6.00"));
  ASSERT_TRUE(serve->WaitForLog("the catalogue has changed and was read"));
  serve->Signal(SIGTERM);
  EXPECT_EQ(serve->Wait(), 0);
}

}  // namespace
}  // namespace sandboxtest
