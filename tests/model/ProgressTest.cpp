// What a query tells of what it is doing.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "model/items/QueryMessage.h"

namespace kestra::test {
namespace {

// "text done/total"; "-" for nothing.
std::string Show(const CProgress& progress) {
  std::string text;
  uint64_t done = 0, total = 0;
  if (!progress.Read(text, done, total)) return "-";
  return text + " " + std::to_string(done) + "/" + std::to_string(total);
}

TEST(Progress, IsThatOfTheInnermostFilling) {
  QueryMessage message;
  message.TellPlace("nobody looks", 1);
  { const CFillProgress nothing(message, "nobody looks"); }
  message.Progress = MakeRef<CProgress>();
  EXPECT_EQ(Show(*message.Progress), "-");
  {
    const CFillProgress outer(message, "Files");
    EXPECT_EQ(Show(*message.Progress), "Files 0/0");
    message.TellPlace("/usr", 12);
    EXPECT_EQ(Show(*message.Progress), "Files: /usr 12/0");
    {
      const CFillProgress inner(message, "Processes");
      message.TellAmount(3, 70);
      EXPECT_EQ(Show(*message.Progress), "Processes 3/70");
    }
    EXPECT_EQ(Show(*message.Progress), "Files 12/0");
  }
  EXPECT_EQ(Show(*message.Progress), "-");
}

// Nothing that is done is lost; the place is taken over now and then.
TEST(Progress, CountsWhatSeveralThreadsDo) {
  QueryMessage message;
  message.Progress = MakeRef<CProgress>();
  const CFillProgress filling(message, "Files");
  const auto work = [&] {
    const Ref<QueryMessage> own = message.ForHelper();
    for (int i = 0; i < 10000; ++i) own->TellPlace("/a", 2);
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(Show(*message.Progress), "Files: /a 40000/0");
  std::this_thread::sleep_for(std::chrono::milliseconds(70));
  message.TellPlace("/b", 0);
  EXPECT_EQ(Show(*message.Progress), "Files: /b 40000/0");
}

}  // namespace
}  // namespace kestra::test
