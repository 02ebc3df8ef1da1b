#include <ctime>

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

#include "support/window_fixture.h"

namespace tessarine::tests {
namespace {

class Step4 : public WindowTest {
  protected:
    Step4() {
        start();
        goToStep(4);
    }

    QPlainTextEdit& RTF() { return the<QPlainTextEdit>("RTF"); }
    void write(const std::string& overview) {
        batch.RTF = overview;
        batch.platform().changed("RTF");
    }
    void append(const std::string& more) {
        batch.RTF += more;
        batch.platform().changed("RTF");
    }
};

TEST_F(Step4, TheTextsStandAsTold) {
    EXPECT_EQ(the<QLabel>("Label4").text(), "Fuctions Processing Overview");
    EXPECT_EQ(the<QGroupBox>("Frame_command").title(), "Command Center");
    EXPECT_EQ(the<QPushButton>("CmdBatchAll").text().remove('&'), "Batch All >>");
    EXPECT_EQ(the<QPushButton>("CmdStop").text().remove('&'), "Stop");
    EXPECT_EQ(the<QCheckBox>("chkShowDestination").text().remove('&'),
              "Show destination folder when Finished");
}

TEST_F(Step4, TheTickBoxAndTheProgramAgree) {
    EXPECT_TRUE(the<QCheckBox>("chkShowDestination").isChecked());
    QTest::keyClick(&the("chkShowDestination"), Qt::Key_Space);
    EXPECT_EQ(batch.chkShowDestination, 0);
    batch.chkShowDestination = 1;
    batch.platform().changed("chkShowDestination");
    EXPECT_TRUE(the<QCheckBox>("chkShowDestination").isChecked());
}

TEST_F(Step4, StopWithoutARunSetsTheFlagOnlyAndTheNextRunClearsIt) {
    press("CmdStop");
    EXPECT_TRUE(batch.stopRequested);
    EXPECT_TRUE(desktop.boxes.empty());
    EXPECT_EQ(batch.RTF, "");
    press("CmdBatchAll");
    EXPECT_FALSE(batch.stopRequested);
}

TEST_F(Step4, TheOverviewGrowsAtItsEndWithTheCaretBehindIt) {
    write("1\r\nfirst\r\n");
    EXPECT_EQ(RTF().toPlainText(), "1\nfirst\n");
    RTF().selectAll();
    write(batch.RTF + "second");
    EXPECT_EQ(RTF().toPlainText(), "1\nfirst\nsecond");
    EXPECT_TRUE(RTF().textCursor().atEnd());
    EXPECT_FALSE(RTF().textCursor().hasSelection());
}

TEST_F(Step4, AnotherOverviewReplacesTheFirst) {
    write("2\r\nthe first one\r\n");
    write("3\r\nanother");
    EXPECT_EQ(RTF().toPlainText(), "3\nanother");
    write("4\r\nanother that is longer");
    EXPECT_EQ(RTF().toPlainText(), "4\nanother that is longer");
    write("");
    EXPECT_EQ(RTF().toPlainText(), "");
}

TEST_F(Step4, TheOverviewCannotBeTyped) {
    write("1\r\n");
    QTest::keyClicks(&RTF(), "x");
    EXPECT_EQ(RTF().toPlainText(), "1\n");
}

TEST_F(Step4, TheOverviewOfTenThousandPicturesIsAppendedTo) {
    // A picture writes some hundred bytes; what is written later must not cost more.
    // Time of the processor, which other programs do not stretch.
    const auto secondsOfThousand = [this] {
        const std::clock_t begin = std::clock();
        for (int i = 0; i < 1000; ++i)
            append("\r\n\r\n Processing picture" + std::to_string(i) +
                   ".jpg\r\n Applied Brightness\r\n Processed Image Saved as Sample" +
                   std::to_string(i) + ".jpg");
        return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    };
    write("10000\r\n");
    const double first = secondsOfThousand();
    for (int k = 0; k < 8; ++k)
        secondsOfThousand();
    const double last = secondsOfThousand();
    EXPECT_LT(last, 3 * first + 0.2);
    EXPECT_EQ(RTF().toPlainText().toStdString().size(),
              batch.RTF.size() - 10000 * 4 - 1 /* line ends are one character there */);
}

TEST_F(Step4, TheOverviewGrowsWithTheFrameAndTheCommandsStayAtItsEdge) {
    const QWidget& frame = the("Frame_step4");
    int before = 0;
    for (const QSize size :
         {QSize(500, 400), QSize(640, 480), QSize(1024, 768), QSize(1920, 1080)}) {
        window.resize(size);
        settle();
        const QWidget& commands = the("Frame_command");
        EXPECT_EQ(frame.height() - 1 - commands.geometry().bottom(), 10);
        EXPECT_GT(RTF().height(), before);
        before = RTF().height();
        EXPECT_LT(RTF().geometry().bottom(), commands.y());
        EXPECT_GT(RTF().y(), the("Label4").geometry().bottom());
        for (const char* name : {"CmdBatchAll", "CmdStop", "chkShowDestination"}) {
            EXPECT_TRUE(commands.rect().contains(the(name).geometry())) << name;
            EXPECT_GE(the(name).width(), the(name).sizeHint().width()) << name;
        }
        EXPECT_FALSE(the("CmdStop").geometry().intersects(the("chkShowDestination").geometry()));
    }
}

}  // namespace
}  // namespace tessarine::tests
