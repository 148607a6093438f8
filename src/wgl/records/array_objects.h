// What the extended mode knows of a context's array objects without asking anyone: which arrays are enabled, and which
// of them lie in buffers. Only the thread that has the context current touches it; workers never do.
#pragma once

#include "ops/types.h"

// Where arrays stand in the masks: the client arrays first, then the vertex attributes, then those of which nothing but
// their switch is known.
constexpr u32 first_attribute_array = 16;
constexpr u32 max_attributes = 32;
constexpr u32 weight_array = 48;
constexpr u32 matrix_index_array = 49;
constexpr u32 far_tex_coord_array = 50;  // of a unit beyond those that are told apart
constexpr u32 no_array = 64;

// All zero is an object as GL makes it.
struct array_object {
  u32 name;
  array_object* next;  // in the bucket
  bool is_unknown;     // stands for objects that there was no memory for
  u32 element_buffer;
  u64 enabled;     // bit i: array i, here and below
  u64 in_buffers;  // a buffer is bound where the array takes its values from
  u64 by_pointer;  // one pointer call has said all of it
  // Of a client array its buffer, and behind them of each binding that attributes take their values from.
  u32 buffers[first_attribute_array + max_attributes];
  u32 divided;                       // bit i: binding i goes on by instances
  u8 other_binding[max_attributes];  // of an attribute: 0 for that of its own number, else one more than the binding
};

constexpr u32 array_object_buckets = 256;

struct array_objects {
  array_object* current;  // null: the first one
  array_object first;     // GL's number 0
  array_object unknown;
  array_object* buckets[array_object_buckets];
};

// The object that calls concern.
inline array_object* bound_array_object(array_objects* objects) {
  return objects->current ? objects->current : &objects->first;
}

// The object of a name, which is made when it is not there. Without memory the one that is unknown, after a report.
array_object* named_array_object(array_objects* objects, u32 name);

// Whether there is an object of that name.
bool has_array_object(const array_objects& objects, u32 name);

// The object of the name is no more. One that is bound gives way to the first.
void delete_array_object(array_objects* objects, u32 name);

// At the context's end: frees the objects and leaves those of a new context.
void free_array_objects(array_objects* objects);

// A pointer call has set an array, which takes its values from `buffer` or, when that is 0, from memory.
void note_array_pointer(array_object* object, u32 array, u32 buffer, bool has_pointer);

// Which buffer a binding has now, which binding an attribute, and whether a binding goes on by instances. Numbers
// beyond those that are known are passed over. A format leaves an attribute to more than a pointer call.
void note_vertex_buffer(array_object* object, u32 binding, u32 buffer);
void note_attribute_binding(array_object* object, u32 attribute, u32 binding);
void note_attribute_format(array_object* object, u32 attribute);
void note_binding_divisor(array_object* object, u32 binding, u32 divisor);

void note_array_switch(array_object* object, u32 array, bool on);

// A buffer that was deleted is bound nowhere in the object any more.
void forget_buffer(array_object* object, u32 buffer);

// The enabled arrays that take their values from memory.
inline u64 arrays_in_memory(const array_object& object) {
  return object.enabled & ~object.in_buffers;
}

// Those of the attributes among `arrays` whose bindings go on by instances.
u64 divided_arrays(const array_object& object, u64 arrays);
