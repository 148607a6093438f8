#include "wgl/records/pbuffer.h"

#include "wgl/records/registry.h"

__osw_pbuffer __osw_pbuffer_registry[max_pbuffers];
CRITICAL_SECTION __osw_pbuffer_lock;

__osw_pbuffer* __osw_pbuffer_lookup(HPBUFFERARB hpbuffer) {
  return find_slot(__osw_pbuffer_registry, &__osw_pbuffer_lock, &__osw_pbuffer::app_hpbuffer, hpbuffer);
}

__osw_pbuffer* __osw_pbuffer_of_hdc(HDC hdc) {
  return find_slot(__osw_pbuffer_registry, &__osw_pbuffer_lock, &__osw_pbuffer::pbuffer_hdc, hdc);
}

void __osw_pbuffer_enter(const __osw_pbuffer& record) {
  write_slot(__osw_pbuffer_registry, &__osw_pbuffer_lock, &__osw_pbuffer::app_hpbuffer, HPBUFFERARB{}, record);
}

void __osw_pbuffer_erase(HPBUFFERARB hpbuffer) {
  write_slot(__osw_pbuffer_registry, &__osw_pbuffer_lock, &__osw_pbuffer::app_hpbuffer, hpbuffer, __osw_pbuffer{});
}
