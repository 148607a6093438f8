// Checks of the tests of the control program.
#pragma once

#include <string>

// Counts a check, and prints what was expected and where when it does not hold. Gives whether it holds.
bool check_that(bool holds, const char* what, const char* file, int line);
bool check_equal(const std::wstring& got, const std::wstring& wanted, const char* what, const char* file, int line);
bool check_equal(long long got, long long wanted, const char* what, const char* file, int line);

// Checks that have failed so far.
int failed_checks();

#define CHECK(condition)      check_that((condition), #condition, __FILE__, __LINE__)
#define CHECK_EQ(got, wanted) check_equal((got), (wanted), #got, __FILE__, __LINE__)
