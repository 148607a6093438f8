// How real processes load the library, and which of them are spread: test_loading.exe [CASE]...
// Must be run bypassed. Everything that depends on who has loaded the library happens in folders with copies of it.
#include <cstring>
#include <set>

#include "applications.h"
#include "module.h"
#include "names.h"
#include "roles.h"
#include "support/check.h"
#include "test_host.h"

namespace {

constexpr int case_limit = 150;  // s
constexpr int part_count = 2;

std::string words(const char* role, int parts) {
  return role + std::string(" ") + std::to_string(parts);
}

// A role's word for a file, which has no blank in the folders here.
std::string in(const std::string& folder, const char* name) {
  return folder + name;
}

void exports_have_names_and_ordinals() {
  const std::vector<std::string> names = exported_names();
  std::set<FARPROC> found;
  size_t metafile = 0;
  for (size_t i = 0; i < names.size(); ++i) {
    const FARPROC by_name = GetProcAddress(wrapper(), names[i].c_str());
    const FARPROC by_ordinal = GetProcAddress(wrapper(), MAKEINTRESOURCEA(i + 1));
    const bool known = !found.insert(by_name).second;
    const bool is_metafile = names[i].rfind("Glmf", 0) == 0;
    // Those six are one function; no other two are.
    if (!by_name || by_name != by_ordinal || known != (is_metafile && metafile > 0))
      fail(__FILE__, __LINE__, names[i].c_str(), " is not what its ordinal says");
    metafile += is_metafile;
  }
  CHECK_EQUAL(metafile, 6);
  CHECK_EQUAL(found.size(), 366);
  CHECK_EQUAL(names.size(), 371);
  CHECK_EQUAL(names.size() - platform_names, 3);
  CHECK(GetProcAddress(wrapper(), MAKEINTRESOURCEA(372)) == nullptr);
  CHECK(GetProcAddress(wrapper(), "glActiveTexture") == nullptr);
}

// The section is this program's own as long as nobody else loads the file beside it.
void own_exports() {
  const shared_section* section = find_shared_section();
  CHECK(section != nullptr);
  if (!section) return;
  CHECK_EQUAL(section->enable, 0);
  auto* enable = exported<char*(const char*)>("EnablePerformanceOptimization");
  auto* disable = exported<void()>("DisablePerformanceOptimization");
  CHECK(enable("a longer name than the next") == section->list_path);
  CHECK(enable("list.txt") == section->list_path);
  CHECK_EQUAL(section->enable, 1);
  CHECK(strcmp(section->list_path, "list.txt") == 0 && section->list_path[9] == 0);
  const std::string longest(300, 'x');
  enable(longest.c_str());
  CHECK_EQUAL(strnlen(section->list_path, sizeof section->list_path), 259);
  disable();
  CHECK_EQUAL(section->enable, 0);
  CHECK_EQUAL(section->list_path[0], 'x');
  CHECK_EQUAL(exported<BOOL WINAPI(HMODULE, DWORD, void*)>("DllMain")(wrapper(), DLL_THREAD_ATTACH, nullptr), 1);
}

// What one process has switched is seen by those that have loaded the same file and by those that load it next, for as
// long as any of them lives; what a process is was settled when it started.
void section_is_shared() {
  const std::string folder = make_folder("shared"), other = make_folder("other"), list = in(folder, "list.txt");
  write_file(list, application);
  play(folder, "section 0 -");
  const waiting early = start_waiting(folder, "late");
  const waiting first = start_waiting(folder, "hold " + list);
  const waiting second = start_waiting(folder, "hold -");
  play(folder, "section 1 " + list);
  play(other, "section 0 -");
  finish(early);
  finish(first);
  play(folder, words("parts", part_count));
  play(folder, "off");
  play(folder, "section 0 " + list);
  play(folder, "parts 0");
  finish(second);
  play(folder, "section 0 -");
}

void pictures_are_the_same() {
  const std::string folder = make_folder("pictures"), list = in(folder, "list.txt");
  const std::string file = " " + in(folder, "picture.bmp");
  play(folder, "show 0" + file);
  const waiting held = start_waiting(folder, "hold " + list);
  write_file(list, "other.exe\n");
  play(folder, "show 0" + file);
  write_file(list, std::string("other.exe\n") + application);
  play(folder, words("show", part_count) + file);
  finish(held);
}

bool can_be_opened(const std::string& file) {
  FILE* opened = fopen(file.c_str(), "r+");
  if (opened) fclose(opened);
  return opened != nullptr;
}

// The administrator of some systems may write what is read-only. Another program that keeps the file to itself has the
// same effect anywhere.
void closed_lists(const std::string& folder, const std::string& list) {
  write_file(list, application);
  CHECK(SetFileAttributesA(list.c_str(), FILE_ATTRIBUTE_READONLY));
  play(folder, words("parts", can_be_opened(list) ? part_count : 0));
  CHECK(SetFileAttributesA(list.c_str(), FILE_ATTRIBUTE_NORMAL));
  const HANDLE kept =
      CreateFileA(list.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  CHECK(kept != INVALID_HANDLE_VALUE);
  CHECK(!can_be_opened(list));
  play(folder, "parts 0");
  CloseHandle(kept);
  play(folder, words("parts", part_count));
}

void lists() {
  const std::string folder = make_folder("lists"), list = in(folder, "list.txt"), many(5000, 'y');
  const waiting held = start_waiting(folder, "hold " + list);
  play(folder, "parts 0");  // there is none
  const struct {
    std::string text;
    bool names_it;
  } texts[] = {{"", false},
               {"app app.exe.exe theapp.exe", false},
               {in(folder, application), false},
               {application + many, false},
               {"APP.Exe", true},
               {"\t\r\n other.exe\v\f\r\n\t  app.exe\r\n\r\n", true},
               {many + " " + application, true}};
  for (const auto& each : texts) {
    write_file(list, each.text);
    play(folder, words("parts", each.names_it ? part_count : 0));
  }
  closed_lists(folder, list);
  finish(held);
}

void look_ups() {
  const std::string folder = make_folder("look_ups"), list = in(folder, "list.txt");
  write_file(list, application);
  play(folder, "look_up 0");
  const waiting held = start_waiting(folder, "hold " + list);
  play(folder, words("look_up", part_count));
  finish(held);
}

// The current folder is that of a document, say, where anybody may put a file; so may be one of PATH.
void a_planted_host_is_not_loaded() {
  const std::string folder = make_folder("planted"), current = folder + "current\\";
  CHECK(CreateDirectoryA(current.c_str(), nullptr));
  place_test_host(current + "planted.dll");
  char path[4096] = "";
  GetEnvironmentVariableA("PATH", path, sizeof path);
  SetEnvironmentVariableA("PATH", (current + ";" + path).c_str());
  char host[MAX_PATH] = "";
  GetEnvironmentVariableA("OSW_DRIVER_HOST", host, sizeof host);
  SetEnvironmentVariableA("OSW_DRIVER_HOST", "planted.dll");
  CHECK(SetCurrentDirectoryA(current.c_str()));
  play(folder, "unplanted");
  CHECK(SetCurrentDirectoryA(program_folder().c_str()));
  SetEnvironmentVariableA("OSW_DRIVER_HOST", *host ? host : nullptr);
  SetEnvironmentVariableA("PATH", path);
}

// What the host takes for a switch chooses the path, unless the user does by one of two ways.
void a_slow_host_gets_a_thread_for_each_part() {
  const std::string folder = make_folder("paths"), list = in(folder, "list.txt"), host = in(folder, "host.dll");
  write_file(list, application);
  place_test_host(host);
  char before[MAX_PATH] = "";
  GetEnvironmentVariableA("OSW_DRIVER_HOST", before, sizeof before);
  const waiting held = start_waiting(folder, "hold " + list);
  SetEnvironmentVariableA("OSW_DRIVER_HOST", host.c_str());
  SetEnvironmentVariableA("OSW_TEST_HOST_DELAY", "0");
  play(folder, "path sequential");
  SetEnvironmentVariableA("OSW_TEST_HOST_DELAY", "100");
  play(folder, "path threaded");
  SetEnvironmentVariableA("OSW_DRIVER_FAST_SWITCH", "1");
  play(folder, "path sequential");
  set_option("OSW_DW_GLDispatchUseMtPath", 1);
  play(folder, "path threaded");
  reset_option("OSW_DW_GLDispatchUseMtPath");
  for (const char* name : {"OSW_TEST_HOST_DELAY", "OSW_DRIVER_FAST_SWITCH"}) SetEnvironmentVariableA(name, nullptr);
  SetEnvironmentVariableA("OSW_DRIVER_HOST", *before ? before : nullptr);
  finish(held);
}

constexpr test_case cases[] = {{"exports_have_names_and_ordinals", exports_have_names_and_ordinals},
                               {"own_exports", own_exports},
                               {"section_is_shared", section_is_shared},
                               {"pictures_are_the_same", pictures_are_the_same},
                               {"lists", lists},
                               {"look_ups", look_ups},
                               {"a_slow_host_gets_a_thread_for_each_part", a_slow_host_gets_a_thread_for_each_part},
                               {"a_planted_host_is_not_loaded", a_planted_host_is_not_loaded}};

}  // namespace

int main(int count, char** arguments) {
  const int status = play_role(count, arguments);
  if (status >= 0) return status;
  set_option("OSW_DW_SplitOneMonitor", 1);
  set_option("OSW_DW_SplitParts", part_count);
  const int failed = run_cases(cases, static_cast<int>(std::size(cases)), count, arguments, case_limit);
  reset_option("OSW_DW_SplitOneMonitor");
  reset_option("OSW_DW_SplitParts");
  return failed;
}
