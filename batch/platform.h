#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessarine {

/// Between folders and at the end of one.
inline constexpr char folderSeparator = '/';

/// The title of message boxes that name none.
inline constexpr std::string_view programName = "Tessarine";

/// The icon of a message box.
enum class Icon { critical = 16, exclamation = 48, information = 64 };

/// Whatever screen and system there is. The logic knows no other way to a person, and the tests
/// put a recorder here that plays back answers.
///
/// Paths are bytes; texts of the program are UTF-8. File tests have a working default.
class Platform {
  public:
    virtual ~Platform() = default;

    // ---- To the person ----

    /// A message box with one OK button; returns when it is closed.
    virtual void messageBox(const std::string& text, Icon icon,
                            const std::string& title = std::string(programName)) = 0;
    /// The file dialog; nothing on a cancel. `filter` is "Description(*.ext)|*.ext".
    virtual std::optional<std::string> saveDialog(const std::string& filter) = 0;
    virtual std::optional<std::string> openDialog(const std::string& filter) = 0;
    /// Lets pending window events happen.
    virtual void giveWay() = 0;
    /// A member that stands for the control of this name ("iDst", "RTF", "sbFilter(0)") has
    /// changed and wants repainting.
    virtual void changed(std::string_view control) = 0;
    /// Opens a path with the system's default action, in a normal window.
    virtual void openPath(const std::string& path) = 0;

    // ---- The window, as start-up needs it ----

    /// Builds the main window, not yet visible, and connects its splitters.
    virtual void loadWindow() = 0;
    /// Takes the main window down again.
    virtual void unloadWindow() = 0;
    virtual void maximizeWindow() = 0;
    /// Gives the window a size in pixels at the place where it stands.
    virtual void sizeWindow(int32_t width, int32_t height) = 0;
    virtual void setDialogFolder(const std::string& folder) = 0;
    virtual void showWindow() = 0;
    virtual void unloadSplash() = 0;
    virtual bool anotherInstanceRuns() = 0;

    // ---- Files and clock ----

    virtual bool folderExists(const std::string& path);
    virtual bool fileExists(const std::string& path);
    /// What the system calls files of an extension (lower case); by default "JPG File".
    virtual std::string fileTypeName(const std::string& extension);
    /// Where tsStart.up lies: the program's own folder if it can be written, else the user's
    /// configuration folder. Without a separator at its end.
    virtual std::string programFolder();
    /// Milliseconds, wrapping at 32 bits.
    virtual uint32_t timeGetTime();
};

/// A platform without a screen: dialogs are cancelled, boxes and repaints go nowhere.
class SilentPlatform : public Platform {
  public:
    void messageBox(const std::string&, Icon, const std::string&) override {}
    std::optional<std::string> saveDialog(const std::string&) override { return std::nullopt; }
    std::optional<std::string> openDialog(const std::string&) override { return std::nullopt; }
    void giveWay() override {}
    void changed(std::string_view) override {}
    void openPath(const std::string&) override {}
    void loadWindow() override {}
    void unloadWindow() override {}
    void maximizeWindow() override {}
    void sizeWindow(int32_t, int32_t) override {}
    void setDialogFolder(const std::string&) override {}
    void showWindow() override {}
    void unloadSplash() override {}
    bool anotherInstanceRuns() override { return false; }
};

/// The folder of the running program's file, without a separator at its end.
std::string executableFolder();

/// The user's own folder for settings, made if it is missing: $XDG_CONFIG_HOME/tessarine, by
/// default ~/.config/tessarine.
std::string userConfigurationFolder();

}  // namespace tessarine
