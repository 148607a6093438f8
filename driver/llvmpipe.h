// Mesa's renderer by software, of which the driver takes care where it can be spared work.
#pragma once

#include <windows.h>

// Whether the calling thread's context, which is current on the host, is drawn by it.
bool is_llvmpipe();

// Lets it keep the memory that each frame takes and gives back. Only the first call in the process does something. On
// the window thread, with a device context that has a pixel format on the host.
void keep_host_memory(HDC hdc);
