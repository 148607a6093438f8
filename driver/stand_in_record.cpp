#include "stand_in_record.h"

SRWLOCK stand_in_lock = SRWLOCK_INIT;
std::atomic<stand_in*> first_stand_in;

stand_in* find_stand_in(HWND child) {
  for (stand_in* s = first_stand_in; s; s = s->next) {
    if (s->child == child) return s;
  }
  return nullptr;
}

stand_in* find_stand_in_by_window(HWND hwnd) {
  for (stand_in* s = first_stand_in; s; s = s->next) {
    if (s->hwnd == hwnd) return s;
  }
  return nullptr;
}

stand_in* find_stand_in_by_owner(HWND owner) {
  for (stand_in* s = first_stand_in; s; s = s->next) {
    if (s->owner == owner) return s;
  }
  return nullptr;
}

void remove_stand_in(stand_in* s) {
  AcquireSRWLockExclusive(&stand_in_lock);
  if (first_stand_in == s) {
    first_stand_in = s->next;
  } else {
    stand_in* before = first_stand_in;
    while (before->next != s) before = before->next;
    before->next = s->next;
  }
  ReleaseSRWLockExclusive(&stand_in_lock);
}
