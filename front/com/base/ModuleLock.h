// How many objects of this library are alive: while there are any, the library must stay loaded.
#pragma once

namespace kestra::com {

// Held by every object, from its constructor to its destructor. Any thread.
class CModuleLock {
 public:
  CModuleLock() { Lock(); }
  ~CModuleLock() { Unlock(); }
  CModuleLock(const CModuleLock&) = delete;
  CModuleLock& operator=(const CModuleLock&) = delete;

  // For IClassFactory::LockServer.
  static void Lock();
  static void Unlock();
  static long Count();
};

}  // namespace kestra::com
