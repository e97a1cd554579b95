// What control-flow guard needs of the C runtime, which MinGW-w64 has from version 11 on: the
// record that tells Windows of the table of functions that may be called by address, and the two
// pointers that Windows sets to its checks. Where it does not know the guard, calls go through
// unchecked.
#include <stdint.h>

static void AcceptTarget(void) {}
__asm__("jump_to_target: jmp *%rax");
extern void jump_to_target(void);

#define READ_ONLY_TO_US __attribute__((section(".00cfg"), used))
READ_ONLY_TO_US void (*const __guard_check_icall_fptr)(void) = AcceptTarget;
READ_ONLY_TO_US void (*const __guard_dispatch_icall_fptr)(void) = jump_to_target;

// The linker's; their addresses are the values.
extern char __guard_fids_table[], __guard_fids_count[], __guard_flags[];

// An IMAGE_LOAD_CONFIG_DIRECTORY64 up to the fields of the guard, as 64-bit words.
enum { kSize = 0, kCheck = 14, kDispatch, kTable, kCount, kFlags, kWords = 20 };
const uintptr_t _load_config_used[kWords] = {
    [kSize] = kWords * sizeof(uintptr_t),
    [kCheck] = (uintptr_t)&__guard_check_icall_fptr,
    [kDispatch] = (uintptr_t)&__guard_dispatch_icall_fptr,
    [kTable] = (uintptr_t)__guard_fids_table,
    [kCount] = (uintptr_t)__guard_fids_count,
    [kFlags] = (uintptr_t)__guard_flags,
};
