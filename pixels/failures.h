#pragma once

#include <stdexcept>
#include <string>

namespace tessarine {

/// A statement that could not do its work: a text that is no number, a value that does not fit
/// its place, memory that is not to be had. Members in skipping mode go on with the next
/// statement; all others let it reach their caller. Programming errors are never thrown as this.
class StatementFailed : public std::runtime_error {
  public:
    explicit StatementFailed(const std::string& why) : std::runtime_error(why) {}
};

/// Memory that is not to be had.
class MemoryFailed : public StatementFailed {
  public:
    explicit MemoryFailed(const std::string& why) : StatementFailed(why) {}
};

/// What a member does with a statement that fails.
enum class OnFailure {
    skip,   ///< the statement is left out and the next one goes on
    raise,  ///< StatementFailed reaches the member's caller
};

/// Runs one statement and swallows StatementFailed, nothing else.
/// \return whether the statement did its work.
template <class Statement>
bool attempt(Statement&& statement) {
    try {
        statement();
        return true;
    } catch (const StatementFailed&) {
        return false;
    }
}

}  // namespace tessarine
