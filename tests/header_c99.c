/* The public header compiles as C99 with every warning as an error, and a C
 * client can fill the table and call through it. */
#include <string.h>

#include "ui32.h"

static int quietLog(const char *level, const char *module, int site, const char *format, ...) {
    (void)level, (void)module, (void)site, (void)format;
    return 0;
}

int ui32HeaderC99Probe(void) {
    UiDrawTable table;
    UiConfig config = {0, 3};
    UiFillBufferRectFn fill;
    srn_get(table, quietLog, &config);
    /* ISO C has no cast from void * to a function pointer; a copy is portable. */
    memcpy(&fill, &table[UI_SLOT_FILL_BUFFER_RECT], sizeof fill);
    return fill != 0 && sizeof(UiSurface) >= 15 * 4;
}
