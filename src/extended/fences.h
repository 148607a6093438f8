// Fences: what the program holds is a handle of ours, behind which stand one sync object per part and one of the
// application's own context. A handle is good in every context, as its program shares them or not: GL decides that part
// by part.
//
// All functions are called by any thread, which holds no lock; they take one of their own, under which nothing is
// called.
#pragma once

#include "dispatch/thread_state.h"

// Make and delete the lock. Process attach and detach of the extended mode.
void make_fence_lock();
void delete_fence_lock();

// A new fence. `app` is the sync object of the application's own context, or null. Result: its handle, or null when
// there is no memory or when there are too many.
GLsync enter_fence(GLsync app);

// Whether the program may use the handle: it was given one and has not deleted it. Whatever the value is.
bool is_fence(GLsync fence);

// The sync object of the application's own context, or null.
GLsync app_fence(GLsync fence);

// The program deletes the fence: `is_fence` does not hold any more, and the parts are still to take theirs. Result:
// whether it held; then the own context's sync object is in `*app`, which may be null.
bool forget_fence(GLsync fence, GLsync* app);

// The sync object that a part has made. Result: false when the part's deletion was there first: it is the caller's
// then.
bool keep_part_fence(GLsync fence, i32 part, GLsync own);

enum class fence_search { unknown, not_made, made };

// Looks for a part's sync object, and waits so many milliseconds for another thread that is still to make it.
fence_search find_part_fence(GLsync fence, i32 part, DWORD milliseconds, GLsync* own);

// Takes a part's sync object, or notes that it is to be deleted as soon as it is made; the last part frees the fence.
// Made: `*own` is the caller's to delete.
fence_search take_part_fence(GLsync fence, i32 part, GLsync* own);
