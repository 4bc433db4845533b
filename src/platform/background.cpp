#include "platform/background.h"

#include <atomic>
#include <exception>
#include <semaphore>
#include <thread>

namespace vantrel::platform {

namespace {

constexpr Milliseconds kBetweenLooks{10};
constexpr Milliseconds kAlone{20};  // work that is over by then lets no other handler in

}  // namespace

struct BackgroundThreads::Task {
    std::atomic<bool> over = false;
    std::function<void()> work;
    std::function<void()> done;
    std::weak_ptr<void> heard;
    std::jthread thread;  // last: it ends before the rest goes
};

BackgroundThreads::~BackgroundThreads() = default;

BackgroundWork BackgroundThreads::run(std::function<void()> work, std::function<void()> done) {
    const auto heard = std::make_shared<int>();
    const auto task = std::make_shared<Task>();
    task->work = std::move(work);
    task->done = std::move(done);
    task->heard = heard;
    tasks_.push_back(task);
    task->thread = std::jthread([raw = task.get()] {
        raw->work();
        raw->work = nullptr;
        raw->over = true;
    });
    if (timer_ == nullptr) timer_ = loop_.every(kBetweenLooks, [this] { deliver(); });
    return heard;
}

void BackgroundThreads::await(const std::function<void()>& work) {
    std::exception_ptr failure;
    std::binary_semaphore over(0);
    {
        const std::jthread thread([&] {
            try {
                work();
            } catch (...) {
                failure = std::current_exception();
            }
            over.release();
        });
        if (!over.try_acquire_for(kAlone)) {
            const OutsideCall call(calls_);
            while (!loop_.ending() && !over.try_acquire()) loop_.sleep(kBetweenLooks);
        }
    }
    if (failure) std::rethrow_exception(failure);
}

BackgroundWork BackgroundOfLoop::run(std::function<void()> work, std::function<void()> done) {
    const auto heard = std::make_shared<int>();
    loop_.post([work = std::move(work), done = std::move(done), listening = std::weak_ptr<void>(heard)] {
        if (listening.expired()) return;
        work();
        if (!listening.expired()) done();
    });
    return heard;
}

void BackgroundThreads::deliver() {
    std::vector<std::shared_ptr<Task>> ended;
    std::erase_if(tasks_, [&](const std::shared_ptr<Task>& task) {
        if (task->over) ended.push_back(task);
        return task->over.load();
    });
    if (tasks_.empty()) timer_.reset();
    for (const auto& task : ended)
        if (!task->heard.expired()) task->done();
}

}  // namespace vantrel::platform
