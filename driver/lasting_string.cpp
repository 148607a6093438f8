#include "lasting_string.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>

namespace {

struct kept_string {
  kept_string* next;
  char* text;
};

SRWLOCK kept_lock = SRWLOCK_INIT;
kept_string* kept_strings;

const char* find_kept(const char* text) {
  for (const kept_string* s = kept_strings; s; s = s->next) {
    if (strcmp(s->text, text) == 0) return s->text;
  }
  return nullptr;
}

bool keep(char* text) {
  auto* made = static_cast<kept_string*>(calloc(1, sizeof(kept_string)));
  if (!made) return false;
  *made = {kept_strings, text};
  kept_strings = made;
  return true;
}

}  // namespace

const char* lasting_string(char* text) {
  if (!text) return "";
  AcquireSRWLockExclusive(&kept_lock);
  const char* lasting = find_kept(text);
  const bool kept = !lasting && keep(text);
  ReleaseSRWLockExclusive(&kept_lock);
  if (kept) return text;
  free(text);
  return lasting ? lasting : "";
}
