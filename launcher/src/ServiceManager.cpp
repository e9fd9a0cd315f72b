#include "ServiceManager.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "FileDescriptor.h"
#include "IOsUtilsFactory.h"
#include "ISystemUtils.h"
#include "Log.h"
#include "TextConversion.h"

namespace {

constexpr wchar_t kClass[] = L"ServiceManager";
constexpr timeval kPatience{5, 0};

std::string environmentVariable(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

/// False with errno, also for an address that is none; see unix(7).
bool sendTo(const std::string& address, const std::string& message)
{
    sockaddr_un socketAddress{};
    socketAddress.sun_family = AF_UNIX;
    const bool isPath = address.front() == '/';
    errno = EINVAL;
    if (!isPath && address.front() != '@') return false;
    errno = ENAMETOOLONG;
    if (address.size() + (isPath ? 1 : 0) > sizeof socketAddress.sun_path) return false;
    std::copy(address.begin(), address.end(), socketAddress.sun_path);
    if (!isPath) socketAddress.sun_path[0] = '\0';

    const FileDescriptor descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!descriptor.isOpen()) return false;
    setsockopt(descriptor.get(), SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
    const auto size =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + address.size() + (isPath ? 1 : 0));
    ssize_t sent = -1;
    do {
        sent = sendto(descriptor.get(), message.data(), message.size(), MSG_NOSIGNAL,
                      reinterpret_cast<const sockaddr*>(&socketAddress), size);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

}  // namespace

ServiceManager::ServiceManager() : address_(environmentVariable("NOTIFY_SOCKET"))
{
    if (address_.empty()) return;
    isListening_ = true;
    const std::string ready = environmentVariable("LAUNCHER_READY");
    awaitsReadiness_ = ready != "service";
    if (awaitsReadiness_ && !ready.empty()) {
        logWarn({kClass, L"ServiceManager"}, L"LAUNCHER_READY can only be: service",
                L"LAUNCHER_READY", toWide(ready));
    }
}

void ServiceManager::tell(const std::string& message)
{
    if (!isListening_ || sendTo(address_, message)) return;
    const std::wstring error = getOsUtilsFactory().getSystemUtils().getLastErrorText();
    if (!isListening_.exchange(false)) return;
    logWarn({kClass, L"tell"}, L"The service manager cannot be told", L"address", toWide(address_),
            L"Error", error);
}
