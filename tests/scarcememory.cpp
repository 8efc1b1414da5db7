#include "scarcememory.h"

#include <dlfcn.h>
#include <new>

// What is not refused goes on to the operator that would have been called without this file, so
// that the sanitizers still see whether new and delete belong together.
void *operator new(std::size_t size)
{
    using Operator = void *(*)(std::size_t);
    static const auto next = reinterpret_cast<Operator>(dlsym(RTLD_NEXT, "_Znwm"));
    if (size > scarcememory::largestAllocation)
        throw std::bad_alloc();
    return next(size);
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    if (scarcememory::nothrowAllocationsLeft == 0)
        return nullptr;
    if (scarcememory::nothrowAllocationsLeft > 0)
        --scarcememory::nothrowAllocationsLeft;
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}
