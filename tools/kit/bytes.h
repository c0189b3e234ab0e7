// Byte streams assembled piece by piece, and input placed right before an
// unreadable page so that a read one byte too far faults on every target.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace kit {

struct Bytes : std::vector<uint8_t> {
    using std::vector<uint8_t>::vector;
    Bytes &operator()(std::initializer_list<uint8_t> more) { return insert(end(), more), *this; }
    Bytes &operator()(const std::vector<uint8_t> &more) { return insert(end(), more.begin(), more.end()), *this; }
    Bytes &u16(uint32_t v) { return (*this)({uint8_t(v), uint8_t(v >> 8)}); }
    // Three bytes, lowest first (RDP colours, CPIXELs); four with a zero last.
    Bytes &colour(uint32_t v) { return (*this)({uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16)}); }
    Bytes &pixel4(uint32_t v) { return colour(v)({0}); }
    Bytes first(size_t n) const { return Bytes(begin(), begin() + ptrdiff_t(n)); }
    int32_t length() const { return int32_t(size()); }
};

// Where page-guarded memory lies.  On 32-bit targets `top` puts it as high
// in the address space as it fits and `bottom` as low, so that an address
// formed past its end (or before its start) wraps around 2^32 instead of
// landing in other memory; on 64-bit targets both mean anywhere.
enum class Place { anywhere, top, bottom };

// Read-write pages that end right before an inaccessible page.
class GuardedPages {
public:
    explicit GuardedPages(size_t bytes, Place place = Place::anywhere);
    ~GuardedPages();
    GuardedPages(const GuardedPages &) = delete;
    GuardedPages &operator=(const GuardedPages &) = delete;
    uint8_t *end() const { return end_; }  // the first inaccessible byte
    size_t size() const { return size_t(end_ - mapping_); }  // bytes usable before it
    void readOnly() const;

private:
    uint8_t *mapping_, *end_;
    size_t size_;
};

class GuardedInput {
public:
    explicit GuardedInput(const std::vector<uint8_t> &bytes, Place place = Place::anywhere);
    GuardedInput(const GuardedInput &) = delete;
    GuardedInput &operator=(const GuardedInput &) = delete;
    const uint8_t *data() const { return data_; }
    int32_t size() const { return size_; }

private:
    GuardedPages pages_;
    const uint8_t *data_;
    int32_t size_;
};

}  // namespace kit
