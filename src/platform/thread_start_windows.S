/*
 * DWORD WINAPI StartThreadBody(LPVOID parameter)
 *
 * Leaves by a jump into SetEvent, which therefore returns not to us but to the system's own start of the thread. In C++
 * the jump would be at the compiler's mercy. Without an event SetEvent fails and answers 0, the thread's exit code.
 */
        .text
        .globl  StartThreadBody
        .def    StartThreadBody; .scl 2; .type 32; .endef
        .seh_proc StartThreadBody
StartThreadBody:
        subq    $40, %rsp
        .seh_stackalloc 40
        .seh_endprologue
        call    ThreadBody
        movq    %rax, %rcx
        addq    $40, %rsp
        rex.W jmp *__imp_SetEvent(%rip)
        .seh_endproc
