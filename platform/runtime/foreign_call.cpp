#include "platform/runtime/foreign_call.h"

#include <windows.h>

namespace
{

// What Microsoft's compiler raises for a C++ exception.
constexpr DWORD kOtherCompilersException = 0xE06D7363;

// Of the exception's flags: frames are being left, nobody is looking for a handler any more.
constexpr DWORD kUnwinding = EXCEPTION_UNWINDING | EXCEPTION_EXIT_UNWIND;

} // namespace

extern "C"
{
// Where a call that was ended goes on: inside GuardForeignCall, behind the call.
extern const char glazel_foreign_call_ended[]; // NOLINT(readability-identifier-naming): a label

// The frame's handler, which the system asks while it looks for one.
[[gnu::used]] EXCEPTION_DISPOSITION HandleForeignException(EXCEPTION_RECORD* record, void* frame,
                                                           CONTEXT*, DISPATCHER_CONTEXT* dispatcher)
{
    if (record->ExceptionCode != kOtherCompilersException ||
        (record->ExceptionFlags & kUnwinding) != 0)
    {
        return ExceptionContinueSearch;
    }
    // Does not return: leaves the frames below this one and goes on at the label, with 0 in rax.
    ::RtlUnwindEx(frame, const_cast<char*>(glazel_foreign_call_ended), record, nullptr,
                  dispatcher->ContextRecord, dispatcher->HistoryTable);
    return ExceptionContinueSearch;
}
}

// rcx: the function, rdx: its argument. A frame with the 32 bytes that every callee may use, and 8
// that align it.
asm(R"(
    .text
    .globl GuardForeignCall
    .def GuardForeignCall; .scl 2; .type 32; .endef
    .seh_proc GuardForeignCall
GuardForeignCall:
    subq $40, %rsp
    .seh_stackalloc 40
    .seh_handler HandleForeignException, @except
    .seh_endprologue
    movq %rcx, %rax
    movq %rdx, %rcx
    call *%rax
    movl $1, %eax
    .globl glazel_foreign_call_ended
glazel_foreign_call_ended:
    addq $40, %rsp
    ret
    .seh_endproc
)");
