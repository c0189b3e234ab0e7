// The fuzz harness, shared by the libFuzzer targets and the regression replay
// test.  An input is a frame buffer, the settings and a glyph cache, then a
// sequence of calls to the drawing table; every record is decoded from it
// with the kit's builders and handed over read-only behind a guard page, and
// after every call the frame's guard bands, tile map and surface record are
// checked.  The differential targets read a size and a bitmap stream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bytes.h"

namespace fuzz {

// Little-endian fields; past the end every read gives zeros.
class Reader {
public:
    Reader(const uint8_t *data, size_t size) : p_(data), end_(data + size) {}
    bool more() const { return p_ < end_; }
    uint8_t u8() { return p_ < end_ ? *p_++ : 0; }
    uint32_t u16() {
        const uint32_t low = u8();
        return low | uint32_t(u8()) << 8;
    }
    uint32_t u32() {
        const uint32_t low = u16();
        return low | u16() << 16;
    }
    // One byte for -64..127, or a tag byte and an edge value of the 16- and
    // 32-bit ranges, a 16-bit or a 32-bit value.
    int32_t num();
    kit::Bytes blob();  // a 16-bit length, then that many bytes (fewer at the end)
    kit::Bytes rest() { return kit::Bytes(p_, end_); }

private:
    const uint8_t *p_, *end_;
};

// The writer's side, for the seeds.
kit::Bytes &num(kit::Bytes &out, int32_t value);
kit::Bytes &blob(kit::Bytes &out, const kit::Bytes &bytes);

struct Target {
    const char *name;
    void (*run)(Reader &in);
};
extern const std::vector<Target> kTargets;  // in the order of fuzz/targets.txt
const Target *findTarget(const std::string &name);

// Called with a description when a check fails; prints and aborts by default.
extern void (*onFailure)(const char *what);
// Reports made and calls that marked a tile or decoded since the input began.
extern int reports, drawn;
// Differential targets: inputs accepted by both decoders, by ui32 only, by
// the peer only, by neither, and by the peer in a form ui32 refuses by
// design; [0] interleaved, [1] planar.
struct Agreement {
    long both, ui32Only, peerOnly, neither, refusedForm;
};
extern Agreement agreement[2];

}  // namespace fuzz
