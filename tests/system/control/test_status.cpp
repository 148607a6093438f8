#include <windows.h>

#include <algorithm>
#include <sstream>
#include <vector>

#include "option_values.h"
#include "support/check.h"
#include "tests.h"
#include "tool.h"

static std::vector<std::wstring> lines_of(const std::wstring& text) {
  std::vector<std::wstring> lines;
  std::wistringstream in(text);
  for (std::wstring line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

static std::vector<std::wstring> status_lines() {
  const outcome result = run_tool(L"status");
  CHECK_EQUAL(result.status, 0);
  CHECK_EQUAL(result.err, L"");
  std::vector<std::wstring> lines = lines_of(result.out);
  if (!CHECK(!lines.empty())) lines.emplace_back();
  return lines;
}

static std::wstring described(const RECT& area) {
  return std::to_wstring(area.right - area.left) + L" x " + std::to_wstring(area.bottom - area.top) + L" at " +
         std::to_wstring(area.left) + L"," + std::to_wstring(area.top);
}

static BOOL CALLBACK note_monitor(HMONITOR monitor, HDC, LPRECT, LPARAM lines) {
  MONITORINFO information{};
  information.cbSize = sizeof information;
  GetMonitorInfoW(monitor, &information);
  auto* into = reinterpret_cast<std::vector<std::wstring>*>(lines);
  into->push_back(described(information.rcMonitor) + (information.dwFlags & MONITORINFOF_PRIMARY ? L", primary" : L""));
  return TRUE;
}

static std::vector<std::wstring> monitors() {
  std::vector<std::wstring> lines;
  EnumDisplayMonitors(nullptr, nullptr, note_monitor, reinterpret_cast<LPARAM>(&lines));
  return lines;
}

static std::wstring headed(size_t count, const std::wstring& thing) {
  return std::to_wstring(count) + L" " + thing + (count == 1 ? L"" : L"s");
}

// The lines behind the one with that head that are numbered from 1 on, without the number.
static std::vector<std::wstring> numbered(const std::vector<std::wstring>& lines, const std::wstring& head) {
  std::vector<std::wstring> found;
  auto line = std::find(lines.begin(), lines.end(), head);
  if (!CHECK(line != lines.end())) return found;
  for (++line; line != lines.end(); ++line) {
    const std::wstring number = L"  " + std::to_wstring(found.size() + 1) + L"  ";
    if (line->rfind(number, 0) != 0) break;
    found.push_back(line->substr(number.size()));
  }
  return found;
}

static std::wstring without_note(const std::wstring& monitor) {
  return monitor.substr(0, monitor.find(L", primary"));
}

static void shows_monitors_as_parts() {
  const std::vector<std::wstring> wanted = monitors(), lines = status_lines();
  CHECK_EQUAL(lines[0], headed(wanted.size(), L"monitor"));
  CHECK(numbered(lines, lines[0]) == wanted);
  CHECK_EQUAL(static_cast<long long>(std::count_if(
                  wanted.begin(), wanted.end(), [](const std::wstring& one) { return contains(one, L", primary"); })),
              1);
  const std::vector<std::wstring> parts = numbered(lines, headed(wanted.size(), L"part"));
  CHECK_EQUAL(static_cast<long long>(parts.size()), static_cast<long long>(wanted.size()));
  for (size_t i = 0; i < parts.size() && i < wanted.size(); ++i) CHECK_EQUAL(parts[i], without_note(wanted[i]));
}

static RECT desktop() {
  const int left = GetSystemMetrics(SM_XVIRTUALSCREEN), top = GetSystemMetrics(SM_YVIRTUALSCREEN);
  return {left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN), top + GetSystemMetrics(SM_CYVIRTUALSCREEN)};
}

// The parts follow from what is set for the machine and, before that, for this process.
static void shows_the_parts_of_the_options_in_force() {
  const RECT whole = desktop();
  const LONG x = (whole.left + whole.right) / 2, y = (whole.top + whole.bottom) / 2;
  write_option(L"OSW_DW_FakeAsOneMonitor", 1);
  write_option(L"OSW_DW_SplitOneMonitor", 1);
  std::vector<std::wstring> lines = status_lines();
  CHECK_EQUAL(lines[0], headed(monitors().size(), L"monitor"));
  const std::vector<std::wstring> quarters = {
      described({whole.left, whole.top, x, y}), described({x, whole.top, whole.right, y}),
      described({whole.left, y, x, whole.bottom}), described({x, y, whole.right, whole.bottom})};
  CHECK(numbered(lines, L"4 parts") == quarters);
  CHECK(std::find(lines.begin(), lines.end(), L"OSW_DW_SplitOneMonitor is 1, from the registry") != lines.end());

  SetEnvironmentVariableW(L"OSW_DW_SplitParts", L"2");
  SetEnvironmentVariableW(L"OSW_DW_SplitTwoPartsHorizontal", L"0");
  lines = status_lines();
  SetEnvironmentVariableW(L"OSW_DW_SplitParts", nullptr);
  SetEnvironmentVariableW(L"OSW_DW_SplitTwoPartsHorizontal", nullptr);
  const std::vector<std::wstring> halves = {described({whole.left, whole.top, whole.right, y}),
                                            described({whole.left, y, whole.right, whole.bottom})};
  CHECK(numbered(lines, L"2 parts") == halves);
  CHECK(std::find(lines.begin(), lines.end(), L"OSW_DW_SplitParts is 2, from the environment") != lines.end());
}

static void says_when_a_variable_is_no_number() {
  SetEnvironmentVariableW(L"OSW_DW_SplitParts", L"two");
  const std::vector<std::wstring> lines = status_lines();
  SetEnvironmentVariableW(L"OSW_DW_SplitParts", nullptr);
  CHECK(std::find(lines.begin(), lines.end(),
                  L"OSW_DW_SplitParts in the environment is no number and is ignored: two") != lines.end());
}

// Three lines of edges, all as wide, and each number once between them.
static void draws_the_parts() {
  write_option(L"OSW_DW_FakeAsOneMonitor", 1);
  write_option(L"OSW_DW_SplitOneMonitor", 1);
  std::vector<std::wstring> edges, between;
  for (const std::wstring& line : status_lines()) {
    if (line.rfind(L"  +", 0) == 0) edges.push_back(line);
    if (line.rfind(L"  |", 0) == 0) between.push_back(line);
  }
  CHECK_EQUAL(static_cast<long long>(edges.size()), 3);
  CHECK(!between.empty());
  for (const std::wstring& line : edges) {
    CHECK_EQUAL(line, edges[0]);
    CHECK_EQUAL(static_cast<long long>(std::count(line.begin(), line.end(), L'+')), 3);
  }
  for (const wchar_t number : {L'1', L'2', L'3', L'4'}) {
    long long times = 0;
    for (const std::wstring& line : between) times += std::count(line.begin(), line.end(), number);
    CHECK_EQUAL(times, 1);
  }
}

static void says_when_there_is_no_part() {
  write_option(L"OSW_DW_FakeAsOneMonitor", 1);
  write_option(L"OSW_DW_SplitOneMonitor", 1);
  write_option(L"OSW_DW_SplitParts", 0);
  const std::vector<std::wstring> lines = status_lines();
  CHECK(std::find(lines.begin(), lines.end(), L"0 parts") != lines.end());
  write_option(L"OSW_DW_SplitParts", 3);
  CHECK_EQUAL(static_cast<long long>(numbered(status_lines(), L"3 parts").size()), 3);
}

std::vector<test> status_tests() {
  return {{"shows_monitors_as_parts", shows_monitors_as_parts},
          {"shows_the_parts_of_the_options_in_force", shows_the_parts_of_the_options_in_force},
          {"says_when_a_variable_is_no_number", says_when_a_variable_is_no_number},
          {"draws_the_parts", draws_the_parts},
          {"says_when_there_is_no_part", says_when_there_is_no_part}};
}
