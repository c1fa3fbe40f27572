#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/os/Thread.h"

namespace kestra::os {
namespace {

// A lock that tells owners apart by these numbers would take the child for its parent otherwise.
TEST(CurrentThreadId, OfAForkedChildIsItsOwn) {
  const uint32_t parent = CurrentThreadId();
  const pid_t child = fork();
  if (child == 0) _exit(CurrentThreadId() == static_cast<uint32_t>(gettid()) ? 0 : 1);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(CurrentThreadId(), parent);
}

}  // namespace
}  // namespace kestra::os
