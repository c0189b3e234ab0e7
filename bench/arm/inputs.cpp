// Writes the input files of the ARM instruction counts (bench/arm/driver.c
// reads them): the same bitmap streams, RFB bodies and glyphs as the x86
// benchmarks (streams.h, glyphs.h), built here on the host with the kit's
// and the peer's encoders so that the ARM side only reads files.
//
//   usage: ui32-armbench-inputs DIR
//
// Every file is a list of records: six little-endian 32-bit words
//     x  y  width  height  param  length
// then `length` bytes, padded with zeros to a multiple of 4.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "glyphs.h"
#include "streams.h"

namespace {

using namespace bench;

class File {
public:
    File(const std::string &dir, const char *name) : path_(dir + "/" + name), file_(std::fopen(path_.c_str(), "wb")) {
        if (file_ == nullptr) {
            std::perror(path_.c_str());
            std::exit(1);
        }
    }
    ~File() {
        if (std::fclose(file_) != 0) {
            std::perror(path_.c_str());
            std::exit(1);
        }
        std::printf("%s: %d records\n", path_.c_str(), records_);
    }
    void add(int32_t x, int32_t y, int32_t width, int32_t height, int32_t param, const std::vector<uint8_t> &bytes) {
        const int32_t header[6] = {x, y, width, height, param, int32_t(bytes.size())};
        std::vector<uint8_t> padded(bytes);
        padded.resize((bytes.size() + 3) & ~size_t(3), 0);
        if (std::fwrite(header, sizeof header, 1, file_) != 1 ||
            (!padded.empty() && std::fwrite(padded.data(), padded.size(), 1, file_) != 1)) {
            std::perror(path_.c_str());
            std::exit(1);
        }
        ++records_;
    }

private:
    std::string path_;
    std::FILE *file_;
    int records_ = 0;
};

// Every bitmap of the workloads, at its place in the picture it was cut from.
void bitmaps(const std::string &dir, const char *name, const std::vector<Workload> &workloads) {
    File f(dir, name);
    for (const Workload &w : workloads)
        for (const Bitmap &b : w.bitmaps) f.add(b.x, b.y, b.width, b.height, 0, b.stream);
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
        return 2;
    }
    const std::string dir = argv[1];

    bitmaps(dir, "interleaved.bin", interleavedWorkloads());
    for (const uint8_t header : {0x00, 0x10, 0x20, 0x30}) {
        char name[32];
        std::snprintf(name, sizeof name, "planar-%02x.bin", header);
        bitmaps(dir, name, planarWorkloads(header));
    }

    const struct {
        const char *name;
        RfbKind kind;
    } kinds[] = {{"zrle-raw.bin", RfbKind::raw},           {"zrle-solid.bin", RfbKind::solid},
                 {"zrle-packed2.bin", RfbKind::packed2},   {"zrle-packed4.bin", RfbKind::packed4},
                 {"zrle-packed16.bin", RfbKind::packed16}, {"zrle-plainrle.bin", RfbKind::plainRle},
                 {"zrle-paletterle.bin", RfbKind::paletteRle}};
    for (const auto &k : kinds) {
        File f(dir, k.name);
        for (const RfbTile &t : rfbTiles(k.kind)) f.add(t.x, t.y, kRfbTile, kRfbTile, t.subencoding, t.body);
    }
    // The x86 benchmarks' Hextile rectangles.
    for (const auto &[name, picture] : {std::pair{"hextile-desktop.bin", &desktopPicture()},
                                        std::pair{"hextile-photo.bin", &photoPicture()}}) {
        File f(dir, name);
        f.add(kHextileX, kHextileY, kHextileSize, kHextileSize, 0, hextileRect(*picture));
    }

    // Glyphs: the cache entries (param: entry count, width: entry bytes),
    // then the line's string in each form (param: the form, in GlyphForm
    // order), then the line's characters.
    File f(dir, "glyphs.bin");
    f.add(0, 0, kGlyphEntryBytes, kCellHeight, kGlyphEntries, consoleCacheEntries());
    const GlyphForm forms[] = {GlyphForm::fixed, GlyphForm::opaque, GlyphForm::fragments, GlyphForm::delta,
                               GlyphForm::deltaFragments};
    for (const GlyphForm form : forms) f.add(0, 0, kCellWidth, kCellHeight, int32_t(form), glyphString(form));
    f.add(0, 0, kCellWidth, kCellHeight, -1, std::vector<uint8_t>(kLine, kLine + kGlyphs));
    return 0;
}
