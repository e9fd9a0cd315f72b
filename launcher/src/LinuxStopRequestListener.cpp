#include "LinuxStopRequestListener.h"

#include <cerrno>
#include <csignal>
#include <ctime>

#include "IOsUtilsFactory.h"
#include "ISystemUtils.h"
#include "LauncherException.h"
#include "Log.h"
#include "MessageCatalogue.h"
#include "MessageIds.h"
#include "StopRequestListener.h"
#include "StopSignals.h"

namespace {

/// Runs on any thread, between any two instructions: only what is
/// async-signal-safe. StopSignalLog writes the records.
extern "C" void onStopSignal(int signalNumber)
{
    const int savedErrno = errno;
    StopSignalLog::count(signalNumber);
    postStopSignal(signalNumber == SIGUSR2);
    errno = savedErrno;
}

[[noreturn]] void raiseCannotStartWaiting()
{
    const std::wstring error = getOsUtilsFactory().getSystemUtils().getLastErrorText();
    throw LauncherException(exit_code::kOperatingSystem,
                            formatMessage(IDS_CANNOT_START_WAITING_FOR_STOP_SIGNAL, error));
}

/// Keeps all signals but the stop signals off the calling thread for a scope,
/// so that other threads take them: a foreign handler without SA_RESTART would
/// end the wait.
class OnlyStopSignals final {
public:
    OnlyStopSignals()
    {
        sigset_t others = allSignalsButFaults();
        for (const int open : kStopSignals) sigdelset(&others, open);
        pthread_sigmask(SIG_BLOCK, &others, &before_);
    }
    ~OnlyStopSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    OnlyStopSignals(const OnlyStopSignals&) = delete;
    OnlyStopSignals& operator=(const OnlyStopSignals&) = delete;

private:
    sigset_t before_{};
};

}  // namespace

LinuxStopRequestListener::LinuxStopRequestListener()
{
    if (sem_init(&semaphore_, 0, 0) != 0) raiseCannotStartWaiting();
}

LinuxStopRequestListener::~LinuxStopRequestListener()
{
    sem_destroy(&semaphore_);
}

void LinuxStopRequestListener::takeSignals()
{
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    action.sa_flags = SA_RESTART;
    action.sa_mask = stopSignalSet();  // none on top of another
    for (const int signalNumber : kStopSignals) {
        if (sigaction(signalNumber, &action, nullptr) != 0) raiseCannotStartWaiting();
    }
}

int LinuxStopRequestListener::signal(bool fast)
{
    std::atomic<bool>& requested = fast ? fastStopRequested_ : simpleStopRequested_;
    if (requested.load()) return 0;
    noteRequest(fast ? kFastStop : kSimpleStop);
    return requested.exchange(true) ? 0 : sem_post(&semaphore_);
}

int LinuxStopRequestListener::signalFromHandler(bool fast)
{
    // Of signals that come together the kernel delivers SIGUSR1 first, but perhaps
    // to another thread, which may not have got to its handler yet.
    constexpr timespec kHeadStart{0, 10'000'000};
    if (fast && !fastStopRequested_.load()) nanosleep(&kHeadStart, nullptr);
    return signal(fast);
}

int LinuxStopRequestListener::signalEnd()
{
    noteRequest(kSimpleStop);
    simpleStopRequested_.store(true);
    return sem_post(&semaphore_);
}

int LinuxStopRequestListener::waitForEvent()
{
    if (fastStopGiven_ && simpleStopGiven_) return kNoStopEvent;
    {
        const OnlyStopSignals mask;
        sem_wait(&semaphore_);
    }
    StopSignalLog::drain();  // the signal comes before what it has ended
    const StopEvent event = takeEvent();
    logInfo({L"LinuxStopRequestListener", L"waitForEvent"}, L"Wait finished", L"stopType",
            event == kFastStop ? L"stop fast" : L"simple stop");
    return event;
}

void LinuxStopRequestListener::noteRequest(StopEvent kind)
{
    int none = kNoStopEvent;
    firstRequest_.compare_exchange_strong(none, kind);
}

StopEvent LinuxStopRequestListener::takeEvent()
{
    const bool fastPending = fastStopRequested_.load() && !fastStopGiven_;
    const bool simplePending = simpleStopRequested_.load() && !simpleStopGiven_;
    const bool fast = fastPending && (!simplePending || firstRequest_.load() == kFastStop);
    if (fast) {
        fastStopGiven_ = true;
        return kFastStop;
    }
    simpleStopGiven_ = simpleStopGiven_ || simplePending;
    return kSimpleStop;
}
