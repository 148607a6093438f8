#include "trial_run.h"

#include "child.h"
#include "paths.h"
#include "probe.h"
#include "text.h"

namespace {

constexpr DWORD trial_patience_ms = 20000;
// More than the trying process has to say, so that it never waits for a reader.
constexpr DWORD pipe_size = 1 << 16;

struct pipe_ends {
  HANDLE read, write;
};

bool make_pipe(pipe_ends* pipe) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  if (!CreatePipe(&pipe->read, &pipe->write, &inherited, pipe_size)) return false;
  return SetHandleInformation(pipe->read, HANDLE_FLAG_INHERIT, 0);
}

std::string read_all(HANDLE pipe) {
  std::string text;
  char bytes[4096];
  DWORD count = 0;
  while (ReadFile(pipe, bytes, sizeof bytes, &count, nullptr) && count > 0) text.append(bytes, count);
  return text;
}

bool take_line(const std::wstring& line, const std::wstring& what, std::wstring* rest) {
  if (!line.starts_with(what + L" ")) return false;
  *rest = line.substr(what.size() + 1);
  return true;
}

void take_lines(const std::wstring& text, trial_run* found) {
  std::wstring rest;
  for (size_t start = 0; start < text.size();) {
    const size_t end = text.find(L'\n', start);
    const std::wstring line = text.substr(start, end - start);
    // The first to be loaded is the one that the driver stands on.
    if (found->host.empty() && take_line(line, told_host, &rest)) found->host = rest;
    if (take_line(line, told_version, &rest)) found->version = rest;
    if (take_line(line, told_renderer, &rest)) found->renderer = rest;
    if (take_line(line, told_parts, &rest)) found->parts = _wtoi(rest.c_str());
    if (take_line(line, told_report, &rest)) found->reports.push_back(rest);
    start = end == std::wstring::npos ? text.size() : end + 1;
  }
}

std::wstring names_of(DWORD missing) {
  std::wstring names;
  for (unsigned i = 0; i < std::size(private_entries); ++i) {
    if (missing & (1u << i)) names += (names.empty() ? L"" : L", ") + from_utf8(private_entries[i]);
  }
  return names;
}

// The reason may be among what the driver has told.
std::wstring told_by(const trial_run& found) {
  for (const std::wstring& report : found.reports) {
    if (!report.starts_with(L"Info: ")) return L" (it says: " + report + L")";
  }
  return L"";
}

std::wstring answer_problem(const std::wstring& library, DWORD answer, const trial_run& found) {
  switch (answer) {
    case probe_not_loaded:
      return library +
             L" cannot be loaded; see that the libraries it needs are on this machine, the graphics driver first";
    case probe_no_context:
      return library + L" could not make an OpenGL context for a window" + told_by(found) +
             L"; see that the graphics driver works";
    case probe_crashed:
      return library +
             L" crashed while it was tried; install the graphics driver anew, or put the library that came with "
             L"oswctl.exe there";
    case probe_wrong_picture:
      return library + L" did not draw the picture that it was told to" + told_by(found) +
             L"; see that the graphics driver works";
    case probe_no_functions:
      return library + L" lacks functions of OpenGL; put the library that came with oswctl.exe there";
    case probe_mark:
    case probe_mark | missing_switch:
      return L"";
    default:
      break;
  }
  if ((answer & ~probe_missing_mask) == probe_mark) {
    return library + L" does not offer " + names_of(answer & probe_missing_mask) +
           L"; put the library that came with oswctl.exe there, which does";
  }
  return library + L" ended the process that tried it; put the library that came with oswctl.exe there";
}

trial_run run_trial(const std::wstring& library, const std::vector<std::wstring>& arguments) {
  const std::wstring own = own_path();
  trial_run found{};
  pipe_ends pipe{};
  const HANDLE process =
      make_pipe(&pipe) ? start_child(own, join_arguments(own, arguments), nullptr, pipe.write) : nullptr;
  const DWORD error = GetLastError();
  CloseHandle(pipe.write);
  if (!process) {
    CloseHandle(pipe.read);
    found.problem = library + L" could not be tried: " + own + L" does not start" + system_reason(error);
    return found;
  }
  DWORD answer = 0;
  const bool has_ended = WaitForSingleObject(process, trial_patience_ms) == WAIT_OBJECT_0;
  if (!has_ended) TerminateProcess(process, 0);
  GetExitCodeProcess(process, &answer);
  CloseHandle(process);
  take_lines(from_utf8(read_all(pipe.read)), &found);
  CloseHandle(pipe.read);
  found.has_fast_switch = (answer & missing_switch) == 0;
  found.problem = has_ended ? answer_problem(library, answer, found)
                            : library + L" gave no answer for 20 seconds; see that the graphics driver works";
  return found;
}

}  // namespace

trial_run try_driver(const std::wstring& driver) {
  return run_trial(driver, {L"probe", driver});
}

trial_run try_wrapper(const std::wstring& driver, const std::wstring& wrapper) {
  return run_trial(wrapper, {L"probe", driver, wrapper});
}
