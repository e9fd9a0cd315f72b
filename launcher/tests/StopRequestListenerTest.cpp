#include "StopRequestListener.h"

#include <semaphore.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "ChildProcesses.h"
#include "LinuxStopRequestListener.h"
#include "StopSignalLog.h"
#include "StopSignals.h"
#include "UnitTest.h"

namespace {

/// A listener of the process, with its records kept.
class StopRequestListenerTest : public UnitTest {
protected:
    [[nodiscard]] std::ptrdiff_t risesOf(const std::wstring& signal) const
    {
        StopSignalLog::drain(std::chrono::seconds(60));
        return log_.count(L"INFO LinuxStopRequestListener.onStopSignal: " + signal + L" has risen");
    }

    std::shared_ptr<StopRequestListener> listener_ = createStopRequestListener(getpid());
};

TEST_F(StopRequestListenerTest, GivesEachKindOnceInTheOrderOfRequest)
{
    const std::pair<std::vector<int>, std::vector<int>> cases[] = {
        {{SIGUSR1, SIGINT, SIGUSR2, SIGUSR1}, {kSimpleStop, kFastStop, kNoStopEvent}},
        {{SIGUSR2, SIGUSR1}, {kFastStop, kSimpleStop, kNoStopEvent}},
    };
    for (const auto& [signals, events] : cases) {
        for (const int signal : signals) raise(signal);
        for (const int event : events) EXPECT_EQ(listener_->waitForEvent(), event);
        listener_ = nullptr;
        listener_ = createStopRequestListener(getpid());
    }
}

TEST_F(StopRequestListenerTest, KeepsTheOrderOfSignalsThatMeetSeveralThreads)
{
    sem_t done;
    sem_init(&done, 0, 0);
    std::thread idle([&done] { sem_wait(&done); });  // may take a signal, too
    int wrong = 0;
    for (int round = 0; round < 200; ++round) {
        const pid_t sender = fork();
        if (sender == 0) {
            usleep(200);  // until somebody waits
            kill(getppid(), SIGUSR1);
            kill(getppid(), SIGUSR2);
            _exit(0);
        }
        const int first = listener_->waitForEvent(), second = listener_->waitForEvent();
        if (first != kSimpleStop || second != kFastStop) ++wrong;
        EXPECT_EQ(ChildProcesses::waitForExit(sender), 0);
        listener_ = nullptr;
        listener_ = createStopRequestListener(getpid());
    }
    EXPECT_LE(wrong, 1);  // a thread may lose the processor right before its handler
    sem_post(&done);
    idle.join();
    sem_destroy(&done);
}

TEST_F(StopRequestListenerTest, LogsTheSignalBeforeTheEndOfTheWait)
{
    Texts records;
    for (int round = 0; round < 200; ++round) {
        raise(SIGUSR1);
        EXPECT_EQ(listener_->waitForEvent(), kSimpleStop);
        const std::wstring start = L"INFO LinuxStopRequestListener.";
        records.push_back(start + L"onStopSignal: SIGUSR1 has risen");
        records.push_back(start + L"waitForEvent: Wait finished stopType=simple stop");
        listener_ = nullptr;
        listener_ = createStopRequestListener(getpid());
    }
    EXPECT_EQ(log_.lines(), records);
}

TEST_F(StopRequestListenerTest, IgnoresForeignSignalsWhileItWaits)
{
    struct sigaction action {};  // without SA_RESTART
    action.sa_handler = [](int) {};
    sigaction(SIGPROF, &action, nullptr);
    std::atomic<bool> woken{false};
    std::thread waiter([&] {
        EXPECT_EQ(listener_->waitForEvent(), kFastStop);
        woken = true;
    });
    // Directed at the waiter: pending there, where it would end the wait.
    for (int i = 0; i < 200; ++i) {
        pthread_kill(waiter.native_handle(), SIGPROF);
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    EXPECT_FALSE(woken);
    postStopRequest(true);
    waiter.join();
}

TEST_F(StopRequestListenerTest, LogsEveryRiseWithoutHangingInAStorm)
{
    constexpr int kRounds = 2000;
    // raise() runs the handler before it returns: none is lost.
    std::thread raiser([] {
        for (int i = 0; i < kRounds; ++i) raise(SIGUSR1);
    });
    for (int i = 0; i < kRounds; ++i) {
        logInfo({L"Test", L"main"}, L"busy");
        errno = 4711;
        raise(i % 2 == 0 ? SIGUSR2 : SIGINT);
        ASSERT_EQ(errno, 4711);
    }
    raiser.join();
    EXPECT_EQ(risesOf(L"SIGUSR1"), kRounds);
    EXPECT_EQ(risesOf(L"SIGUSR2"), kRounds / 2);
    EXPECT_EQ(risesOf(L"SIGINT"), kRounds / 2);
}

TEST_F(StopRequestListenerTest, CountsSignalsThatComeAfterItsEnd)
{
    constexpr int kRounds = 2000;
    std::atomic<bool> raised{false};
    std::thread raiser([&raised] {
        for (int i = 0; i < kRounds; ++i) raise(SIGUSR1);
        raised = true;
    });
    while (!raised) {
        listener_ = nullptr;  // the handler may be inside the one that goes
        listener_ = createStopRequestListener(getpid());
    }
    raiser.join();
    listener_ = nullptr;
    raise(SIGINT);
    EXPECT_EQ(postStopRequest(true), 0);
    EXPECT_EQ(risesOf(L"SIGUSR1"), kRounds);
    EXPECT_EQ(risesOf(L"SIGINT"), 1);
}

using InterruptHoldTest = UnitTest;

TEST_F(InterruptHoldTest, KeepsOnlyInterruptsPendingUntilTheyAreDelivered)
{
    std::signal(SIGINT, SIG_DFL);
    {
        InterruptHold hold;
        hold.hold();
    }
    EXPECT_EQ(std::signal(SIGINT, SIG_DFL), SIG_DFL);

    const auto listener = createStopRequestListener(getpid());
    const sigset_t all = stopSignalSet();
    pthread_sigmask(SIG_BLOCK, &all, nullptr);  // as a parent may have left it
    InterruptHold hold;
    hold.hold();
    struct sigaction held {};
    sigaction(SIGINT, nullptr, &held);
    EXPECT_EQ(held.sa_handler, SIG_IGN);  // which HotSpot looks for
    kill(getpid(), SIGINT);
    raise(SIGUSR2);
    EXPECT_EQ(listener->waitForEvent(), kFastStop);
    hold.deliver();
    EXPECT_EQ(listener->waitForEvent(), kSimpleStop);
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    for (const int number : kStopSignals) EXPECT_EQ(sigismember(&mask, number), 0);
}

}  // namespace
