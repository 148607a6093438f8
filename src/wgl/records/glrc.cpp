#include "wgl/records/glrc.h"

#include "wgl/records/registry.h"

__osw_glrc __osw_glrc_registry[max_glrcs];
CRITICAL_SECTION __osw_glrc_lock;

__osw_glrc* __osw_glrc_lookup(HGLRC hglrc) {
  return find_slot(__osw_glrc_registry, &__osw_glrc_lock, &__osw_glrc::app_hglrc, hglrc);
}

void __osw_glrc_enter(const __osw_glrc& record) {
  write_slot(__osw_glrc_registry, &__osw_glrc_lock, &__osw_glrc::app_hglrc, HGLRC{}, record);
}

void __osw_glrc_erase(HGLRC hglrc) {
  write_slot(__osw_glrc_registry, &__osw_glrc_lock, &__osw_glrc::app_hglrc, hglrc, __osw_glrc{});
}

void __osw_glrc_remember_share(const shared_pair& pair) {
  EnterCriticalSection(&__osw_glrc_lock);
  for (__osw_glrc& glrc : __osw_glrc_registry) {
    if (glrc.app_hglrc == pair.second) glrc.share_with = pair.first;
  }
  LeaveCriticalSection(&__osw_glrc_lock);
}

bool __osw_glrc_take_share(shared_pair* pair) {
  bool taken = false;
  EnterCriticalSection(&__osw_glrc_lock);
  for (__osw_glrc& glrc : __osw_glrc_registry) {
    if (taken || !glrc.share_with) continue;
    *pair = {glrc.share_with, glrc.app_hglrc};
    glrc.share_with = nullptr;
    taken = true;
  }
  LeaveCriticalSection(&__osw_glrc_lock);
  return taken;
}
