#include "extended/lasting_text.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

struct kept_text {
  kept_text* next;
  char* text;
};

// What is in the list stays as it is. Two threads that keep equal texts at once both find room.
std::atomic<kept_text*> kept_texts;

const char* find_kept(const char* text) {
  for (const kept_text* kept = kept_texts.load(std::memory_order_acquire); kept; kept = kept->next) {
    if (strcmp(kept->text, text) == 0) return kept->text;
  }
  return nullptr;
}

bool keep(char* text) {
  auto* kept = static_cast<kept_text*>(calloc(1, sizeof(kept_text)));
  if (!kept) return false;
  kept->text = text;
  kept->next = kept_texts.load(std::memory_order_relaxed);
  while (!kept_texts.compare_exchange_weak(kept->next, kept, std::memory_order_release, std::memory_order_relaxed)) {
  }
  return true;
}

}  // namespace

const char* lasting_text(char* text) {
  if (!text) return "";
  const char* lasting = find_kept(text);
  if (!lasting && keep(text)) return text;
  free(text);
  return lasting ? lasting : "";
}
