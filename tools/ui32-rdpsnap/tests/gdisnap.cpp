// gdisnap: the reference renderer of the live tests.  The same connection,
// capabilities and input script as ui32-rdpsnap, but FreeRDP's own GDI
// draws; its frame buffer is written as PNG for the pixel comparison.
// Used where the server has no screen of its own to dump (xrdp's login
// window, drawn by xrdp itself with glyph, brush, blit and cache orders).
#include <freerdp/gdi/gdi.h>

#include <cstdio>
#include <cstring>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include "client.h"
#include "scenes.h"

namespace {

class ReferenceClient : public rdpsnap::Client {
public:
    using Client::Client;

    bool attachDrawing() override {
        if (!gdi_init(instance(), PIXEL_FORMAT_BGRX32)) return false;
        gdiEndPaint = instance()->update->EndPaint;
        instance()->update->EndPaint = [](rdpContext *c) -> BOOL {
            static_cast<ReferenceClient &>(Client::of(c)).drew();
            return gdiEndPaint(c);
        };
        return true;
    }

    bool write(const std::string &path, std::string &error) {
        const rdpGdi *gdi = instance()->context->gdi;
        // B, G, R, X bytes: the colour bits of 32-bit words, as the PNG writer reads them.
        return kit::savePng(path, reinterpret_cast<const uint32_t *>(gdi->primary_buffer), gdi->width, gdi->height,
                            gdi->stride / 4, error);
    }

private:
    static inline pEndPaint gdiEndPaint = nullptr;
};

}  // namespace

int main(int argc, char **argv) {
    if (argc != 6) {
        std::fprintf(stderr, "usage: gdisnap HOST PORT BPP SCRIPT OUT.png\n");
        return 2;
    }
    rdpsnap::Options options;
    options.host = argv[1];
    options.port = uint16_t(std::atoi(argv[2]));
    options.bpp = uint32_t(std::atoi(argv[3]));
    std::ifstream in(argv[4]);
    std::stringstream text;
    text << in.rdbuf();
    std::string error;
    if (!in || !rdpsnap::parseScript(text.str(), options.script, error)) {
        std::fprintf(stderr, "gdisnap: %s: cannot read the script %s\n", argv[4], error.c_str());
        return 2;
    }
    static UiDrawTable unused{};
    ReferenceClient client(unused, options);
    if (!client.run()) {
        std::fprintf(stderr, "gdisnap: %s\n", client.error().c_str());
        return 1;
    }
    if (!client.write(argv[5], error)) {
        std::fprintf(stderr, "gdisnap: %s\n", error.c_str());
        return 1;
    }
    std::printf("gdisnap: %s, wrote %s\n", client.settled() ? "settled" : "not settled", argv[5]);
    return 0;
}
