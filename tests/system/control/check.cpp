#include "check.h"

#include <cstdio>

static int failed;

static void report(const std::string& text, const char* file, int line) {
  ++failed;
  printf("%s:%d: %s\n", file, line, text.c_str());
  fflush(stdout);
}

bool check_that(bool holds, const char* what, const char* file, int line) {
  if (!holds) report(std::string("does not hold: ") + what, file, line);
  return holds;
}

// Letters that the test's own output cannot show come out as their numbers.
static std::string readable(const std::wstring& text) {
  std::string result;
  for (const wchar_t c : text) {
    char number[16];
    snprintf(number, sizeof number, "\\u%04x", static_cast<unsigned>(c));
    result += c < 127 && (c >= 32 || c == L'\n') ? std::string(1, static_cast<char>(c)) : number;
  }
  return result;
}

bool check_equal(const std::wstring& got, const std::wstring& wanted, const char* what, const char* file, int line) {
  if (got != wanted) report(std::string(what) + " is\n" + readable(got) + "\nnot\n" + readable(wanted), file, line);
  return got == wanted;
}

bool check_equal(long long got, long long wanted, const char* what, const char* file, int line) {
  if (got != wanted) {
    report(std::string(what) + " is " + std::to_string(got) + ", not " + std::to_string(wanted), file, line);
  }
  return got == wanted;
}

int failed_checks() {
  return failed;
}
