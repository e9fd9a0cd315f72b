#include "StopSignalLog.h"

#include <semaphore.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <system_error>

#include "IOsUtilsFactory.h"
#include "ISystemUtils.h"
#include "LauncherException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "StopSignals.h"

namespace {

constexpr wchar_t kClass[] = L"LinuxStopRequestListener";

struct SignalCount {
    int number;
    const wchar_t* text;
    std::atomic<unsigned> unwritten{0};
};

static_assert(std::atomic<unsigned>::is_always_lock_free, "the signal handler counts");

// What rose and is not yet in the log, in the order in which the kernel delivers
// what comes together.
std::array<SignalCount, 3> counts{{{SIGINT, L"SIGINT has risen"},
                                   {SIGUSR1, L"SIGUSR1 has risen"},
                                   {SIGUSR2, L"SIGUSR2 has risen"}}};

// Held while counts become records; never by a signal handler.
std::timed_mutex writeMutex;

/// Wakes the writer. Never destroyed: a handler may post it at any time.
sem_t* wakeUps()
{
    static sem_t* const semaphore = [] {
        auto* made = new sem_t;
        sem_init(made, 0, 0);
        return made;
    }();
    return semaphore;
}

// wakeUps() for the handler, which cannot run a static's initialisation.
std::atomic<sem_t*> handlerWakeUps{nullptr};

/// Requires writeMutex.
void writeCounts()
{
    for (SignalCount& count : counts) {
        for (unsigned left = count.unwritten.exchange(0); left > 0; --left) {
            logInfo({kClass, L"onStopSignal"}, count.text);
        }
    }
}

/// Starts `body` on a thread that takes no signals.
template <typename Body>
std::thread startWithoutSignals(Body body)
{
    const sigset_t all = allSignalsButFaults();
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        std::thread thread(body);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        return thread;
    } catch (const std::system_error& e) {
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        errno = e.code().value();
        const std::wstring error = getOsUtilsFactory().getSystemUtils().getLastErrorText();
        throw LauncherException(exit_code::kOperatingSystem,
                                formatMessage(IDS_CANNOT_START_WAITING_FOR_STOP_SIGNAL, error));
    }
}

}  // namespace

StopSignalLog::StopSignalLog()
{
    handlerWakeUps.store(wakeUps(), std::memory_order_release);
    writer_ = startWithoutSignals([this] { writeUntilStopped(); });
}

StopSignalLog::~StopSignalLog()
{
    stopped_.store(true, std::memory_order_release);
    sem_post(wakeUps());
    writer_.join();
}

void StopSignalLog::count(int signalNumber) noexcept
{
    for (SignalCount& count : counts) {
        if (count.number == signalNumber) count.unwritten.fetch_add(1);
    }
    if (sem_t* semaphore = handlerWakeUps.load(std::memory_order_acquire)) sem_post(semaphore);
}

void StopSignalLog::drain(std::chrono::milliseconds patience)
{
    const std::unique_lock lock(writeMutex, patience);
    if (lock) writeCounts();
}

void StopSignalLog::writeUntilStopped()
{
    bool stopped = false;
    while (!stopped) {
        sem_wait(wakeUps());
        stopped = stopped_.load(std::memory_order_acquire);
        const std::lock_guard lock(writeMutex);
        writeCounts();
        getLogger().flush();  // nothing more may be written for long
    }
}
