// The heap and the standard output of the code under test, by way of the linker's --wrap. A block comes filled with
// rubbish, so that nothing can count on zeros.
#include "WatchedRuntime.h"

#include "JniWatch.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iostream>

extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *block);
void *__wrap_malloc(size_t size);
void __wrap_free(void *block);
int __wrap_printf(const char *format, ...) __attribute__((format(printf, 1, 2)));
}

namespace
{
std::atomic<bool> isQuiet = false;
}

void quietRuntime(bool quiet)
{
    isQuiet = quiet;
}

void *__wrap_malloc(size_t size)
{
    JniWatch *watch = JniWatch::current();
    if (watch == nullptr) {
        return __real_malloc(size);
    }
    if (watch->step(true, [&] { return "malloc " + std::to_string(size); })) {
        return nullptr;
    }
    ++watch->heapBlocks;
    void *block = __real_malloc(size);
    std::memset(block, 0xa5, size);
    watch->lastBlock = block;
    watch->lastSize = size;
    return block;
}

void __wrap_free(void *block)
{
    JniWatch *watch = JniWatch::current();
    if (watch != nullptr && block != nullptr) {
        --watch->heapBlocks;
        const auto *bytes = static_cast<const unsigned char *>(block);
        bool known = block == watch->lastBlock;
        watch->unwiped += known && std::any_of(bytes, bytes + watch->lastSize, [](auto b) { return b != 0; }) ? 1 : 0;
    }
    __real_free(block);
}

int __wrap_printf(const char *format, ...)
{
    va_list values;
    va_start(values, format);
    JniWatch *watch = JniWatch::current();
    char text[1024];
    // The analyzer loses sight of va_start when it has read other files before this one.
    int length = std::vsnprintf(text, sizeof text, format, values); // NOLINT(clang-analyzer-valist.Uninitialized)
    va_end(values);
    if (watch != nullptr) {
        watch->printed += text;
    } else if (!isQuiet) {
        std::cout << text << std::flush;
    }
    return length;
}
