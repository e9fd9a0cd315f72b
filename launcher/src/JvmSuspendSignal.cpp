#include "JvmSuspendSignal.h"

#include <csignal>
#include <cstdlib>

namespace {

constexpr char kVariable[] = "_JAVA_SR_SIGNUM";

/// SIGSTKFLT: no kernel raises it, and nothing else in a JVM uses it.
constexpr char kSignal[] = "16";

/// 62 is taken by HotSpot otherwise: its samplers get nothing with it.
constexpr long kUnusableSignal = 62;

/// True for a signal that HotSpot accepts (above SIGSEGV, see its
/// signals_posix.cpp) and that does not collide with our stop signals.
bool isUsable(const char* text)
{
    char* end = nullptr;
    const long number = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || number <= SIGSEGV || number >= NSIG) return false;
    return number != SIGUSR2 && number != kUnusableSignal;
}

}  // namespace

JvmSuspendSignal::JvmSuspendSignal()
{
    const char* const value = std::getenv(kVariable);
    if (value) before_ = value;
    if (!value || !isUsable(value)) setenv(kVariable, kSignal, 1);
}

JvmSuspendSignal::~JvmSuspendSignal()
{
    if (before_) {
        setenv(kVariable, before_->c_str(), 1);
    } else {
        unsetenv(kVariable);
    }
}
