#include "wgl/records/glrc.h"

#include "wgl/records/buffer_maps.h"
#include "wgl/records/known_buffers.h"
#include "wgl/records/registry.h"

__osw_glrc __osw_glrc_registry[max_glrcs];
CRITICAL_SECTION __osw_glrc_lock;

namespace {

u32 last_turn;  // under `__osw_glrc_lock`

int count_glrcs() {
  int count = 0;
  EnterCriticalSection(&__osw_glrc_lock);
  for (const __osw_glrc& glrc : __osw_glrc_registry) count += glrc.app_hglrc != nullptr;
  LeaveCriticalSection(&__osw_glrc_lock);
  return count;
}

}  // namespace

__osw_glrc* __osw_glrc_lookup(HGLRC hglrc) {
  return find_slot(__osw_glrc_registry, &__osw_glrc_lock, &__osw_glrc::app_hglrc, hglrc);
}

__osw_glrc new_glrc(HGLRC hglrc) {
  __osw_glrc glrc{};
  glrc.app_hglrc = hglrc;
  glrc.pack_store.alignment = 4;
  glrc.unpack_store.alignment = 4;
  return glrc;
}

void __osw_glrc_enter(const __osw_glrc& record) {
  forget_known_buffers();
  write_slot(__osw_glrc_registry, &__osw_glrc_lock, &__osw_glrc::app_hglrc, HGLRC{}, record);
}

void __osw_glrc_erase(HGLRC hglrc) {
  if (__osw_glrc* glrc = hglrc ? __osw_glrc_lookup(hglrc) : nullptr) {
    free_array_objects(&glrc->arrays);
    free_client_attribs(&glrc->client_attribs);
    free_query_notes(&glrc->queries);
  }
  write_slot(__osw_glrc_registry, &__osw_glrc_lock, &__osw_glrc::app_hglrc, hglrc, __osw_glrc{});
  if (has_buffer_maps() && count_glrcs() == 0) free_buffer_maps();
  forget_known_buffers();
}

bool is_only_glrc() {
  return count_glrcs() <= 1;
}

void __osw_glrc_remember_share(const shared_pair& pair) {
  EnterCriticalSection(&__osw_glrc_lock);
  for (__osw_glrc& glrc : __osw_glrc_registry) {
    if (glrc.app_hglrc != pair.second) continue;
    glrc.share_with = pair.first;
    glrc.share_turn = ++last_turn;
  }
  LeaveCriticalSection(&__osw_glrc_lock);
}

bool __osw_glrc_take_share(shared_pair* pair) {
  __osw_glrc* next = nullptr;
  EnterCriticalSection(&__osw_glrc_lock);
  for (__osw_glrc& glrc : __osw_glrc_registry) {
    if (glrc.share_with && (!next || glrc.share_turn < next->share_turn)) next = &glrc;
  }
  if (next) {
    *pair = {next->share_with, next->app_hglrc};
    next->share_with = nullptr;
  }
  LeaveCriticalSection(&__osw_glrc_lock);
  return next != nullptr;
}
