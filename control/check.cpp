#include "check.h"

#include "libraries.h"
#include "paths.h"
#include "probe.h"
#include "text.h"

namespace {

bool report(const std::wstring& problem, const std::wstring& good) {
  say(problem.empty() ? L"ok      " + good : L"failed  " + problem);
  return problem.empty();
}

}  // namespace

int check(const std::wstring& folder) {
  if (!folder_exists(folder)) return fail(status_wrong_input, L"there is no folder " + folder);
  const std::wstring wrapper = in_folder(full_path(folder), wrapper_file);
  const std::wstring driver = in_folder(full_path(folder), driver_file);
  const bool has_wrapper = report(wrapper_problem(wrapper), wrapper + L" is the span wrapper, for 64 bits");
  const bool has_driver = report(driver_problem(driver), driver + L" is a system library, for 64 bits");
  // What is no library for us is not run.
  const bool has_entries =
      has_driver && report(probe_problem(driver), driver + L" has all four private entries of the driver");
  return has_wrapper && has_driver && has_entries ? status_ok : status_failed;
}
