#include <windows.h>

#include <cstdio>

#include "support/check.h"
#include "test_host.h"

asm(R"(
    .section .rdata, "dr"
    .globl test_host_begin, test_host_end
test_host_begin:
    .incbin ")" TEST_HOST_FILE R"("
test_host_end:
    .text
)");

extern "C" const char test_host_begin[], test_host_end[];

void place_test_host(const std::string& path) {
  const auto size = static_cast<size_t>(test_host_end - test_host_begin);
  FILE* file = fopen(path.c_str(), "wb");
  CHECK(file && fwrite(test_host_begin, 1, size, file) == size);
  if (file) fclose(file);
}
