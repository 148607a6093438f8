#include "wgl/records/query_notes.h"

#include <cstdlib>

namespace {

query_note* find_or_make(query_notes* notes, u32 id) {
  if (!id) return nullptr;
  if (query_note* note = find_query(*notes, id)) return note;
  auto* note = static_cast<query_note*>(calloc(1, sizeof(query_note)));
  if (!note) return nullptr;
  query_note** bucket = &notes->buckets[id % query_buckets];
  note->id = id;
  note->next = *bucket;
  *bucket = note;
  return note;
}

// Where the active query of a target stands, or a free place for it; null when there is neither.
query_note** place_of(query_notes* notes, GLenum target, u32 index) {
  query_note** free_place = nullptr;
  for (query_note*& place : notes->active) {
    if (place && place->target == target && place->index == index) return &place;
    if (!place && !free_place) free_place = &place;
  }
  return free_place;
}

}  // namespace

query_note* find_query(const query_notes& notes, u32 id) {
  query_note* note = notes.buckets[id % query_buckets];
  while (note && note->id != id) note = note->next;
  return note;
}

void note_query_begin(query_notes* notes, GLenum target, u32 index, u32 id, bool in_window) {
  query_note** place = place_of(notes, target, index);
  if (!place || *place) return;
  query_note* note = find_or_make(notes, id);
  if (!note || note->is_active) return;
  note->target = target;
  note->index = index;
  note->is_active = true;
  note->in_window = in_window;
  *place = note;
}

void note_query_end(query_notes* notes, GLenum target, u32 index, bool in_window) {
  query_note** place = place_of(notes, target, index);
  if (!place || !*place) return;
  (*place)->is_active = false;
  (*place)->in_window = (*place)->in_window || in_window;
  *place = nullptr;
}

void note_query_counter(query_notes* notes, u32 id, GLenum target) {
  query_note* note = find_or_make(notes, id);
  if (note && !note->is_active) note->target = target;
}

void free_query_notes(query_notes* notes) {
  for (query_note* note : notes->buckets) {
    while (note) {
      query_note* next = note->next;
      free(note);
      note = next;
    }
  }
  *notes = {};
}
