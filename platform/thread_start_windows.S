/*
 * DWORD WINAPI StartThreadBody(LPVOID parameter)
 *
 * Leaves by a jump into SetEvent, which therefore returns not to us but to the system's own start of the thread. In C++
 * the jump would be at the compiler's mercy. The exit code is 0 without an event; with one nobody asks for it.
 */
        .bss
        .globl  g_threadBody
        .balign 8
g_threadBody:
        .skip   8

        .text
        .globl  StartThreadBody
        .def    StartThreadBody; .scl 2; .type 32; .endef
        .seh_proc StartThreadBody
StartThreadBody:
        subq    $40, %rsp
        .seh_stackalloc 40
        .seh_endprologue
        call    *g_threadBody(%rip)
        movq    %rax, %rcx
        addq    $40, %rsp
        testq   %rcx, %rcx
        je      1f
        rex.W jmp *__imp_SetEvent(%rip)
1:      xorl    %eax, %eax
        ret
        .seh_endproc
