// PNG encoding for the demo's screenshots.  Deflate uses the fixed Huffman
// codes of RFC 1951 and a hash-chain search for back references, which is
// enough to shrink a desktop picture (large flat areas, repeated rows) to a
// small fraction of its raw size without any library.
#include "png.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace demo {
namespace {

// ---------------------------------------------------------------------------
// Checksums
// ---------------------------------------------------------------------------

std::array<uint32_t, 256> makeCrcTable() {
    std::array<uint32_t, 256> table{};
    for (uint32_t n = 0; n < 256; ++n) {
        uint32_t c = n;
        for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        table[n] = c;
    }
    return table;
}

uint32_t crc32(const uint8_t *data, size_t length, uint32_t crc = 0) {
    static const std::array<uint32_t, 256> table = makeCrcTable();
    crc = ~crc;
    for (size_t i = 0; i < length; ++i) crc = table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

uint32_t adler32(const std::vector<uint8_t> &data) {
    uint32_t a = 1, b = 0;
    size_t i = 0;
    while (i < data.size()) {
        // 5552 bytes is the largest block whose sums cannot overflow 32 bits.
        const size_t end = std::min(data.size(), i + 5552);
        for (; i < end; ++i) {
            a += data[i];
            b += a;
        }
        a %= 65521;
        b %= 65521;
    }
    return (b << 16) | a;
}

// ---------------------------------------------------------------------------
// Deflate with fixed Huffman codes
// ---------------------------------------------------------------------------

class BitWriter {
public:
    explicit BitWriter(std::vector<uint8_t> &out) : out_(out) {}
    // `count` bits of `value`, least significant first (header and extra bits).
    void bits(uint32_t value, int count) {
        buffer_ |= uint64_t(value) << used_;
        used_ += count;
        while (used_ >= 8) {
            out_.push_back(uint8_t(buffer_));
            buffer_ >>= 8;
            used_ -= 8;
        }
    }
    // A Huffman code, most significant bit first.
    void code(uint32_t code, int length) {
        uint32_t reversed = 0;
        for (int i = 0; i < length; ++i) reversed |= ((code >> i) & 1) << (length - 1 - i);
        bits(reversed, length);
    }
    void flush() {
        if (used_ > 0) out_.push_back(uint8_t(buffer_));
        buffer_ = 0;
        used_ = 0;
    }

private:
    std::vector<uint8_t> &out_;
    uint64_t buffer_ = 0;
    int used_ = 0;
};

void literalOrLength(BitWriter &w, int symbol) {
    if (symbol < 144) w.code(0x30 + symbol, 8);
    else if (symbol < 256) w.code(0x190 + symbol - 144, 9);
    else if (symbol < 280) w.code(symbol - 256, 7);
    else w.code(0xC0 + symbol - 280, 8);
}

constexpr std::array<int, 29> kLengthBase = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                                             31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr std::array<int, 29> kLengthExtra = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                              2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr std::array<int, 30> kDistanceBase = {1,   2,   3,   4,   5,   7,    9,    13,   17,   25,
                                               33,  49,  65,  97,  129, 193,  257,  385,  513,  769,
                                               1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr std::array<int, 30> kDistanceExtra = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                                6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

void match(BitWriter &w, int length, int distance) {
    int l = 28;
    while (kLengthBase[l] > length) --l;
    literalOrLength(w, 257 + l);
    w.bits(length - kLengthBase[l], kLengthExtra[l]);
    int d = 29;
    while (kDistanceBase[d] > distance) --d;
    w.code(d, 5);
    w.bits(distance - kDistanceBase[d], kDistanceExtra[d]);
}

constexpr int kWindow = 32768;
constexpr int kHashBits = 15;
constexpr int kMaxChain = 48;
constexpr int kMinMatch = 3;
constexpr int kMaxMatch = 258;

uint32_t hash3(const uint8_t *p) {
    return ((uint32_t(p[0]) << 16 | uint32_t(p[1]) << 8 | p[2]) * 2654435761u) >> (32 - kHashBits);
}

void deflateFixed(const std::vector<uint8_t> &data, std::vector<uint8_t> &out) {
    BitWriter w(out);
    w.bits(1, 1);  // final block
    w.bits(1, 2);  // fixed Huffman codes
    std::vector<int32_t> head(size_t(1) << kHashBits, -1);
    std::vector<int32_t> previous(kWindow, -1);
    const int size = int(data.size());
    auto insert = [&](int at) {
        if (at + kMinMatch > size) return;
        const uint32_t h = hash3(&data[at]);
        previous[at % kWindow] = head[h];
        head[h] = at;
    };
    int at = 0;
    while (at < size) {
        int bestLength = 0, bestDistance = 0;
        if (at + kMinMatch <= size) {
            const int limit = std::min(kMaxMatch, size - at);
            int candidate = head[hash3(&data[at])];
            for (int chain = 0; candidate >= 0 && at - candidate <= kWindow && chain < kMaxChain; ++chain) {
                int length = 0;
                while (length < limit && data[candidate + length] == data[at + length]) ++length;
                if (length > bestLength) {
                    bestLength = length;
                    bestDistance = at - candidate;
                    if (length == limit) break;
                }
                const int next = previous[candidate % kWindow];
                if (next >= candidate) break;  // slot reused by a newer position
                candidate = next;
            }
        }
        if (bestLength >= kMinMatch) {
            match(w, bestLength, bestDistance);
            for (int i = 0; i < bestLength; ++i) insert(at + i);
            at += bestLength;
        } else {
            literalOrLength(w, data[at]);
            insert(at);
            ++at;
        }
    }
    literalOrLength(w, 256);
    w.flush();
}

// ---------------------------------------------------------------------------
// PNG chunks and row filters
// ---------------------------------------------------------------------------

void put32(std::vector<uint8_t> &out, uint32_t v) {
    out.push_back(uint8_t(v >> 24));
    out.push_back(uint8_t(v >> 16));
    out.push_back(uint8_t(v >> 8));
    out.push_back(uint8_t(v));
}

void chunk(std::vector<uint8_t> &out, const char *type, const std::vector<uint8_t> &body) {
    put32(out, uint32_t(body.size()));
    const size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), body.begin(), body.end());
    put32(out, crc32(&out[start], out.size() - start));
}

uint8_t paeth(int a, int b, int c) {
    const int p = a + b - c;
    const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    if (pa <= pb && pa <= pc) return uint8_t(a);
    return uint8_t(pb <= pc ? b : c);
}

// Filters one row with each of the five PNG filters and appends the one
// with the smallest sum of absolute byte values (the usual heuristic).
void filterRow(const uint8_t *row, const uint8_t *above, size_t length, std::vector<uint8_t> &out) {
    std::array<std::vector<uint8_t>, 5> candidates;
    long best = -1;
    int bestType = 0;
    for (int type = 0; type < 5; ++type) {
        std::vector<uint8_t> &f = candidates[type];
        f.resize(length);
        long cost = 0;
        for (size_t i = 0; i < length; ++i) {
            const int a = i >= 3 ? row[i - 3] : 0;
            const int b = above ? above[i] : 0;
            const int c = (above && i >= 3) ? above[i - 3] : 0;
            int predicted = 0;
            switch (type) {
                case 1: predicted = a; break;
                case 2: predicted = b; break;
                case 3: predicted = (a + b) / 2; break;
                case 4: predicted = paeth(a, b, c); break;
                default: break;
            }
            f[i] = uint8_t(row[i] - predicted);
            cost += std::abs(int8_t(f[i]));
        }
        if (best < 0 || cost < best) {
            best = cost;
            bestType = type;
        }
    }
    out.push_back(uint8_t(bestType));
    out.insert(out.end(), candidates[bestType].begin(), candidates[bestType].end());
}

}  // namespace

std::vector<uint8_t> zlibCompress(const std::vector<uint8_t> &data) {
    std::vector<uint8_t> out = {0x78, 0x01};  // deflate, 32 KiB window, no dictionary
    deflateFixed(data, out);
    put32(out, adler32(data));
    return out;
}

std::vector<uint8_t> encodePng(const uint32_t *pixels, int width, int height, int stride) {
    const size_t rowBytes = size_t(width) * 3;
    std::vector<uint8_t> filtered;
    filtered.reserve((rowBytes + 1) * size_t(height));
    std::vector<uint8_t> row(rowBytes), above(rowBytes);
    for (int y = 0; y < height; ++y) {
        const uint32_t *src = pixels + size_t(y) * size_t(stride);
        for (int x = 0; x < width; ++x) {
            row[3 * x] = uint8_t(src[x] >> 16);
            row[3 * x + 1] = uint8_t(src[x] >> 8);
            row[3 * x + 2] = uint8_t(src[x]);
        }
        filterRow(row.data(), y > 0 ? above.data() : nullptr, rowBytes, filtered);
        row.swap(above);
    }
    std::vector<uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<uint8_t> header;
    put32(header, uint32_t(width));
    put32(header, uint32_t(height));
    header.insert(header.end(), {8, 2, 0, 0, 0});  // 8-bit RGB, deflate, adaptive filters, no interlace
    chunk(png, "IHDR", header);
    chunk(png, "IDAT", zlibCompress(filtered));
    chunk(png, "IEND", {});
    return png;
}

bool writePng(const std::string &path, const uint32_t *pixels, int width, int height, int stride) {
    const std::vector<uint8_t> png = encodePng(pixels, width, height, stride);
    FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    const bool written = std::fwrite(png.data(), 1, png.size(), file) == png.size();
    return std::fclose(file) == 0 && written;
}

}  // namespace demo
