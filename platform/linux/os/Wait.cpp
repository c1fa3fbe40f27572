#include "platform/os/Wait.h"

#include <poll.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "platform/linux/os/Descriptor.h"

namespace kestra::os {
namespace {

constexpr int64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr size_t kUsualObjects = 16;

int64_t Now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

// The index of the first signalled object that gives itself, kWaitTimeOut for none.
int FirstSignalled(std::span<const CWaitable* const> objects, const pollfd* pPolls) {
  bool isBroken = false;
  for (size_t i = 0; i < objects.size(); ++i) {
    if (pPolls[i].revents & POLLNVAL) {
      isBroken = true;
    } else if (pPolls[i].revents != 0 && objects[i]->Consume()) {
      return static_cast<int>(i);
    }
  }
  // A descriptor that its owner has closed would end every poll at once.
  return isBroken ? kWaitFailed : kWaitTimeOut;
}

// One poll until deadline (negative: none).
int PollOnce(pollfd* pPolls, size_t count, int64_t deadline) {
  if (deadline < 0) return ppoll(pPolls, count, nullptr, nullptr);
  const int64_t rest = std::max<int64_t>(deadline - Now(), 0);
  const timespec limit{rest / kNanosecondsPerSecond, rest % kNanosecondsPerSecond};
  return ppoll(pPolls, count, &limit, nullptr);
}

}  // namespace

int WaitAny(std::span<const CWaitable* const> objects, uint32_t timeOutMs) {
  pollfd usualPolls[kUsualObjects];
  std::vector<pollfd> manyPolls;
  pollfd* pPolls = usualPolls;
  if (objects.size() > kUsualObjects) {
    manyPolls.resize(objects.size());
    pPolls = manyPolls.data();
  }
  bool hasObject = false;
  for (size_t i = 0; i < objects.size(); ++i) {
    const int descriptor = objects[i] ? DescriptorOf(objects[i]->Native()) : -1;
    pPolls[i] = {descriptor, POLLIN, 0};
    hasObject = hasObject || descriptor >= 0;
  }
  if (!hasObject && timeOutMs == kInfinite) return kWaitFailed;
  const int64_t deadline =
      timeOutMs == kInfinite ? -1 : Now() + timeOutMs * kNanosecondsPerMillisecond;
  for (;;) {
    const int ready = PollOnce(pPolls, objects.size(), deadline);
    if (ready == 0) return kWaitTimeOut;
    if (ready < 0 && errno != EINTR) return kWaitFailed;
    if (ready < 0) continue;
    const int index = FirstSignalled(objects, pPolls);
    if (index != kWaitTimeOut) return index;
  }
}

int WaitAnyDispatching(std::span<const CWaitable* const> objects, uint32_t timeOutMs) {
  return WaitAny(objects, timeOutMs);
}

}  // namespace kestra::os
