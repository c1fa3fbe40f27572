#include "front/com/session/HiddenWindow.h"

#include <utility>

#include "platform/os/HostEnvironment.h"

namespace kestra::com {
namespace {

constexpr const wchar_t* kName = L"VSorrelCOMObjWindow";  // of the class, and the window's title

HINSTANCE OwnModule() {
  return reinterpret_cast<HINSTANCE>(os::LibraryLoadAddress());
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != WM_QUERY_DONE) return DefWindowProcW(window, message, wParam, lParam);
  auto* const pReceiver =
      reinterpret_cast<CQueryDoneReceiver*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (pReceiver) pReceiver->OnQueryDone();
  return 0;
}

// Fails, harmlessly, when the class is there already.
void RegisterWindowClass() {
  WNDCLASSEXW windowClass{};
  windowClass.cbSize = sizeof(windowClass);
  windowClass.lpfnWndProc = WindowProcedure;
  windowClass.hInstance = OwnModule();
  windowClass.lpszClassName = kName;
  RegisterClassExW(&windowClass);
}

}  // namespace

CHiddenWindow::CHiddenWindow(CQueryDoneReceiver& receiver) {
  RegisterWindowClass();
  m_window = CreateWindowExW(0, kName, kName, WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, OwnModule(),
                             nullptr);
  if (m_window) {
    SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&receiver));
  }
}

// A thread that does not own the window cannot destroy it; without the receiver it does no harm
// until its thread ends, which takes it along.
void CHiddenWindow::Destroy() {
  const HWND window = std::exchange(m_window, nullptr);
  if (!window) return;
  SetWindowLongPtrW(window, GWLP_USERDATA, 0);
  DestroyWindow(window);
}

void CHiddenWindow::RemoveQueued() {
  MSG message;
  while (m_window && PeekMessageW(&message, m_window, WM_QUERY_DONE, WM_QUERY_DONE, PM_REMOVE)) {
  }
}

void CHiddenWindow::UnregisterWindowClass() {
  UnregisterClassW(kName, OwnModule());
}

}  // namespace kestra::com
