#include "framework/crash/SignalNames.h"

#include <array>
#include <csignal>
#include <cstring>

namespace {

struct Cause {
    int signal;
    int code;
    const char* text;
};

constexpr Cause causes[] = {
    {SIGSEGV, SEGV_MAPERR, "nothing is mapped at the address"},
    {SIGSEGV, SEGV_ACCERR, "the memory at the address does not allow it"},
    {SIGSEGV, SI_KERNEL, "no valid address"},
    {SIGBUS, BUS_ADRALN, "the address is not aligned"},
    {SIGBUS, BUS_ADRERR, "no memory at the address, or its file has become shorter"},
    {SIGBUS, BUS_OBJERR, "an error of the hardware"},
    {SIGFPE, FPE_INTDIV, "integer division by zero"},
    {SIGFPE, FPE_INTOVF, "integer overflow"},
    {SIGFPE, FPE_FLTDIV, "floating-point division by zero"},
    {SIGILL, ILL_ILLOPC, "illegal opcode"},
    {SIGILL, ILL_ILLOPN, "illegal operand"},
    {SIGTRAP, TRAP_BRKPT, "a breakpoint of the program"},
    {SIGTRAP, SI_KERNEL, "a breakpoint of the program"},
};

} // namespace

std::string signalName(int signal) {
    const char* const name = ::sigabbrev_np(signal);
    const char* const text = ::sigdescr_np(signal);
    if (name == nullptr || text == nullptr)
        return "signal " + std::to_string(signal);
    return std::string("SIG").append(name).append(" (").append(text).append(")");
}

std::string signalCause(int signal, int code) {
    for (const Cause& each : causes) {
        if (each.signal == signal && each.code == code)
            return each.text;
    }
    if (code == SI_TKILL)
        return "sent by the program itself";
    return code <= 0 ? "sent by a process" : "code " + std::to_string(code);
}
