// Reports to the debugger.
#pragma once

#include <windows.h>

#include <cstdio>

extern const char* const severity_error;
extern const char* const severity_warning;
extern const char* const severity_info;

constexpr int report_size = 256;

// Sends two lines to the debugger: the severity, then the message.
void __osw_send_report(const char* severity, const char* message);

// Shows a message box to the user and waits until it is closed. `owner` may be null.
void show_failure(HWND owner, const char* text);

// The same as `__osw_send_report` with a message that is formatted as by printf and cut at 255 characters. A report
// changes nothing and stops nothing. Any thread, no lock needed. The platform's own formatting is used, for how it
// writes handles.
template <class... Arguments>
void __osw_report(const char* severity, const char* format, Arguments... arguments) {
  char message[report_size];
  _snprintf(message, sizeof message, format, arguments...);
  message[sizeof message - 1] = 0;
  __osw_send_report(severity, message);
}

// The same with a text in which nothing is to be formatted.
inline void __osw_report(const char* severity, const char* message) {
  __osw_send_report(severity, message);
}
