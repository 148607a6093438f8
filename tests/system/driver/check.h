// The checks of these programs: a failed one prints its line and what it found; the program goes on and ends with
// status 1.
#pragma once

#include <cstdio>
#include <cstdlib>

struct test_case {
  const char* name;
  void (*run)();
};

// Failed checks so far, of all threads.
extern long failed_checks;

// What CHECK and CHECK_EQUAL call.
void fail(const char* file, int line, const char* what, const char* found);
void check_equal(const char* file, int line, const char* what, long long found, long long wanted);

// Runs the cases, or those whose names are given on the command line, each with a line of its own. The process is ended
// with status 3 when one takes longer than `seconds`. Returns main's result.
int run_cases(const test_case* cases, int count, int argc, char** argv, int seconds);

#define CHECK(condition) ((condition) ? (void)0 : fail(__FILE__, __LINE__, #condition, ""))

// Both of a type that fits a long long.
#define CHECK_EQUAL(found, wanted) check_equal(__FILE__, __LINE__, #found, (long long)(found), (long long)(wanted))
