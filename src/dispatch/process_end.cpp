#include "dispatch/process_end.h"

bool process_ends;

void enter_unless_process_ends(CRITICAL_SECTION* lock) {
  if (!process_ends) EnterCriticalSection(lock);
}

void leave_unless_process_ends(CRITICAL_SECTION* lock) {
  if (!process_ends) LeaveCriticalSection(lock);
}
