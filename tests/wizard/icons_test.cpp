#include "wizard/icons.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QRegularExpression>
#include <QSvgRenderer>
#include <gmock/gmock.h>

#include "wizard/appearance.h"
#include "wizard/contrast.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

const fs::path sources = TESSARINE_SOURCE_DIR;

const std::set<std::string> iconNames{
    "program",   "step-1",    "step-2",      "step-3",      "step-4", "online",     "about",
    "help",      "check-all", "uncheck-all", "add-checked", "remove", "remove-all", "open-list",
    "save-list", "function",  "group",       "add",         "clear",  "move-up",    "move-down",
    "refresh",   "browse",    "run",         "stop",        "drop",   "image-file", "folder"};
const std::set<std::string> pictureNames{"splash", "about", "banner"};

std::set<std::string> drawingsIn(const char* folder) {
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(sources / "assets" / folder))
        if (entry.path().extension() == ".svg") names.insert(entry.path().stem().string());
    return names;
}

std::string textOf(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The names that the window's sources hand to `function`.
std::set<std::string> namesAskedOf(const std::string& function) {
    std::set<std::string> names;
    const QRegularExpression call(QString::fromStdString(function) + R"re(\(\s*"([^"]*)")re");
    for (const char* room : {"wizard", "widgets"}) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(sources / room)) {
            if (entry.path().extension() != ".cpp") continue;
            const QString text = QString::fromStdString(textOf(entry.path()));
            for (const QRegularExpressionMatch& match : call.globalMatch(text))
                names.insert(match.captured(1).toStdString());
        }
    }
    return names;
}

QImage imageOf(const QIcon& icon, int size, qreal ratio = 1.0, QIcon::Mode mode = QIcon::Normal) {
    return icon.pixmap(QSize(size, size), ratio, mode)
        .toImage()
        .convertToFormat(QImage::Format_ARGB32);
}

/// The colours of the pixels that are at least so opaque.
std::vector<QColor> inksOf(const QImage& image, int opacity = 255) {
    std::vector<QColor> inks;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) >= opacity) inks.push_back(image.pixelColor(x, y));
    return inks;
}

bool reachesEdgeOf(const QImage& image) {
    for (int i = 0; i < image.width(); ++i)
        if (qAlpha(image.pixel(i, 0)) > 128 || qAlpha(image.pixel(0, i)) > 128 ||
            qAlpha(image.pixel(i, image.height() - 1)) > 128 ||
            qAlpha(image.pixel(image.width() - 1, i)) > 128)
            return true;
    return false;
}

class Icons : public testing::Test {
  protected:
    ~Icons() override { QApplication::setPalette(before_); }

  private:
    QPalette before_ = QApplication::palette();
};

TEST_F(Icons, EveryDrawingIsReachableAndEveryNameHasOne) {
    EXPECT_EQ(drawingsIn("icons"), iconNames);
    EXPECT_EQ(drawingsIn("pictures"), pictureNames);
    for (const std::string& name : iconNames)
        EXPECT_FALSE(programIcon(name).isNull()) << name;
    for (const std::string& name : pictureNames)
        EXPECT_FALSE(programPicture(name).isNull()) << name;
}

TEST_F(Icons, ANameWithoutADrawingGivesNoIcon) {
    EXPECT_TRUE(programIcon("no-such-drawing").isNull());
    EXPECT_TRUE(programPicture("program").isNull());
}

TEST_F(Icons, TheWindowAsksForNoDrawingThatIsMissing) {
    EXPECT_THAT(iconNames, testing::IsSupersetOf(namesAskedOf("programIcon")));
    EXPECT_THAT(pictureNames, testing::IsSupersetOf(namesAskedOf("programPicture")));
}

TEST_F(Icons, EachShowsSomethingAtEverySizeAndDensity) {
    for (const std::string& name : iconNames) {
        const QIcon icon = programIcon(name);
        for (const int size : {16, 24, 32}) {
            for (const int ratio : {1, 2}) {
                SCOPED_TRACE(name + " at " + std::to_string(size) + " by " + std::to_string(ratio));
                const QPixmap picture = icon.pixmap(QSize(size, size), ratio);
                EXPECT_EQ(picture.size(), QSize(size, size) * ratio);
                EXPECT_EQ(picture.devicePixelRatio(), ratio);
                EXPECT_GT(inksOf(imageOf(icon, size, ratio), 128).size(), size_t(size * ratio));
            }
        }
    }
}

TEST_F(Icons, StrokesAreNotCutOffAtTheEdge) {
    for (const std::string& name : iconNames) {
        if (name == "program") continue;  // its ground reaches the edge
        EXPECT_FALSE(reachesEdgeOf(imageOf(programIcon(name), 128))) << name;
    }
}

TEST_F(Icons, StrokesCanBeToldFromTheWindowOfEitherScheme) {
    for (const ColourScheme scheme : {ColourScheme::light, ColourScheme::dark}) {
        const QPalette palette = programPalette(scheme);
        QApplication::setPalette(palette);
        for (const std::string& name : iconNames) {
            // The emblem has colours of its own; these two have an area of a thin tint as well.
            if (name == "program" || name == "run" || name == "stop") continue;
            for (const QColor& ink : inksOf(imageOf(programIcon(name), 128)))
                ASSERT_GE(contrast(ink, palette.color(QPalette::Window)), 4.4) << name;
        }
    }
}

TEST_F(Icons, AnIconThatWasMadeEarlierFollowsThePalette) {
    QApplication::setPalette(programPalette(ColourScheme::light));
    const QIcon icon = programIcon("step-3");
    const QImage byDay = imageOf(icon, 32);
    QApplication::setPalette(programPalette(ColourScheme::dark));
    const QImage byNight = imageOf(icon, 32);
    EXPECT_LT(inksOf(byDay).front().lightness(), 160);
    EXPECT_GT(inksOf(byNight).front().lightness(), 160);
    QApplication::setPalette(programPalette(ColourScheme::light));
    EXPECT_EQ(imageOf(icon, 32), byDay);
}

TEST_F(Icons, ASelectedIconHasTheColourOfSelectedText) {
    QApplication::setPalette(programPalette(ColourScheme::light));
    for (const QColor& ink : inksOf(imageOf(programIcon("folder"), 64, 1, QIcon::Selected)))
        EXPECT_GT(ink.lightness(), 250);
}

TEST_F(Icons, ADisabledIconIsFainterThanAnEnabledOne) {
    for (const ColourScheme scheme : {ColourScheme::light, ColourScheme::dark}) {
        const QPalette palette = programPalette(scheme);
        QApplication::setPalette(palette);
        const QColor window = palette.color(QPalette::Window);
        const QColor faint =
            inksOf(imageOf(programIcon("uncheck-all"), 64, 1, QIcon::Disabled)).front();
        EXPECT_EQ(faint, palette.color(QPalette::Disabled, QPalette::WindowText));
        EXPECT_LT(contrast(faint, window),
                  contrast(palette.color(QPalette::WindowText), window) / 2);
    }
    EXPECT_TRUE(inksOf(imageOf(programIcon("program"), 64, 1, QIcon::Disabled), 128).empty());
}

TEST_F(Icons, TheEmblemKeepsItsColoursInEveryPalette) {
    QApplication::setPalette(programPalette(ColourScheme::light));
    const QImage byDay = imageOf(programIcon("program"), 32);
    QApplication::setPalette(programPalette(ColourScheme::dark));
    EXPECT_EQ(imageOf(programIcon("program"), 32), byDay);
}

TEST_F(Icons, PaintingOnADenseSurfaceUsesAllItsPixels) {
    const QIcon icon = programIcon("check-all");
    QImage surface(32, 32, QImage::Format_ARGB32_Premultiplied);
    surface.fill(Qt::transparent);
    surface.setDevicePixelRatio(2);
    QPainter painter(&surface);
    icon.paint(&painter, QRect(0, 0, 16, 16));
    painter.end();
    surface.setDevicePixelRatio(1);
    QImage expected = icon.pixmap(QSize(32, 32), 1.0).toImage();
    EXPECT_EQ(surface.convertToFormat(QImage::Format_ARGB32),
              expected.convertToFormat(QImage::Format_ARGB32));
}

TEST_F(Icons, APictureKeepsItsProportions) {
    EXPECT_EQ(programPicture("splash").actualSize({840, 840}), QSize(840, 520));
    EXPECT_EQ(programPicture("banner").actualSize({300, 300}), QSize(300, 90));
    EXPECT_EQ(programPicture("about").actualSize({380, 280}), QSize(380, 280));
}

TEST_F(Icons, PicturesNeedNoFont) {
    for (const std::string& name : pictureNames) {
        const fs::path path = sources / "assets/pictures" / (name + ".svg");
        EXPECT_TRUE(QSvgRenderer(QString::fromStdString(path.string())).isValid()) << name;
        EXPECT_THAT(textOf(path), testing::Not(testing::HasSubstr("<text"))) << name;
    }
}

}  // namespace
}  // namespace tessarine::tests
