#include <gtest/gtest.h>

#include "VLib/src/threads/TerminationLook.h"
#include "platform/os/Event.h"

namespace kestra {
namespace {

TEST(TerminationLook, IsOverFromTheSignalOn) {
  os::CEvent event;
  CTerminationLook look(&event);
  EXPECT_FALSE(look.IsOverNow());
  event.Set();
  EXPECT_FALSE(look.IsOver(1));  // too little work since the last look
  EXPECT_TRUE(look.IsOver(1 << 20));
  event.Reset();
  EXPECT_TRUE(look.IsOver(0));
  EXPECT_TRUE(look.IsOverNow());
}

TEST(TerminationLook, WhatNobodyCanSignal) {
  EXPECT_FALSE(CTerminationLook(nullptr).IsOverNow());
  const os::CBorrowedEvent closed(1'000'000);
  EXPECT_TRUE(CTerminationLook(&closed).IsOverNow());
}

}  // namespace
}  // namespace kestra
