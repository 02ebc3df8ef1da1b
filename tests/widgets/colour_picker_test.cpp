#include "widgets/colour_picker.h"

#include <functional>

#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <gtest/gtest.h>

#include "support/window_driver.h"
#include "widgets/arithmetic/colour_model.h"

namespace tessarine::tests {
namespace {

constexpr int32_t start = packed(67, 211, 54);
constexpr int32_t untouched = 0x123456;

class ColourPicker : public testing::Test {
  protected:
    /// Does something while the dialog is open, and closes it if that did not.
    bool open(int32_t colour, const std::function<void()>& act) {
        QTimer::singleShot(0, &picker, [&] {
            QApplication::processEvents();
            act();
            if (picker.isVisible()) picker.reject();
        });
        return picker.Init(colour, result);
    }
    QLineEdit& field(const char* name) { return control<QLineEdit>(picker, name); }
    std::string text(const char* name) { return field(name).text().toStdString(); }
    /// Selects a field's text and types another.
    void type(const char* name, const char* keys) {
        field(name).setFocus();
        field(name).selectAll();
        QTest::keyClicks(&field(name), keys);
    }
    /// Waits until a pending entry was applied.
    void waitForEntry() {
        const auto& timer = control<QTimer>(picker, "tmrKeyboard");
        EXPECT_TRUE(QTest::qWaitFor([&] { return !timer.isActive(); }));
    }
    int32_t pixelAt(const QWidget& area, QPoint place) {
        const QRgb pixel = picker.grab().toImage().pixel(area.pos() + place);
        return packed(static_cast<uint8_t>(qRed(pixel)), static_cast<uint8_t>(qGreen(pixel)),
                      static_cast<uint8_t>(qBlue(pixel)));
    }

    fGradient picker;
    int32_t result = untouched;
};

TEST_F(ColourPicker, HasItsCaptions) {
    EXPECT_EQ(picker.windowTitle(), "Color Picker");
    EXPECT_EQ(control<QPushButton>(picker, "cmdOK").text().remove('&'), "OK");
    EXPECT_EQ(control<QPushButton>(picker, "cmdCancel").text().remove('&'), "Cancel");
    EXPECT_EQ(control<QCheckBox>(picker, "chkWebSafe").text().remove('&'), "Web colors only");
    EXPECT_EQ(control<QCheckBox>(picker, "chkAccel").text().remove('&'), "Accelerate display");
    EXPECT_EQ(control<QTimer>(picker, "tmrKeyboard").interval(), 500);
}

TEST_F(ColourPicker, GivesTheColourOnOkOnly) {
    EXPECT_TRUE(open(start, [&] { click(control(picker, "cmdOK")); }));
    EXPECT_EQ(result, start);
    result = untouched;
    EXPECT_FALSE(open(5, [&] {
        type("txtRed", "200");
        waitForEntry();
        EXPECT_EQ(picker.Color(), packed(200, 0, 0));
        click(control(picker, "cmdCancel"));
    }));
    EXPECT_EQ(result, untouched);
    EXPECT_FALSE(open(5, [&] { picker.close(); }));
    EXPECT_EQ(result, untouched);
}

TEST_F(ColourPicker, TakesAllOnesForBlack) {
    EXPECT_TRUE(open(-1, [&] { click(control(picker, "cmdOK")); }));
    EXPECT_EQ(result, 0);
}

TEST_F(ColourPicker, ShowsAColourInEveryField) {
    open(start, [&] {
        EXPECT_EQ(text("txtRed") + " " + text("txtGreen") + " " + text("txtBlue"), "67 211 54");
        EXPECT_EQ(text("txtHue") + " " + text("txtSat") + " " + text("txtBri"), "115 74 83");
        EXPECT_EQ(text("txtCyan") + " " + text("txtMagenta") + " " + text("txtYellow") + " " +
                      text("txtBlack"),
                  "56 0 61 17");
        EXPECT_EQ(text("txtLabLuminance") + " " + text("txtLabA") + " " + text("txtLabB"),
                  "75.0 -33.5 31.9");
        EXPECT_EQ(text("txtNewColor"), "43D336");
        for (const char* name : {"txtCyan", "txtMagenta", "txtYellow", "txtBlack",
                                 "txtLabLuminance", "txtLabA", "txtLabB", "txtNewColor"})
            EXPECT_TRUE(field(name).isReadOnly()) << name;
    });
}

TEST_F(ColourPicker, EnterPressesOkAndEscCancels) {
    EXPECT_TRUE(open(start, [&] { QTest::keyClick(&field("txtHue"), Qt::Key_Return); }));
    EXPECT_TRUE(open(start, [&] { QTest::keyClick(&control(picker, "imgRect"), Qt::Key_Enter); }));
    EXPECT_FALSE(open(start, [&] { QTest::keyClick(&field("txtHue"), Qt::Key_Escape); }));
}

TEST_F(ColourPicker, EnterAppliesAPendingEntry) {
    EXPECT_TRUE(open(start, [&] {
        type("txtRed", "255");
        EXPECT_EQ(picker.Color(), start);
        QTest::keyClick(&field("txtRed"), Qt::Key_Return);
    }));
    EXPECT_EQ(result, packed(255, 211, 54));
}

TEST_F(ColourPicker, TypingIsAppliedWhenTheKeysRest) {
    open(start, [&] {
        auto& timer = control<QTimer>(picker, "tmrKeyboard");
        type("txtBri", "1");
        QTest::qWait(300);
        QTest::keyClicks(&field("txtBri"), "0");
        QTest::qWait(300);
        EXPECT_EQ(picker.Color(), start);
        EXPECT_TRUE(timer.isActive());
        QTest::qWait(300);
        EXPECT_FALSE(timer.isActive());
        EXPECT_EQ(text("txtBri"), "10");
        EXPECT_EQ(picker.Color(), HsbToRgb({115, 74, 10}));
    });
}

TEST_F(ColourPicker, FieldsTakeOnlyDigitsAndBackspace) {
    open(start, [&] {
        type("txtGreen", "1-a.2 ");
        EXPECT_EQ(text("txtGreen"), "12");
        QTest::keyClick(&field("txtGreen"), Qt::Key_Home);
        QTest::keyClick(&field("txtGreen"), Qt::Key_Delete);
        QTest::keyClick(&field("txtGreen"), Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(text("txtGreen"), "12");
        QTest::keyClick(&field("txtGreen"), Qt::Key_End);
        QTest::keyClick(&field("txtGreen"), Qt::Key_Backspace);
        EXPECT_EQ(text("txtGreen"), "1");
        QTest::keyClick(&field("txtGreen"), Qt::Key_Backspace);
        EXPECT_EQ(text("txtGreen"), "0");
        EXPECT_EQ(field("txtGreen").selectedText(), "0");
        QTest::keyClicks(&field("txtGreen"), "999");
        EXPECT_EQ(text("txtGreen"), "255");
    });
}

TEST_F(ColourPicker, SpinsAreAppliedAtOnce) {
    open(start, [&] {
        QTest::keyClick(&control<QAbstractSpinBox>(picker, "updRed"), Qt::Key_Up);
        EXPECT_EQ(picker.Color(), packed(68, 211, 54));
        control<QAbstractSpinBox>(picker, "updRed").stepBy(500);
        EXPECT_EQ(text("txtRed"), "255");
        EXPECT_EQ(picker.Color(), packed(255, 211, 54));
        control<QAbstractSpinBox>(picker, "updHue").stepBy(-500);
        EXPECT_EQ(text("txtHue"), "0");
    });
}

TEST_F(ColourPicker, TypingInTheOtherFamilyKeepsBoth) {
    open(start, [&] {
        type("txtRed", "255");
        type("txtBri", "5");
        EXPECT_EQ(picker.Color(), packed(255, 211, 54));
        EXPECT_EQ(text("txtBri"), "5");
        waitForEntry();
        EXPECT_EQ(picker.Color(), HsbToRgb({47, 79, 5}));
    });
}

TEST_F(ColourPicker, TheMousePicksOnBothPictures) {
    open(start, [&] {
        QWidget& bar = control(picker, "imgBar");
        QWidget& rect = control(picker, "imgRect");
        QTest::mousePress(&bar, Qt::LeftButton, {}, {3, bar.height() - 1});
        EXPECT_EQ(text("txtHue"), "0");
        QTest::mouseMove(&bar, {3, -20});
        EXPECT_EQ(text("txtHue"), "359");
        QTest::mouseRelease(&bar, Qt::LeftButton, {}, {3, bar.height() + 9});
        EXPECT_EQ(text("txtHue"), "0");
        QTest::mouseMove(&bar, {3, 3});
        EXPECT_EQ(text("txtHue"), "0");
        QTest::mouseClick(&rect, Qt::LeftButton, {}, {rect.width() - 1, 0});
        EXPECT_EQ(picker.Color(), packed(255, 0, 0));
        QTest::mouseClick(&rect, Qt::RightButton, {}, {0, 0});
        EXPECT_EQ(picker.Color(), packed(255, 0, 0));
    });
}

TEST_F(ColourPicker, ADoubleClickOnTheRectanglePicksAndPressesOk) {
    EXPECT_TRUE(open(start, [&] {
        QWidget& rect = control(picker, "imgRect");
        QTest::mouseDClick(&rect, Qt::LeftButton, {}, {0, -1});
    }));
    EXPECT_EQ(result, 0xFFFFFF);
}

TEST_F(ColourPicker, ArrowKeysGoToTheNeighbouringPlace) {
    open(HsbToRgb({180, 50, 50}), [&] {
        QWidget& rect = control(picker, "imgRect");
        const int saturation = field("txtSat").text().toInt();
        for (int i = 0; i < 6; ++i)
            QTest::keyClick(&rect, Qt::Key_Right);
        EXPECT_GT(field("txtSat").text().toInt(), saturation);
        const int brightness = field("txtBri").text().toInt();
        QTest::keyClick(&rect, Qt::Key_Down, Qt::ShiftModifier);
        EXPECT_LT(field("txtBri").text().toInt(), brightness);
        QTest::keyClick(&control(picker, "imgBar"), Qt::Key_PageUp);
        EXPECT_GT(field("txtHue").text().toInt(), 180);
    });
}

TEST_F(ColourPicker, AHeldArrowKeyReachesTheEndOfThePicture) {
    open(0, [&] {
        QWidget& rect = control(picker, "imgRect");
        const auto hold = [&](Qt::Key key) {
            for (int i = 0; i < rect.width(); ++i)
                QTest::keyClick(&rect, key);
        };
        click(control(picker, "optRed"));
        hold(Qt::Key_Right);
        EXPECT_EQ(picker.Color(), packed(0, 255, 0));
        click(control(picker, "chkWebSafe"));
        hold(Qt::Key_Left);
        EXPECT_EQ(picker.Color(), 0);
    });
}

TEST_F(ColourPicker, ThePicturesStandOnTheScreenAsTheyWereMade) {
    open(HsbToRgb({0, 30, 30}), [&] {
        QWidget& rect = control(picker, "imgRect");
        const QWidget& bar = control(picker, "imgBar");
        const QPoint corner(rect.width() - 1, 0);
        EXPECT_EQ(pixelAt(rect, corner), packed(255, 0, 0));
        EXPECT_EQ(pixelAt(rect, {0, 0}), 0xFFFFFF);
        EXPECT_EQ(pixelAt(rect, {rect.width() - 1, rect.height() - 1}), 0);
        EXPECT_EQ(pixelAt(bar, {0, bar.height() - 1}), packed(255, 0, 0));
        click(control(picker, "optGreen"));
        EXPECT_EQ(pixelAt(bar, {15, 0}), packed(0, 255, 0));
        click(control(picker, "chkAccel"));
        EXPECT_EQ(pixelAt(rect, {0, rect.height() - 1}), packed(0, greenOf(picker.Color()), 0));
        EXPECT_EQ(pixelAt(rect, corner), packed(255, greenOf(picker.Color()), 255));
    });
}

TEST_F(ColourPicker, CirclesMarkThePlace) {
    open(packed(255, 255, 255), [&] {
        const QWidget& rect = control(picker, "imgRect");
        QTest::mouseClick(&control(picker, "imgRect"), Qt::LeftButton, {}, {40, 40});
        // On a light colour the middle circle is black and the two beside it white.
        EXPECT_LT(pixelAt(rect, {44, 40}), pixelAt(rect, {43, 40}));
        EXPECT_LT(redOf(pixelAt(rect, {44, 40})), 64);
        EXPECT_GT(redOf(pixelAt(rect, {45, 40})), 192);
        EXPECT_GT(redOf(pixelAt(rect, {43, 40})), 192);
    });
}

TEST_F(ColourPicker, WebColoursGreyTheAcceleration) {
    open(start, [&] {
        EXPECT_TRUE(control(picker, "chkAccel").isEnabled());
        click(control(picker, "chkWebSafe"));
        EXPECT_FALSE(control(picker, "chkAccel").isEnabled());
        EXPECT_EQ(picker.Color(), packed(51, 204, 51));
        EXPECT_EQ(text("txtNewColor"), "33CC33");
        click(control(picker, "chkWebSafe"));
        EXPECT_TRUE(control(picker, "chkAccel").isEnabled());
    });
}

TEST_F(ColourPicker, AClickOnTheOldColourBringsItBack) {
    EXPECT_TRUE(open(start, [&] {
        QTest::mouseClick(&control(picker, "imgRect"), Qt::LeftButton, {}, {0, -1});
        ASSERT_EQ(picker.Color(), 0xFFFFFF);
        click(control(picker, "labOld"));
        EXPECT_EQ(text("txtHue") + " " + text("txtSat") + " " + text("txtBri"), "115 74 83");
        click(control(picker, "cmdOK"));
    }));
    EXPECT_EQ(result, start);
}

TEST_F(ColourPicker, IsSizedByItsRule) {
    open(start, [&] {
        const QWidget& rect = control(picker, "imgRect");
        const QWidget& bar = control(picker, "imgBar");
        for (const QSize size : {QSize(800, 600), QSize(803, 555), QSize(1111, 731)}) {
            picker.resize(size);
            QApplication::processEvents();
            EXPECT_EQ(rect.width(),
                      (size.width() - control(picker, "fraNumeric").width() - 76) / 6 * 6);
            EXPECT_EQ(rect.height(), size.height() - 20 - control(picker, "chkWebSafe").height());
            EXPECT_EQ(bar.width(), 16);
            EXPECT_EQ(bar.height(), rect.height());
        }
    });
}

TEST_F(ColourPicker, CutsNothingOffAtItsSmallest) {
    open(start, [&] {
        for (const char* family : {"DejaVu Sans", "Noto Sans"})
            for (const int points : {9, 10, 11}) {
                SCOPED_TRACE(std::string(family) + " " + std::to_string(points));
                picker.setFont(QFont(family, points));
                picker.resize(1, 1);
                QApplication::processEvents();
                // With a title of 30 pixels it fits on a screen of 640 by 480.
                EXPECT_LE(picker.width(), 640);
                EXPECT_LE(picker.height(), 450);
                EXPECT_GE(control(picker, "imgRect").width(), 120);
                for (const QWidget* one : picker.findChildren<QWidget*>()) {
                    if (!one->isVisible() || one->objectName().isEmpty()) continue;
                    SCOPED_TRACE(one->objectName().toStdString());
                    EXPECT_TRUE(one->parentWidget()->rect().contains(one->geometry()));
                    if (!qobject_cast<const QAbstractButton*>(one)) continue;
                    EXPECT_GE(one->width(), one->sizeHint().width());
                }
                const QList<QWidget*> outer =
                    picker.findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
                for (const QWidget* one : outer)
                    for (const QWidget* other : outer)
                        EXPECT_TRUE(one == other || !one->geometry().intersects(other->geometry()))
                            << one->objectName().toStdString() << " on "
                            << other->objectName().toStdString();
            }
    });
}

TEST_F(ColourPicker, HasANameAndAPlaceForEveryControl) {
    for (const char* name :
         {"imgRect",         "imgBar",  "optHue",   "optSat",      "optBri",    "optRed",
          "optGreen",        "optBlue", "updHue",   "updSat",      "updBri",    "updRed",
          "updGreen",        "updBlue", "txtCyan",  "txtMagenta",  "txtYellow", "txtBlack",
          "txtLabLuminance", "txtLabA", "txtLabB",  "txtNewColor", "labOld",    "chkWebSafe",
          "chkAccel",        "cmdOK",   "cmdCancel"}) {
        const QWidget& one = control(picker, name);
        EXPECT_FALSE(one.accessibleName().isEmpty()) << name;
        EXPECT_TRUE(one.focusPolicy() & Qt::TabFocus) << name;
    }
}

TEST_F(ColourPicker, PicturesTellTheirValuesToThoseWhoDoNotSeeThem) {
    open(start, [&] {
        QWidget& bar = control(picker, "imgBar");
        QWidget& rect = control(picker, "imgRect");
        EXPECT_EQ(bar.accessibleName(), "Hue");
        EXPECT_EQ(bar.accessibleDescription(), "Hue 115");
        EXPECT_EQ(rect.accessibleName(), "Saturation and brightness");
        EXPECT_EQ(rect.accessibleDescription(), "Saturation 74, brightness 83");
        QTest::mouseClick(&rect, Qt::LeftButton, {}, {rect.width() - 1, 0});
        EXPECT_EQ(rect.accessibleDescription(), "Saturation 100, brightness 100");
        EXPECT_EQ(control(picker, "labNew").accessibleDescription(),
                  QString::fromStdString(text("txtNewColor")));
        click(control(picker, "optGreen"));
        EXPECT_EQ(bar.accessibleDescription(), "Green 255");
        EXPECT_EQ(rect.accessibleDescription(), "Red " + field("txtRed").text() + ", blue 0");
    });
}

TEST_F(ColourPicker, MnemonicsAreUnique) {
    QString letters;
    for (const QAbstractButton* button : picker.findChildren<QAbstractButton*>())
        if (const qsizetype at = button->text().indexOf('&'); at >= 0)
            letters += button->text().at(at + 1).toUpper();
    EXPECT_EQ(letters.size(), 10);
    for (const QChar letter : letters)
        EXPECT_EQ(letters.count(letter), 1) << letters.toStdString();
}

TEST(ColourPickers, MayGoWhileTheyAreShown) {
    auto picker = std::make_unique<fGradient>();
    picker->show();
    picker->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(picker.get()));
    control(*picker, "imgRect").setFocus();
    picker.reset();
    settle();
}

}  // namespace
}  // namespace tessarine::tests
