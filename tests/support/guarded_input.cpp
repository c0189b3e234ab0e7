#include "guarded_input.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace ui32test {

GuardedInput::GuardedInput(const std::vector<uint8_t> &bytes) : GuardedInput(bytes.data(), bytes.size()) {}

GuardedInput::GuardedInput(const uint8_t *bytes, size_t size) : size_(size) {
    const size_t page = size_t(sysconf(_SC_PAGESIZE));
    const size_t dataPages = (size + page - 1) / page;
    mappingSize_ = (dataPages + 1) * page;
    void *m = mmap(nullptr, mappingSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m == MAP_FAILED) std::abort();
    mapping_ = static_cast<uint8_t *>(m);
    uint8_t *guard = mapping_ + dataPages * page;
    uint8_t *start = guard - size;
    if (size != 0) std::memcpy(start, bytes, size);
    if (mprotect(guard, page, PROT_NONE) != 0) std::abort();
    // The data is read-only too: the library never writes its input.
    if (dataPages != 0 && mprotect(mapping_, dataPages * page, PROT_READ) != 0) std::abort();
    data_ = start;
}

GuardedInput::~GuardedInput() { munmap(mapping_, mappingSize_); }

}  // namespace ui32test
