// The checks of the test programs: a failed one prints its place, its case and what it found; the program goes on and
// ends with status 1.
#pragma once

#include <string>
#include <type_traits>

struct test_case {
  const char* name;
  void (*run)();
};

// Failed checks so far, of all threads.
extern long failed_checks;

// From now on a failed check is one of this case, whose name has to stay.
void begin_case(const char* name);

// Runs the cases, or those whose names are given on the command line, each with a line of its own. The process is ended
// with status 3 when one takes longer than `seconds`. Returns main's result.
int run_cases(const test_case* cases, int count, int argc, char** argv, int seconds);

// What the macros call. Each gives whether the check holds.
void fail(const char* file, int line, const char* what, const char* found);
bool check_that(const char* file, int line, const char* what, bool holds);
bool check_numbers(const char* file, int line, const char* what, long long found, long long wanted);
bool check_texts(const char* file, int line, const char* what, const std::wstring& found, const std::wstring& wanted);

template <class Found, class Wanted>
bool check_equal(const char* file, int line, const char* what, const Found& found, const Wanted& wanted) {
  if constexpr (std::is_convertible_v<const Found&, std::wstring>) {
    return check_texts(file, line, what, found, wanted);
  } else {
    return check_numbers(file, line, what, (long long)(found), (long long)(wanted));
  }
}

#define CHECK(condition) check_that(__FILE__, __LINE__, #condition, static_cast<bool>(condition))

// Both texts, or both of a type that fits a long long.
#define CHECK_EQUAL(found, wanted) check_equal(__FILE__, __LINE__, #found, (found), (wanted))
