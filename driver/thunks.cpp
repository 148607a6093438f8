#include "thunks.h"

#include "binding.h"
#include "report.h"
#include "thunk_targets.h"

#define THUNK_COUNT_TEXT "2048"
static_assert(thunk_count == 2048);

// A thunk is 16 bytes long and puts its number into eax, which no argument uses. The test is that of bound_thread().
// The slow path keeps the registers that can hold arguments; arguments on the stack stay where they are, since nothing
// is left on the stack when the target is entered. Where no call may reach the host the result is 0, of either kind.
asm(R"(
    .text
    .p2align 4
driver_thunks:
    .set thunk, 0
    .rept )" THUNK_COUNT_TEXT R"(
    .p2align 4
    movl $thunk, %eax
    jmp driver_run_thunk
    .set thunk, thunk + 1
    .endr

    .p2align 4
driver_run_thunk:
    movl driver_bound_slot(%rip), %r10d
    cmpl $64, %r10d
    jae 1f
    movq %gs:0x1480(,%r10,8), %r10
    testq %r10, %r10
    jne 2f
1:  call driver_bind_for_thunk
    testq %r10, %r10
    je 3f
2:  leaq thunk_targets(%rip), %r10
    jmp *(%r10,%rax,8)
3:  xorl %eax, %eax
    xorps %xmm0, %xmm0
    ret

    .p2align 4
    .seh_proc driver_bind_for_thunk
driver_bind_for_thunk:
    subq $0x90, %rsp
    .seh_stackalloc 0x90
    .seh_endprologue
    movq %rax, 0x20(%rsp)
    movq %rcx, 0x28(%rsp)
    movq %rdx, 0x30(%rsp)
    movq %r8, 0x38(%rsp)
    movq %r9, 0x40(%rsp)
    movaps %xmm0, 0x50(%rsp)
    movaps %xmm1, 0x60(%rsp)
    movaps %xmm2, 0x70(%rsp)
    movaps %xmm3, 0x80(%rsp)
    call driver_bind_for_call
    movzbl %al, %r10d
    movq 0x20(%rsp), %rax
    movq 0x28(%rsp), %rcx
    movq 0x30(%rsp), %rdx
    movq 0x38(%rsp), %r8
    movq 0x40(%rsp), %r9
    movaps 0x50(%rsp), %xmm0
    movaps 0x60(%rsp), %xmm1
    movaps 0x70(%rsp), %xmm2
    movaps 0x80(%rsp), %xmm3
    addq $0x90, %rsp
    ret
    .seh_endproc

    .globl driver_GlmfBeginGlsBlock, driver_GlmfCloseMetaFile, driver_GlmfEndGlsBlock
    .globl driver_GlmfEndPlayback, driver_GlmfInitPlayback, driver_GlmfPlayGlsRecord, driver_glDebugEntry
    .set driver_GlmfBeginGlsBlock, driver_thunks
    .set driver_GlmfCloseMetaFile, driver_thunks + 16
    .set driver_GlmfEndGlsBlock, driver_thunks + 32
    .set driver_GlmfEndPlayback, driver_thunks + 48
    .set driver_GlmfInitPlayback, driver_thunks + 64
    .set driver_GlmfPlayGlsRecord, driver_thunks + 80
    .set driver_glDebugEntry, driver_thunks + 96
)");

extern "C" const char driver_thunks[];

namespace {

__osw_proc thunk_at(int number) {
  return reinterpret_cast<__osw_proc>(const_cast<char*>(driver_thunks + ptrdiff_t{16} * number));
}

}  // namespace

__osw_proc thunk_for(const char* name, __osw_proc target) {
  if (const int number = thunk_to(name, target); number >= 0) return thunk_at(number);
  report("no entry is left for %s", name);
  return nullptr;
}
