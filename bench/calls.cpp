#include "calls.h"

#include <iterator>

#include "works.h"

namespace {

// What an application does around its calls is not known to the compiler; nor may it make one of many.
template <class Call>
inline void repeat(u64 count, Call call) {
  for (u64 i = 0; i < count; ++i) {
    call();
    asm volatile("" : : : "memory");
  }
}

}  // namespace

#define BENCH_CALL(label, function, around, burst, arguments)                                      \
  {label,                                                                                          \
   function##_op::op,                                                                              \
   #function,                                                                                      \
   &settings::around,                                                                              \
   burst,                                                                                          \
   false,                                                                                          \
   [](__osw_proc entry, u64 count, [[maybe_unused]] setting_memory* shared) {                      \
     [[maybe_unused]] setting_memory& memory = *shared;                                            \
     repeat(count, [&, call = reinterpret_cast<function##_op::type*>(entry)] { call arguments; }); \
   }},
#define BENCH_WORK(label, function, around, burst, work) \
  {label,                                                \
   function##_op::op,                                    \
   #function,                                            \
   &settings::around,                                    \
   burst,                                                \
   true,                                                 \
   [](__osw_proc, u64 count, setting_memory* memory) { repeat(count, [=] { work(memory); }); }},
const measured_call measured_calls[] = {
#include "calls.inc"
};
#undef BENCH_CALL
#undef BENCH_WORK

const int measured_call_count = std::size(measured_calls);

void repeat_nothing(u64 count) {
  repeat(count, [] {});
}

void wait_for_parts(const route& through) {
  call_of<glBitmap_op>(through)(0, 0, 0, 0, 0, 0, nullptr);
}
