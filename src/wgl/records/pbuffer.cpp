#include "wgl/records/pbuffer.h"

#include "dispatch/report.h"
#include "wgl/records/registry.h"

__osw_pbuffer __osw_pbuffer_registry[max_pbuffers];
CRITICAL_SECTION __osw_pbuffer_lock;

__osw_pbuffer* __osw_pbuffer_lookup(HPBUFFERARB hpbuffer) {
  return find_slot(__osw_pbuffer_registry, &__osw_pbuffer_lock, &__osw_pbuffer::app_hpbuffer, hpbuffer);
}

__osw_pbuffer* find_pbuffer_or_warn(HPBUFFERARB hpbuffer, const char* function) {
  __osw_pbuffer* pbuffer = hpbuffer ? __osw_pbuffer_lookup(hpbuffer) : nullptr;
  if (!pbuffer) __osw_report(severity_warning, "%s of a pbuffer without child pbuffers reaches no part.\n", function);
  return pbuffer;
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

bool is_drawable(HDC hdc) {
  return hdc && (WindowFromDC(hdc) || __osw_pbuffer_of_hdc(hdc));
}
