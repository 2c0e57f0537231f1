#include "platform/crash/CrashContext.h"

#include "platform/crash/CrashWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <execinfo.h>
#include <string_view>

namespace platform {

namespace {

// An endless recursion has millions; its first hundreds tell it.
std::array<void*, 600> frames{}; // only one thread dies

struct Register {
    std::string_view name;
    int index;
};

#if defined(__x86_64__)
constexpr Register registers[] = {
    {"rip", REG_RIP}, {"rsp", REG_RSP}, {"rbp", REG_RBP}, {"rax", REG_RAX}, {"rbx", REG_RBX},
    {"rcx", REG_RCX}, {"rdx", REG_RDX}, {"rsi", REG_RSI}, {"rdi", REG_RDI}, {"r8", REG_R8},
    {"r9", REG_R9},   {"r10", REG_R10}, {"r11", REG_R11}, {"r12", REG_R12}, {"r13", REG_R13},
    {"r14", REG_R14}, {"r15", REG_R15}, {"efl", REG_EFL}, {"err", REG_ERR}, {"trapno", REG_TRAPNO},
};
#endif

} // namespace

#if defined(__x86_64__)

std::uint64_t CrashContext::programCounter() const noexcept {
    return static_cast<std::uint64_t>(context_.uc_mcontext.gregs[REG_RIP]);
}

std::uint64_t CrashContext::stackPointer() const noexcept {
    return static_cast<std::uint64_t>(context_.uc_mcontext.gregs[REG_RSP]);
}

void CrashContext::writeRegisters(CrashWriter& out) const noexcept {
    for (const Register& each : registers)
        out.text("register ")
            .text(each.name)
            .text(" ")
            .hex(static_cast<std::uint64_t>(context_.uc_mcontext.gregs[each.index]))
            .endLine();
}

void CrashContext::returnToCaller() const noexcept {
    auto& stack = context_.uc_mcontext.gregs[REG_RSP];
    context_.uc_mcontext.gregs[REG_RIP] = *std::bit_cast<const greg_t*>(stack);
    stack += static_cast<greg_t>(sizeof(greg_t));
}

#elif defined(__aarch64__)

std::uint64_t CrashContext::programCounter() const noexcept {
    return context_.uc_mcontext.pc;
}

std::uint64_t CrashContext::stackPointer() const noexcept {
    return context_.uc_mcontext.sp;
}

void CrashContext::writeRegisters(CrashWriter& out) const noexcept {
    const auto write = [&out](std::string_view name, std::uint64_t value) {
        out.text("register ").text(name).text(" ").hex(value).endLine();
    };
    write("pc", context_.uc_mcontext.pc);
    write("sp", context_.uc_mcontext.sp);
    for (int i = 0; i < 31; ++i) {
        out.text("register x").decimal(i).text(" ").hex(context_.uc_mcontext.regs[i]).endLine();
    }
}

void CrashContext::returnToCaller() const noexcept {
    constexpr std::size_t linkRegister = 30;
    context_.uc_mcontext.pc = context_.uc_mcontext.regs[linkRegister];
}

#endif

/// A call through a bad pointer: no function is known there, so that the way back would be lost.
bool CrashContext::isCallOfNothing() const noexcept {
    return info_.si_signo == SIGSEGV && info_.si_code > 0 &&
           reinterpret_cast<std::uint64_t>(info_.si_addr) == programCounter();
}

void CrashContext::writeFrames(CrashWriter& out) const noexcept {
    std::uint64_t innermost = programCounter();
    out.text("frame ").hex(programCounter()).endLine();
    out.flush(); // whatever comes of the rest
    const mcontext_t state = context_.uc_mcontext;
    const bool isLost = isCallOfNothing();
    if (isLost) {
        returnToCaller();
        innermost = programCounter();
    }
    const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
    context_.uc_mcontext = state;
    const auto end = frames.begin() + std::max(count, 0);
    auto next = std::find_if(frames.begin(), end, [innermost](const void* frame) {
        return reinterpret_cast<std::uint64_t>(frame) == innermost; // behind the handler's own
    });
    if (next != end && !isLost)
        ++next;
    for (; next != end; ++next)
        out.text("frame ").hex(reinterpret_cast<std::uint64_t>(*next)).endLine();
    if (end == frames.end())
        out.text("more").endLine();
}

} // namespace platform
