#include "ServiceManager.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>

#include "FileDescriptor.h"
#include "IOsUtilsFactory.h"
#include "ISystemUtils.h"
#include "Log.h"
#include "TextConversion.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr wchar_t kClass[] = L"ServiceManager";
constexpr std::chrono::seconds kPatience{5};

std::string environmentVariable(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

std::wstring lastErrorText()
{
    return getOsUtilsFactory().getSystemUtils().getLastErrorText();
}

/// As unix(7) has it; 0 with errno for an address that is none.
socklen_t toSocketAddress(const std::string& address, sockaddr_un& socketAddress)
{
    const bool isPath = address.front() == '/';
    errno = EINVAL;
    if (!isPath && address.front() != '@') return 0;
    const std::size_t size = address.size() + (isPath ? 1 : 0);
    errno = ENAMETOOLONG;
    if (size > sizeof socketAddress.sun_path) return 0;
    socketAddress.sun_family = AF_UNIX;
    std::copy(address.begin(), address.end(), socketAddress.sun_path);
    if (!isPath) socketAddress.sun_path[0] = '\0';
    return static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + size);
}

/// Gives the error's text; empty when the message was sent.
std::wstring sendTo(const std::string& address, const std::string& message, bool mayWait)
{
    sockaddr_un socketAddress{};
    const socklen_t size = toSocketAddress(address, socketAddress);
    if (size == 0) return lastErrorText();
    const FileDescriptor descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!descriptor.isOpen()) return lastErrorText();
    const timeval patience{kPatience.count(), 0};
    setsockopt(descriptor.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    const int flags = mayWait ? MSG_NOSIGNAL : MSG_NOSIGNAL | MSG_DONTWAIT;
    const Clock::time_point deadline = Clock::now() + kPatience;
    for (;;) {
        if (sendto(descriptor.get(), message.data(), message.size(), flags,
                   reinterpret_cast<const sockaddr*>(&socketAddress), size) >= 0) {
            return {};
        }
        if (errno != EINTR || Clock::now() >= deadline) return lastErrorText();
    }
}

}  // namespace

ServiceManager::ServiceManager() : address_(environmentVariable("NOTIFY_SOCKET"))
{
    if (address_.empty()) return;
    const std::string ready = environmentVariable("LAUNCHER_READY");
    awaitsReadiness_ = ready != "service";
    if (awaitsReadiness_ && !ready.empty()) {
        logWarn({kClass, L"ServiceManager"}, L"Unknown value of LAUNCHER_READY", L"value",
                toWide(ready), L"expected", L"service");
    }
}

void ServiceManager::tell(const std::string& message)
{
    if (address_.empty()) return;
    const bool mayWait = !hasFailed_.load(std::memory_order_relaxed);
    const std::wstring error = sendTo(address_, message, mayWait);
    if (error.empty() || hasFailed_.exchange(true, std::memory_order_relaxed)) return;
    logWarn({kClass, L"tell"}, L"Cannot notify the service manager", L"address", toWide(address_),
            L"Error", error);
}
