#include "applications.h"

#include "support/check.h"

namespace {

constexpr DWORD patience = 60000;  // ms

void copy_library(const std::string& name, const std::string& folder) {
  CHECK(CopyFileA((program_folder() + name).c_str(), (folder + name).c_str(), FALSE));
}

void check_end(DWORD status, const std::string& role) {
  if (status == good_status) return;
  fail(__FILE__, __LINE__, role.c_str(), (": ended with status " + std::to_string(status)).c_str());
}

std::string name_event(const char* what, int number) {
  return std::string("osw_loading_") + what + std::to_string(number);
}

}  // namespace

std::string make_folder(const char* name) {
  const std::string folder = program_folder() + name + "\\";
  CHECK(CreateDirectoryA(folder.c_str(), nullptr));
  copy_library("opengl32.dll", folder);
  copy_library("opengl32sys.dll", folder);
  copy_of_this_program(application, folder);
  return folder;
}

void play(const std::string& folder, const std::string& role) {
  check_end(run_program(folder + application, role, patience), role);
}

waiting start_waiting(const std::string& folder, const std::string& role) {
  static int number;
  ++number;
  const std::string ready = name_event("ready", number), go = name_event("go", number);
  const HANDLE is_ready = CreateEventA(nullptr, TRUE, FALSE, ready.c_str());
  const HANDLE may_go = CreateEventA(nullptr, TRUE, FALSE, go.c_str());
  const waiting held = {start_program(folder + application, role + " " + ready + " " + go), may_go};
  CHECK_EQUAL(WaitForSingleObject(is_ready, patience), WAIT_OBJECT_0);
  CloseHandle(is_ready);
  return held;
}

void finish(const waiting& held) {
  SetEvent(held.go);
  check_end(finish_program(held.program, patience), "a waiting application");
  CloseHandle(held.go);
}
