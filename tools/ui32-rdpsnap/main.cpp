// ui32-rdpsnap: connects to an RDP server with FreeRDP's client library,
// draws everything the server sends through ui32.so, waits until the desktop
// settles and writes the frame buffer as a PNG file.
#include <getopt.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "client.h"
#include "scenes.h"
#include "table.h"

namespace {

const char kUsage[] =
    "usage: ui32-rdpsnap [-l ui32.so] [-u USER -p PASSWORD] [-t SECONDS] [-s WxH] [--bpp 24|32]\n"
    "                    [--script FILE] HOST[:PORT] OUT.png\n"
    "  -l  path of ui32.so (default: the one built with this program, else /usr/lib/ui32/ui32.so)\n"
    "  -t  stop waiting for the desktop to settle after this long (default 30)\n"
    "  -s  desktop size to ask for (default 1024x768; the server may choose another)\n"
    "  --bpp     colour depth: 32 (planar bitmaps, default) or 24 (interleaved)\n"
    "  --script  input events replayed once the first picture has settled\n";

const char *const kSlotNames[UI_SLOT_COUNT] = {
    "bitmapUpdate", "dstBlt", "patBlt", "scrBlt", "drawLine", "opaqueRect", "glyphIndex", "fastGlyph",
    "decodeBitmap", "memBlt", "setSourceBytesPerPixel4", "fillBufferRect", "drawChar8x16", "hLine", "vLine",
    "setSourceByteOrder", "putPixels", "copyRect", "zrleRawTile", "zrleSolidTile", "zrlePackedPaletteTile",
    "zrlePlainRleTile", "zrlePaletteRleTile", "importImage32", "hextileRect"};

std::string defaultModule() {
#ifdef UI32_MODULE_PATH
    if (access(UI32_MODULE_PATH, R_OK) == 0) return UI32_MODULE_PATH;
#endif
    return "/usr/lib/ui32/ui32.so";
}

void printCounts(const char *title, const std::map<std::string, uint64_t> &counts) {
    std::printf("%s:", title);
    for (const auto &[name, n] : counts) std::printf(" %s %llu", name.c_str(), static_cast<unsigned long long>(n));
    std::printf(counts.empty() ? " none\n" : "\n");
}

void printReport(const rdpsnap::Client &client) {
    const rdpsnap::Canvas &canvas = client.canvas();
    printCounts("updates", client.updates());
    printCounts("bitmaps", client.mapper().bitmaps());
    printCounts("orders", client.orders());
    printCounts("skipped", client.mapper().skipped());
    std::map<std::string, uint64_t> slots;
    for (int slot = 0; slot < UI_SLOT_COUNT; ++slot)
        if (canvas.slotCalls(slot) > 0) slots[kSlotNames[slot]] = canvas.slotCalls(slot);
    printCounts("slot calls", slots);
    std::printf("ui32 reports: %d\ntiles marked: %llu\n", kit::printedReports(),
                static_cast<unsigned long long>(canvas.tilesMarked()));
}

bool parseOptions(int argc, char **argv, rdpsnap::Options &options, std::string &library, std::string &script,
                  std::string &output) {
    static const option kLong[] = {{"bpp", required_argument, nullptr, 'b'},
                                   {"script", required_argument, nullptr, 'S'},
                                   {"help", no_argument, nullptr, 'h'},
                                   {nullptr, 0, nullptr, 0}};
    int c;
    while ((c = getopt_long(argc, argv, "l:u:p:t:s:h", kLong, nullptr)) != -1) {
        switch (c) {
            case 'l': library = optarg; break;
            case 'u': options.user = optarg; break;
            case 'p': options.password = optarg; break;
            case 't': options.timeoutSeconds = std::atoi(optarg); break;
            case 's':
                if (std::sscanf(optarg, "%dx%d", &options.width, &options.height) != 2) return false;
                break;
            case 'b': options.bpp = uint32_t(std::atoi(optarg)); break;
            case 'S': script = optarg; break;
            case 'h': std::fputs(kUsage, stdout); std::exit(0);
            default: return false;
        }
    }
    if (argc - optind != 2 || options.timeoutSeconds <= 0 || (options.bpp != 24 && options.bpp != 32) ||
        options.width < 200 || options.height < 200 || options.width > 8192 || options.height > 8192)
        return false;
    options.host = argv[optind];
    output = argv[optind + 1];
    const size_t colon = options.host.rfind(':');
    if (colon != std::string::npos) {
        options.port = uint16_t(std::atoi(options.host.c_str() + colon + 1));
        options.host.resize(colon);
    }
    return true;
}

}  // namespace

int main(int argc, char **argv) {
    rdpsnap::Options options;
    std::string library = defaultModule(), scriptFile, output, error;
    if (!parseOptions(argc, argv, options, library, scriptFile, output)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    if (!scriptFile.empty()) {
        std::ifstream in(scriptFile);
        std::stringstream text;
        text << in.rdbuf();
        if (!in || !rdpsnap::parseScript(text.str(), options.script, error)) {
            std::fprintf(stderr, "ui32-rdpsnap: %s: %s\n", scriptFile.c_str(), in ? error.c_str() : "cannot read");
            return 2;
        }
    }
    // The source depth picks the bitmap codec: 4 planar (32 bpp), 3
    // interleaved (24 bpp).
    kit::Table table;
    if (!table.load(library, &kit::printReport, UiConfig{rdpsnap::Mapper::kHatchPatterns, options.bpp == 32 ? 4 : 3},
                    error)) {
        std::fprintf(stderr, "ui32-rdpsnap: %s\n", error.c_str());
        return 1;
    }
    const std::string server = options.host + ":" + std::to_string(options.port);
    rdpsnap::Client client(table.slots, options);
    const bool ok = client.run();
    const rdpsnap::Canvas &canvas = client.canvas();
    std::printf("desktop %dx%d, %u bpp, %s\n", canvas.width(), canvas.height(), options.bpp,
                client.settled() ? "settled" : ok ? "not settled within the time limit" : "connection failed");
    printReport(client);
    if (!ok) {
        std::fprintf(stderr, "ui32-rdpsnap: %s: %s\n", server.c_str(), client.error().c_str());
        return 1;
    }
    if (canvas.tilesMarked() == 0) {
        std::fprintf(stderr, "ui32-rdpsnap: %s drew nothing\n", server.c_str());
        return 1;
    }
    if (!kit::savePng(output, canvas.pixels(), canvas.width(), canvas.height(), size_t(canvas.width()), error)) {
        std::fprintf(stderr, "ui32-rdpsnap: %s\n", error.c_str());
        return 1;
    }
    std::printf("wrote %s\n", output.c_str());
    if (kit::printedReports() > 0) {
        std::fprintf(stderr, "ui32-rdpsnap: ui32 made %d reports: the picture may be incomplete\n",
                     kit::printedReports());
        return 1;
    }
    return 0;
}
