// The windows behind the application's: hidden ones that give child contexts their pixel format, and one child window
// per part inside the application's window.
#pragma once

#include "wgl/records/window_mapping.h"

// Held while a window class is registered. Some platforms say of a class that another thread is registering that it
// exists, and then do not find it. Made and deleted with the process.
extern CRITICAL_SECTION __osw_class_lock;

// Makes a hidden window of `width` by `height` pixels on part `part`'s monitor and sets its pixel format: `format`, or
// that of `hdc` when `format` is 0. Result: the window's device context, or null after a failure that a message box has
// shown. The caller destroys it with `__osw_destroy_hidden_dc`, on the same thread.
HDC __osw_create_hidden_dc(__osw_thread_state* state, HDC hdc, i32 part, i32 format, i32 width, i32 height);

// Releases a hidden window's device context and destroys the window. Null is passed over.
void __osw_destroy_hidden_dc(HDC hidden_hdc);

// Gives the window its child windows and its mapping, and subclasses it and its ancestors. `hdc` is the device context
// that is being bound. Result: 1, also when the window has a mapping, and when only the memory for it was missing; 0
// after a failure that a message box has shown: what was made by then stays.
u32 __osw_create_window_mapping(HWND hwnd, HDC hdc);
