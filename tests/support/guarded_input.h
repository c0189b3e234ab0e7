// Input bytes placed at the very end of a readable page, followed by a page
// that cannot be read: a decoder that reads one byte too far faults at once,
// on every target, with or without sanitizers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ui32test {

class GuardedInput {
public:
    explicit GuardedInput(const std::vector<uint8_t> &bytes);
    GuardedInput(const uint8_t *bytes, size_t size);
    ~GuardedInput();
    GuardedInput(const GuardedInput &) = delete;
    GuardedInput &operator=(const GuardedInput &) = delete;

    const uint8_t *data() const { return data_; }
    int32_t size() const { return int32_t(size_); }

private:
    uint8_t *mapping_ = nullptr;
    size_t mappingSize_ = 0;
    const uint8_t *data_ = nullptr;
    size_t size_ = 0;
};

}  // namespace ui32test
