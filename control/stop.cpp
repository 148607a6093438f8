#include "stop.h"

namespace {

stop_events events;

// Called by Windows on a thread of its own. It never gives that thread back: at a thread's end the wrapper readies
// itself for rendering if the thread has never rendered, and so would load the driver into this process. And after the
// closing events the process ends when this returns, which must not be before everything is put back.
BOOL WINAPI on_console_event(DWORD type) {
  SetEvent(type == CTRL_C_EVENT || type == CTRL_BREAK_EVENT ? events.interrupted : events.closing);
  Sleep(INFINITE);
  return TRUE;
}

}  // namespace

stop_events watch_for_stop() {
  events.interrupted = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  events.closing = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  SetConsoleCtrlHandler(on_console_event, TRUE);
  return events;
}
