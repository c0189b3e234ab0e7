#include "bytes.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace kit {

namespace {

size_t page() {
    static const size_t size = size_t(sysconf(_SC_PAGESIZE));
    return size;
}

constexpr unsigned long long kStackRoom = 32ull << 20;

bool mapExactly(uintptr_t address, size_t size) {
#ifdef MAP_FIXED_NOREPLACE
    void *m = mmap(reinterpret_cast<void *>(address), size, PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (m == reinterpret_cast<void *>(address)) return true;
    if (m != MAP_FAILED) munmap(m, size);  // a kernel that took the address as a hint
#endif
    return false;
}

// The highest (top) or lowest (bottom) free stretch of a 32-bit address space
// that holds `size` bytes.  The edges that worked last are tried first, so
// that the maps are only read when they changed.
uint8_t *mapAtEdge(size_t size, bool top) {
    static uintptr_t recent[2][4];
    for (uintptr_t edge : recent[top])
        if (edge != 0 && (top ? edge >= size && mapExactly(edge - size, size) : mapExactly(edge, size)))
            return reinterpret_cast<uint8_t *>(top ? edge - size : edge);
    std::vector<std::pair<uintptr_t, uintptr_t>> gaps;
    uintptr_t last = 0x10000;  // above the kernel's lowest mappable address
    if (FILE *maps = std::fopen("/proc/self/maps", "r")) {
        unsigned long long from, to;
        char line[512];
        while (std::fgets(line, sizeof line, maps))
            if (std::sscanf(line, "%llx-%llx", &from, &to) == 2 && from < 0x100000000ull) {
                // The stack grows down into the free space below it (8 MiB
                // by default, and the kernel's guard gap): none of it is taken.
                if (std::strstr(line, "[stack]") != nullptr) from = from > kStackRoom ? from - kStackRoom : 0;
                if (from > last) gaps.emplace_back(last, uintptr_t(from));
                last = std::max(last, uintptr_t(std::min(to, 0xfffff000ull)));
            }
        std::fclose(maps);
    }
    if (last < 0xffffe000u) gaps.emplace_back(last, uintptr_t(0xffffe000u));
    if (top) std::reverse(gaps.begin(), gaps.end());
    for (const auto &[from, to] : gaps) {
        if (to - from < size) continue;
        const uintptr_t address = top ? to - size : from;
        if (!mapExactly(address, size)) continue;
        std::rotate(recent[top], recent[top] + 3, recent[top] + 4);
        recent[top][0] = top ? to : from;
        return reinterpret_cast<uint8_t *>(address);
    }
    return nullptr;
}

}  // namespace

GuardedPages::GuardedPages(size_t bytes, Place place) : size_((bytes + page() - 1) / page() * page() + page()) {
    mapping_ = sizeof(void *) == 4 && place != Place::anywhere ? mapAtEdge(size_, place == Place::top) : nullptr;
    if (mapping_ == nullptr) {
        void *m = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m == MAP_FAILED) std::abort();
        mapping_ = static_cast<uint8_t *>(m);
    }
    end_ = mapping_ + size_ - page();
    if (mprotect(end_, page(), PROT_NONE) != 0) std::abort();
}

GuardedPages::~GuardedPages() { munmap(mapping_, size_); }

void GuardedPages::readOnly() const {
    if (end_ != mapping_ && mprotect(mapping_, size_t(end_ - mapping_), PROT_READ) != 0) std::abort();
}

GuardedInput::GuardedInput(const std::vector<uint8_t> &bytes, Place place)
    : pages_(bytes.size(), place), data_(pages_.end() - bytes.size()), size_(int32_t(bytes.size())) {
    if (!bytes.empty()) std::memcpy(pages_.end() - bytes.size(), bytes.data(), bytes.size());
    pages_.readOnly();  // the library never writes its input
}

}  // namespace kit
