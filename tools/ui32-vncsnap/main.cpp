// ui32-vncsnap: connects to a VNC server, receives one full frame buffer
// update decoded by ui32.so and writes it as a PNG file.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "scenes.h"
#include "session.h"
#include "table.h"

namespace {

const char kUsage[] =
    "usage: ui32-vncsnap [-e zrle|trle|hextile] [-l ui32.so] [-t seconds] HOST:PORT out.png\n"
    "  -e  encoding to ask for (default zrle; the server may answer in Raw)\n"
    "  -l  path of ui32.so (default: the one built with this program, else /usr/lib/ui32/ui32.so)\n"
    "  -t  give up when the server is silent this long (default 10)\n";

std::string defaultModule() {
#ifdef UI32_MODULE_PATH
    if (access(UI32_MODULE_PATH, R_OK) == 0) return UI32_MODULE_PATH;
#endif
    return "/usr/lib/ui32/ui32.so";
}

void printStats(const vncsnap::Session &session) {
    const vncsnap::Stats &s = session.stats();
    std::printf("rectangles:");
    for (const auto &[encoding, count] : s.rectangles)
        std::printf(" %s %llu", vncsnap::encodingName(encoding), static_cast<unsigned long long>(count));
    std::printf("\n");
    const auto kinds = [](const char *name, const vncsnap::TileKinds &k) {
        if (k.total() == 0) return;
        std::printf("%s tiles: raw %llu, solid %llu, packed palette %llu, plain RLE %llu, palette RLE %llu", name,
                    static_cast<unsigned long long>(k.raw), static_cast<unsigned long long>(k.solid),
                    static_cast<unsigned long long>(k.packedPalette), static_cast<unsigned long long>(k.plainRle),
                    static_cast<unsigned long long>(k.paletteRle));
        if (k.reusedPackedPalette + k.reusedPaletteRle > 0)
            std::printf(", reused palette %llu", static_cast<unsigned long long>(k.reusedPackedPalette +
                                                                                  k.reusedPaletteRle));
        std::printf("\n");
    };
    kinds("ZRLE", s.zrle);
    kinds("TRLE", s.trle);
    if (s.hextileTiles > 0)
        std::printf("Hextile tiles: %llu (raw %llu, background %llu, foreground %llu, subrects %llu, coloured %llu)\n",
                    static_cast<unsigned long long>(s.hextileTiles), static_cast<unsigned long long>(s.hextileFlag(1)),
                    static_cast<unsigned long long>(s.hextileFlag(2)), static_cast<unsigned long long>(s.hextileFlag(4)),
                    static_cast<unsigned long long>(s.hextileFlag(8)),
                    static_cast<unsigned long long>(s.hextileFlag(16)));
}

}  // namespace

int main(int argc, char **argv) {
    std::string library = defaultModule();
    int32_t encoding = vncsnap::kZrle;
    int timeoutSeconds = 10;
    int option;
    while ((option = getopt(argc, argv, "e:l:t:h")) != -1) {
        switch (option) {
            case 'e':
                if (std::strcmp(optarg, "zrle") == 0) encoding = vncsnap::kZrle;
                else if (std::strcmp(optarg, "trle") == 0) encoding = vncsnap::kTrle;
                else if (std::strcmp(optarg, "hextile") == 0) encoding = vncsnap::kHextile;
                else {
                    std::fprintf(stderr, "unknown encoding \"%s\"\n%s", optarg, kUsage);
                    return 2;
                }
                break;
            case 'l': library = optarg; break;
            case 't': timeoutSeconds = std::atoi(optarg); break;
            case 'h': std::fputs(kUsage, stdout); return 0;
            default: std::fputs(kUsage, stderr); return 2;
        }
    }
    if (argc - optind != 2 || timeoutSeconds <= 0) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const std::string server = argv[optind], output = argv[optind + 1];

    // 4 bytes per pixel: the depth of the RFB pixel format this client asks
    // for.  RFB needs no hatch patterns.
    kit::Table table;
    std::string error;
    if (!table.load(library, &kit::printReport, UiConfig{kit::kHatchPatterns, 4}, error)) {
        std::fprintf(stderr, "ui32-vncsnap: %s\n", error.c_str());
        return 1;
    }
    vncsnap::Session session(table.slots);
    if (!session.open(server, encoding, timeoutSeconds * 1000) || !session.requestUpdate(false) ||
        !session.receiveUpdate()) {
        std::fprintf(stderr, "ui32-vncsnap: %s: %s\n", server.c_str(), session.error().c_str());
        return 1;
    }
    const vncsnap::FrameBuffer &frame = session.frame();
    std::printf("desktop \"%s\", %dx%d\n", session.serverName().c_str(), frame.width, frame.height);
    printStats(session);
    if (session.stats().rectangles.count(encoding) == 0)
        std::printf("note: the server answered without %s%s\n", vncsnap::encodingName(encoding),
                    session.stats().offeredKnown && !session.stats().offers(encoding) ? " (it does not offer it)" : "");
    if (!kit::savePng(output, frame.pixels.data(), frame.width, frame.height, size_t(frame.width), error)) {
        std::fprintf(stderr, "ui32-vncsnap: %s\n", error.c_str());
        return 1;
    }
    std::printf("wrote %s\n", output.c_str());
    if (kit::printedReports() > 0) {
        std::fprintf(stderr, "ui32-vncsnap: ui32 made %d reports: the picture may be incomplete\n",
                     kit::printedReports());
        return 1;
    }
    return 0;
}
