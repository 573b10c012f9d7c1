#include "core/exception.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "support/storage_inspection.h"

namespace Qor {
namespace {

using kest::String;

TEST(Exception, HasACodeAndAMessage) {
  const Exception exception(7, "abc");
  EXPECT_EQ(7u, exception.Code());
  EXPECT_STREQ("abc", exception.Message().Characters());
}

TEST(Exception, ACopySharesTheMessage) {
  const Exception exception(7, "abc");
  const Exception copy(exception);
  EXPECT_EQ(7u, copy.Code());
  EXPECT_EQ(exception.Message().Characters(), copy.Message().Characters());
}

TEST(Exception, HasNoVirtualFunctions) {
  EXPECT_FALSE(std::is_polymorphic<Exception>::value);
  EXPECT_EQ(sizeof(Exception), sizeof(MemoryException));
}

TEST(MemoryException, HasCodeZeroAndAnEmptyMessage) {
  const MemoryException exception;
  EXPECT_EQ(0u, exception.Code());
  EXPECT_EQ(nullptr, exception.Message().Characters());
}

TEST(MemoryException, IsCaughtAsItself) { EXPECT_THROW(throw MemoryException(), MemoryException); }

TEST(MemoryException, IsCaughtAsItsBase) { EXPECT_THROW(throw MemoryException(), Exception); }

}  // namespace
}  // namespace Qor
