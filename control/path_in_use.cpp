#include "path_in_use.h"

#include "driver/path_sign.h"
#include "path_words.h"

namespace {

// A program with more rights refuses the event to us, and has it none the less.
bool is_shown(const char* sign, DWORD process) {
  const HANDLE event = OpenEventA(SYNCHRONIZE, FALSE, sign_name(sign, process).text);
  if (!event) return GetLastError() == ERROR_ACCESS_DENIED;
  CloseHandle(event);
  return true;
}

}  // namespace

std::wstring path_in_use(DWORD process) {
  if (is_shown(switching_sign, process)) return sequential_words;
  return is_shown(threads_sign, process) ? threaded_words : L"";
}
