#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "batch/platform.h"

namespace tessarine::tests {

/// A platform that keeps what the program says to the screen and plays back answers.
///
/// A file dialog without a queued answer is cancelled, as is one whose answer is std::nullopt.
class Recorder : public SilentPlatform {
  public:
    struct Box {
        std::string text;
        Icon icon = Icon::information;
        std::string title;

        friend bool operator==(const Box&, const Box&) = default;
    };

    std::vector<Box> boxes;
    std::vector<std::string> changes;  ///< the names given to changed(), in order
    std::vector<std::string> openedPaths;
    std::vector<std::string> saveFilters;  ///< what the file dialogs were asked for
    std::vector<std::string> openFilters;
    int giveWays = 0;

    std::deque<std::optional<std::string>> saveAnswers;
    std::deque<std::optional<std::string>> openAnswers;
    /// What happens at the coming calls of giveWay(), one entry a call; an empty one does nothing.
    std::deque<std::function<void()>> onGiveWay;

    void messageBox(const std::string& text, Icon icon, const std::string& title) override {
        boxes.push_back({text, icon, title});
    }
    std::optional<std::string> saveDialog(const std::string& filter) override {
        saveFilters.push_back(filter);
        return takeAnswer(saveAnswers);
    }
    std::optional<std::string> openDialog(const std::string& filter) override {
        openFilters.push_back(filter);
        return takeAnswer(openAnswers);
    }
    void giveWay() override {
        ++giveWays;
        if (onGiveWay.empty()) return;
        // Taken out first: the entry may itself lead to another giveWay().
        const std::function<void()> event = std::move(onGiveWay.front());
        onGiveWay.pop_front();
        if (event) event();
    }
    void changed(std::string_view control) override { changes.emplace_back(control); }
    void openPath(const std::string& path) override { openedPaths.push_back(path); }

    /// How often a control was told to have changed since the last clear of `changes`.
    int timesChanged(std::string_view control) const {
        int times = 0;
        for (const std::string& name : changes)
            times += name == control ? 1 : 0;
        return times;
    }
    bool hasChanged(std::string_view control) const { return timesChanged(control) > 0; }

  private:
    static std::optional<std::string> takeAnswer(std::deque<std::optional<std::string>>& answers) {
        if (answers.empty()) return std::nullopt;
        std::optional<std::string> answer = std::move(answers.front());
        answers.pop_front();
        return answer;
    }
};

}  // namespace tessarine::tests
