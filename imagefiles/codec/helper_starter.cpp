#include "imagefiles/codec/helper_starter.h"

#include <system_error>
#include <utility>

#include "pixels/failures.h"

namespace tessarine {

HelperStarter::~HelperStarter() {
    {
        const std::lock_guard lock(guard_);
        ending_ = true;
        orders_.clear();
    }
    changed_.notify_one();
    if (thread_.joinable()) thread_.join();
}

HelperStarter::Coming HelperStarter::start(HelperKind kind) {
    Order order([this, kind] { return start_(kind); });
    Coming coming = order.get_future();
    {
        const std::lock_guard lock(guard_);
        if (!thread_.joinable()) {
            try {
                thread_ = std::thread([this] { work(); });
            } catch (const std::system_error& failure) {
                std::promise<std::unique_ptr<Helper>> refusal;
                refusal.set_exception(std::make_exception_ptr(StatementFailed(
                    std::string("no helper process can be started: ") + failure.what())));
                return refusal.get_future();
            }
        }
        orders_.push_back(std::move(order));
    }
    changed_.notify_one();
    return coming;
}

void HelperStarter::work() {
    std::unique_lock lock(guard_);
    for (;;) {
        changed_.wait(lock, [this] { return ending_ || !orders_.empty(); });
        if (ending_) return;
        Order order = std::move(orders_.front());
        orders_.pop_front();
        lock.unlock();
        order();
        order = {};
        lock.lock();
    }
}

}  // namespace tessarine
