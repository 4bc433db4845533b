#include "hosts/com/apartment.h"

#include <atomic>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>

#include "platform/errors.h"
#include "platform/win32_calls.h"

namespace vantrel::hosts::com {

using platform::Handle;
using platform::Milliseconds;

namespace {

Handle newEvent() { return Handle(::CreateEventW(nullptr, TRUE, FALSE, nullptr)); }

}  // namespace

struct Apartment::Task {
    std::function<void()> work;
    std::exception_ptr failure;
    std::atomic<bool> over = false;
    Handle ended = newEvent();
};

/// Shared with the thread, which may outlive the apartment.
struct Apartment::Queue {
    std::mutex mutex;
    std::deque<std::function<void()>> work;
    bool closed = false;
    std::atomic<DWORD> thread = 0;
    Handle wakeUp{::CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    Handle ended = newEvent();

    void add(std::function<void()> one) {
        const std::scoped_lock lock(mutex);
        work.push_back(std::move(one));
        ::SetEvent(wakeUp.get());
    }
    std::function<void()> next() {
        const std::scoped_lock lock(mutex);
        if (work.empty()) return {};
        auto one = std::move(work.front());
        work.pop_front();
        return one;
    }
};

Apartment::Apartment(PumpedWait wait) : wait_(std::move(wait)), queue_(std::make_shared<Queue>()) {
    std::thread([queue = queue_] { live(queue); }).detach();
}

Apartment::~Apartment() {
    {
        const std::scoped_lock lock(queue_->mutex);
        queue_->closed = true;
        ::SetEvent(queue_->wakeUp.get());
    }
    constexpr DWORD kLongest = 5000;
    if (!hangs() && !isHere()) ::WaitForSingleObject(queue_->ended.get(), kLongest);
}

void Apartment::live(const std::shared_ptr<Queue>& queue) {
    queue->thread = ::GetCurrentThreadId();
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    for (bool closed = false; !closed;) {
        const HANDLE wakeUp = queue->wakeUp.get();
        ::MsgWaitForMultipleObjectsEx(1, &wakeUp, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        MSG message{};
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
        while (const auto work = queue->next()) work();
        const std::scoped_lock lock(queue->mutex);
        closed = queue->closed && queue->work.empty();
    }
    ::CoUninitialize();
    ::SetEvent(queue->ended.get());
}

/// The last object may go there.
bool Apartment::isHere() const { return queue_->thread == ::GetCurrentThreadId(); }

bool Apartment::hangs() const { return givenUp_ && !givenUp_->over; }

void Apartment::post(std::function<void()> work) { queue_->add(std::move(work)); }

void Apartment::run(const std::string& what, Milliseconds timeOut, std::function<void()> work) {
    const auto gone = [&](const char* why) {
        return platform::AutomationError(platform::error_number::kServerIsGone, "Vantrel", what + why);
    };
    if (hangs()) throw gone(" can't be asked: another member of its kind hangs");
    const auto task = std::make_shared<Task>();
    task->work = std::move(work);
    queue_->add([task] {
        try {
            task->work();
        } catch (...) {
            task->failure = std::current_exception();
        }
        task->work = nullptr;
        task->over = true;
        ::SetEvent(task->ended.get());
    });
    const auto outcome =
        wait_.until([&] { return task->over.load(); }, timeOut,
                    [&](Milliseconds atMost) {
                        ::WaitForSingleObject(task->ended.get(), static_cast<DWORD>(atMost.count()));
                        return true;
                    });
    if (outcome != PumpedWait::Outcome::kDone) {
        givenUp_ = task;
        throw gone(" doesn't answer");
    }
    if (task->failure) std::rethrow_exception(task->failure);
}

}  // namespace vantrel::hosts::com
