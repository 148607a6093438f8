// Tests of oswctl.exe, which has to be in this program's folder. With arguments: only the tests of those names.
#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "place.h"
#include "roles.h"
#include "support/check.h"
#include "tests.h"

static void run_test(const test& one) {
  const long failed_before = failed_checks;
  begin_case(one.name);
  enter_place();
  one.run();
  leave_place();
  printf("%s %s\n", one.name, failed_checks == failed_before ? "passed" : "FAILED");
  fflush(stdout);
}

int main() {
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  const std::vector<std::wstring> arguments(words + 1, words + count);
  const long long role_status = play_role(arguments);
  // A status of 32 bits, of which the return value of main could hold the same; ExitProcess says so.
  if (role_status >= 0) ExitProcess(static_cast<UINT>(role_status));

  int run = 0;
  for (const auto& tests :
       {command_line_tests(), option_tests(), status_tests(), list_tests(), run_tests(), run_option_tests(),
        name_tests(), run_folder_tests(), interrupt_tests(), install_tests(), check_tests()}) {
    for (const test& one : tests) {
      const std::wstring name(one.name, one.name + std::char_traits<char>::length(one.name));
      if (!arguments.empty() && std::find(arguments.begin(), arguments.end(), name) == arguments.end()) continue;
      run_test(one);
      ++run;
    }
  }
  printf("%d tests, %ld failed checks\n", run, failed_checks);
  return run > 0 && failed_checks == 0 ? 0 : 1;
}
