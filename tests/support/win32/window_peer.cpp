// A second process for the tests of Processes: a program with a window, with one that does not
// listen, or with none. It runs until it is ended, but not for ever.
//
//   window_peer.exe window|deaf|silent READY
//
// It makes the file READY when it is there. Asked to close, a window ends it with kAsked.
#include <cstdio>
#include <string>

#include "platform/win32/base/Windows.h"

namespace {

constexpr int kAsked = 7;
constexpr UINT kLongestLifeMs = 60000;

bool g_isDeaf = false;

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM w, LPARAM l) {
  if (message == WM_TIMER) PostQuitMessage(0);
  if (message != WM_CLOSE) return DefWindowProcW(window, message, w, l);
  if (!g_isDeaf) PostQuitMessage(kAsked);
  return 0;
}

bool MakeWindow() {
  WNDCLASSW windowClass = {};
  windowClass.lpfnWndProc = OnMessage;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.lpszClassName = L"KestraWindowPeer";
  if (!RegisterClassW(&windowClass)) return false;
  const HWND window = CreateWindowExW(0, windowClass.lpszClassName, L"peer", WS_OVERLAPPED, 0, 0,
                                      10, 10, nullptr, nullptr, windowClass.hInstance, nullptr);
  return window && SetTimer(window, 1, kLongestLifeMs, nullptr) != 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 1;
  const std::string mode = argv[1];
  g_isDeaf = mode == "deaf";
  const bool isSilent = mode == "silent";
  if (!isSilent && !MakeWindow()) return 2;
  std::FILE* pReady = std::fopen(argv[2], "w");
  if (!pReady) return 3;
  std::fclose(pReady);
  if (isSilent) {
    Sleep(kLongestLifeMs);
    return 0;
  }
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
  return static_cast<int>(message.wParam);
}
