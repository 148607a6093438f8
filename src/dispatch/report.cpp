#include "dispatch/report.h"

const char* const severity_error = "OGLSPANWrapper Error";
const char* const severity_warning = "OGLSPANWrapper Warning";
const char* const severity_info = "OGLSPANWrapper Info";

void __osw_send_report(const char* severity, const char* message) {
  char line[report_size];
  _snprintf(line, sizeof line, "%s: ", severity);
  line[sizeof line - 1] = 0;
  OutputDebugStringA(line);
  OutputDebugStringA(message);
}

void show_failure(HWND owner, const char* text) {
  MessageBoxA(owner, text, "OSW Error", 0);
}
