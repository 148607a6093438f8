#include "standins.h"

asm(R"(
  .section .rdata, "dr"
standin_wrapper_start:
  .incbin "standin_wrapper.dll"
standin_wrapper_end:
standin_driver_start:
  .incbin "standin_driver.dll"
standin_driver_end:
  .text
)");

extern "C" {
extern const char standin_wrapper_start[], standin_wrapper_end[], standin_driver_start[], standin_driver_end[];
}

std::string standin_wrapper_bytes() {
  return {standin_wrapper_start, standin_wrapper_end};
}
std::string standin_driver_bytes() {
  return {standin_driver_start, standin_driver_end};
}
