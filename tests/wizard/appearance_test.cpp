#include "wizard/appearance.h"

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QCommonStyle>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QImage>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QStandardPaths>
#include <QStyle>
#include <QStyleFactory>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QToolTip>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <gmock/gmock.h>

#include "support/window_driver.h"
#include "wizard/colour_preference.h"
#include "wizard/contrast.h"
#include "wizard/icons.h"
#include "wizard/program_style.h"

namespace tessarine::tests {
namespace {

constexpr ColourScheme schemes[] = {ColourScheme::light, ColourScheme::dark};
constexpr uint noPreference = 0;
constexpr uint prefersDark = 1;
constexpr uint prefersLight = 2;

/// Style and palette are those of a new application before and after each test.
class Appearance : public testing::Test {
  protected:
    Appearance() { reset(); }
    ~Appearance() override {
        useColourScheme(application(), ColourScheme::light);  // ends a following
        reset();
    }

    static QApplication& application() { return *static_cast<QApplication*>(qApp); }

  private:
    static void reset() {
        QApplication::setStyle(QStyleFactory::create("fusion"));
        QApplication::setPalette(QPalette());
    }
};

// ---- Colours ----

TEST(Contrast, RunsFromOneToTwentyOneInEitherOrder) {
    EXPECT_NEAR(contrast(Qt::black, Qt::white), 21.0, 1e-6);
    EXPECT_NEAR(contrast(Qt::white, Qt::black), 21.0, 1e-6);
    EXPECT_NEAR(contrast(Qt::red, Qt::red), 1.0, 1e-6);
    EXPECT_NEAR(contrast(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.005);
}

TEST(Contrast, AReadableColourStaysAndAnotherMovesUntilItIsReadable) {
    EXPECT_EQ(readableOn(Qt::white, QColor(0, 0, 160)).rgb(), QColor(0, 0, 160).rgb());
    const QColor sky(0x3d, 0xae, 0xe9);
    for (const QColor& ground : {QColor(Qt::white), QColor(0x40, 0x40, 0x48)}) {
        const QColor moved = readableOn(ground, sky);
        EXPECT_GE(contrast(moved, ground), readableContrast);
        EXPECT_LT(contrast(moved, ground), readableContrast + 1.0);
        EXPECT_NEAR(moved.hueF(), sky.hueF(), 0.03);
    }
}

TEST(ProgramPalette, TextsStandOutFromWhatIsBehindThem) {
    const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::WindowText, QPalette::Light},
        {QPalette::Text, QPalette::Base},
        {QPalette::Text, QPalette::AlternateBase},
        {QPalette::ButtonText, QPalette::Button},
        {QPalette::ButtonText, QPalette::Light},
        {QPalette::PlaceholderText, QPalette::Base},
        {QPalette::HighlightedText, QPalette::Highlight},
        {QPalette::BrightText, QPalette::Highlight},
        {QPalette::ToolTipText, QPalette::ToolTipBase},
        {QPalette::Link, QPalette::Base},
        {QPalette::Link, QPalette::Window},
        {QPalette::LinkVisited, QPalette::Base},
        {QPalette::LinkVisited, QPalette::Window},
    };
    for (const ColourScheme scheme : schemes) {
        const QPalette palette = programPalette(scheme);
        for (const auto group : {QPalette::Active, QPalette::Inactive}) {
            for (const auto& [text, ground] : pairs) {
                EXPECT_GE(contrast(palette.color(group, text), palette.color(group, ground)), 4.5)
                    << "scheme " << int(scheme) << " roles " << text << " on " << ground;
            }
        }
    }
}

TEST(ProgramPalette, SelectionsStandOutFromWhatIsAroundThem) {
    for (const ColourScheme scheme : schemes) {
        const QPalette palette = programPalette(scheme);
        for (const auto ground : {QPalette::Window, QPalette::Base, QPalette::AlternateBase})
            EXPECT_GE(contrast(palette.color(QPalette::Highlight), palette.color(ground)), 3.0);
    }
}

TEST(ProgramPalette, DisabledTextIsFainterButThere) {
    for (const ColourScheme scheme : schemes) {
        const QPalette palette = programPalette(scheme);
        const QColor window = palette.color(QPalette::Window);
        const double faint =
            contrast(palette.color(QPalette::Disabled, QPalette::WindowText), window);
        EXPECT_GE(faint, 2.5);
        EXPECT_LE(faint, contrast(palette.color(QPalette::WindowText), window) / 2);
    }
}

// ---- Style ----

/// Everything that can have the focus, one of each kind.
struct Controls {
    QWidget window;
    std::vector<QWidget*> all;

    Controls() {
        auto* column = new QVBoxLayout(&window);
        auto* tabs = new QTabBar;
        tabs->addTab("Step 1");
        tabs->addTab("Step 2");
        auto* list = new QTreeWidget;
        auto* choices = new QComboBox;
        choices->addItem("JPEG");
        auto* tool = new QToolButton;
        tool->setText("Add");
        tool->setFocusPolicy(Qt::StrongFocus);
        for (QWidget* widget : {static_cast<QWidget*>(tabs), static_cast<QWidget*>(list),
                                static_cast<QWidget*>(choices), static_cast<QWidget*>(tool),
                                static_cast<QWidget*>(new QPushButton("Refresh")),
                                static_cast<QWidget*>(new QLineEdit),
                                static_cast<QWidget*>(new QCheckBox("Overwrite")),
                                static_cast<QWidget*>(new QRadioButton("Hue"))}) {
            column->addWidget(widget);
            all.push_back(widget);
        }
        window.resize(300, 420);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
};

size_t pixelsThatDiffer(const QImage& before, const QImage& after, double leastContrast) {
    size_t count = 0;
    for (int y = 0; y < before.height(); ++y)
        for (int x = 0; x < before.width(); ++x)
            count += contrast(before.pixelColor(x, y), after.pixelColor(x, y)) >= leastContrast;
    return count;
}

TEST_F(Appearance, FocusCanBeSeenOnEveryControl) {
    for (const ColourScheme scheme : schemes) {
        useColourScheme(application(), scheme);
        Controls controls;
        for (QWidget* widget : controls.all) {
            for (QWidget* other : controls.all)
                other->clearFocus();
            settle();
            const QImage without = controls.window.grab().toImage();
            widget->setFocus(Qt::TabFocusReason);
            settle();
            ASSERT_TRUE(widget->hasFocus());
            const QImage with = controls.window.grab().toImage();
            EXPECT_GT(pixelsThatDiffer(without, with, 1.8), 60U)
                << widget->metaObject()->className() << " in scheme " << int(scheme);
        }
    }
}

TEST_F(Appearance, AnEmptyBoxCanBeSeenInEitherScheme) {
    for (const ColourScheme scheme : schemes) {
        useColourScheme(application(), scheme);
        QTreeWidget list;
        auto* row = new QTreeWidgetItem(&list, {"photo.jpg"});
        row->setCheckState(0, Qt::Unchecked);
        list.resize(200, 80);
        const QImage unchecked = list.viewport()->grab().toImage();
        row->setData(0, Qt::CheckStateRole, QVariant());
        const QImage without = list.viewport()->grab().toImage();
        row->setCheckState(0, Qt::Checked);
        const QImage checked = list.viewport()->grab().toImage();
        EXPECT_GT(pixelsThatDiffer(without, unchecked, 2.5), 20U) << int(scheme);
        EXPECT_GT(pixelsThatDiffer(unchecked, checked, 2.5), 60U) << int(scheme);
    }
}

TEST_F(Appearance, AFolderIsTheProgramsOwnWithoutAnIconTheme) {
    const QString theme = QIcon::themeName();
    QIcon::setThemeName("none that is there");
    for (const ColourScheme scheme : schemes) {
        useColourScheme(application(), scheme);
        const QIcon folder = QApplication::style()->standardIcon(QStyle::SP_DirIcon);
        EXPECT_EQ(folder.pixmap(16, 16).toImage(), programIcon("folder").pixmap(16, 16).toImage());
        EXPECT_NE(folder.pixmap(16, 16).toImage(),
                  QCommonStyle().standardIcon(QStyle::SP_DirIcon).pixmap(16, 16).toImage());
    }
    QIcon::setThemeName(theme);
}

TEST_F(Appearance, AChosenSchemeShowsInWindowsThatStandAlready) {
    useColourScheme(application(), ColourScheme::light);
    QWidget window;
    window.resize(20, 20);
    window.show();
    settle();
    EXPECT_EQ(window.grab().toImage().pixelColor(10, 10),
              programPalette(ColourScheme::light).color(QPalette::Window));
    useColourScheme(application(), ColourScheme::dark);
    settle();
    EXPECT_EQ(window.grab().toImage().pixelColor(10, 10),
              programPalette(ColourScheme::dark).color(QPalette::Window));
    EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipBase),
              programPalette(ColourScheme::dark).color(QPalette::ToolTipBase));
}

TEST_F(Appearance, ColoursThatTheDesktopBringsStand) {
    QPalette desktop = QApplication::palette();
    desktop.setColor(QPalette::Window, QColor(250, 240, 200));
    QApplication::setPalette(desktop);
    applyAppearance(application(), QDBusConnection("none"));
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor(250, 240, 200));
    EXPECT_TRUE(dynamic_cast<ProgramStyle*>(QApplication::style()));
}

TEST_F(Appearance, AStyleThatTheDesktopBringsStands) {
    QApplication::setStyle(QStyleFactory::create("windows"));
    const QPalette before = QApplication::palette();
    applyAppearance(application(), QDBusConnection("none"));
    EXPECT_EQ(QApplication::style()->name(), "windows");
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), before.color(QPalette::Window));
}

// ---- The desktop's preference ----

/// A settings portal on a bus of its own.
class Portal : public QDBusVirtualObject {
  public:
    uint scheme = noPreference;
    int delay = 0;  ///< of the answer, in milliseconds
    int questions = 0;

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.interface() != "org.freedesktop.portal.Settings" ||
            message.member() != "Read" ||
            message.arguments() != QVariantList{"org.freedesktop.appearance", "color-scheme"})
            return false;
        ++questions;
        const QVariant answer =
            QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(scheme))));
        const QDBusMessage reply = message.createReply(answer);
        QTimer::singleShot(delay, this, [bus, reply] { bus.send(reply); });
        return true;
    }
};

class DesktopPreference : public Appearance {
  protected:
    void SetUp() override {
        const QString daemon = QStandardPaths::findExecutable("dbus-daemon");
        if (daemon.isEmpty()) GTEST_SKIP() << "dbus-daemon is not installed";
        daemon_.start(daemon, {"--session", "--nofork", "--nopidfile", "--print-address"});
        if (!daemon_.waitForReadyRead(5000)) GTEST_SKIP() << "dbus-daemon does not start here";
        const QString address = QString::fromUtf8(daemon_.readLine()).trimmed();
        client_ = std::make_unique<QDBusConnection>(
            QDBusConnection::connectToBus(address, "test-client"));
        server_ = std::make_unique<QDBusConnection>(
            QDBusConnection::connectToBus(address, "test-portal"));
        ASSERT_TRUE(client_->isConnected() && server_->isConnected());
    }

    ~DesktopPreference() override {
        QDBusConnection::disconnectFromBus("test-client");
        QDBusConnection::disconnectFromBus("test-portal");
        daemon_.kill();
        daemon_.waitForFinished();
    }

    void openPortal(uint scheme) {
        portal_.scheme = scheme;
        ASSERT_TRUE(server_->registerVirtualObject("/org/freedesktop/portal/desktop", &portal_));
        ASSERT_TRUE(server_->registerService("org.freedesktop.portal.Desktop"));
    }

    void tellChange(const QString& space, const QString& key, uint value) {
        QDBusMessage change = QDBusMessage::createSignal(
            "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged");
        change << space << key << QVariant::fromValue(QDBusVariant(value));
        server_->send(change);
    }
    void tellScheme(uint value) { tellChange("org.freedesktop.appearance", "color-scheme", value); }

    std::unique_ptr<ColourPreference> preference() {
        return std::make_unique<ColourPreference>(
            *client_, [this](ColourScheme scheme) { changes_.push_back(scheme); });
    }

    QProcess daemon_;
    std::unique_ptr<QDBusConnection> client_;
    std::unique_ptr<QDBusConnection> server_;
    Portal portal_;
    std::vector<ColourScheme> changes_;
};

double millisecondsOf(const std::function<void()>& what) {
    const auto start = std::chrono::steady_clock::now();
    what();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

TEST_F(DesktopPreference, IsLightWithoutABus) {
    const ColourScheme asked = ColourScheme::dark;
    ColourPreference alone(QDBusConnection("no-such-connection"), [](ColourScheme) {});
    EXPECT_LT(millisecondsOf([&] { alone.wait(2000); }), 500.0);
    EXPECT_NE(alone.scheme(), asked);
}

TEST_F(DesktopPreference, IsLightWithoutAPortalAndNobodyWaits) {
    const auto asking = preference();
    EXPECT_LT(millisecondsOf([&] { asking->wait(5000); }), 2000.0);
    EXPECT_EQ(asking->scheme(), ColourScheme::light);
    EXPECT_TRUE(changes_.empty());
}

TEST_F(DesktopPreference, IsWhatThePortalTells) {
    const std::pair<uint, ColourScheme> cases[] = {{noPreference, ColourScheme::light},
                                                   {prefersDark, ColourScheme::dark},
                                                   {prefersLight, ColourScheme::light},
                                                   {77, ColourScheme::light}};
    openPortal(noPreference);
    int asked = 0;
    for (const auto& [told, expected] : cases) {
        portal_.scheme = told;
        const auto asking = preference();
        asking->wait(5000);
        EXPECT_EQ(portal_.questions, ++asked);
        EXPECT_EQ(asking->scheme(), expected) << told;
    }
}

TEST_F(DesktopPreference, FollowsAChangeAndTellsItOnce) {
    openPortal(prefersLight);
    const auto asking = preference();
    asking->wait(5000);
    tellScheme(prefersDark);
    tellScheme(prefersDark);
    EXPECT_TRUE(QTest::qWaitFor([&] { return asking->scheme() == ColourScheme::dark; }));
    tellScheme(noPreference);
    EXPECT_TRUE(QTest::qWaitFor([&] { return asking->scheme() == ColourScheme::light; }));
    EXPECT_THAT(changes_, testing::ElementsAre(ColourScheme::dark, ColourScheme::light));
}

TEST_F(DesktopPreference, IsNotTakenFromOtherSettings) {
    openPortal(prefersLight);
    const auto asking = preference();
    asking->wait(5000);
    tellChange("org.freedesktop.appearance", "contrast", 1);
    tellChange("org.gnome.desktop.interface", "color-scheme", 1);
    tellScheme(prefersDark);  // comes last
    EXPECT_TRUE(QTest::qWaitFor([&] { return !changes_.empty(); }));
    EXPECT_EQ(changes_.size(), 1U);
    tellChange("org.freedesktop.appearance", "contrast", 0);
    tellScheme(prefersLight);
    EXPECT_TRUE(QTest::qWaitFor([&] { return asking->scheme() == ColourScheme::light; }));
    EXPECT_EQ(changes_.size(), 2U);
}

TEST_F(DesktopPreference, ThatComesLateHoldsUpNobodyAndCountsAsAChange) {
    openPortal(prefersDark);
    portal_.delay = 600;
    const auto asking = preference();
    EXPECT_LT(millisecondsOf([&] { asking->wait(100); }), 500.0);
    EXPECT_EQ(asking->scheme(), ColourScheme::light);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !changes_.empty(); }));
    EXPECT_EQ(asking->scheme(), ColourScheme::dark);
}

TEST_F(DesktopPreference, ShowsInTheWholeProgramUntilASchemeIsChosen) {
    openPortal(prefersDark);
    applyAppearance(application(), *client_);
    const auto window = [] { return QApplication::palette().color(QPalette::Window); };
    const QColor day = programPalette(ColourScheme::light).color(QPalette::Window);
    const QColor night = programPalette(ColourScheme::dark).color(QPalette::Window);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window() == night; }));
    tellScheme(prefersLight);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window() == day; }));

    useColourScheme(application(), ColourScheme::light);
    tellScheme(prefersDark);
    QTest::qWait(200);
    EXPECT_EQ(window(), day);
}

}  // namespace
}  // namespace tessarine::tests
