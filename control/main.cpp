// oswctl: switches the wrapper on for a program, and looks after its files and options.
#include <windows.h>

#include <shellapi.h>

#include "check.h"
#include "command_line.h"
#include "install.h"
#include "list.h"
#include "options.h"
#include "probe.h"
#include "run.h"
#include "status.h"
#include "text.h"

namespace {

int act_on(const request& wanted) {
  switch (wanted.what) {
    case command::run:
      return run(wanted.run);
    case command::start:
      return start_in_place(wanted.run);
    case command::status:
      return print_status();
    case command::list:
      return print_spread_programs();
    case command::options:
      return print_options();
    case command::set:
      return set_option(wanted.option, wanted.value);
    case command::reset:
      return reset_options(wanted.all);
    case command::check:
      return check(wanted.folder);
    case command::install:
      return install_libraries(wanted.folder);
    case command::remove:
      return remove_libraries(wanted.folder);
    case command::probe:
      return probe(wanted.driver, wanted.wrapper);
    case command::text:
      break;
  }
  say(wanted.text);
  return status_ok;
}

}  // namespace

int main() {
  // The arguments of main have lost the letters that are not in the code page, and "*" is replaced by file names.
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  const std::vector<std::wstring> arguments(words + (count > 0), words + count);
  request wanted{};
  std::wstring problem;
  const int status =
      read_command_line(arguments, &wanted, &problem) ? act_on(wanted) : fail(status_wrong_input, problem);
  // No library is told of the end: see load_wrapper. Nothing that we print is kept back.
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
}
