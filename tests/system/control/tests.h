// The tests, by the file that they stand in.
#pragma once

#include <vector>

struct test {
  const char* name;
  void (*run)();
};

std::vector<test> command_line_tests();
std::vector<test> option_tests();
std::vector<test> status_tests();
std::vector<test> list_tests();
std::vector<test> run_tests();
std::vector<test> name_tests();
std::vector<test> run_option_tests();
std::vector<test> run_folder_tests();
std::vector<test> interrupt_tests();
std::vector<test> install_tests();
std::vector<test> check_tests();
