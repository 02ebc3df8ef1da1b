#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace tessarine {

/// Pieces of memory that nobody uses, kept for later: the one let go last behind the others. Not
/// for more than one thread at a time.
/// \tparam Piece  has bytes()
template <class Piece>
class FreePieces {
  public:
    /// \param mostBytes  how much is kept; twice the largest size lately asked for, if that is more
    explicit FreePieces(uint64_t mostBytes) : mostBytes_(mostBytes) {}

    /// The smallest piece of at least so many bytes, if it has not more than twice as many.
    std::unique_ptr<Piece> take(uint64_t bytes) {
        // A size that is not asked for again fades within a few dozen pictures.
        largestLately_ = std::max(bytes, largestLately_ - largestLately_ / 16);
        auto best = pieces_.end();
        for (auto at = pieces_.begin(); at != pieces_.end(); ++at) {
            const uint64_t has = (*at)->bytes();
            if (has < bytes || has > 2 * bytes) continue;
            if (best == pieces_.end() || has <= (*best)->bytes()) best = at;
        }
        if (best == pieces_.end()) return nullptr;
        return remove(best);
    }

    /// Keeps a piece. \return what is too much to keep, for the caller to let go
    std::vector<std::unique_ptr<Piece>> keep(std::unique_ptr<Piece> piece) {
        bytes_ += piece->bytes();
        pieces_.push_back(std::move(piece));
        std::vector<std::unique_ptr<Piece>> tooMuch;
        const uint64_t most = std::max(mostBytes_, 2 * largestLately_);
        while (bytes_ > most || pieces_.size() > mostPieces)
            tooMuch.push_back(remove(pieces_.begin()));
        return tooMuch;
    }

    /// Everything that is kept.
    std::vector<std::unique_ptr<Piece>> takeAll() {
        bytes_ = 0;
        return std::exchange(pieces_, {});
    }

    uint64_t bytes() const { return bytes_; }

  private:
    /// A piece may hold a descriptor, of which a process has few.
    static constexpr size_t mostPieces = 32;

    std::unique_ptr<Piece> remove(typename std::vector<std::unique_ptr<Piece>>::iterator at) {
        std::unique_ptr<Piece> piece = std::move(*at);
        pieces_.erase(at);
        bytes_ -= piece->bytes();
        return piece;
    }

    std::vector<std::unique_ptr<Piece>> pieces_;
    uint64_t bytes_ = 0;
    uint64_t mostBytes_;
    uint64_t largestLately_ = 0;
};

}  // namespace tessarine
