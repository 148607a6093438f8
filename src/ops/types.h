// The integer names and the platform's types that the op list's prototypes use.
#pragma once

#include <windows.h>

#include <GL/gl.h>
#include <GL/glext.h>

#include <cstdint>

using u8 = uint8_t;
using i32 = int32_t;
using u32 = uint32_t;
using u64 = uint64_t;

// Declared here, and not by including the wgl extension header, because the host build's platform has no such header.
DECLARE_HANDLE(HPBUFFERARB);
