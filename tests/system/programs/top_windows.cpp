// Does to the windows of a running program what a person with a mouse does:
//
//   top_windows.exe PROGRAM.exe centre   moves them into one row in the middle of the desktop
//   top_windows.exe PROGRAM.exe close    clicks the close button of each
//
// Status 1 if the program shows no window, or if they had to be moved: the platform may still put a window that was
// just shown back to where its program wanted it, so that one looks again.
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "program_of.h"

struct search {
  const char* program;
  std::vector<HWND> found;
};

// The windows that belong to another one come along with it.
static BOOL CALLBACK look_at(HWND window, LPARAM parameter) {
  auto* wanted = reinterpret_cast<search*>(parameter);
  const bool on_its_own = IsWindowVisible(window) && !GetWindow(window, GW_OWNER);
  if (on_its_own && is_window_of(window, wanted->program)) wanted->found.push_back(window);
  return TRUE;
}

// Result: whether all stood there already.
static bool centre(const std::vector<HWND>& windows) {
  std::vector<RECT> frames;
  LONG width = 0;
  for (HWND window : windows) {
    RECT frame;
    GetWindowRect(window, &frame);
    frames.push_back(frame);
    width += frame.right - frame.left;
  }
  LONG x = (GetSystemMetrics(SM_CXVIRTUALSCREEN) - width) / 2;
  bool stood = true;
  for (size_t i = 0; i < windows.size(); ++i) {
    const LONG height = frames[i].bottom - frames[i].top;
    const LONG y = (GetSystemMetrics(SM_CYVIRTUALSCREEN) - height) / 2;
    stood &= frames[i].left == x && frames[i].top == y;
    SetWindowPos(windows[i], nullptr, static_cast<int>(x), static_cast<int>(y), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    x += frames[i].right - frames[i].left;
  }
  return stood;
}

int main(int count, char** words) {
  const bool moves = count == 3 && !std::strcmp(words[2], "centre");
  const bool closes = count == 3 && !std::strcmp(words[2], "close");
  if (!moves && !closes) {
    std::fprintf(stderr, "top_windows: takes the file name of a running program, and centre or close\n");
    return 2;
  }
  search wanted = {words[1], {}};
  EnumWindows(look_at, reinterpret_cast<LPARAM>(&wanted));
  if (wanted.found.empty()) return 1;
  if (moves) return centre(wanted.found) ? 0 : 1;
  for (HWND window : wanted.found) PostMessageA(window, WM_SYSCOMMAND, SC_CLOSE, 0);
  return 0;
}
