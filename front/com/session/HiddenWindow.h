// The hidden window that carries the end of an asynchronous query back to the thread that owns the
// session: what is posted to it arrives there when the thread pumps messages.
#pragma once

#include <atomic>
#include <cstdint>

#include "front/com/base/Com.h"

namespace kestra::com {

// Posted by the worker; wParam is the query's id, lParam 0.
inline constexpr UINT WM_QUERY_DONE = 0x14E1;

// Who is called when the message has arrived, on the window's thread.
class CQueryDoneReceiver {
 public:
  virtual void OnQueryDone() noexcept = 0;

 protected:
  ~CQueryDoneReceiver() = default;
};

// Made and destroyed on the owner's thread; its handle may be posted to from any. A window keeps
// the library loaded until it is gone: one whose owner was released on another thread goes when its
// own thread pumps messages the next time.
class CHiddenWindow {
 public:
  // The receiver is borrowed, and must live as long as the window.
  explicit CHiddenWindow(CQueryDoneReceiver& receiver);
  ~CHiddenWindow() { Destroy(); }
  CHiddenWindow(const CHiddenWindow&) = delete;
  CHiddenWindow& operator=(const CHiddenWindow&) = delete;

  // Null when it could not be made, and once it is destroyed.
  HWND Handle() const { return m_window; }
  void Destroy();
  // Takes every WM_QUERY_DONE that is still queued out of the queue.
  void RemoveQueued();

  // At the library's unloading, with its handle.
  static void UnregisterWindowClass(HINSTANCE module);

 private:
  HWND m_window = nullptr;
  std::atomic<CQueryDoneReceiver*>* m_pReceiver = nullptr;  // the window's, while there is one
};

}  // namespace kestra::com
