/* A minimal external client of the installed ui32: built only with the
 * flags pkg-config gives, it loads the plug-in from the path it is handed
 * (plugindir/ui32.so), draws a white square with DstBlt, copies it with
 * ScrBlt and checks pixels, tile marks and that nothing was reported. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include <ui32.h>

static int reports;

static int countReport(const char *level, const char *module, int site, const char *format, ...) {
    fprintf(stderr, "report: %s %s %d %s\n", level, module, site, format);
    ++reports;
    return 0;
}

static uint32_t pixels[64 * 64];
static uint8_t tiles[2 * 2];
static const uint8_t hatches[48];

static int expect(int ok, const char *what) {
    if (!ok) fprintf(stderr, "client: %s\n", what);
    return ok ? 0 : 1;
}

int main(int argc, char **argv) {
    void *plugin, *symbol;
    void (*getTable)(UiDrawTable, UiLogFn, const UiConfig *);
    UiDrawTable table;
    UiDstBltFn dstBlt;
    UiScrBltFn scrBlt;
    UiSurface surface;
    const UiConfig config = {hatches, 3};
    const UiClipRect clip = {0, 0, 63, 63};
    const UiDstBltOrder white = {4, 4, 8, 8, 0xFF};
    const UiScrBltOrder copy = {40, 40, 8, 8, 0xCC, 4, 4};
    int failures = 0, i;

    if (argc != 2) {
        fprintf(stderr, "usage: client PLUGIN\n");
        return 2;
    }
    plugin = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (plugin == NULL) {
        fprintf(stderr, "client: %s\n", dlerror());
        return 1;
    }
    symbol = dlsym(plugin, "srn_get");
    if (symbol == NULL) {
        fprintf(stderr, "client: no srn_get in %s\n", argv[1]);
        return 1;
    }
    memcpy(&getTable, &symbol, sizeof getTable);
    getTable(table, countReport, &config);
    memcpy(&dstBlt, &table[UI_SLOT_DST_BLT], sizeof dstBlt);
    memcpy(&scrBlt, &table[UI_SLOT_SCR_BLT], sizeof scrBlt);

    for (i = 0; i < 64 * 64; ++i) pixels[i] = 0x204060;
    memset(&surface, 0, sizeof surface);
    surface.image.pixels = pixels;
    surface.image.stride = 64 * 4;
    surface.image.width = 64;
    surface.image.height = 64;
    surface.dirty.tiles = tiles;
    surface.dirty.columns = 2;
    surface.dirty.rows = 2;

    dstBlt(&surface, &white, &clip);
    scrBlt(&surface, &copy, &clip);

    failures += expect(pixels[4 * 64 + 4] == 0xFFFFFF, "DstBlt did not whiten (4, 4)");
    failures += expect(pixels[11 * 64 + 11] == 0xFFFFFF, "DstBlt did not whiten (11, 11)");
    failures += expect(pixels[12 * 64 + 12] == 0x204060, "DstBlt drew outside its rectangle");
    failures += expect(pixels[47 * 64 + 47] == 0xFFFFFF, "ScrBlt did not copy to (47, 47)");
    failures += expect(pixels[39 * 64 + 40] == 0x204060, "ScrBlt drew outside its rectangle");
    failures += expect(tiles[0] == 1 && tiles[3] == 1 && tiles[1] == 0 && tiles[2] == 0, "wrong tiles marked");
    failures += expect(surface.dirty.changed == 1, "changed flag not set");
    failures += expect(reports == 0, "the plug-in reported errors");
    if (failures == 0) printf("client: drew with %s\n", argv[1]);
    return failures == 0 ? 0 : 1;
}
