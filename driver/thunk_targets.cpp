#include "thunk_targets.h"

#include <windows.h>

#include <cstring>

namespace {

SRWLOCK thunk_lock = SRWLOCK_INIT;
char* names[thunk_count];
int taken = export_thunk_count;

int find_or_take(const char* name, __osw_proc target) {
  for (int i = export_thunk_count; i < taken; ++i) {
    if (thunk_targets[i] == target && strcmp(names[i], name) == 0) return i;
  }
  if (taken == thunk_count) return -1;
  char* copy = _strdup(name);
  if (!copy) return -1;
  names[taken] = copy;
  thunk_targets[taken] = target;
  return taken++;
}

}  // namespace

const char* const thunked_exports[export_thunk_count] = {"GlmfBeginGlsBlock", "GlmfCloseMetaFile", "GlmfEndGlsBlock",
                                                         "GlmfEndPlayback",   "GlmfInitPlayback",  "GlmfPlayGlsRecord",
                                                         "glDebugEntry"};

__osw_proc thunk_targets[thunk_count];

int thunk_to(const char* name, __osw_proc target) {
  AcquireSRWLockExclusive(&thunk_lock);
  const int thunk = find_or_take(name, target);
  ReleaseSRWLockExclusive(&thunk_lock);
  return thunk;
}
