// Prints the parts that the library has laid over the windows of a running program: parts.exe PROGRAM.exe
// One line for each, "part X Y WIDTH HEIGHT visible|hidden", in pixels of the desktop. Status 1 if there are none.
#include <windows.h>

#include <cstdio>
#include <cstring>

#include "program_of.h"

namespace {

struct search {
  const char* program;
  int found;
};

constexpr char part_class[] = "__osw_child_window";
// A part's window has the part's number plus this as its identifier.
constexpr int first_identifier = 100;

BOOL CALLBACK print_part(HWND window, LPARAM parameter) {
  char name[64];
  if (!GetClassNameA(window, name, sizeof name) || strcmp(name, part_class) != 0) return TRUE;
  RECT at;
  GetWindowRect(window, &at);
  printf("%d %ld %ld %ld %ld %s\n", GetDlgCtrlID(window) - first_identifier, at.left, at.top, at.right - at.left,
         at.bottom - at.top, IsWindowVisible(window) ? "visible" : "hidden");
  ++reinterpret_cast<search*>(parameter)->found;
  return TRUE;
}

BOOL CALLBACK look_into(HWND window, LPARAM parameter) {
  if (is_window_of(window, reinterpret_cast<search*>(parameter)->program)) {
    EnumChildWindows(window, print_part, parameter);
  }
  return TRUE;
}

}  // namespace

int main(int count, char** words) {
  if (count != 2) {
    fprintf(stderr, "parts: takes the file name of a running program\n");
    return 2;
  }
  search wanted = {words[1], 0};
  EnumWindows(look_into, reinterpret_cast<LPARAM>(&wanted));
  return wanted.found ? 0 : 1;
}
