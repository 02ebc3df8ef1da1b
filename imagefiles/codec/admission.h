#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>

namespace tessarine {

/// Lets pictures into memory, as many as fit beside each other: a huge one among small ones waits
/// until there is room, and those behind it wait with it. Any thread may call.
class Admission {
  public:
    /// \param budget  bytes that all pictures in flight may take together; one alone may take more
    explicit Admission(uint64_t budget) : budget_(budget) {}
    Admission(const Admission&) = delete;
    Admission& operator=(const Admission&) = delete;

    void setBudget(uint64_t bytes);
    /// Bytes that are taken.
    uint64_t taken() const;
    /// What a picture is reckoned to take: the block that it is read into, the results of
    /// functions, and what its helper holds while it decodes.
    static uint64_t bytesFor(uint64_t pixels) { return pixels * 20; }

    /// One picture's part of the budget, from its admission to the end of this object. One picture
    /// has one place, and waits once: those who wait hold nothing, so that all come in.
    class Place {
      public:
        explicit Place(Admission& admission) : admission_(admission) {}
        ~Place() { leave(); }
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

        /// Waits until so many bytes fit, first come, first served. A place that was admitted
        /// before takes more where that is less, and does not wait.
        /// \param isOff  asked now and then whether this is still wanted
        /// \return whether it is admitted
        bool admit(uint64_t bytes, const std::function<bool()>& isOff = {});
        /// Does not wait.
        void admitAtOnce(uint64_t bytes);
        /// Lets the thread that waits in admit() in at once: from any thread.
        void hurry();
        void leave();

      private:
        void raise(uint64_t bytes);

        Admission& admission_;
        bool isIn_ = false;
        bool isHurried_ = false;
        uint64_t bytes_ = 0;
    };

  private:
    mutable std::mutex guard_;
    std::condition_variable changed_;
    uint64_t budget_;
    uint64_t taken_ = 0;
    size_t admitted_ = 0;
    std::deque<const Place*> waiting_;
};

}  // namespace tessarine
