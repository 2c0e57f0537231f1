#include "platform/crash/AlternateStack.h"

#include "platform/crash/Sanitizers.h"

#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <memory>
#include <new>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace platform {

namespace {

// The registers of the largest processors take 11 KiB, twice when the handler itself fails.
constexpr std::size_t stackSize = std::size_t{1} << 16U;
constexpr std::size_t guardSize = std::size_t{1} << 12U; // below it

bool hasOne() noexcept {
    stack_t current{};
    return ::sigaltstack(nullptr, &current) == 0 && (current.ss_flags & SS_DISABLE) == 0;
}

} // namespace

AlternateStack::AlternateStack() noexcept {
    if (hasOne())
        return;
    void* const memory = ::mmap(nullptr, guardSize + stackSize, PROT_READ | PROT_WRITE,
                                MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED)
        return;
    memory_ = memory;
    ::mprotect(memory, guardSize, PROT_NONE);
    stack_t stack{};
    stack.ss_sp = static_cast<char*>(memory) + guardSize;
    stack.ss_size = stackSize;
    ::sigaltstack(&stack, nullptr);
}

AlternateStack::~AlternateStack() {
    if (memory_ == nullptr)
        return;
    stack_t none{};
    none.ss_flags = SS_DISABLE;
    ::sigaltstack(&none, nullptr);
    ::munmap(memory_, guardSize + stackSize);
}

} // namespace platform

#ifndef TONVALE_SANITIZED // they have their own

namespace {

using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

struct Body {
    void* (*run)(void*);
    void* argument;
};

void* runOnTwoStacks(void* started) {
    Body body{};
    {
        const std::unique_ptr<Body> owned(static_cast<Body*>(started));
        body = *owned;
    }
    const platform::AlternateStack stack;
    return body.run(body.argument);
}

Create libraryCreate() noexcept {
    static const auto create = reinterpret_cast<Create>(::dlsym(RTLD_NEXT, "pthread_create"));
    return create;
}

} // namespace

/// What all libraries of the process call: the program's symbols are found first.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*run)(void*), void* argument) noexcept {
    const Create create = libraryCreate();
    if (create == nullptr)
        return EAGAIN;
    std::unique_ptr<Body> body(new (std::nothrow) Body{run, argument});
    if (!body)
        return create(thread, attributes, run, argument);
    const int error = create(thread, attributes, &runOnTwoStacks, body.get());
    if (error == 0) {
        [[maybe_unused]] const auto* const handedOver = body.release();
    }
    return error;
}

#endif
