// Reference decoders for the two bitmap codecs, written plainly pixel by pixel
// and read by read from the formats, with the reports each read makes; and
// slot 8 on input that ends right before an unreadable page, into an output
// with guard words on both sides.  The tests compare the two.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <tuple>

#include "bytes.h"
#include "library.h"

namespace model {

using kit::Bytes;
using L = ui::Line;
using ui::Site;
using Pixels = std::vector<uint32_t>;
using Decoded = std::tuple<int32_t, Pixels, kit::Trail>;  // result, output, reports

// Output words before a decode: all different, each with a non-zero byte 3.
inline uint32_t unwritten(size_t i) { return 0xC0000000u + uint32_t(i) * 0x010307u; }
inline Pixels unwrittenPixels(int64_t n) {
    Pixels p(size_t(std::clamp<int64_t>(n, 0, 1 << 20)));
    for (size_t i = 0; i < p.size(); ++i) p[i] = unwritten(i);
    return p;
}
inline Pixels operator+(Pixels a, const Pixels &b) { return a.insert(a.end(), b.begin(), b.end()), a; }
inline std::string text(const char *format, long long a, long long b = 0) {
    char out[80];
    return std::snprintf(out, sizeof out, format, a, b), out;
}

// Slot 8 (compressed unless told otherwise).  A read past the input faults.
inline Decoded slot8(const test::Library &lib, int32_t w, int32_t h, const Bytes &in, bool compressed = true) {
    const kit::GuardedInput input(in);
    const Pixels guard(8, 0x5EA15EA1);
    Pixels out = guard + unwrittenPixels(int64_t(w) * h) + guard;
    kit::LogCapture log;
    const int32_t result = lib.decodeBitmap(w, h, input.data(), input.size(), compressed, out.data() + 8);
    EXPECT_TRUE(std::equal(guard.begin(), guard.end(), out.begin()) && std::equal(guard.begin(), guard.end(), out.end() - 8));
    return {result, Pixels(out.begin() + 8, out.end() - 8), log.trail()};
}

// A case worked out by hand; an expected byte 0xEE keeps what the output held.
struct Case {
    std::string name;
    int32_t width, height;
    Bytes data;
    Pixels expected;
    kit::Trail trail = {};
    int32_t result = 1, depth = 0;  // 0: the codec's own
};

// The library and the reference decoder both give the case's result.
template <typename Model>
void check(const Case &c, int32_t depth, Model model) {
    SCOPED_TRACE(c.name);
    Pixels expected = c.expected;
    for (size_t i = 0; i < c.expected.size(); ++i)
        for (uint32_t byte = 0xFF; byte != 0; byte <<= 8)
            if ((c.expected[i] & byte) == (0xEEEEEEEE & byte)) expected[i] ^= (c.expected[i] ^ unwritten(i)) & byte;
    const test::Library lib(c.depth != 0 ? c.depth : depth);
    EXPECT_EQ(slot8(lib, c.width, c.height, c.data), Decoded(c.result, expected, c.trail));
    EXPECT_EQ(model(c.width, c.height, c.data, c.depth != 0 ? c.depth : depth), Decoded(c.result, expected, c.trail));
}

// The input as the decoders read it: a missing byte reads as 0 after the
// shortage report naming the reading line.
struct Input {
    const Bytes &bytes;
    kit::Trail &trail;
    size_t at = 0;
    int64_t left() const { return int64_t(bytes.size() - at); }
    uint32_t u8(L line) { return left() >= 1 ? bytes[at++] : (trail.push_back(kit::shortRead(line)), 0); }
    uint32_t u16(L line) {
        if (left() < 2) return trail.push_back(kit::shortRead(line, 0, true)), 0;
        return at += 2, bytes[at - 2] | bytes[at - 1] << 8;
    }
    uint32_t colour() {
        const uint32_t b0 = u8(L::colourByte0), b1 = u8(L::colourByte1);
        return b0 | b1 << 8 | u8(L::colourByte2) << 16;
    }
};

// The interleaved orders by header range.  Run: the header's `bits` (times 8
// for images), or when they are 0 an extra byte plus `extra`; a 16-bit run
// for bits 16; none for bits 0, whose mask or colour is `extra`.
enum class K { bg, fg, setFg, image, setImage, colourRun, colourImage, dithered, special, single };
struct Form { int lo, hi; K kind; int bits; uint32_t extra; L line; };
inline constexpr Form kForms[] = {
    {0x00, 0x1F, K::bg, 0x1F, 32, L::regularRun},          {0x20, 0x3F, K::fg, 0x1F, 32, L::regularRun},
    {0x40, 0x5F, K::image, 0x1F, 1, L::regularImageRun},   {0x60, 0x7F, K::colourRun, 0x1F, 32, L::regularRun},
    {0x80, 0x9F, K::colourImage, 0x1F, 32, L::regularRun}, {0xC0, 0xCF, K::setFg, 0x0F, 16, L::liteRun},
    {0xD0, 0xDF, K::setImage, 0x0F, 1, L::liteImageRun},   {0xE0, 0xEF, K::dithered, 0x0F, 16, L::liteRun},
    {0xF0, 0xF0, K::bg, 16, 0, L::megaRun},                {0xF1, 0xF1, K::fg, 16, 0, L::megaRun},
    {0xF2, 0xF2, K::image, 16, 0, L::megaRun},             {0xF3, 0xF3, K::colourRun, 16, 0, L::megaRun},
    {0xF4, 0xF4, K::colourImage, 16, 0, L::megaRun},       {0xF6, 0xF6, K::setFg, 16, 0, L::megaRun},
    {0xF7, 0xF7, K::setImage, 16, 0, L::megaRun},          {0xF8, 0xF8, K::dithered, 16, 0, L::megaRun},
    {0xF9, 0xF9, K::special, 0, 0x03, L::megaRun},         {0xFA, 0xFA, K::special, 0, 0x05, L::megaRun},
    {0xFD, 0xFD, K::single, 0, 0xFFFFFF, L::megaRun},      {0xFE, 0xFE, K::single, 0, 0, L::megaRun},
};

inline Decoded interleaved(int32_t w, int32_t h, const Bytes &bytes, int32_t depth = 3) {
    const int64_t n = int64_t(w) * h;
    Pixels px = unwrittenPixels(n);
    kit::Trail trail;
    Input in{bytes, trail};
    int64_t at = 0;  // next pixel; runs on past n, storing nothing there
    uint32_t fgPel = 0xFFFFFF;
    bool insert = false, suppress = true;
    while (at < n && in.left() > 0) {
        const uint8_t header = bytes[in.at++];
        const bool first = at < w;  // for every pixel of the order
        const auto put = [&](uint32_t v) { at < n ? void(px[size_t(at++)] = v) : void(at++); };
        // A mask bit: fgPel or black in the first row, above xor fgPel or above below it.
        const auto bit = [&](bool set) { put((first || at >= n ? 0 : px[size_t(at - w)]) ^ (set ? fgPel : 0)); };
        const Form *f = std::begin(kForms);
        while (f != std::end(kForms) && (header < f->lo || header > f->hi)) ++f;
        if (f == std::end(kForms)) {
            trail.push_back(kit::entry(Site::unknownHeader, text("Unknown header 0x%02llx. Sync lost?", header)));
            return {0, px, trail};
        }
        const bool image = f->kind == K::image || f->kind == K::setImage;
        const int64_t field = header & f->bits;
        int64_t run = f->bits == 16 ? in.u16(f->line) : field * (image ? 8 : 1);
        if (f->bits != 0 && f->bits != 16 && field == 0) run = in.u8(f->line) + f->extra;
        if (f->kind == K::setFg || f->kind == K::setImage) fgPel = in.colour();
        if (f->kind == K::bg) {
            bool inserting = insert;
            if (!first && suppress) suppress = inserting = false;
            if (inserting) bit(true), run = std::max<int64_t>(run - 1, 0);
            for (int64_t i = 0; i < run; ++i) bit(false);
        } else if (f->kind == K::fg || f->kind == K::setFg) {
            for (int64_t i = 0; i < run; ++i) bit(true);
        } else if (image) {
            for (int64_t i = 0; i < run; i += 8) {
                const bool full = run - i >= 8;
                const uint32_t mask = in.u8(first ? (full ? L::maskFirstRow : L::maskFirstRowPart)
                                                  : (full ? L::maskLowerRow : L::maskLowerRowPart));
                for (int k = 0; k < std::min<int64_t>(8, run - i); ++k) bit(mask >> k & 1);
            }
        } else if (f->kind == K::colourRun) {
            const uint32_t c = in.colour();
            for (int64_t i = 0; i < run; ++i) put(c);
        } else if (f->kind == K::colourImage && run * depth > in.left()) {
            trail.insert(trail.end(), {kit::entry(Site::shortBlock), kit::entry(Site::colourImage)});
        } else if (f->kind == K::colourImage) {
            for (int64_t i = 0; i < run; ++i, in.at += size_t(depth))
                put(bytes[in.at] | bytes[in.at + 1] << 8 | bytes[in.at + 2] << 16);
        } else if (f->kind == K::dithered) {
            const uint32_t a = in.colour(), b = in.colour();
            for (int64_t i = 0; i < run; ++i) put(a), put(b);
        } else {
            for (int k = 0; k < (f->kind == K::special ? 8 : 0); ++k) bit(f->extra >> k & 1);
            if (f->kind == K::single) put(f->extra);
        }
        insert = f->kind == K::bg;
    }
    if (at > n) trail.push_back(kit::entry(Site::overrun, text("%lld > %lld!", 4 * at, 4 * n)));
    return {1, px, trail};
}

// The planar path after the size checks.  Run-length planes store one byte
// of each pixel; the red plane also clears byte 3.
inline Decoded planar(int32_t w, int32_t h, const Bytes &bytes, int32_t = 4) {
    const int64_t n = int64_t(w) * h;
    Pixels px = unwrittenPixels(n);
    kit::Trail trail;
    Input in{bytes, trail};
    const auto fail = [&](Site site) { return trail.push_back(kit::entry(site)), Decoded(0, px, trail); };
    const uint32_t header = bytes.at(in.at++), alpha = (header & 0x20) == 0;  // the slot refuses empty data
    if ((header & 0xCF) != 0) return fail(Site::planarHeader);
    if ((header & 0x10) == 0 && in.left() < (alpha ? 4 : 3) * n) return fail(Site::rawPlanes);
    for (int64_t i = 0; i < n && (header & 0x10) == 0; ++i) {
        const uint8_t *red = &bytes[in.at + size_t(alpha ? n : 0)], *green = red + n, *blue = green + n;
        px[size_t(i)] = uint32_t(red[i]) << 16 | green[i] << 8 | blue[i];
    }
    // Byte 0-2 of each pixel, or -1: the alpha plane, read past.
    const auto plane = [&](int byte) {
        for (int32_t y = 0; y < h && (header & 0x10) != 0; ++y) {
            uint32_t value = 0;  // the last raw byte (first row) or its delta
            for (int32_t x = 0; x < w;) {
                const bool there = in.left() > 0;
                const uint32_t c = in.u8(byte < 0 ? L::alphaControl : y == 0 ? L::firstRowControl : L::deltaRowControl);
                int32_t raw = c >> 4, run = c & 15;
                if (run == 1 || run == 2) run = raw + 16 * run, raw = 0;
                if (!there) return false;
                const Site overrun = byte < 0 ? Site::alphaOverrun : y == 0 ? Site::planarRowOverrun : Site::planarDeltaOverrun;
                if (x + raw + run > w) return trail.push_back(kit::entry(overrun)), false;
                if (byte < 0 && raw > in.left()) trail.push_back(kit::entry(Site::shortSkip));
                else if (byte < 0) in.at += size_t(raw);
                for (int32_t i = 0; i < raw + run; ++i, ++x) {
                    if (byte < 0) continue;
                    const uint32_t v = i < raw ? in.u8(y == 0 ? L::firstRowRaw : L::deltaRowRaw) : 0;
                    if (i < raw) value = y == 0 ? v : (v & 1) ? ~(v >> 1) : v >> 1;
                    uint32_t &p = px[size_t(y) * size_t(w) + size_t(x)];
                    const uint32_t above = y == 0 ? 0 : px[size_t(y - 1) * size_t(w) + size_t(x)] >> 8 * byte;
                    p = (p & ~(0xFFu << 8 * byte) & (byte == 2 ? 0xFFFFFF : ~0u)) | ((above + value) & 0xFF) << 8 * byte;
                }
            }
        }
        return true;
    };
    if (alpha && !plane(-1)) return fail(Site::alphaPlane);
    if (!plane(2)) return fail(Site::redPlane);
    if (!plane(1)) return fail(Site::greenPlane);
    if (!plane(0)) return fail(Site::bluePlane);
    return {1, px, trail};
}

}  // namespace model
