#include "StackEnd.h"

[[gnu::naked]] void callAtStackEnd(void (*)(void*), void*)
{
    asm(R"(
        push %rbp
        .cfi_adjust_cfa_offset 8
        .cfi_rel_offset %rbp, 0
        xor %ebp, %ebp
        mov %rdi, %rax
        mov %rsi, %rdi
        call *%rax
        pop %rbp
        .cfi_adjust_cfa_offset -8
        .cfi_restore %rbp
        ret
    )");
}
