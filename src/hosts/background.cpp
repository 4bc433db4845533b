#include "hosts/background.h"

#include <atomic>
#include <thread>

namespace vantrel::hosts {

namespace {

constexpr platform::Milliseconds kBetweenLooks{10};

}  // namespace

struct BackgroundThreads::Task {
    std::atomic<bool> over = false;
    std::function<void()> work;
    std::function<void()> done;
    std::weak_ptr<void> heard;
    std::jthread thread;  // last: it ends before the rest goes
};

BackgroundThreads::BackgroundThreads(platform::EventLoop& loop) : loop_(loop) {}

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

}  // namespace vantrel::hosts
