#include "wgl/glrc.h"

#include "wgl/registry.h"

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
