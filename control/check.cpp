#include "check.h"

#include "app_list.h"
#include "child.h"
#include "folder.h"
#include "libraries.h"
#include "option_list.h"
#include "path_words.h"
#include "paths.h"
#include "registry.h"
#include "shared_list.h"
#include "text.h"
#include "trial_run.h"
#include "wrapper.h"

namespace {

constexpr wchar_t path_option[] = L"OSW_DW_GLDispatchUseMtPath";

bool report(const std::wstring& problem, const std::wstring& good) {
  say(problem.empty() ? L"ok      " + good : L"failed  " + problem);
  return problem.empty();
}

void note(const std::wstring& text) {
  say(L"note    " + text);
}

// Windows' own picture, made without the graphics hardware, is what is left where there is no driver for it.
std::wstring host_problem(const trial_run& found) {
  if (found.renderer != L"GDI Generic") return L"";
  return L"Windows draws without the graphics hardware, by OpenGL " + found.version +
         L"; install the graphics driver, and log in at the machine itself, not from afar";
}

// What decides the path is what the wrapper goes by, too.
void note_path(const trial_run& alone) {
  option_source source;
  const bool is_wanted = value_in_force(*find_option(path_option), &source) != 0;
  for (const std::wstring& told : alone.reports) {
    if (told.starts_with(L"Info: ")) note(L"the driver says: " + told.substr(6));
  }
  if (is_wanted) return note(std::wstring(L"the path is ") + threaded_words + L", as " + path_option + L" is 1");
  note(std::wstring(L"the path is ") + (alone.has_fast_switch ? sequential_words : threaded_words) +
       L", as the driver " + (alone.has_fast_switch ? L"offers" : L"does not offer") + L" the fast switch of contexts");
}

bool report_path(const std::wstring& driver, const std::wstring& wrapper, bool is_threaded) {
  set_option_for_children(path_option, is_threaded);
  trial_run found = try_wrapper(driver, wrapper);
  const std::wstring words = is_threaded ? threaded_words : sequential_words;
  if (found.problem.empty() && found.parts < 2) {
    found.problem = wrapper +
                    L" drew without spreading the picture over parts; place the library that came with "
                    L"oswctl.exe there";
  }
  return report(found.problem,
                L"over " + std::to_wstring(found.parts) + L" parts, " + words + L", the picture is right");
}

// In the halves of the window, wherever it is and however many monitors there are.
void set_options_of_trial() {
  set_option_for_children(L"OSW_DW_FakeAsOneMonitor", 1);
  set_option_for_children(L"OSW_DW_SplitOneMonitor", 1);
  set_option_for_children(L"OSW_DW_SplitParts", 2);
  set_option_for_children(L"OSW_DW_UseSplitParentMethod", 1);
}

// As a program finds the feature on that is run, so do the processes that try it: they bear our name.
bool check_spread(const std::wstring& driver, const std::wstring& wrapper_path, bool has_fast_switch) {
  wrapper library;
  shared_list list{};
  listing wanted;
  std::wstring problem;
  program own{};
  own.name = own_path().substr(own_folder().size());
  if (!listed_name(own, &wanted.name, &problem) || !load_wrapper(wrapper_path, &library, &problem) ||
      !join_runs(wrapper_path, &library, wanted, &list, &problem)) {
    return report(problem, L"");
  }
  set_options_of_trial();
  const bool is_right = !has_fast_switch || report_path(driver, wrapper_path, false);
  const bool is_threaded_right = report_path(driver, wrapper_path, true);
  leave_runs(&list);
  return is_right && is_threaded_right;
}

// Draws as a program would: by the driver alone, then over parts.
bool check_drawing(const std::wstring& driver, const std::wstring& wrapper, bool has_wrapper) {
  const trial_run alone = try_driver(driver);
  if (!report(alone.problem, driver + L" has the private entries of the driver")) return false;
  const std::wstring host = alone.host.empty() ? driver : alone.host;
  const bool has_host =
      report(host_problem(alone), host + L" draws, with OpenGL " + alone.version + L" on " + alone.renderer);
  note_path(alone);
  return has_wrapper && check_spread(driver, wrapper, alone.has_fast_switch) && has_host;
}

}  // namespace

int check(const std::wstring& folder) {
  const std::wstring wrong_name = name_problem(folder);
  if (!wrong_name.empty()) return fail(status_wrong_input, wrong_name);
  const std::wstring wrapper = in_folder(full_path(folder), wrapper_file);
  const std::wstring driver = in_folder(full_path(folder), driver_file);
  const std::wstring problem = folder_problem(full_path(folder));
  // Nothing is said of programs that are as they must be: most folders have none to look at but the one.
  const bool has_programs = problem.empty() || report(problem, L"");
  const bool has_wrapper = report(wrapper_problem(wrapper), wrapper + L" is the span wrapper, for 64 bits");
  const bool has_driver = report(driver_problem(driver), driver + L" is a system library, for 64 bits");
  // What is no library for us is not run.
  const bool has_picture = has_driver && check_drawing(driver, wrapper, has_wrapper);
  return has_programs && has_wrapper && has_picture ? status_ok : status_failed;
}
