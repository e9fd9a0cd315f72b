#include "StopRequestListener.h"

#include <unistd.h>

#include <csignal>
#include <thread>

#include "LinuxStopRequestListener.h"
#include "StopSignalLog.h"
#include "StopSignals.h"
#include "UnitTest.h"

namespace {

/// A listener of the process, with its records kept.
class StopRequestListenerTest : public UnitTest {
protected:
    void renewListener()
    {
        listener_ = nullptr;
        listener_ = createStopRequestListener(getpid());
    }
    [[nodiscard]] std::ptrdiff_t risesOf(const std::wstring& signal) const
    {
        StopSignalLog::drain(std::chrono::seconds(60));
        return log_.count(L"INFO LinuxStopRequestListener.onStopSignal: " + signal + L" has risen");
    }

    std::shared_ptr<StopRequestListener> listener_ = createStopRequestListener(getpid());
};

TEST_F(StopRequestListenerTest, GivesEachKindOnceInTheOrderOfRequestAndLogsItsSignalBefore)
{
    const std::pair<std::vector<int>, std::vector<int>> cases[] = {
        {{SIGINT}, {kSimpleStop}},
        {{SIGUSR1, SIGINT, SIGUSR2, SIGUSR1}, {kSimpleStop, kFastStop, kNoStopEvent}},
        {{SIGUSR2, SIGUSR1}, {kFastStop, kSimpleStop, kNoStopEvent}},
    };
    for (const auto& [signals, events] : cases) {
        for (const int signal : signals) raise(signal);
        for (const int event : events) EXPECT_EQ(listener_->waitForEvent(), event);
        renewListener();
        EXPECT_NE(log_.lines().back().find(L"waitForEvent"), std::wstring::npos);
    }
}

TEST_F(StopRequestListenerTest, LetsASimpleStopPassAFastOneOnAnotherThread)
{
    int passed = 0;
    for (int round = 1; round <= 20; ++round) {
        std::thread other([] { raise(SIGUSR2); });
        while (risesOf(L"SIGUSR2") < round) std::this_thread::yield();
        raise(SIGUSR1);
        other.join();
        if (listener_->waitForEvent() == kSimpleStop) ++passed;
        renewListener();
    }
    EXPECT_GT(passed, 10);  // unless this thread has lost the processor meanwhile
}

TEST_F(StopRequestListenerTest, IgnoresForeignSignalsWhileItWaits)
{
    struct sigaction action {};  // without SA_RESTART
    action.sa_handler = [](int) {};
    sigaction(SIGPROF, &action, nullptr);
    std::thread waiter([this] { EXPECT_EQ(listener_->waitForEvent(), kFastStop); });
    // Directed at the waiter: pending there, where it would end the wait.
    for (int i = 0; i < 200; ++i) {
        pthread_kill(waiter.native_handle(), SIGPROF);
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    postStopRequest(true);
    waiter.join();
}

TEST_F(StopRequestListenerTest, LogsEveryRiseAlsoOnesThatMeetOrFollowItsEnd)
{
    constexpr int kRounds = 2000;
    // raise() runs the handler before it returns: none is lost.
    std::thread raiser([] {
        for (int i = 0; i < kRounds; ++i) raise(SIGUSR1);
    });
    for (int i = 0; i < kRounds; ++i) {
        errno = 4711;
        raise(SIGINT);
        ASSERT_EQ(errno, 4711);
        renewListener();  // the raiser may be inside the one that goes
    }
    raiser.join();
    std::thread([] { InterruptHold().hold(); }).join();  // which puts the action back
    listener_ = nullptr;
    raise(SIGINT);
    EXPECT_EQ(postStopRequest(true), 0);
    EXPECT_EQ(risesOf(L"SIGUSR1"), kRounds);
    EXPECT_EQ(risesOf(L"SIGINT"), kRounds + 1);
}

}  // namespace
