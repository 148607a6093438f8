// The integer names and the platform's types that the op list's prototypes use.
#pragma once

#include <windows.h>

#include <GL/gl.h>
#include <GL/glext.h>

#include <cstdint>

using u8 = std::uint8_t;
using i32 = std::int32_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

// Declared here, and not by including the wgl extension header, because the host build's platform has no such header.
DECLARE_HANDLE(HPBUFFERARB);
