#include "imagefiles/codec/admission.h"

#include <algorithm>
#include <chrono>

namespace tessarine {

void Admission::setBudget(uint64_t bytes) {
    const std::lock_guard lock(guard_);
    budget_ = bytes;
    changed_.notify_all();
}

uint64_t Admission::taken() const {
    const std::lock_guard lock(guard_);
    return taken_;
}

void Admission::Place::raise(uint64_t bytes) {
    if (!isIn_) ++admission_.admitted_;
    isIn_ = true;
    admission_.taken_ += std::max(bytes, bytes_) - bytes_;
    bytes_ = std::max(bytes, bytes_);
}

bool Admission::Place::admit(uint64_t bytes, const std::function<bool()>& isOff) {
    constexpr auto glance = std::chrono::milliseconds(50);
    std::unique_lock lock(admission_.guard_);
    if (!isIn_) {
        Admission& all = admission_;
        all.waiting_.push_back(this);
        const auto fits = [&] {
            return isHurried_ || (all.waiting_.front() == this &&
                                  (all.admitted_ == 0 || (all.taken_ <= all.budget_ &&
                                                          bytes <= all.budget_ - all.taken_)));
        };
        bool off = false;
        while (!fits() && !off) {
            all.changed_.wait_for(lock, glance);
            if (!isOff) continue;
            lock.unlock();
            off = isOff();
            lock.lock();
        }
        all.waiting_.erase(std::find(all.waiting_.begin(), all.waiting_.end(), this));
        all.changed_.notify_all();
        if (off) return false;
    }
    raise(bytes);
    return true;
}

void Admission::Place::admitAtOnce(uint64_t bytes) {
    const std::lock_guard lock(admission_.guard_);
    raise(bytes);
}

void Admission::Place::hurry() {
    const std::lock_guard lock(admission_.guard_);
    isHurried_ = true;
    admission_.changed_.notify_all();
}

void Admission::Place::leave() {
    const std::lock_guard lock(admission_.guard_);
    if (!isIn_) return;
    --admission_.admitted_;
    admission_.taken_ -= bytes_;
    isIn_ = false;
    bytes_ = 0;
    admission_.changed_.notify_all();
}

}  // namespace tessarine
