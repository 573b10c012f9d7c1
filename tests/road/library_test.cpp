// A host that loads the library, lets it go and loads it again. In a program of its own: nothing else here may keep the
// library in the process.
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "road/loaded.h"
#include "road/road_test.h"

namespace kest_road {
namespace {

void Configure(kest_host::Library& library) {
  const auto port = static_cast<std::uint32_t>(std::stoul(Environment("KEST_PORT")));
  ASSERT_EQ(1, library.KestSetServer("localhost", port, ReadFile(Environment("KEST_KEY_FILE")).c_str()));
  library.KestSetApplicationGuid("8E0F7A12-BFB3-4FE8-B9A5-48FD50A15A9A");
}

void Fetch(kest_host::Library& library) {
  KestProductList* list = library.KestCreateProductList();
  EXPECT_EQ(1, library.KestGetProductList(list, "2.1"));
  library.KestDestroyProductList(list);
}

// Fetches a list from a server that is looked up by name, and lets the library go.
void LoadFetchAndUnload() {
  kest_host::Library library(Environment("KESTAPI_LIBRARY"));
  EXPECT_TRUE(IsLoaded(Environment("KESTAPI_LIBRARY")));
  Configure(library);
  Fetch(library);
}

TEST(LibraryRoad, LoadingUnloadingAndLoadingAgainWorks) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(IsLoaded(Environment("KESTAPI_LIBRARY"))) << i;
    LoadFetchAndUnload();
  }
  EXPECT_FALSE(IsLoaded(Environment("KESTAPI_LIBRARY")));
}

TEST(LibraryRoad, AThreadThatCalledItOutlivesTheLibrary) {
  std::promise<void> called, unloaded;
  std::thread thread([&] {
    LoadFetchAndUnload();
    called.set_value();
    unloaded.get_future().wait();
  });
  called.get_future().wait();
  EXPECT_FALSE(IsLoaded(Environment("KESTAPI_LIBRARY")));
  unloaded.set_value();
  thread.join();  // what the library left with the thread would be called here
  LoadFetchAndUnload();
}

TEST(LibraryRoad, SeveralThreadsUseItAndItIsUnloadedAndLoadedAgainBehindThem) {
  for (int i = 0; i < 3; ++i) {
    {
      kest_host::Library library(Environment("KESTAPI_LIBRARY"));
      Configure(library);
      std::vector<std::thread> threads;
      for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&library] {
          for (int call = 0; call < 3; ++call) Fetch(library);
        });
      }
      for (std::thread& thread : threads) thread.join();
    }
    EXPECT_FALSE(IsLoaded(Environment("KESTAPI_LIBRARY"))) << i;
  }
}

// Settings belong to no thread, and the one that loaded the library takes nothing with it.
TEST(LibraryRoad, LibraryOutlivesTheThreadThatLoadedItAndIsUnloadedByAnother) {
  std::unique_ptr<kest_host::Library> library;
  std::thread([&library] {
    library = std::make_unique<kest_host::Library>(Environment("KESTAPI_LIBRARY"));
    Configure(*library);
  }).join();
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) threads.emplace_back([&library] { Fetch(*library); });
  for (std::thread& thread : threads) thread.join();
  std::thread([&library] { library.reset(); }).join();
  EXPECT_FALSE(IsLoaded(Environment("KESTAPI_LIBRARY")));
}

TEST(LibraryRoad, ALibraryLoadedAgainKnowsNothingOfBefore) {
  LoadFetchAndUnload();
  kest_host::Library library(Environment("KESTAPI_LIBRARY"));
  KestProductList* list = library.KestCreateProductList();
  EXPECT_EQ(0, library.KestGetProductList(list, "2.1"));
  EXPECT_EQ(KEST_ERROR_EXCHANGE, library.KestGetErrorCode(KEST_FIELDS(list)));
  library.KestDestroyProductList(list);
}

}  // namespace
}  // namespace kest_road
