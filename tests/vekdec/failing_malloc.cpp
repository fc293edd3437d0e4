// The C library's allocation for one program, of which the call that VEKVC_FAIL_ALLOCATION counts to gives no memory.
// Calls count from the program's own static objects on: what the loader and the C++ runtime do before is not vekdec's.
#include <unistd.h>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
}

namespace {

long left = 0;  // calls up to the one that fails; 0 and less: none does

[[gnu::constructor(101)]] void count() {
    if (const char* text = std::getenv("VEKVC_FAIL_ALLOCATION")) left = std::atol(text);
}
[[gnu::destructor(101)]] void tellWhatIsLeft() {
    if (left > 0) _exit(77);  // it never came to that
}

bool fails() {
    if (left <= 0 || --left > 0) return false;
    left = -1;
    errno = ENOMEM;
    return true;
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) { return fails() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) { return fails() ? nullptr : __libc_calloc(count, size); }
void* realloc(void* p, std::size_t size) { return fails() ? nullptr : __libc_realloc(p, size); }
void* memalign(std::size_t alignment, std::size_t size) { return fails() ? nullptr : __libc_memalign(alignment, size); }
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** p, std::size_t alignment, std::size_t size) {
    *p = memalign(alignment, size);
    return *p == nullptr ? ENOMEM : 0;
}
}
