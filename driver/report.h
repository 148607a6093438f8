// Reports to the debugger.
#pragma once

// Sends one line, formatted as by printf and cut to 255 characters. A report changes nothing and stops nothing. Any
// thread, no lock needed.
[[gnu::format(__printf__, 1, 2)]] void report(const char* format, ...);
