#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

// The tests of controls and window: an application on a platform without a screen, and settings
// in a folder of its own.

int main(int argumentCount, char** arguments) {
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argumentCount, arguments);
    const QApplication application(argumentCount, arguments);
    return RUN_ALL_TESTS();
}
