#include "startup/config/app_list.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "dispatch/report.h"

namespace {

constexpr u32 word_size = 260;

struct app_list {
  u32 count;
  char** words;
};

bool is_space(int c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// Reads the next word into `word`, which holds 260 bytes; one that does not fit becomes empty, which matches nothing.
// Result: whether there was a word.
bool read_word(FILE* file, char* word) {
  int c = getc(file);
  while (is_space(c)) c = getc(file);
  if (c == EOF) return false;
  u32 length = 0;
  for (; c != EOF && !is_space(c); c = getc(file)) {
    if (length < word_size) word[length] = static_cast<char>(c);
    ++length;
  }
  word[length < word_size ? length : 0] = 0;
  return true;
}

void free_list(app_list* list) {
  for (u32 i = 0; i < list->count; ++i) free(list->words[i]);
  free(list->words);
}

// Without memory the list ends at the last word that found some.
app_list read_words(FILE* file, u32 count) {
  app_list list{0, static_cast<char**>(calloc(count, sizeof(char*)))};
  if (!list.words) return list;
  for (; list.count < count; ++list.count) {
    auto* word = static_cast<char*>(calloc(word_size, 1));
    if (!word) break;
    list.words[list.count] = word;
    if (!read_word(file, word)) word[0] = 0;
  }
  if (list.count < count) __osw_report(severity_error, "no memory for the application list\n");
  return list;
}

// A file without words stays open.
app_list __osw_read_app_list(FILE* file) {
  char word[word_size];
  u32 count = 0;
  while (read_word(file, word)) ++count;
  if (!count) return {};
  fseek(file, 0, SEEK_SET);
  const app_list list = read_words(file, count);
  fclose(file);
  return list;
}

}  // namespace

bool __osw_app_in_list(const char* path, const char* name) {
  FILE* file = fopen(path, "r+");
  if (!file) return false;
  app_list list = __osw_read_app_list(file);
  bool found = false;
  for (u32 i = 0; i < list.count && !found; ++i) {
    const char* word = list.words[i];
    found = word[0] && _stricmp(word, name) == 0;
  }
  free_list(&list);
  return found;
}
