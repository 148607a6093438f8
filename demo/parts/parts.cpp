// Prints the parts that the library has laid over the windows of a running program: parts.exe PROGRAM.exe
// One line for each, "part X Y WIDTH HEIGHT visible|hidden", in pixels of the desktop. Status 1 if there are none.
#include <windows.h>

#include <cstdio>
#include <cstring>

#include "program_of.h"

struct search {
  const char* program;
  int found;
};

static const char part_class[] = "__osw_child_window";
// A part's window has the part's number plus this as its identifier.
static const int first_identifier = 100;

static BOOL CALLBACK print_part(HWND window, LPARAM parameter) {
  char name[64];
  if (!GetClassNameA(window, name, sizeof name) || std::strcmp(name, part_class) != 0) return TRUE;
  RECT at;
  GetWindowRect(window, &at);
  std::printf("%d %ld %ld %ld %ld %s\n", GetDlgCtrlID(window) - first_identifier, at.left, at.top, at.right - at.left,
              at.bottom - at.top, IsWindowVisible(window) ? "visible" : "hidden");
  ++reinterpret_cast<search*>(parameter)->found;
  return TRUE;
}

static BOOL CALLBACK look_into(HWND window, LPARAM parameter) {
  if (is_window_of(window, reinterpret_cast<search*>(parameter)->program)) {
    EnumChildWindows(window, print_part, parameter);
  }
  return TRUE;
}

int main(int count, char** words) {
  if (count != 2) {
    std::fprintf(stderr, "parts: takes the file name of a running program\n");
    return 2;
  }
  search wanted = {words[1], 0};
  EnumWindows(look_into, reinterpret_cast<LPARAM>(&wanted));
  return wanted.found ? 0 : 1;
}
