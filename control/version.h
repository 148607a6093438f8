// What "oswctl --version" tells; the project's own, which the build compares.
#pragma once

inline constexpr char version[] = "0.1.0";
