/* A qemu user-mode plug-in that counts the guest instructions executed and
 * prints the total when the guest exits:
 *     icount: <instructions>
 * Each translated block adds its instruction count to one 64-bit counter
 * inline (no call per block).  Written against the TCG plug-in interface of
 * QEMU 7.2 (version 1); no package ships its header, so the few functions
 * and types used are declared here. */
#include <inttypes.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdio.h>

#define EXPORT __attribute__((visibility("default")))

struct qemu_plugin_tb;
typedef struct {
    const char *target_name;
    struct { int min, cur; } version;
    bool system_emulation;
    /* system-mode fields follow; not used */
} qemu_info_t;
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 = 0 };

void qemu_plugin_register_vcpu_tb_trans_cb(uint64_t id, void (*cb)(uint64_t id, struct qemu_plugin_tb *tb));
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb *tb);
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb *tb, enum qemu_plugin_op op, void *ptr,
                                              uint64_t imm);
void qemu_plugin_register_atexit_cb(uint64_t id, void (*cb)(uint64_t id, void *userdata), void *userdata);

EXPORT int qemu_plugin_version = 1;

static uint64_t instructions;

static void translated(uint64_t id, struct qemu_plugin_tb *tb) {
    (void)id;
    qemu_plugin_register_vcpu_tb_exec_inline(tb, QEMU_PLUGIN_INLINE_ADD_U64, &instructions,
                                             qemu_plugin_tb_n_insns(tb));
}

static void finished(uint64_t id, void *userdata) {
    (void)id, (void)userdata;
    fprintf(stderr, "icount: %" PRIu64 "\n", instructions);
}

EXPORT int qemu_plugin_install(uint64_t id, const qemu_info_t *info, int argc, char **argv) {
    (void)argc, (void)argv;
    if (info->system_emulation) return -1; /* one counter: user mode, one guest thread */
    qemu_plugin_register_vcpu_tb_trans_cb(id, translated);
    qemu_plugin_register_atexit_cb(id, finished, NULL);
    return 0;
}
