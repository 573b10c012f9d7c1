// A disk that is really full, where this may be tried: as the superuser, with a file system of one megabyte in memory.
#include <gmock/gmock.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

#include "database.h"
#include "sandbox/selling.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;

class FullDisk : public Selling {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(shop);
    // Seen by this program and what it starts alone, and gone with them however they end.
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("tmpfs", shop.c_str(), "tmpfs", 0, "size=1m") != 0) {
      GTEST_SKIP() << "no file system can be mounted here: " << std::strerror(errno);
    }
    mounted = true;
    Selling::SetUp();
  }

  void TearDown() override {
    serve.reset();
    if (mounted) ::umount2(shop.c_str(), MNT_DETACH);
  }

  // Writes a file until nothing more fits.
  void Fill() {
    std::ofstream filler(shop + "/filler", std::ios::binary);
    const std::string piece(512, 'x');
    while (filler.write(piece.data(), static_cast<std::streamsize>(piece.size())) && filler.flush()) {
    }
  }

  // Answers the transaction of a sale of many lines; empty when it was not acknowledged.
  std::string Sell() {
    Fields order = OrderOf(goodCard);
    order.resize(300, {"KEST-Product", "SKU:7^Quantity:1"});
    const Fields reply = Client().Call("BillCustomer", order).value_or(Fields());
    return Value(reply, "KEST-Error") == "0" ? Value(reply, "KEST-TxN") : "";
  }

  bool mounted = false;
};

TEST_F(FullDisk, NoSaleIsAnsweredThatIsNotThereAndSalesGoOnWhenThereIsSpace) {
  std::set<std::string> answered = {Sell()};
  Fill();
  int failed = 0;
  for (int i = 0; i < 20; i++) {
    const std::string number = Sell();
    number.empty() ? void(failed++) : void(answered.insert(number));
  }
  EXPECT_GT(failed, 10);
  EXPECT_TRUE(serve->WaitForLog("database or disk is full"));
  EXPECT_EQ(ErrorCodeOf("GetBill", {{"KEST-TxN", "100001"}}), "0");
  std::filesystem::remove(shop + "/filler");
  for (int i = 0; i < 3; i++) answered.insert(Sell());
  EXPECT_EQ(answered.count(""), 0u);

  serve->Signal(SIGKILL);
  serve->Wait();
  Start();
  for (const std::string& number : answered) EXPECT_EQ(ErrorCodeOf("GetBill", {{"KEST-TxN", number}}), "0") << number;
}

TEST_F(FullDisk, ServerThatCannotMakeItsDatabaseSaysSo) {
  serve->Signal(SIGTERM);
  serve->Wait();
  std::filesystem::remove(shop + "/sales.db");
  Fill();
  Process again({"serve", shop});
  EXPECT_EQ(again.Wait(), 1);
  EXPECT_THAT(again.Log(), HasSubstr("sales.db cannot be used: "));
  EXPECT_THAT(again.Log(), HasSubstr("full"));
}

}  // namespace
}  // namespace sandboxtest
