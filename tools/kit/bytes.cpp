#include "bytes.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace kit {

GuardedInput::GuardedInput(const std::vector<uint8_t> &bytes) : size_(int32_t(bytes.size())) {
    const size_t page = size_t(sysconf(_SC_PAGESIZE)), dataPages = (bytes.size() + page - 1) / page;
    mappingSize_ = (dataPages + 1) * page;
    void *m = mmap(nullptr, mappingSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m == MAP_FAILED) std::abort();
    mapping_ = static_cast<uint8_t *>(m);
    uint8_t *guard = mapping_ + dataPages * page;
    if (!bytes.empty()) std::memcpy(guard - bytes.size(), bytes.data(), bytes.size());
    // The data is read-only too: the library never writes its input.
    if (mprotect(guard, page, PROT_NONE) != 0 || (dataPages != 0 && mprotect(mapping_, dataPages * page, PROT_READ) != 0))
        std::abort();
    data_ = guard - bytes.size();
}

GuardedInput::~GuardedInput() { munmap(mapping_, mappingSize_); }

}  // namespace kit
