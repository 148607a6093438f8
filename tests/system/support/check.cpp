#include "support/check.h"

#include <windows.h>

#include <cstdio>
#include <cstring>

long failed_checks;

namespace {

int case_limit;  // s
const char* running_case = "start";
volatile LONG case_number;

// Ends the process when the same case is still running after its time.
DWORD WINAPI watch(void*) {
  LONG seen = -1;
  for (int waited = 0;; ++waited) {
    if (case_number != seen) {
      seen = case_number;
      waited = 0;
    }
    if (waited > case_limit) {
      printf("%s: not done after %d seconds\n", running_case, case_limit);
      fflush(stdout);
      TerminateProcess(GetCurrentProcess(), 3);
    }
    Sleep(1000);
  }
}

// Letters that the output cannot show come out as their numbers.
std::string readable(const std::wstring& text) {
  std::string result;
  for (const wchar_t c : text) {
    char number[16];
    snprintf(number, sizeof number, "\\u%04x", static_cast<unsigned>(c));
    result += c < 127 && (c >= 32 || c == L'\n') ? std::string(1, static_cast<char>(c)) : number;
  }
  return result;
}

bool is_wanted(const char* name, int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (strcmp(argv[i], name) == 0) return true;
  }
  return argc < 2;
}

}  // namespace

void fail(const char* file, int line, const char* what, const char* found) {
  InterlockedIncrement(&failed_checks);
  const char* name = strrchr(file, '/');
  printf("%s:%d: %s: %s%s\n", name == nullptr ? file : name + 1, line, running_case, what, found);
  fflush(stdout);
}

bool check_that(const char* file, int line, const char* what, bool holds) {
  if (!holds) fail(file, line, what, "");
  return holds;
}

bool check_numbers(const char* file, int line, const char* what, long long found, long long wanted) {
  if (found == wanted) return true;
  char text[80];
  snprintf(text, sizeof text, ": found %lld, not %lld", found, wanted);
  fail(file, line, what, text);
  return false;
}

bool check_texts(const char* file, int line, const char* what, const std::wstring& found, const std::wstring& wanted) {
  if (found == wanted) return true;
  fail(file, line, what, (" is\n" + readable(found) + "\nnot\n" + readable(wanted)).c_str());
  return false;
}

void begin_case(const char* name) {
  running_case = name;
  InterlockedIncrement(&case_number);
}

int run_cases(const test_case* cases, int count, int argc, char** argv, int seconds) {
  case_limit = seconds;
  CloseHandle(CreateThread(nullptr, 0, watch, nullptr, 0, nullptr));
  int ran = 0;
  for (int i = 0; i < count; ++i) {
    if (!is_wanted(cases[i].name, argc, argv)) continue;
    begin_case(cases[i].name);
    const long before = failed_checks;
    cases[i].run();
    ++ran;
    printf("%s %s\n", failed_checks == before ? "ok" : "FAILED", cases[i].name);
    fflush(stdout);
  }
  return ran == 0 || failed_checks != 0;
}
