// Several processes and threads use the registry at once: none loses a value, and what is read was written whole.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>

#include "unit/os/registry_place.h"
#include "unit/os/traced_child.h"

namespace os {
namespace {

constexpr int processCount = 8;

class Together : public RegistryPlace {
 protected:
  // Runs `work` in eight processes at once, each with its own number and a key that it opened itself. A pipe that all
  // of them wait on lets them begin together.
  void RunProcesses(const std::function<bool(RegistryHandle, int)>& work) {
    int gate[2];
    ASSERT_EQ(0, pipe(gate));
    int processes[processCount];
    for (int number = 0; number < processCount; ++number) {
      processes[number] = Start([&] {
        close(gate[1]);
        char end;
        if (read(gate[0], &end, 1) != 0) return 1;
        OpenedKey own;
        if (own.Create(CurrentUser(), path.c_str()) != errorSuccess) return 2;
        return work(own, number) ? 0 : 3;
      });
    }
    close(gate[0]);
    close(gate[1]);
    for (const int process : processes) EXPECT_EQ(0, WaitFor(process));
  }
};

std::string NumberedName(int process, int number) {
  return "Value " + std::to_string(process) + "-" + std::to_string(number);
}

TEST_F(Together, NoneLosesAValue) {
  constexpr int each = 40;
  RunProcesses([](RegistryHandle own, int process) {
    for (int number = 0; number < each; ++number) {
      const std::string name = NumberedName(process, number);
      if (Set(own, name.c_str(), typeString, "data of " + name) != errorSuccess) return false;
    }
    return true;
  });
  EXPECT_EQ(static_cast<std::size_t>(processCount * each), ValueNames(key).size());
  for (int process = 0; process < processCount; ++process) {
    for (int number = 0; number < each; ++number) {
      const std::string name = NumberedName(process, number);
      EXPECT_EQ("data of " + name, Get(key, name.c_str()).data);
    }
  }
}

TEST_F(Together, TakingLeftoversAwayTakesNothingThatIsBeingWritten) {
  RunProcesses([this](RegistryHandle own, int process) {
    for (int round = 0; round < 100; ++round) {
      OpenedKey other;
      const std::string name = NumberedName(process, round);
      const bool isWriter = process % 2 != 0;
      if (isWriter && Set(own, name.c_str(), typeString, "data") != errorSuccess) return false;
      if (isWriter && Get(own, name.c_str()).data != "data") return false;
      if (!isWriter && other.Create(CurrentUser(), path.c_str()) != errorSuccess) return false;
    }
    return true;
  });
  EXPECT_EQ(400u, ValueNames(key).size());
}

// Data of any length that shows whether it is whole: one letter alone.
bool IsOfOneWriter(const StoredValue& value) {
  return !value.data.empty() && value.data.find_first_not_of(value.data[0]) == std::string::npos &&
         value.data.size() == 1000u * (1u + static_cast<unsigned>(value.data[0] - 'a'));
}

std::string DataOf(int process) {
  return std::string(1000u * (1u + static_cast<unsigned>(process)), 'a' + process);
}

TEST_F(Together, AValueOfManyWritersIsAlwaysThatOfOne) {
  ASSERT_EQ(errorSuccess, Set(key, "Shared", typeBinary, DataOf(0)));
  RunProcesses([](RegistryHandle own, int process) {
    for (int round = 0; round < 40; ++round) {
      if (Set(own, process % 2 != 0 ? "shared" : "SHARED", typeBinary, DataOf(process)) != errorSuccess) return false;
      // Others may have made it longer between the asking for its size and the reading.
      const StoredValue found = Get(own, "Shared");
      if (found.error != errorMoreData && !IsOfOneWriter(found)) return false;
    }
    return true;
  });
  EXPECT_TRUE(IsOfOneWriter(Get(key, "Shared")));
  EXPECT_EQ(std::vector<std::string>{"Shared"}, ValueNames(key));
}

TEST_F(Together, AKeyIsMadeOnceWhateverTheCaseOfLetters) {
  RunProcesses([](RegistryHandle own, int process) {
    for (int round = 0; round < 20; ++round) {
      std::string name = "receipts " + std::to_string(round);
      if (process % 4 != 0) name[static_cast<std::size_t>(process % 4)] -= 'a' - 'A';
      OpenedKey made;
      if (made.Create(own, name.c_str()) != errorSuccess) return false;
      if (Set(made, std::to_string(process).c_str(), typeString, "here") != errorSuccess) return false;
    }
    return true;
  });
  const std::vector<std::string> names = KeyNames(key);
  EXPECT_EQ(20u, names.size());
  for (const std::string& name : names) {
    OpenedKey made;
    ASSERT_EQ(errorSuccess, made.Open(key, name.c_str()));
    EXPECT_EQ(static_cast<std::size_t>(processCount), ValueNames(made).size()) << name;
  }
}

TEST_F(Together, AWalkSeesEveryValueThatStoodAllTheTime) {
  for (int number = 0; number < 20; ++number) {
    ASSERT_EQ(errorSuccess, Set(key, ("old " + std::to_string(number)).c_str(), typeString, "x"));
  }
  const int writer = Start([&] {
    OpenedKey own;
    if (own.Create(CurrentUser(), path.c_str()) != errorSuccess) return 1;
    for (int number = 0; number < 200; ++number) {
      if (Set(own, NumberedName(0, number % 100).c_str(), typeString, "x") != errorSuccess) return 2;
      if (Set(own, ("OLD " + std::to_string(number % 20)).c_str(), typeString, "y") != errorSuccess) return 3;
    }
    return 0;
  });
  for (int walk = 0; walk < 50; ++walk) {
    std::vector<std::string> names = ValueNames(key);
    EXPECT_EQ(20, std::count_if(names.begin(), names.end(), [](auto& name) { return name.substr(0, 3) == "old"; }));
    EXPECT_EQ(names.end(), std::adjacent_find(names.begin(), names.end()));
  }
  EXPECT_EQ(0, WaitFor(writer));
  EXPECT_EQ(120u, ValueNames(key).size());
}

TEST_F(Together, ThreadsUseHandlesOfTheirOwn) {
  std::vector<std::thread> threads;
  std::atomic<int> failures{0};
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      OpenedKey own;
      failures += own.Create(CurrentUser(), path.c_str()) != errorSuccess;
      for (int number = 0; number < 20; ++number) {
        failures += Set(own, NumberedName(thread, number).c_str(), typeString, "x") != errorSuccess;
        failures += ValueNames(own).empty();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, failures);
  EXPECT_EQ(80u, ValueNames(key).size());
}

}  // namespace
}  // namespace os
