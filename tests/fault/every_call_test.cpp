// Does every operation keep its promises whichever call to the system fails? Each call fails in turn, once and from
// then on, in each of the ways in which it can.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "fault/fault_world.h"
#include "fault/operation.h"

namespace kest::testing {
namespace {

std::vector<OperationCase> AllOperations() {
  std::vector<OperationCase> all;
  for (const auto& group :
       {ProductOperations(), SaleOperations(), ReceiptOperations(), SettingOperations(), ObjectOperations()}) {
    all.insert(all.end(), group.begin(), group.end());
  }
  return all;
}

class EveryCall : public ::testing::TestWithParam<OperationCase> {
 protected:
  static void TearDownTestSuite() { std::printf("all operations: %d points\n", allPoints); }

  // One operation with one call failing, then the same without the fault.
  void FailOne(std::uint64_t point, FaultSystem::Failing how, int way) {
    world.BeginAnew();
    std::unique_ptr<Operation> operation = GetParam().make();
    world.faults.FailAt(point, how, way);
    const bool isDone = operation->Run();
    const Failure failure = {world.faults.Points().at(static_cast<std::size_t>(point) - 1), way,
                             how == FaultSystem::Failing::fromThenOn};
    world.faults.FailNever();
    SCOPED_TRACE("call " + std::to_string(point) + ", " + failure.point.call + " " + failure.point.about + ", way " +
                 std::to_string(way) + (failure.isFromThenOn ? ", and all after it" : ""));
    EXPECT_EQ("", world.OpenHandles());
    Note(failure, operation->Ending(isDone), *operation);
    EXPECT_EQ("", operation->Fault(isDone, failure));
    EXPECT_TRUE(operation->Run()) << "the next call fails too";
    EXPECT_EQ(done, operation->Ending(true));
    EXPECT_EQ("", operation->Fault(true, Failure()));
    operation.reset();
    EXPECT_EQ("", world.Leak());
  }

  // Checks an ending, or keeps it for the order in which they come.
  void Note(const Failure& failure, const std::string& ending, const Operation& operation) {
    if (!failure.IsMemory()) {
      EXPECT_EQ(operation.EndingAfter(failure), ending);
      return;
    }
    std::vector<std::string>& endings = failure.isFromThenOn ? fromThenOn : withoutMemory;
    if (endings.empty() || endings.back() != ending) endings.push_back(ending);
  }

  // The calls of an operation without faults.
  std::vector<FaultPoint> Points() {
    world.BeginAnew();
    const std::unique_ptr<Operation> operation = GetParam().make();
    world.faults.FailNever();
    EXPECT_TRUE(operation->Run());
    const std::vector<FaultPoint> points = world.faults.Points();
    EXPECT_EQ("", operation->Fault(true, Failure()));
    return points;
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
  std::vector<std::string> withoutMemory, fromThenOn;
  static int allPoints;
};

int EveryCall::allPoints = 0;

TEST_P(EveryCall, FailsInTurnAndTheStatedResultComes) {
  const std::vector<FaultPoint> calls = Points();
  int points = 0;
  for (const auto how : {FaultSystem::Failing::once, FaultSystem::Failing::fromThenOn}) {
    for (std::size_t i = 0; i < calls.size(); ++i) {
      for (int way = 0; way < calls[i].ways; ++way, ++points) FailOne(i + 1, how, way);
    }
  }
  EXPECT_EQ(GetParam().withoutMemory, withoutMemory);
  EXPECT_EQ(GetParam().fromThenOn, fromThenOn);
  std::printf("%s: %d points\n", GetParam().name, points);
  EXPECT_GE(points, PointsBefore());
  allPoints += points;
}

INSTANTIATE_TEST_SUITE_P(Operations, EveryCall, ::testing::ValuesIn(AllOperations()),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace
}  // namespace kest::testing
