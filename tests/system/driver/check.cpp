#include "check.h"

#include <windows.h>

#include <cstring>

long failed_checks;

namespace {

int case_limit;  // s
const char* running_case;
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

void check_equal(const char* file, int line, const char* what, long long found, long long wanted) {
  if (found == wanted) return;
  char text[80];
  snprintf(text, sizeof text, ": found %lld, not %lld", found, wanted);
  fail(file, line, what, text);
}

int run_cases(const test_case* cases, int count, int argc, char** argv, int seconds) {
  case_limit = seconds;
  running_case = "start";
  CloseHandle(CreateThread(nullptr, 0, watch, nullptr, 0, nullptr));
  int ran = 0;
  for (int i = 0; i < count; ++i) {
    if (!is_wanted(cases[i].name, argc, argv)) continue;
    running_case = cases[i].name;
    InterlockedIncrement(&case_number);
    const long before = failed_checks;
    cases[i].run();
    ++ran;
    printf("%s %s\n", failed_checks == before ? "ok" : "FAILED", cases[i].name);
    fflush(stdout);
  }
  return ran == 0 || failed_checks != 0;
}
