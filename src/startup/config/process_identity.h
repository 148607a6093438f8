// What the process that has loaded the library is: written by DllMain alone, for everybody to read.
#pragma once

#include "ops/types.h"

// Stored at every call of DllMain, relaxed: other threads may be making windows meanwhile.
extern HINSTANCE __osw_hinstance;

// The others are set at process attach and only read afterwards.
extern u32 __osw_process_id;
extern char __osw_app_exe_name[MAX_PATH];  // without its directory

// 0 for the one application whose window loses WS_CLIPCHILDREN when it is first bound, else -1.
extern i32 __osw_app_special_window;

// Keeps the library loaded until the process ends, whoever frees it: windows with its procedures and its threads
// would be left without code. Called before the first of them is made, by any thread.
void keep_library_loaded();
