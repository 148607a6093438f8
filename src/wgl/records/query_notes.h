// What the extended mode knows of a context's query objects without asking anyone. Only the thread that has the context
// current touches it; workers never do.
#pragma once

#include "ops/types.h"

struct query_note {
  u32 id;
  GLenum target;  // of the latest query
  u32 index;      // vertex stream
  bool is_active;
  bool in_window;  // at its beginning or end the window was drawn to, of which each part has its share
  query_note* next;
};

constexpr u32 query_buckets = 64;
constexpr u32 most_active_queries = 16;

struct query_notes {
  query_note* buckets[query_buckets];
  query_note* active[most_active_queries];
};

// The note of a query object that was begun, or null; also when there was no memory for it.
query_note* find_query(const query_notes& notes, u32 id);

// A query begins, ends, or takes the time. What GL refuses, a target or an object that is active already, or no object,
// changes nothing.
void note_query_begin(query_notes* notes, GLenum target, u32 index, u32 id, bool in_window);
void note_query_end(query_notes* notes, GLenum target, u32 index, bool in_window);
void note_query_counter(query_notes* notes, u32 id, GLenum target);

// At the context's end.
void free_query_notes(query_notes* notes);
