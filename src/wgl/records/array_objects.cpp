#include "wgl/records/array_objects.h"

#include <cstdlib>

#include "dispatch/report.h"

namespace {

u64 bit(u32 array) {
  return u64{1} << array;
}

void set_bit_of(u64* mask, u32 array, bool on) {
  *mask = on ? *mask | bit(array) : *mask & ~bit(array);
}

u32 binding_of_attribute(const array_object& object, u32 attribute) {
  const u32 other = object.other_binding[attribute];
  return other ? other - 1 : attribute;
}

void settle_attribute(array_object* object, u32 attribute) {
  const u32 buffer = object->buffers[first_attribute_array + binding_of_attribute(*object, attribute)];
  set_bit_of(&object->in_buffers, first_attribute_array + attribute, buffer != 0);
}

// Calls `work` with each attribute that takes its values from the binding.
template <class Work>
void for_each_attribute_at(const array_object& object, u32 binding, Work work) {
  for (u32 attribute = 0; attribute < max_attributes; ++attribute) {
    if (binding_of_attribute(object, attribute) == binding) work(attribute);
  }
}

bool is_attribute_array(u32 array) {
  return array >= first_attribute_array && array < first_attribute_array + max_attributes;
}

array_object** bucket_of(array_objects* objects, u32 name) {
  return &objects->buckets[name % array_object_buckets];
}

array_object** place_of(array_objects* objects, u32 name) {
  array_object** at = bucket_of(objects, name);
  while (*at && (*at)->name != name) at = &(*at)->next;
  return at;
}

}  // namespace

array_object* named_array_object(array_objects* objects, u32 name) {
  if (!name) return &objects->first;
  array_object** at = place_of(objects, name);
  if (*at) return *at;
  auto* object = static_cast<array_object*>(calloc(1, sizeof(array_object)));
  if (!object) {
    __osw_report(severity_error, "no memory for a vertex array object: draws from it are waited for\n");
    objects->unknown.is_unknown = true;
    return &objects->unknown;
  }
  object->name = name;
  *at = object;
  return object;
}

bool has_array_object(const array_objects& objects, u32 name) {
  const array_object* object = objects.buckets[name % array_object_buckets];
  while (object && object->name != name) object = object->next;
  return object != nullptr;
}

void delete_array_object(array_objects* objects, u32 name) {
  array_object** at = place_of(objects, name);
  array_object* object = *at;
  if (!name || !object) return;
  if (objects->current == object) objects->current = nullptr;
  *at = object->next;
  free(object);
}

void free_array_objects(array_objects* objects) {
  for (array_object*& bucket : objects->buckets) {
    while (array_object* object = bucket) {
      bucket = object->next;
      free(object);
    }
  }
  *objects = {};
}

void note_array_pointer(array_object* object, u32 array, u32 buffer, bool has_pointer) {
  if (array >= first_attribute_array + max_attributes) return;
  if (is_attribute_array(array)) {
    const u32 attribute = array - first_attribute_array;
    object->other_binding[attribute] = 0;
    note_vertex_buffer(object, attribute, buffer);
  } else {
    object->buffers[array] = buffer;
    set_bit_of(&object->in_buffers, array, buffer != 0);
  }
  set_bit_of(&object->by_pointer, array, has_pointer);
}

void note_vertex_buffer(array_object* object, u32 binding, u32 buffer) {
  if (binding >= max_attributes) return;
  object->buffers[first_attribute_array + binding] = buffer;
  for_each_attribute_at(*object, binding, [=](u32 attribute) {
    settle_attribute(object, attribute);
    set_bit_of(&object->by_pointer, first_attribute_array + attribute, false);
  });
}

void note_attribute_binding(array_object* object, u32 attribute, u32 binding) {
  if (attribute >= max_attributes || binding >= max_attributes) return;
  object->other_binding[attribute] = static_cast<u8>(binding + 1);
  settle_attribute(object, attribute);
  if (binding != attribute) set_bit_of(&object->by_pointer, first_attribute_array + attribute, false);
}

void note_attribute_format(array_object* object, u32 attribute) {
  if (attribute < max_attributes) set_bit_of(&object->by_pointer, first_attribute_array + attribute, false);
}

void note_binding_divisor(array_object* object, u32 binding, u32 divisor) {
  if (binding >= max_attributes) return;
  const u32 at = 1u << binding;
  object->divided = divisor ? object->divided | at : object->divided & ~at;
}

void note_array_switch(array_object* object, u32 array, bool on) {
  if (array < no_array) set_bit_of(&object->enabled, array, on);
}

void forget_buffer(array_object* object, u32 buffer) {
  if (object->element_buffer == buffer) object->element_buffer = 0;
  for (u32 i = 0; i < first_attribute_array + max_attributes; ++i) {
    if (object->buffers[i] != buffer) continue;
    if (i >= first_attribute_array) {
      note_vertex_buffer(object, i - first_attribute_array, 0);
    } else {
      object->buffers[i] = 0;
      set_bit_of(&object->in_buffers, i, false);
      set_bit_of(&object->by_pointer, i, false);
    }
  }
}

u64 divided_arrays(const array_object& object, u64 arrays) {
  u64 divided = 0;
  if (!object.divided) return 0;
  for (u32 attribute = 0; attribute < max_attributes; ++attribute) {
    const u64 at = bit(first_attribute_array + attribute);
    if ((arrays & at) && (object.divided >> binding_of_attribute(object, attribute) & 1)) divided |= at;
  }
  return divided;
}
