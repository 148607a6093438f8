// Reports to the debugger.
#pragma once

extern const char* const severity_error;
extern const char* const severity_warning;
extern const char* const severity_info;

// Sends two lines to the debugger: the severity, then the message, formatted as by printf and cut at 255 characters.
// A report changes nothing and stops nothing. Any thread, no lock needed.
[[gnu::format(printf, 2, 3)]] void __osw_report(const char* severity, const char* format, ...);
