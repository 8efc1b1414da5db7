#include "scarcememory.h"

#include <QtGlobal>

#include <dlfcn.h>
#include <new>

using namespace scarcememory;

namespace
{

bool isRefused()
{
    if (allocationsLeft < 0)
        return false;
    if (allocationsLeft > 0) {
        --allocationsLeft;
        return false;
    }
    if (failsOnce)
        allocationsLeft = -1;
    return true;
}

} // namespace

#ifdef __SANITIZE_ADDRESS__
constexpr bool newCallsOurMalloc = false;
#else
constexpr bool newCallsOurMalloc = true;

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the names are the C library's.
void *__libc_malloc(std::size_t size);
void *__libc_realloc(void *memory, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier)

// Exported for Qt and the standard library: clang hides them otherwise, as the program hides its
// symbols by default.
Q_DECL_EXPORT void *malloc(std::size_t size) noexcept
{
    return isRefused() ? nullptr : __libc_malloc(size);
}

Q_DECL_EXPORT void *realloc(void *memory, std::size_t size) noexcept
{
    return isRefused() ? nullptr : __libc_realloc(memory, size);
}
}
#endif

// What is not refused goes on to the operator that would have been called without this file, so
// that the sanitizers still see whether new and delete belong together.
void *operator new(std::size_t size)
{
    using Operator = void *(*)(std::size_t);
    static const auto next = reinterpret_cast<Operator>(dlsym(RTLD_NEXT, "_Znwm"));
    if (size > largestAllocation || (!newCallsOurMalloc && isRefused()))
        throw std::bad_alloc();
    return next(size);
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    if (nothrowAllocationsLeft == 0)
        return nullptr;
    if (nothrowAllocationsLeft > 0)
        --nothrowAllocationsLeft;
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}
