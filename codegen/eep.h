#pragma once

#include <ostrum/eep.h>
#include <ostrum/hs.h>

enum {
    EEP_CODE_COUNT = 256,
    EEP_SYSCALL_COUNT = 65536,
};

struct EEP_CODE {
    char *mnemonic; // owned
    int32_t kind;
};

struct EEP_SYSCALL_ENTRY {
    char *name; // owned; null while the number is not declared
    uint32_t flags;
};

struct EEP_MODULE {
    EEP_CODE codes[EEP_CODE_COUNT];
    HS_DOMAIN *names; // syscall name to number
    EEP_SYSCALL_ENTRY syscalls[EEP_SYSCALL_COUNT];
};
