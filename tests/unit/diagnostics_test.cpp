#include "diagnostics.h"

#include <QtCore/QTextCodec>

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel {

TEST(DiagnosticsTest, AssertionsAreCriticalWithAFixedPlaceAndPercentSignsEscaped) {
    const Testing::MessageLog log;
    reportAssertion(QStringLiteral("a % b == 0 %"), QStringLiteral("100 %s"), 12);
    ASSERT_EQ(log.messages().size(), 1U);
    EXPECT_EQ(log.messages()[0].level, QtCriticalMsg);
    EXPECT_EQ(log.messages()[0].text,
              QStringLiteral("[modelbuilder:12] [ !! ] Assertion 'a \\% b == 0 \\%' failed: 100 %s"));
    EXPECT_FALSE(log.messages()[0].hasContext);
}

TEST(DiagnosticsTest, WarningsNameTheirSubject) {
    const Testing::MessageLog log;
    const QString purpose = QStringLiteral("die Fläche %1");
    reportMissingStream(purpose);
    reportMissingObject(purpose);
    reportRefusedData(purpose);
    reportOutsideFile(QStringLiteral("ä/b"), QStringLiteral("/ö"));
    EXPECT_THAT(log.texts(QtWarningMsg),
                testing::ElementsAre(
                    QStringLiteral("Unable to upload: no stream could be made for die Fläche %1"),
                    QStringLiteral("Unable to upload: the context made no object for die Fläche %1"),
                    QStringLiteral("Data for die Fläche %1 refused: a stream holds at most 2147483647 bytes"),
                    QStringLiteral("'ä/b' is not read: it lies outside of the model's folder '/ö'")));
}

// Qt reads what it is given as UTF-8.
TEST(DiagnosticsTest, NamesAreInTheEncodingOfTheLocale) {
    QTextCodec* const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const Testing::MessageLog log;
    const QString name = QStringLiteral("Fläche");
    reportAssertion(name, name, 1);
    reportMissingStream(name);
    reportMissingObject(name);
    reportRefusedData(name);
    reportOutsideFile(name, name);
    QTextCodec::setCodecForLocale(before);
    ASSERT_EQ(log.messages().size(), 5U);
    for (const auto& message : log.messages()) {
        EXPECT_TRUE(message.text.contains(QStringLiteral("Fl\uFFFDche"))) << message.text.toStdString();
        EXPECT_FALSE(message.text.contains(name));
    }
}

} // namespace Atelier::Vel
