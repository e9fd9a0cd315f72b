#include "NativeThread.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

#include "IOsUtilsFactory.h"
#include "ISystemUtils.h"
#include "LauncherOsException.h"
#include "StackEnd.h"

namespace {

using Body = std::function<void()>;

void runBody(void* argument)
{
    const std::unique_ptr<Body> body(static_cast<Body*>(argument));
    (*body)();
}

extern "C" void* runThread(void* argument)
{
    callAtStackEnd(runBody, argument);
    return nullptr;
}

/// The attributes of a thread, valid for a scope.
class ThreadAttributes final {
public:
    ThreadAttributes() { pthread_attr_init(&attributes_); }
    ~ThreadAttributes() { pthread_attr_destroy(&attributes_); }
    ThreadAttributes(const ThreadAttributes&) = delete;
    ThreadAttributes& operator=(const ThreadAttributes&) = delete;

    pthread_attr_t* get() { return &attributes_; }

private:
    pthread_attr_t attributes_{};
};

std::size_t roundUpToPage(std::size_t size)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (size + page - 1) / page * page;
}

}  // namespace

void startDetachedThread(std::function<void()> body, std::size_t stackSize)
{
    ThreadAttributes attributes;
    pthread_attr_setdetachstate(attributes.get(), PTHREAD_CREATE_DETACHED);
    std::size_t defaultSize = 0;
    pthread_attr_getstacksize(attributes.get(), &defaultSize);
    if (stackSize > defaultSize) {
        pthread_attr_setstacksize(attributes.get(), roundUpToPage(stackSize));
    }

    auto argument = std::make_unique<Body>(std::move(body));
    pthread_t thread{};
    errno = pthread_create(&thread, attributes.get(), runThread, argument.get());
    if (errno != 0) {
        const std::wstring error = getOsUtilsFactory().getSystemUtils().getLastErrorText();
        throw LauncherOsException(L"Cannot start a thread. Error: " + error);
    }
    static_cast<void>(argument.release());  // runThread owns it now
}
