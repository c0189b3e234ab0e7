// streamIn: the bounded reader through which every decoder and tile takes its
// input.  Each operation is one signed compare of the count asked for with
// `left`, then the read and the advance, or nothing: no byte outside
// [ptr, ptr + left) is ever read, and only these functions move ptr and left.
//
// The reported reads (readU8, readU16, getBlock, skip) report a shortage and
// yield a neutral value, and the decoder goes on with it.  The unreported
// ones (next, has, take) serve the callers that decide for themselves what a
// shortage means: a decoder's loop, or a tile that answers "too short".
#pragma once

#include <cstdint>

#include "../core/settings.h"

namespace ui {

struct streamIn {
    const uint8_t *ptr;  // next unread byte
    int32_t left;        // bytes readable from ptr on; a negative count holds none

    // One byte, or 0 after "streamInOps" 64 naming the caller's line.
    uint8_t readU8(int callerLine) {
        if (left < 1) return report(Site::shortU8, "ui", callerLine), 0;
        --left;
        return *ptr++;
    }
    uint8_t readU8(Line caller) { return readU8(lineOf(caller)); }

    // Little-endian; 0 after "streamInOps" 65.  A lone last byte stays.
    uint16_t readU16(Line caller) {
        if (left < 2) return report(Site::shortU16, "ui", lineOf(caller)), 0;
        const uint16_t v = uint16_t(ptr[0] | ptr[1] << 8);
        ptr += 2;
        left -= 2;
        return v;
    }

    // The start of n bytes, or null after "streamInOps" 275 (or, unreported,
    // when ptr is null).
    const uint8_t *getBlock(int32_t n) {
        if (n < 0 || n > left) return report(Site::shortBlock), nullptr;
        return ptr == nullptr ? nullptr : advance(n);
    }

    // Passes over n bytes, or reports "streamInOps" 283.
    void skip(int32_t n) {
        if (n < 0 || n > left) return report(Site::shortSkip);
        if (ptr != nullptr) advance(n);
    }

    // A header byte: false, unreported, at the end of the input.
    bool next(uint8_t &byte) {
        if (left < 1 || ptr == nullptr) return false;
        byte = *advance(1);
        return true;
    }

    bool has(int64_t n) const { return n >= 0 && left >= n; }

    // n bytes that are there: their start (null when ptr is null, which is
    // then advanced as a plain address, never read), or null and nothing
    // consumed when fewer are left.
    const uint8_t *take(int64_t n) {
        if (!has(n)) return nullptr;
        if (ptr != nullptr) return advance(int32_t(n));
        ptr = reinterpret_cast<const uint8_t *>(uintptr_t(n));
        left -= int32_t(n);
        return nullptr;
    }

    // A window of 16 readable bytes, of which the first n (at most 16) are
    // consumed: a caller copies them as one fixed-size block.  Null, nothing
    // consumed, when fewer than 16 are left.
    const uint8_t *window16(int32_t n) {
        if (left < 16 || uint32_t(n) > 16 || ptr == nullptr) return nullptr;
        return advance(n);
    }

private:
    const uint8_t *advance(int32_t n) {
        const uint8_t *start = ptr;
        ptr += n;
        left -= n;
        return start;
    }
};

}  // namespace ui
