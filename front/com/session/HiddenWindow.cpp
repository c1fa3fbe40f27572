#include "front/com/session/HiddenWindow.h"

#include <memory>
#include <utility>

#include "front/com/base/ModuleLock.h"
#include "platform/os/HostEnvironment.h"

namespace kestra::com {
namespace {

constexpr const wchar_t* kName = L"VSorrelCOMObjWindow";  // of the class, and the window's title

HINSTANCE OwnModule() {
  return reinterpret_cast<HINSTANCE>(os::LibraryLoadAddress());
}

// What belongs to a window, from its first message to its last.
struct WindowData {
  std::atomic<CQueryDoneReceiver*> receiver{nullptr};
  CModuleLock lock;
};

// The window takes over what its maker has prepared.
void TakeData(HWND window, LPARAM lParam) {
  const auto* const pCreate = reinterpret_cast<const CREATESTRUCTW*>(lParam);
  auto* const pData = static_cast<std::unique_ptr<WindowData>*>(pCreate->lpCreateParams)->release();
  SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(pData));
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NCCREATE) TakeData(window, lParam);
  auto* const pData = reinterpret_cast<WindowData*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (message == WM_QUERY_DONE) {
    CQueryDoneReceiver* const pReceiver = pData ? pData->receiver.load() : nullptr;
    if (pReceiver) pReceiver->OnQueryDone();
    return 0;
  }
  const LRESULT result = DefWindowProcW(window, message, wParam, lParam);
  if (message == WM_NCDESTROY) {
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    delete pData;
  }
  return result;
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
  auto data = std::make_unique<WindowData>();
  data->receiver = &receiver;
  auto* const pReceiver = &data->receiver;
  m_window =
      CreateWindowExW(0, kName, kName, WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, OwnModule(), &data);
  if (m_window) m_pReceiver = pReceiver;
}

// A thread that does not own the window cannot destroy it, and asks it to do so itself.
void CHiddenWindow::Destroy() {
  const HWND window = std::exchange(m_window, nullptr);
  if (!window) return;
  m_pReceiver->store(nullptr);
  if (!DestroyWindow(window)) PostMessageW(window, WM_CLOSE, 0, 0);
}

void CHiddenWindow::RemoveQueued() {
  MSG message;
  while (m_window && PeekMessageW(&message, m_window, WM_QUERY_DONE, WM_QUERY_DONE, PM_REMOVE)) {
  }
}

void CHiddenWindow::UnregisterWindowClass(HINSTANCE module) {
  UnregisterClassW(kName, module);
}

}  // namespace kestra::com
