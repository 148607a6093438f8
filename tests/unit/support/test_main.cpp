// Runs one test in this process, or several in a process each: the library under test cannot be loaded twice.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/process.h"

namespace {

constexpr std::chrono::seconds time_of_one_test{240};

bool names_one_test(const std::string& filter) {
  return filter.find('.') != std::string::npos && filter.find_first_of("*?:-") == std::string::npos;
}

// The selected tests' full names, from this program's own list.
std::vector<std::string> selected_tests(const std::string& program, const std::string& filter) {
  const std::string command = "'" + program + "' --gtest_list_tests '--gtest_filter=" + filter + "'";
  FILE* list = popen(command.c_str(), "r");
  if (list == nullptr) return {};
  std::vector<std::string> names;
  std::string suite;
  std::array<char, 1024> line;
  while (std::fgets(line.data(), line.size(), list) != nullptr) {
    std::string text = line.data();
    text = text.substr(0, text.find_first_of("#\n"));
    while (!text.empty() && text.back() == ' ') text.pop_back();
    if (text.starts_with("  ")) {
      names.push_back(suite + text.substr(2));
    } else {
      suite = text;
    }
  }
  pclose(list);
  return names;
}

bool passes(const std::string& program, const std::string& name) {
  const pid_t child = fork();
  if (child == 0) {
    execl(program.c_str(), program.c_str(), ("--gtest_filter=" + name).c_str(), "--gtest_brief=1", nullptr);
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  const bool passed = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  std::printf("%s %s\n", passed ? "passed" : "FAILED", name.c_str());
  std::fflush(stdout);
  return passed;
}

int run_each(const std::string& program, const std::string& filter) {
  const std::vector<std::string> names = selected_tests(program, filter);
  int failed = 0;
  for (const std::string& name : names) failed += !passes(program, name);
  std::printf("%zu tests, %d failed\n", names.size(), failed);
  return failed == 0 && !names.empty() ? 0 : 1;
}

}  // namespace

// ThreadSanitizer's own wait at the end of a program, a second by default, is long for a process per test.
extern "C" const char* __tsan_default_options() {
  return "atexit_sleep_ms=50";
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const std::string filter = testing::GTEST_FLAG(filter);
  const bool in_death_test = !testing::GTEST_FLAG(internal_run_death_test).empty();
  if (!testing::GTEST_FLAG(list_tests) && !in_death_test && !names_one_test(filter)) return run_each(argv[0], filter);
  platform::set_watchdog(time_of_one_test);
  const int result = RUN_ALL_TESTS();
  if (platform::live_threads() == 0) return result;
  // Threads that still run would use what the end of the program takes away.
  std::fflush(nullptr);
  std::_Exit(result == 0 && !testing::GTEST_FLAG(list_tests) ? 1 : result);
}
