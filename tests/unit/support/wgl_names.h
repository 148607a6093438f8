// What the tests name of the wgl extension header, which this machine lacks.
#pragma once

constexpr int WGL_PBUFFER_LARGEST_ARB = 0x2033;
constexpr int WGL_PBUFFER_WIDTH_ARB = 0x2034;
constexpr int WGL_PBUFFER_HEIGHT_ARB = 0x2035;
constexpr int WGL_FRONT_LEFT_ARB = 0x2083;
constexpr int WGL_BACK_LEFT_ARB = 0x2085;
