// Events: the signals between threads, and between a host and a query.
#pragma once

#include <atomic>

#include "platform/base/Ref.h"
#include "platform/os/Wait.h"

namespace kestra::os {

// An event that stays signalled until it is reset. Every operation is safe from any thread.
class CEvent final : public CWaitable, public CCounted<CEvent> {
 public:
  CEvent();
  ~CEvent() override;
  CEvent(const CEvent&) = delete;
  CEvent& operator=(const CEvent&) = delete;

  void Set();
  void Reset();
  // Costs one atomic read.
  bool IsSet() const { return m_isSet.load(std::memory_order_acquire); }
  // False when the system had no more handles: the event then works for IsSet but ends no wait.
  bool IsValid() const { return m_handle != kNoHandle; }
  NativeHandle Native() const override { return m_handle; }
  // Who waited for the event sees what was done before it was set, whatever it is by now.
  bool Consume() const override {
    [[maybe_unused]] const bool isStillSet = IsSet();
    return true;
  }

 private:
  std::atomic<bool> m_isSet{false};
  NativeHandle m_handle = kNoHandle;
};

// An event that lets one waiter through per signal.
class CAutoResetEvent final : public CWaitable {
 public:
  CAutoResetEvent();
  ~CAutoResetEvent() override;
  CAutoResetEvent(const CAutoResetEvent&) = delete;
  CAutoResetEvent& operator=(const CAutoResetEvent&) = delete;

  void Set();
  void Reset();
  bool IsValid() const { return m_handle != kNoHandle; }
  NativeHandle Native() const override { return m_handle; }
  bool Consume() const override;

 private:
  NativeHandle m_handle = kNoHandle;
};

// An event of the host's, known only by its handle (on Linux a descriptor that is polled and never
// read). It is not closed here, and must stay open for as long as this object is used.
class CBorrowedEvent final : public CWaitable, public CCounted<CBorrowedEvent> {
 public:
  explicit CBorrowedEvent(NativeHandle handle) : m_handle(handle) {}
  NativeHandle Native() const override { return m_handle; }

 private:
  NativeHandle m_handle;
};

// A handle of our own to the same event as another object's, for what may outlive that object.
class CKeptEvent final : public CWaitable, public CCounted<CKeptEvent> {
 public:
  explicit CKeptEvent(const CWaitable& event);
  ~CKeptEvent() override;
  CKeptEvent(const CKeptEvent&) = delete;
  CKeptEvent& operator=(const CKeptEvent&) = delete;

  NativeHandle Native() const override { return m_handle; }

 private:
  NativeHandle m_handle = kNoHandle;
};

}  // namespace kestra::os
