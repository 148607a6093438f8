#include "indexed_scissor.h"

#include <atomic>
#include <cstring>

#include "binding.h"
#include "scissor_cut.h"

namespace {

// One of the functions, by the driver's entry: `hosts` is the host's.
template <class Op>
std::atomic<typename Op::type*> hosts;

template <class Op, class... Arguments>
void set_boxes(Arguments... arguments) {
  if (!driver_bind_for_call()) return;
  stop_cutting(calling_context());
  hosts<Op>.load(std::memory_order_relaxed)(arguments...);
}

template <class Op>
__osw_proc entry_of(const char* name, __osw_proc hosts_entry) {
  if (strcmp(name, Op::name) != 0) return nullptr;
  hosts<Op>.store(reinterpret_cast<typename Op::type*>(hosts_entry), std::memory_order_relaxed);
  typename Op::type* own = set_boxes<Op>;
  return as_proc<Op>(own);
}

}  // namespace

__osw_proc indexed_scissor_entry(const char* name, __osw_proc hosts_entry) {
  if (__osw_proc entry = entry_of<glScissorArrayv_op>(name, hosts_entry)) return entry;
  if (__osw_proc entry = entry_of<glScissorIndexed_op>(name, hosts_entry)) return entry;
  return entry_of<glScissorIndexedv_op>(name, hosts_entry);
}
