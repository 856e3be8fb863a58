// The entry point of a static program: maps its writable pages in one system call, and goes on to
// libc's own entry point.
//
// Before anything else, libc relocates constants all over those pages, and each first write to one of
// them would be a page fault (docs/performance.md has the gain). A kernel that refuses, because it is
// older than 5.14 or has larger pages, does no harm.

#define MADV_POPULATE_WRITE 23

        .text
        .globl StartWithPagesMapped
        .hidden StartWithPagesMapped
        .type StartWithPagesMapped, %function
StartWithPagesMapped:
        .cfi_startproc
        // The segment begins at the page of its first array of functions; it ends at _end. The
        // register that libc takes an argument from is kept.
#if defined(__x86_64__)
        .cfi_undefined %rip
        endbr64
        mov %rdx, %r12
        lea __preinit_array_start(%rip), %rdi
        and $-4096, %rdi
        lea _end(%rip), %rsi
        sub %rdi, %rsi
        mov $MADV_POPULATE_WRITE, %edx
        mov $28, %eax  // madvise
        syscall
        mov %r12, %rdx
        jmp _start
#elif defined(__aarch64__)
        .cfi_undefined x30
        hint #34  // bti c
        mov x19, x0
        adrp x0, __preinit_array_start
        adrp x1, _end
        add x1, x1, :lo12:_end
        sub x1, x1, x0
        mov x2, #MADV_POPULATE_WRITE
        mov x8, #233  // madvise
        svc #0
        mov x0, x19
        b _start
#endif
        .cfi_endproc
        .size StartWithPagesMapped, . - StartWithPagesMapped

        .section .note.GNU-stack, "", %progbits
