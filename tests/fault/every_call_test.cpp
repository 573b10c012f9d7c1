// Does every operation keep its promises whichever call to the system fails? Each call fails in turn, in each of the
// ways in which it can: once, with everything after it, and with all later calls of its name.
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

// A registry that answers for ever that the value has just become longer holds a reader for ever: the read is to be
// repeated each time, and nothing says how often. This is the one failure that cannot be lasting.
bool CanLast(const FaultPoint& point, int way) {
  constexpr int moreData = 2;
  return point.call != "RegQueryValueExA" || way != moreData;
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
    const Failure failure = FailureAt(static_cast<std::size_t>(point) - 1, how, way);
    world.faults.FailNever();
    SCOPED_TRACE("call " + std::to_string(point) + ", " + failure.point.call + " " + failure.point.about + ", way " +
                 std::to_string(way) + (failure.isFromThenOn ? ", and all after it" : "") +
                 (failure.isAlike ? ", and all after it of its name" : ""));
    EXPECT_EQ("", world.OpenHandles());
    Note(failure, operation->Ending(isDone), *operation);
    EXPECT_EQ("", operation->Fault(isDone, failure));
    EXPECT_TRUE(operation->Run()) << "the next call fails too";
    EXPECT_EQ(done, operation->Ending(true));
    EXPECT_EQ("", operation->Fault(true, Failure()));
    operation.reset();
    EXPECT_EQ("", world.Leak());
  }

  Failure FailureAt(std::size_t index, FaultSystem::Failing how, int way) const {
    const std::vector<FaultPoint>& points = world.faults.Points();
    Failure failure = {points.at(index), way};
    for (std::size_t i = 0; i < index; ++i) failure.earlier += points[i].call == failure.point.call ? 1 : 0;
    failure.isFromThenOn = how == FaultSystem::Failing::fromThenOn;
    failure.isAlike = how == FaultSystem::Failing::alikeFromThenOn;
    return failure;
  }

  // Checks an ending, or keeps it for the order in which they come.
  void Note(const Failure& failure, const std::string& ending, const Operation& operation) {
    if (!failure.IsMemory()) {
      EXPECT_EQ(operation.EndingAfter(failure), ending);
      return;
    }
    std::vector<std::string>& endings =
        failure.isFromThenOn ? fromThenOn : failure.isAlike ? withoutAnyMemory : withoutMemory;
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
  std::vector<std::string> withoutMemory, withoutAnyMemory, fromThenOn;
  static int allPoints;
};

int EveryCall::allPoints = 0;

TEST_P(EveryCall, FailsInTurnAndTheStatedResultComes) {
  const std::vector<FaultPoint> calls = Points();
  int points = 0;
  using Failing = FaultSystem::Failing;
  for (const auto how : {Failing::once, Failing::fromThenOn, Failing::alikeFromThenOn}) {
    for (std::size_t i = 0; i < calls.size(); ++i) {
      for (int way = 0; way < calls[i].ways; ++way) {
        if (how == Failing::alikeFromThenOn && !CanLast(calls[i], way)) continue;
        FailOne(i + 1, how, way);
        ++points;
      }
    }
  }
  EXPECT_EQ(GetParam().withoutMemory, withoutMemory);
  EXPECT_EQ(GetParam().withoutMemory, withoutAnyMemory);
  EXPECT_EQ(GetParam().fromThenOn, fromThenOn);
  std::printf("%s: %d points\n", GetParam().name, points);
  EXPECT_GE(points, PointsBefore());
  allPoints += points;
}

INSTANTIATE_TEST_SUITE_P(Operations, EveryCall, ::testing::ValuesIn(AllOperations()),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace
}  // namespace kest::testing
