#include "src/common/unique_handle.h"

#include <type_traits>
#include <utility>
#include <vector>

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

std::vector<int> closed;

struct NumberTraits {
  using Type = int;
  static Type empty() { return 0; }
  static bool isValid(Type value) { return value > 0; }
  static void close(Type value) { closed.push_back(value); }
};
using Number = UniqueHandle<NumberTraits>;

class UniqueHandleTest : public ::testing::Test {
 protected:
  UniqueHandleTest() { closed.clear(); }
};

TEST_F(UniqueHandleTest, EmptyOneHoldsNothingAndClosesNothing) {
  {
    const Number empty;
    EXPECT_FALSE(empty);
    EXPECT_EQ(empty.get(), 0);
  }
  EXPECT_EQ(closed, std::vector<int>());
}

TEST_F(UniqueHandleTest, ClosesOnceAtTheEndOfItsLife) {
  {
    const Number one(1);
    EXPECT_TRUE(one);
    EXPECT_EQ(one.get(), 1);
    EXPECT_EQ(closed, std::vector<int>());
  }
  EXPECT_EQ(closed, std::vector<int>{1});
}

TEST_F(UniqueHandleTest, InvalidValueIsKeptButNeverClosed) {
  {
    const Number invalid(-1);
    EXPECT_FALSE(invalid);
    EXPECT_EQ(invalid.get(), -1);
  }
  EXPECT_EQ(closed, std::vector<int>());
}

TEST_F(UniqueHandleTest, MoveConstructionTakesTheValueOver) {
  {
    Number one(1);
    const Number other(std::move(one));
    EXPECT_EQ(other.get(), 1);
    EXPECT_EQ(one.get(), 0);  // NOLINT: the emptied source is what is tested
    EXPECT_EQ(closed, std::vector<int>());
  }
  EXPECT_EQ(closed, std::vector<int>{1});
}

TEST_F(UniqueHandleTest, MoveAssignmentClosesWhatWasHeldBefore) {
  {
    Number one(1);
    Number two(2);
    one = std::move(two);
    EXPECT_EQ(closed, std::vector<int>{1});
    EXPECT_EQ(one.get(), 2);
    EXPECT_EQ(two.get(), 0);  // NOLINT
  }
  EXPECT_EQ(closed, (std::vector<int>{1, 2}));
}

TEST_F(UniqueHandleTest, MoveAssignmentOfAnEmptyOneClosesAndEmpties) {
  Number one(1);
  one = Number();
  EXPECT_EQ(closed, std::vector<int>{1});
  EXPECT_EQ(one.get(), 0);
}

TEST_F(UniqueHandleTest, MoveAssignmentToItselfKeepsTheValueOpen) {
  Number one(1);
  Number& same = one;
  one = std::move(same);
  EXPECT_EQ(one.get(), 1);
  EXPECT_EQ(closed, std::vector<int>());
  one.reset();
  EXPECT_EQ(closed, std::vector<int>{1});
}

TEST_F(UniqueHandleTest, ReleaseHandsTheValueOutUnclosed) {
  Number one(1);
  EXPECT_EQ(one.release(), 1);
  EXPECT_FALSE(one);
  one.reset();
  EXPECT_EQ(closed, std::vector<int>());
}

TEST_F(UniqueHandleTest, ResetClosesTheOldAndHoldsTheNew) {
  Number one(1);
  one.reset(2);
  EXPECT_EQ(closed, std::vector<int>{1});
  EXPECT_EQ(one.get(), 2);
  one.reset();
  one.reset();
  EXPECT_EQ(closed, (std::vector<int>{1, 2}));
}

TEST_F(UniqueHandleTest, PutClosesFirstAndGivesTheAddressOfAnEmptyValue) {
  Number one(1);
  int* const slot = one.put();
  EXPECT_EQ(closed, std::vector<int>{1});
  EXPECT_EQ(*slot, 0);
  *slot = 2;
  EXPECT_EQ(one.get(), 2);
}

static_assert(!std::is_copy_constructible_v<Number> && !std::is_copy_assignable_v<Number>);
static_assert(std::is_nothrow_move_constructible_v<Number>);
static_assert(std::is_nothrow_move_assignable_v<Number>);

class KernelHandleTest : public sim::MachineTest {};

TEST_F(KernelHandleTest, OpenHandleIsClosedOnce) {
  {
    const KernelHandle job(CreateJobObjectW(nullptr, nullptr));
    EXPECT_TRUE(job);
    EXPECT_EQ(machine.OpenHandles(), std::vector<std::string>{"job from CreateJobObjectW"});
  }
  EXPECT_EQ(machine.calls.TextsOf("CloseHandle"), std::vector<std::string>{"job"});
}

TEST_F(KernelHandleTest, BothFailureValuesAreNeverClosed) {
  {
    const KernelHandle null(nullptr);
    const KernelHandle invalid(INVALID_HANDLE_VALUE);
    EXPECT_FALSE(null);
    EXPECT_FALSE(invalid);
  }
  EXPECT_EQ(machine.calls.Count("CloseHandle"), 0u);
}

class UniqueFileTest : public sim::MachineTest {};

TEST_F(UniqueFileTest, StreamIsClosedOnceAndNullIsNot) {
  machine.files.Put(L"C:\\run\\a");
  {
    const UniqueFile file(_wfsopen(L"C:\\run\\a", L"rb", _SH_DENYNO));
    const UniqueFile none(nullptr);
    EXPECT_TRUE(file);
    EXPECT_FALSE(none);
    EXPECT_EQ(machine.OpenHandles(), std::vector<std::string>{"stream C:\\run\\a from _wfsopen"});
  }
  EXPECT_EQ(machine.OpenHandles(), std::vector<std::string>());
}

}  // namespace
}  // namespace vpn
