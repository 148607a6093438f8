#include "run.h"

#include <windows.h>

#include "app_list.h"
#include "child.h"
#include "libraries.h"
#include "paths.h"
#include "program.h"
#include "run_folder.h"
#include "shared_list.h"
#include "stop.h"
#include "text.h"
#include "wrapper.h"

namespace {

struct run_state {
  program target;
  listing wanted;
  wrapper library;
  shared_list list;
};

// Sets the options that the request asks for in our environment, which the program inherits. With as many monitors as
// parts, each monitor is a part by itself; otherwise the desktop is taken as one monitor, which it is with one, and
// split. A direction asks for a split in any case.
void set_options(const run_request& request) {
  const bool has_direction = request.side_by_side || request.stacked;
  if (request.parts != 0) {
    const int monitors = GetSystemMetrics(SM_CMONITORS);
    const bool is_split = monitors != request.parts || (request.parts == 2 && has_direction);
    set_option_for_children(L"OSW_DW_FakeAsOneMonitor", is_split && monitors > 1);
    set_option_for_children(L"OSW_DW_SplitOneMonitor", is_split);
    set_option_for_children(L"OSW_DW_SplitParts", request.parts);
  }
  if (has_direction) set_option_for_children(L"OSW_DW_SplitTwoPartsHorizontal", request.side_by_side);
  // With a variable that is not there the mode is the basic one.
  SetEnvironmentVariableW(L"OSW_EXTENDED", request.basic ? nullptr : L"1");
}

// Switches the feature on. False, with a sentence in `*problem`, after which leave_runs may still be called.
bool begin_run(run_state* state, std::wstring* problem) {
  const std::wstring library = find_wrapper(state->target.folder);
  const bool is_beside = library == in_folder(state->target.folder, wrapper_file);
  if (library.empty() || (!is_beside && !wrapper_problem(library).empty())) {
    *problem = L"the span wrapper is not beside " + state->target.path +
               L"; place both libraries in that folder with \"oswctl install\"";
    return false;
  }
  return load_wrapper(library, &state->library, problem) &&
         join_runs(library, &state->library, state->wanted, &state->list, problem);
}

// Waits for the end of the program, or of us. A program that shares our console has got the Ctrl-C too, and does with
// it what it likes: the feature stays on until it ends. One with windows of its own has not, and goes on without us.
int wait_for_end(const program& target, HANDLE process, const stop_events& stop) {
  const HANDLE ends[] = {process, stop.closing, stop.interrupted};
  const DWORD count = target.uses_console ? 2 : 3;
  DWORD status = static_cast<DWORD>(STATUS_CONTROL_C_EXIT);
  if (WaitForMultipleObjects(count, ends, FALSE, INFINITE) == WAIT_OBJECT_0) {
    GetExitCodeProcess(process, &status);
  } else {
    complain(target.name + L" goes on as it is; the feature is off for programs started from now on");
  }
  return static_cast<int>(status);
}

int start_and_wait(const run_request& request, const run_state& state, const stop_events& stop, wchar_t* environment) {
  if (WaitForSingleObject(stop.interrupted, 0) == WAIT_OBJECT_0) return static_cast<int>(STATUS_CONTROL_C_EXIT);
  const std::wstring line = join_arguments(state.target.path, request.args);
  const HANDLE process = start_child(state.target.path, line, environment, nullptr);
  if (!process) {
    return fail(status_failed, state.target.path + L" cannot be started" + system_reason(GetLastError()));
  }
  const int status = wait_for_end(state.target, process, stop);
  CloseHandle(process);
  return status;
}

// Looks at what the caller has named, before anything is changed; false, with a sentence in `*problem`, when it will
// not do.
bool take_request(const run_request& request, run_state* state, std::wstring* problem) {
  if (!find_program(request.program, &state->target, problem)) return false;
  if (request.list.empty()) return listed_name(state->target, &state->wanted.name, problem);
  return take_app_list(request.list, &state->wanted.own_list, problem);
}

void warn_of_list(const run_request& request, const run_state& state) {
  if (request.list.empty() || list_has(state.wanted.own_list, state.target)) return;
  complain(full_path(request.list) + L" does not name " + state.target.name +
           L", which will run as if the feature were off");
}

int start_here(const run_request& request, run_state* state, const stop_events& stop) {
  std::wstring problem;
  warn_of_list(request, *state);
  set_options(request);
  // Taken before the library is loaded, which needs a change in our own.
  wchar_t* environment = GetEnvironmentStringsW();
  const int status =
      begin_run(state, &problem) ? start_and_wait(request, *state, stop, environment) : fail(status_failed, problem);
  leave_runs(&state->list);
  return status;
}

// Has another process load the library, whose file cannot be deleted before that process has ended. It gets the Ctrl-C
// too, and ends as this one would.
int start_apart(const run_request& request, const program& target, const stop_events& stop) {
  if (WaitForSingleObject(stop.interrupted, 0) == WAIT_OBJECT_0) return static_cast<int>(STATUS_CONTROL_C_EXIT);
  std::vector<std::wstring> arguments = {L"start"};
  arguments.insert(arguments.end(), request.own.begin(), request.own.end());
  arguments.insert(arguments.end(), {L"--", target.path});
  arguments.insert(arguments.end(), request.args.begin(), request.args.end());
  const std::wstring own = own_path();
  const HANDLE process = start_child(own, join_arguments(own, arguments), nullptr, nullptr);
  if (!process) return fail(status_failed, own + L" cannot be started" + system_reason(GetLastError()));
  DWORD status = 0;
  WaitForSingleObject(process, INFINITE);
  GetExitCodeProcess(process, &status);
  CloseHandle(process);
  return static_cast<int>(status);
}

}  // namespace

int run(const run_request& request) {
  run_state state{};
  run_folder folder{};
  std::wstring problem;
  if (!take_request(request, &state, &problem)) return fail(status_wrong_input, problem);
  const stop_events stop = watch_for_stop();
  if (!enter_folder(state.target.folder, request.keep, &folder, &problem)) return fail(status_failed, problem);
  const int status = folder.is_visited ? start_apart(request, state.target, stop) : start_here(request, &state, stop);
  leave_folder(folder);
  return status;
}

int start_in_place(const run_request& request) {
  run_state state{};
  std::wstring problem;
  if (!take_request(request, &state, &problem)) return fail(status_wrong_input, problem);
  return start_here(request, &state, watch_for_stop());
}
