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
#include "pngFile.h"

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
        std::vector<uint32_t> pixels(size_t(gdi->width) * size_t(gdi->height));
        for (int32_t y = 0; y < gdi->height; ++y)
            for (int32_t x = 0; x < gdi->width; ++x)
                std::memcpy(&pixels[size_t(y) * gdi->width + x],
                            gdi->primary_buffer + size_t(y) * gdi->stride + 4 * size_t(x), 4);
        for (uint32_t &p : pixels) p &= 0xffffff;
        return rdpsnap::writePng(path, pixels.data(), gdi->width, gdi->height, error);
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
