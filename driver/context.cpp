#include "context.h"

#include <atomic>
#include <cstdlib>

namespace {

SRWLOCK registry_lock = SRWLOCK_INIT;
context* first_context;

context* find_record(HGLRC hglrc) {
  for (context* c = first_context; c; c = c->next) {
    if (c->hglrc == hglrc) return c;
  }
  return nullptr;
}

context* new_record() {
  auto* c = static_cast<context*>(calloc(1, sizeof(context)));
  if (!c) return nullptr;
  c->next = first_context;
  first_context = c;
  return c;
}

void clear(context* c) {
  context* next = c->next;
  *c = context{};
  c->next = next;
}

DWORD load(const DWORD& word) {
  return std::atomic_ref<DWORD>(const_cast<DWORD&>(word)).load();
}

void store(DWORD& word, DWORD value) {
  std::atomic_ref<DWORD>(word).store(value);
}

}  // namespace

context* register_context(HGLRC hglrc, int pixel_format) {
  AcquireSRWLockExclusive(&registry_lock);
  context* c = find_record(nullptr);
  if (!c) c = new_record();
  if (c) {
    c->hglrc = hglrc;
    c->pixel_format = pixel_format;
    c->withheld_extensions = -1;
  }
  ReleaseSRWLockExclusive(&registry_lock);
  return c;
}

context* find_context(HGLRC hglrc) {
  if (!hglrc) return nullptr;
  AcquireSRWLockShared(&registry_lock);
  context* c = find_record(hglrc);
  ReleaseSRWLockShared(&registry_lock);
  return c;
}

void unregister_context(context* c) {
  AcquireSRWLockExclusive(&registry_lock);
  clear(c);
  ReleaseSRWLockExclusive(&registry_lock);
}

void note_first_drawable(context* c, HWND hwnd) {
  if (c->bound_before) {
    if (hwnd != c->draw.hwnd) c->viewport_pending = c->scissor_pending = false;
    return;
  }
  c->bound_before = true;
  RECT client;
  if (!hwnd || !GetClientRect(hwnd, &client)) return;
  c->initial_size = {client.right, client.bottom};
  c->has_initial_size = c->viewport_pending = c->scissor_pending = true;
}

bool take_ownership(context* c, context* previous, DWORD thread) {
  AcquireSRWLockExclusive(&registry_lock);
  const bool available = c->owner == 0 || c->owner == thread;
  if (available) {
    if (previous) store(previous->owner, 0);
    store(c->owner, thread);
  }
  ReleaseSRWLockExclusive(&registry_lock);
  return available;
}

void drop_ownership(context* c) {
  AcquireSRWLockExclusive(&registry_lock);
  store(c->owner, 0);
  ReleaseSRWLockExclusive(&registry_lock);
}

void set_holder(context* c, DWORD thread) {
  store(c->holder, thread);
}

DWORD owner_of(const context* c) {
  return load(c->owner);
}

DWORD holder_of(const context* c) {
  return load(c->holder);
}
