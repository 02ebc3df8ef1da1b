#include "imagefiles/codec/helper_starter.h"

#include <exception>
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

std::unique_ptr<Helper> HelperStarter::Coming::get() {
    Started started = started_.get();
    if (started.helper == nullptr) throw StatementFailed(started.whyNot);
    return std::move(started.helper);
}

HelperStarter::Coming HelperStarter::start(HelperKind kind) {
    Order order([this, kind]() -> Started {
        try {
            return {start_(kind), {}};
        } catch (const std::exception& failure) {
            return {nullptr, failure.what()};
        }
    });
    Coming coming(order.get_future());
    {
        const std::lock_guard lock(guard_);
        if (!thread_.joinable()) {
            try {
                thread_ = std::thread([this] { work(); });
            } catch (const std::system_error& failure) {
                std::promise<Started> refusal;
                refusal.set_value(
                    {nullptr, std::string("no helper process can be started: ") + failure.what()});
                return Coming(refusal.get_future());
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
