// Interleaved run-length encoder (24-bit colours).  At every position it
// measures each order the decoder knows (colour run, background and
// foreground runs against the row above, dithered run, foreground/background
// image, the special images, white and black) and takes the one that saves
// the most bytes over raw pixels; what no order covers goes into colour
// images.  Orders that copy or combine the pixel above start only below the
// first row, and two background runs never follow each other, so the
// decoder never inserts a foreground pixel.
#include <algorithm>

#include "codecs.h"

namespace demo {
namespace {

constexpr uint32_t kWhite = 0xFFFFFF;
constexpr int kMaxRun = 65535;

enum class Kind { Literal, ColourRun, Background, Foreground, SetForeground, Dithered, FgBg, SetFgBg, Special, White, Black };

struct Choice {
    Kind kind = Kind::Literal;
    int length = 1;     // pixels covered
    int cost = 3;       // bytes the order takes
    uint32_t colour = 0;   // colour run, new foreground, first dither colour
    uint32_t second = 0;   // second dither colour
    long saving() const { return 3L * length - cost; }
};

int regularHeaderBytes(int n) { return n >= 1 && n <= 31 ? 1 : n <= 287 ? 2 : 3; }
int liteHeaderBytes(int n) { return n >= 1 && n <= 15 ? 1 : n <= 271 ? 2 : 3; }
int fgbgHeaderBytes(int n, int maxEighths) {
    if (n % 8 == 0 && n / 8 >= 1 && n / 8 <= maxEighths) return 1;
    return n <= 256 ? 2 : 3;
}

class InterleavedEncoder {
public:
    InterleavedEncoder(const std::vector<uint32_t> &pixels, int width, InterleavedStats *stats)
        : s_(pixels), w_(width), n_(int(pixels.size())), stats_(stats ? stats : &ignored_) {}

    std::vector<uint8_t> encode() {
        int p = 0;
        int literalStart = -1;
        while (p < n_) {
            const Choice c = best(p, literalStart >= 0);
            if (c.kind == Kind::Literal) {
                if (literalStart < 0) literalStart = p;
                ++p;
                if (p - literalStart == kMaxRun) flushLiterals(literalStart, p);
                continue;
            }
            if (literalStart >= 0) flushLiterals(literalStart, p);
            emit(c, p);
            p += c.length;
        }
        if (literalStart >= 0) flushLiterals(literalStart, p);
        return std::move(out_);
    }

private:
    uint32_t above(int q) const { return s_[q - w_]; }
    int limit(int p) const { return std::min(kMaxRun, n_ - p); }

    int countEqual(int p, uint32_t colour) const {
        int k = 0;
        const int end = limit(p);
        while (k < end && s_[p + k] == colour) ++k;
        return k;
    }
    int countAboveXor(int p, uint32_t mask) const {
        int k = 0;
        const int end = limit(p);
        while (k < end && s_[p + k] == (above(p + k) ^ mask)) ++k;
        return k;
    }
    int countFgBg(int p, uint32_t fg) const {
        int k = 0;
        const int end = limit(p);
        while (k < end && (s_[p + k] == above(p + k) || s_[p + k] == (above(p + k) ^ fg))) ++k;
        return k;
    }
    // A foreground colour that explains the first differing pixel ahead.
    uint32_t newForeground(int p) const {
        const int end = std::min(n_, p + 16);
        for (int q = p; q < end; ++q)
            if (s_[q] != above(q)) return s_[q] ^ above(q);
        return 0;
    }

    static void consider(Choice &best, const Choice &c) {
        if (c.length > 0 && c.saving() > best.saving()) best = c;
    }

    Choice best(int p, bool literalsPending) const {
        Choice best;  // a literal pixel: saving 0
        const uint32_t here = s_[p];
        if (here == kWhite || here == 0) consider(best, {here ? Kind::White : Kind::Black, 1, 1});
        {
            const int n = countEqual(p, here);
            if (n >= 2) consider(best, {Kind::ColourRun, n, regularHeaderBytes(n) + 3, here});
        }
        if (p + 1 < n_ && s_[p + 1] != here) {
            const uint32_t second = s_[p + 1];
            int pairs = 0;
            while (pairs < kMaxRun && p + 2 * pairs + 1 < n_ && s_[p + 2 * pairs] == here &&
                   s_[p + 2 * pairs + 1] == second)
                ++pairs;
            if (pairs >= 2) consider(best, {Kind::Dithered, 2 * pairs, liteHeaderBytes(pairs) + 6, here, second});
        }
        if (p < w_) return best;  // the rest combine the row above

        const bool backgroundAllowed = literalsPending || !lastWasBackground_;
        if (backgroundAllowed) {
            const int n = countAboveXor(p, 0);
            if (n >= 1) consider(best, {Kind::Background, n, regularHeaderBytes(n)});
        }
        {
            const int n = countAboveXor(p, fg_);
            if (n >= 1) consider(best, {Kind::Foreground, n, regularHeaderBytes(n)});
            const int m = countFgBg(p, fg_);
            if (m >= 2) consider(best, {Kind::FgBg, m, fgbgHeaderBytes(m, 31) + (m + 7) / 8});
            // Groups of eight whose masks are 0x03 or 0x05: one byte each.
            int groups = 0;
            while (p + 8 * (groups + 1) <= n_ && countFgBg(p + 8 * groups, fg_) >= 8 &&
                   isSpecialMask(maskByte(p + 8 * groups, fg_, 8)))
                ++groups;
            if (groups > 0) consider(best, {Kind::Special, 8 * groups, groups});
        }
        const uint32_t fresh = newForeground(p);
        if (fresh != 0 && fresh != fg_) {
            const int n = countAboveXor(p, fresh);
            if (n >= 1) consider(best, {Kind::SetForeground, n, liteHeaderBytes(n) + 3, fresh});
            const int m = countFgBg(p, fresh);
            if (m >= 2) consider(best, {Kind::SetFgBg, m, fgbgHeaderBytes(m, 15) + 3 + (m + 7) / 8, fresh});
        }
        return best;
    }

    static bool isSpecialMask(int mask) { return mask == 0x03 || mask == 0x05; }

    int maskByte(int p, uint32_t fg, int count) const {
        int mask = 0;
        for (int j = 0; j < count; ++j)
            if (s_[p + j] == (above(p + j) ^ fg) && s_[p + j] != above(p + j)) mask |= 1 << j;
        return mask;
    }

    void byte(int v) { out_.push_back(uint8_t(v)); }
    void u16(int v) {
        byte(v & 0xFF);
        byte(v >> 8);
    }
    void colour(uint32_t c) {
        byte(c & 0xFF);
        byte((c >> 8) & 0xFF);
        byte((c >> 16) & 0xFF);
    }
    // Regular orders: run in the low 5 bits, or an extra byte (+32), or mega-mega.
    void regular(int base, int mega, int n) {
        if (n >= 1 && n <= 31) {
            byte(base | n);
        } else if (n <= 287) {
            byte(base);
            byte(n - 32);
        } else {
            byte(mega);
            u16(n);
            ++stats_->megaMega;
        }
    }
    // Lite orders: run in the low 4 bits, or an extra byte (+16), or mega-mega.
    void lite(int base, int mega, int n) {
        if (n >= 1 && n <= 15) {
            byte(base | n);
        } else if (n <= 271) {
            byte(base);
            byte(n - 16);
        } else {
            byte(mega);
            u16(n);
            ++stats_->megaMega;
        }
    }
    // Foreground/background images: eighths in the header, or extra byte + 1.
    void fgbgHeader(int base, int maxEighths, int mega, int n) {
        if (n % 8 == 0 && n / 8 >= 1 && n / 8 <= maxEighths) {
            byte(base | (n / 8));
        } else if (n <= 256) {
            byte(base);
            byte(n - 1);
        } else {
            byte(mega);
            u16(n);
            ++stats_->megaMega;
        }
    }
    void bitmask(int p, int n, uint32_t fg) {
        for (int i = 0; i < n; i += 8) byte(maskByte(p + i, fg, std::min(8, n - i)));
    }

    void flushLiterals(int &start, int end) {
        const int n = end - start;
        regular(0x80, 0xF4, n);
        for (int q = start; q < end; ++q) colour(s_[q]);
        ++stats_->colourImages;
        lastWasBackground_ = false;
        start = -1;
    }

    void emit(const Choice &c, int p) {
        switch (c.kind) {
            case Kind::ColourRun:
                regular(0x60, 0xF3, c.length);
                colour(c.colour);
                ++stats_->colourRuns;
                break;
            case Kind::Background:
                regular(0x00, 0xF0, c.length);
                ++stats_->backgroundRuns;
                break;
            case Kind::Foreground:
                regular(0x20, 0xF1, c.length);
                ++stats_->foregroundRuns;
                break;
            case Kind::SetForeground:
                lite(0xC0, 0xF6, c.length);
                colour(c.colour);
                fg_ = c.colour;
                ++stats_->setForegroundRuns;
                break;
            case Kind::Dithered:
                lite(0xE0, 0xF8, c.length / 2);
                colour(c.colour);
                colour(c.second);
                ++stats_->ditheredRuns;
                break;
            case Kind::FgBg:
                fgbgHeader(0x40, 31, 0xF2, c.length);
                bitmask(p, c.length, fg_);
                ++stats_->fgbgImages;
                break;
            case Kind::SetFgBg:
                fgbgHeader(0xD0, 15, 0xF7, c.length);
                colour(c.colour);
                fg_ = c.colour;
                bitmask(p, c.length, fg_);
                ++stats_->fgbgImages;
                break;
            case Kind::Special:
                for (int q = p; q < p + c.length; q += 8) {
                    byte(maskByte(q, fg_, 8) == 0x03 ? 0xF9 : 0xFA);
                    ++stats_->specials;
                }
                break;
            case Kind::White:
                byte(0xFD);
                ++stats_->whiteBlack;
                break;
            case Kind::Black:
                byte(0xFE);
                ++stats_->whiteBlack;
                break;
            case Kind::Literal:
                break;
        }
        lastWasBackground_ = c.kind == Kind::Background;
    }

    const std::vector<uint32_t> &s_;
    const int w_;
    const int n_;
    InterleavedStats ignored_;
    InterleavedStats *stats_;
    uint32_t fg_ = kWhite;
    bool lastWasBackground_ = false;
    std::vector<uint8_t> out_;
};

}  // namespace

std::vector<uint8_t> encodeInterleaved(const Picture &picture, InterleavedStats *stats) {
    const std::vector<uint32_t> stream = bottomUp(picture);
    return InterleavedEncoder(stream, picture.width, stats).encode();
}

}  // namespace demo
