#include "progressbar.h"

#include <unistd.h>

#include <QtCore/QThread>

#include <gmock/gmock.h>

#include "capturedstream.h"
#include "support/messagelog.h"
#include "terminal.h"

namespace Atelier::Vel::Tool {

namespace {

TEST(ProgressLineTest, GrowsWithTheCompletedShare) {
    EXPECT_EQ(progressLine("cow.obj", 0, 100, 80), "[                              ]   0 % cow.obj");
    EXPECT_EQ(progressLine("cow.obj", 50, 100, 80), "[###############               ]  50 % cow.obj");
    EXPECT_EQ(progressLine("cow.obj", 100, 100, 80), "[##############################] 100 % cow.obj");
}

TEST(ProgressLineTest, KeepsItsWidthOnOneLine) {
    EXPECT_EQ(progressLine(QString(200, 'x'), 1, 3, 50).size(), 50);
    EXPECT_EQ(progressLine("a\nb", 1, 3, 80), "[##########                    ]  33 % a\\x0ab");
}

TEST(ProgressLineTest, SharesOutOfRangeAreClamped) {
    EXPECT_TRUE(progressLine("a", 200, 100, 80).contains(" 100 %"));
    EXPECT_TRUE(progressLine("a", -5, 100, 80).contains("   0 %"));
    EXPECT_TRUE(progressLine("a", 0, 0, 80).contains(" 100 %"));
}

TEST(ProgressLineTest, SharesAreRoundedDown) {
    EXPECT_EQ(progressLine("a", 199, 200, 80), "[############################# ]  99 % a");
    EXPECT_EQ(progressLine("a", 1, 1000, 80), "[                              ]   0 % a");
}

TEST(ProgressLineTest, NarrowLinesHaveAShorterBar) {
    EXPECT_EQ(progressLine("cow.obj: reading", 50, 100, 39), "[#####     ]  50 % cow.obj: reading");
    EXPECT_EQ(progressLine("spaceship.obj: reading", 50, 100, 39), "[#####     ]  50 % spaceship.obj: readi");
    EXPECT_EQ(progressLine("a", 50, 100, 20), "[ ]  50 % a");
    EXPECT_EQ(progressLine("a", 50, 100, 4), "[]  ");
    EXPECT_EQ(progressLine("a", 50, 100, 0), "");
}

using Testing::Terminal;

TEST(ProgressBarTest, EachLineIsShownOnceAndErased) {
    Terminal terminal;
    QByteArray shown;
    {
        ProgressBar bar("/models/cow.obj", ProgressBar::kSmallestFile);
        bar.show({LoadPhase::Reading, 0, ProgressBar::kSmallestFile});
        bar.show({LoadPhase::Reading, 1, ProgressBar::kSmallestFile});
        bar.show({LoadPhase::Reading, ProgressBar::kSmallestFile / 2, ProgressBar::kSmallestFile});
        shown = terminal.text();
    }
    EXPECT_EQ(shown, "\r[                              ]   0 % cow.obj: reading"
                     "\r[###############               ]  50 % cow.obj: reading");
    EXPECT_EQ(terminal.text(), '\r' + QByteArray(55, ' ') + '\r');
}

TEST(ProgressBarTest, EachPhaseHasItsName) {
    Terminal terminal;
    ProgressBar bar("a", ProgressBar::kSmallestFile);
    for (const LoadPhase phase : {LoadPhase::Reading, LoadPhase::Merging, LoadPhase::Triangulating,
                                  LoadPhase::MakingNormals, LoadPhase::Optimising})
        bar.show({phase, 1, 1});
    const QByteArray full = "\r[##############################] 100 % a: ";
    EXPECT_EQ(terminal.text(), full + "reading" + full + "merging vertices" + full + "triangulating   " +
                                   full + "making normals  " + full + "optimising      ")
        << "spaces erase the end of a longer name";
}

TEST(ProgressBarTest, LongNamesAreTruncatedToALine) {
    Terminal terminal;
    ProgressBar bar(QString(100, 'x') + ".obj", ProgressBar::kSmallestFile);
    bar.show({LoadPhase::Reading, 0, 1});
    EXPECT_EQ(terminal.text().size(), 1 + 78) << "a carriage return and less than 80 columns";
}

TEST(ProgressBarTest, LinesFitTheTerminal) {
    for (const int columns : {20, 40, 60, 200}) {
        Terminal terminal;
        terminal.setColumns(columns);
        ProgressBar bar(QString(100, 'x') + ".obj", ProgressBar::kSmallestFile);
        bar.show({LoadPhase::Reading, 0, 1});
        EXPECT_EQ(terminal.text().size(), 1 + std::min(columns - 1, 78)) << columns;
    }
}

TEST(ProgressBarTest, LinesFitATerminalThatBecomesNarrower) {
    Terminal terminal;
    ProgressBar bar(QString(100, 'x') + ".obj", ProgressBar::kSmallestFile);
    bar.show({LoadPhase::Reading, 0, 1});
    terminal.text();
    terminal.setColumns(40);
    bar.show({LoadPhase::Reading, 1, 1});
    EXPECT_EQ(terminal.text().size(), 1 + 39);
}

TEST(ProgressBarTest, LongWorkIsShownAfterItsDelay) {
    Terminal terminal;
    EXPECT_EQ(ProgressBar::kPatienceMilliseconds, 1000);
    {
        constexpr int kOneHour = 3600000;
        ProgressBar patient = ProgressBar::after(kOneHour, "/pictures/cow.png");
        patient.show("drawing", 1, 2);
    }
    EXPECT_EQ(terminal.text(), "");
    ProgressBar bar = ProgressBar::after(0, "/pictures/cow.png");
    bar.show("drawing", 1, 2);
    EXPECT_EQ(terminal.text(), "\r[###############               ]  50 % cow.png: drawing");
    constexpr int kShort = 20;
    ProgressBar delayed = ProgressBar::after(kShort, "cow.png");
    delayed.show("drawing", 0, 2);
    EXPECT_EQ(terminal.text(), "");
    QThread::msleep(kShort + 1);
    delayed.show("drawing", 1, 2);
    EXPECT_EQ(terminal.text(), "\r[###############               ]  50 % cow.png: drawing");
}

TEST(ProgressBarTest, SmallFilesShowNothing) {
    EXPECT_EQ(ProgressBar::kSmallestFile, 16 * 1024 * 1024);
    Terminal terminal;
    {
        ProgressBar bar("cow.obj", ProgressBar::kSmallestFile - 1);
        bar.show({LoadPhase::Reading, 5, 10});
    }
    EXPECT_EQ(terminal.text(), "");
}

TEST(ProgressBarTest, BarThatHasShownNothingErasesNothing) {
    Terminal terminal;
    { const ProgressBar bar("cow.obj", ProgressBar::kSmallestFile); }
    EXPECT_EQ(terminal.text(), "");
}

TEST(ProgressBarTest, FileInPlaceOfATerminalStaysEmpty) {
    Testing::CapturedStream errors(STDERR_FILENO);
    {
        ProgressBar bar("cow.obj", ProgressBar::kSmallestFile);
        bar.show({LoadPhase::Reading, 5, 10});
    }
    EXPECT_EQ(errors.text(), "");
}

} // namespace

} // namespace Atelier::Vel::Tool
