#include "program_of.h"

#include <cstring>

bool is_window_of(HWND window, const char* program) {
  DWORD process_id;
  GetWindowThreadProcessId(window, &process_id);
  const HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process_id);
  if (!process) return false;
  char path[MAX_PATH];
  DWORD length = sizeof path;
  const bool known = QueryFullProcessImageNameA(process, 0, path, &length);
  CloseHandle(process);
  if (!known) return false;
  const char* last = strrchr(path, '\\');
  return _stricmp(last ? last + 1 : path, program) == 0;
}
