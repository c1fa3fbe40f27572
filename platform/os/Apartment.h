// What a thread of ours needs of the system before it may call services that are reached by COM.
#pragma once

namespace kestra::os {

// On the thread that makes it, until it is destroyed there. On Linux there is nothing to do.
class CApartmentScope {
 public:
  CApartmentScope();
  ~CApartmentScope();
  CApartmentScope(const CApartmentScope&) = delete;
  CApartmentScope& operator=(const CApartmentScope&) = delete;

  // False when the system refused.
  bool IsReady() const { return m_isReady; }

 private:
  bool m_isReady;
};

}  // namespace kestra::os
