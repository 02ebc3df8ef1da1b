#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "paths.h"
#include "wizard/desktop.h"

namespace tessarine::tests {

/// A desktop that keeps what the window says to it and plays back answers. Settings lie in a
/// folder of the test's own.
///
/// A file dialog without a queued answer is cancelled, as is one whose answer is std::nullopt.
class RecordedDesktop : public Desktop {
  public:
    struct Box {
        std::string text;
        Icon icon = Icon::information;
        std::string title;

        friend bool operator==(const Box&, const Box&) = default;
    };

    std::vector<Box> boxes;
    std::vector<std::string> openedPaths;
    std::vector<std::string> saveFilters;  ///< what the file dialogs were asked for
    std::vector<std::string> openFilters;
    std::vector<std::string> dialogFolders;
    std::vector<bool> awake;  ///< the calls of keepAwake, in order
    std::vector<std::string> notifications;
    std::deque<std::optional<std::string>> saveAnswers;
    std::deque<std::optional<std::string>> openAnswers;
    bool another = false;         ///< another instance runs
    std::function<void()> onBox;  ///< happens while a message box is open

    void messageBox(QWidget*, const QString& text, Icon icon, const QString& title) override {
        boxes.push_back({text.toStdString(), icon, title.toStdString()});
        if (onBox) onBox();
    }
    std::optional<std::string> saveDialog(QWidget*, const std::string& filter,
                                          const std::string& folder) override {
        saveFilters.push_back(filter);
        dialogFolders.push_back(folder);
        return takeAnswer(saveAnswers);
    }
    std::optional<std::string> openDialog(QWidget*, const std::string& filter,
                                          const std::string& folder) override {
        openFilters.push_back(filter);
        dialogFolders.push_back(folder);
        return takeAnswer(openAnswers);
    }
    void openPath(const std::string& path) override { openedPaths.push_back(path); }
    bool anotherInstanceRuns() override { return another; }
    void keepAwake(bool on) override { awake.push_back(on); }
    void notify(const QString& title, const QString& text) override {
        notifications.push_back(title.toStdString() + ": " + text.toStdString());
    }
    std::string programFolder() override { return settings.path().string(); }
    std::string applicationFolder() override { return application.path().string(); }

    ScratchFolder settings;
    ScratchFolder application;

  private:
    static std::optional<std::string> takeAnswer(std::deque<std::optional<std::string>>& answers) {
        if (answers.empty()) return std::nullopt;
        std::optional<std::string> answer = std::move(answers.front());
        answers.pop_front();
        return answer;
    }
};

}  // namespace tessarine::tests
