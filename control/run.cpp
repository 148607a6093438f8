#include "run.h"

#include <windows.h>

#include "app_list.h"
#include "child.h"
#include "libraries.h"
#include "option_changes.h"
#include "paths.h"
#include "program.h"
#include "stop.h"
#include "text.h"
#include "wrapper.h"

namespace {

// Everything that a run changes outside of this process, for putting it back.
struct run_state {
  program target;
  app_list list;
  wrapper library;
  std::vector<option_change> changes;
  HANDLE options_claim;  // held while options are changed
};

// The options that the request asks for. With as many monitors as parts, each monitor is a part by itself; otherwise
// the desktop is taken as one monitor, which it is with one, and split. A direction asks for a split in any case.
std::vector<option_change> wanted_options(const run_request& request) {
  std::vector<option_change> changes;
  const bool has_direction = request.side_by_side || request.stacked;
  if (request.parts != 0) {
    const int monitors = GetSystemMetrics(SM_CMONITORS);
    const bool is_split = monitors != request.parts || (request.parts == 2 && has_direction);
    changes.push_back({L"OSW_DW_FakeAsOneMonitor", is_split && monitors > 1, {}, false});
    changes.push_back({L"OSW_DW_SplitOneMonitor", is_split, {}, false});
    changes.push_back({L"OSW_DW_SplitParts", static_cast<uint32_t>(request.parts), {}, false});
  }
  if (has_direction) changes.push_back({L"OSW_DW_SplitTwoPartsHorizontal", request.side_by_side, {}, false});
  return changes;
}

// Options hold for the machine: of two runs that both set and put back the same ones, each would undo the other's.
// Null when another run has the claim.
HANDLE claim_options() {
  const HANDLE claim = CreateMutexW(nullptr, FALSE, L"Global\\oswctl options of a run");
  if (!claim) return nullptr;
  const DWORD result = WaitForSingleObject(claim, 0);
  if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) return claim;
  CloseHandle(claim);
  return nullptr;
}

bool set_options(const run_request& request, run_state* state, std::wstring* problem) {
  state->changes = wanted_options(request);
  if (state->changes.empty()) return true;
  state->options_claim = claim_options();
  if (!state->options_claim) {
    *problem =
        L"another oswctl run has set options for its program; wait for that to end, or leave out --parts, "
        L"--horizontal and --vertical to share them";
    return false;
  }
  const LSTATUS error = make_changes(&state->changes);
  if (error != ERROR_SUCCESS) *problem = registry_problem(error);
  return error == ERROR_SUCCESS;
}

// Switches the feature on. False, with a sentence in `*problem`, after which end_run still has to be called.
bool begin_run(const run_request& request, run_state* state, std::wstring* problem) {
  if (request.list.empty() && !make_app_list(state->target, &state->list, problem)) return false;
  const std::wstring library = find_wrapper(state->target.folder);
  const bool is_beside = library == in_folder(state->target.folder, wrapper_file);
  if (library.empty() || (!is_beside && !wrapper_problem(library).empty())) {
    *problem = L"the span wrapper is not beside " + state->target.path +
               L"; place both libraries in that folder with \"oswctl install\"";
    return false;
  }
  if (!load_wrapper(library, &state->library, problem) || !set_options(request, state, problem)) return false;
  enable_wrapper(&state->library, state->list.ansi_path);
  return true;
}

void end_run(run_state* state) {
  if (state->library.module) disable_wrapper(&state->library, state->list.ansi_path);
  drop_app_list(state->list);
  const LSTATUS error = undo_changes(&state->changes);
  if (error != ERROR_SUCCESS) complain(L"the options were not put back: " + registry_problem(error));
  if (state->options_claim) ReleaseMutex(state->options_claim);
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
  const HANDLE process = start_child(state.target.path, line, environment, 0);
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
  if (request.list.empty()) return can_be_listed(state->target, problem);
  if (!take_app_list(request.list, &state->list, problem)) return false;
  if (!list_has(state->list, state->target)) {
    complain(state->list.path + L" does not name " + state->target.name +
             L", which will run as if the feature were off");
  }
  return true;
}

}  // namespace

int run(const run_request& request) {
  run_state state{};
  std::wstring problem;
  if (!take_request(request, &state, &problem)) return fail(status_wrong_input, problem);
  const stop_events stop = watch_for_stop();
  // Taken before the library is loaded, which needs a change in our own.
  wchar_t* environment = GetEnvironmentStringsW();
  const int status = begin_run(request, &state, &problem) ? start_and_wait(request, state, stop, environment)
                                                          : fail(status_failed, problem);
  end_run(&state);
  return status;
}
