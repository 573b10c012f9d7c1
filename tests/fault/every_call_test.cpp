// Does every operation keep its promises whichever call to the system fails? Each call fails in turn, once and from then
// on, in each of the ways in which it can.
#include <gtest/gtest.h>

#include <fstream>

#include "fault/fault_world.h"
#include "fault/operation.h"

namespace kest::testing {
namespace {

class EveryCall : public ::testing::TestWithParam<OperationCase> {
 protected:
  // One operation with one call failing, then the same without the fault.
  void FailOne(std::uint64_t point, FaultSystem::Failing how, int way) {
    world.BeginAnew();
    std::unique_ptr<Operation> operation = GetParam().make();
    world.faults.FailAt(point, how, way);
    const bool isDone = operation->Run();
    const std::string failed = world.faults.Calls().at(static_cast<std::size_t>(point) - 1);
    world.faults.FailNever();
    SCOPED_TRACE("call " + std::to_string(point) + ", " + failed + ", way " + std::to_string(way));
    // Without memory from then on, any later allocation may be the one that failed.
    const bool isMemory = failed == "GlobalAlloc" || how == FaultSystem::Failing::fromThenOn;
    EXPECT_EQ("", operation->Fault(isDone, isMemory));
    if (how == FaultSystem::Failing::once) {
      EXPECT_EQ(operation->Outcome(failed, way).value_or(isDone), isDone);
    }
    EXPECT_TRUE(operation->Run()) << "the next call fails too";
    EXPECT_EQ("", operation->Fault(true, false));
    operation.reset();
    EXPECT_EQ("", world.Leak());
  }

  // In how many ways each call of an operation without faults can fail.
  std::vector<int> Ways() {
    world.BeginAnew();
    const std::unique_ptr<Operation> operation = GetParam().make();
    world.faults.FailNever();
    EXPECT_TRUE(operation->Run());
    return world.faults.Ways();
  }

  // The least number of points that earlier runs reached.
  int PointsBefore() {
    std::ifstream file(KEST_FAULT_POINTS);
    std::string name;
    for (int points; file >> name >> points;) {
      if (name == GetParam().name) return points;
    }
    ADD_FAILURE() << GetParam().name << " is missing from " << KEST_FAULT_POINTS;
    return 0;
  }

  FaultWorld world;
};

TEST_P(EveryCall, FailsInTurnAndTheStatedResultComes) {
  const std::vector<int> ways = Ways();
  int points = 0;
  for (const auto how : {FaultSystem::Failing::once, FaultSystem::Failing::fromThenOn}) {
    for (std::size_t i = 0; i < ways.size(); ++i) {
      for (int way = 0; way < ways[i]; ++way, ++points) FailOne(i + 1, how, way);
    }
  }
  std::printf("%s: %d points\n", GetParam().name, points);
  EXPECT_GE(points, PointsBefore());
}

INSTANTIATE_TEST_SUITE_P(Operations, EveryCall, ::testing::ValuesIn(AllOperations()),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace
}  // namespace kest::testing
