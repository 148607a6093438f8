#include "stop.h"

static stop_events events;
static HANDLE may_end;

// Called by Windows on a thread of its own.
static BOOL WINAPI on_console_event(DWORD type) {
  if (type == CTRL_C_EVENT || type == CTRL_BREAK_EVENT) {
    SetEvent(events.interrupted);
    return TRUE;
  }
  // The process ends when this returns: not before everything is put back.
  SetEvent(events.closing);
  WaitForSingleObject(may_end, INFINITE);
  return TRUE;
}

stop_events watch_for_stop() {
  events.interrupted = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  events.closing = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  may_end = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  SetConsoleCtrlHandler(on_console_event, TRUE);
  return events;
}

void allow_end() {
  SetEvent(may_end);
}
