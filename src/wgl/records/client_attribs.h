// What glPushClientAttrib has put aside of a context's client state, in the extended mode on the threaded path.
#pragma once

#include "wgl/records/array_objects.h"
#include "wgl/records/client_state.h"
#include "wgl/records/pixel_store.h"

struct saved_client_state {
  GLbitfield mask;  // what of it was asked for
  __osw_pixel_store pack_store;
  __osw_pixel_store unpack_store;
  __osw_client_state client_state;  // the buffers that are bound, and the arrays of the first object
  array_object bound;               // the object that was bound
};

// Null in the place of what there was no memory for.
struct client_attrib_stack {
  u32 depth;
  saved_client_state* saved[max_client_attribs];
};

// At the context's end.
void free_client_attribs(client_attrib_stack* stack);
