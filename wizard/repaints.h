#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tessarine {

/// What is to be shown anew when the logic says that a control has changed.
class Repaints {
  public:
    /// Calls `show` whenever `control` ("iDst", "sbFilter(0)") changed, and not before.
    void on(std::string_view control, std::function<void()> show) {
        shows_[std::string(control)].push_back(std::move(show));
    }
    void changed(std::string_view control) const {
        const auto found = shows_.find(control);
        if (found == shows_.end()) return;
        for (const std::function<void()>& show : found->second)
            show();
    }
    /// Shows every control as it is now.
    void all() const {
        for (const auto& [control, shows] : shows_)
            changed(control);
    }
    void clear() { shows_.clear(); }

  private:
    std::map<std::string, std::vector<std::function<void()>>, std::less<>> shows_;
};

}  // namespace tessarine
