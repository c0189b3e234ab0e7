// streamIn: the bounded reader through which every decoder reads its input.
//
// A read that finds too few bytes reports the shortage, yields a neutral
// value (0, or a null block) and leaves the record unchanged; the caller goes
// on with that value.  Every operation is one signed compare of the requested
// count with `left`, so no read ever touches a byte outside [ptr, ptr + left).
#pragma once

#include <cstdint>

#include "../ui.h"

namespace ui {

struct streamIn {
    const uint8_t *ptr;  // next unread byte
    int32_t left;        // unread bytes from ptr on; never negative

    // One byte, or 0 after a report naming the caller ("streamInOps" 64).
    uint8_t readU8(const char *callerSource, int callerLine) {
        if (left < 1) {
            report("streamInOps", 64, kShortStream, callerSource, callerLine);
            return 0;
        }
        --left;
        return *ptr++;
    }

    // A little-endian 16-bit value, or 0 after a report ("streamInOps" 65).
    // A lone last byte is not consumed.
    uint16_t readU16(const char *callerSource, int callerLine) {
        if (left < 2) {
            report("streamInOps", 65, kShortStream, callerSource, callerLine);
            return 0;
        }
        const uint16_t value = uint16_t(ptr[0] | (ptr[1] << 8));
        ptr += 2;
        left -= 2;
        return value;
    }

    // The start of n contiguous bytes, or null ("streamInOps" 275).  A null
    // ptr yields null even when n fits.
    const uint8_t *getBlock(int32_t n) {
        if (n > left || n < 0) {
            reportInternal("streamInOps", 275);
            return nullptr;
        }
        if (ptr == nullptr) return nullptr;
        const uint8_t *block = ptr;
        ptr += n;
        left -= n;
        return block;
    }

    // Passes over n bytes, or reports ("streamInOps" 283).
    void skip(int32_t n) {
        if (n > left || n < 0) {
            reportInternal("streamInOps", 283);
            return;
        }
        if (ptr == nullptr) return;
        ptr += n;
        left -= n;
    }
};

}  // namespace ui
