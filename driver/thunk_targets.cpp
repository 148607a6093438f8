#include "thunk_targets.h"

#include <windows.h>

#include <cstring>

namespace {

SRWLOCK thunk_lock = SRWLOCK_INIT;
char* thunk_names[thunk_count];
int taken_thunks = export_thunk_count;

int find_or_take(const char* name, __osw_proc target) {
  for (int i = export_thunk_count; i < taken_thunks; ++i) {
    if (thunk_targets[i] == target && strcmp(thunk_names[i], name) == 0) return i;
  }
  if (taken_thunks == thunk_count) return -1;
  char* copy = _strdup(name);
  if (!copy) return -1;
  thunk_names[taken_thunks] = copy;
  thunk_targets[taken_thunks] = target;
  return taken_thunks++;
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
