// Decimals have a point in every locale.

#include <clocale>
#include <cstdlib>

#include <locale.h>

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>

#include <gmock/gmock.h>

#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

constexpr const char* kDefinition = R"(
LC_CTYPE
copy "POSIX"
END LC_CTYPE
LC_COLLATE
copy "POSIX"
END LC_COLLATE
LC_NUMERIC
decimal_point ","
thousands_sep ""
grouping -1
END LC_NUMERIC
LC_MONETARY
copy "POSIX"
END LC_MONETARY
LC_TIME
copy "POSIX"
END LC_TIME
LC_MESSAGES
copy "POSIX"
END LC_MESSAGES
)";

/// A locale that writes decimals with a comma, made here so that the system needs none.
class LocaleTest : public testing::Test {
protected:
    void SetUp() override {
        if (QStandardPaths::findExecutable("localedef").isEmpty() ||
            !QFile::exists("/usr/share/i18n/locales/POSIX"))
            GTEST_SKIP() << "localedef or the definitions of locales are missing";
        QProcess maker; // also reports categories that these tests do not need
        maker.start("localedef", {"-c", "-i", _folder.write("definition", kDefinition), "-f",
                                  "ANSI_X3.4-1968", _folder.path("comma")});
        ASSERT_TRUE(maker.waitForFinished());
        _surroundings.environment.insert("LOCPATH", _folder.path(""));
        _surroundings.environment.insert("LC_ALL", "comma");
        ASSERT_TRUE(hasDecimalCommas());
    }

    bool hasDecimalCommas() const {
        qputenv("LOCPATH", _folder.path("").toLocal8Bit());
        const locale_t made = newlocale(LC_ALL_MASK, "comma", nullptr);
        qunsetenv("LOCPATH");
        if (made == nullptr)
            return false;
        const locale_t before = uselocale(made);
        const double value = std::strtod("1,5", nullptr);
        uselocale(before);
        freelocale(made);
        return value == 1.5;
    }

    void expectTheSameOutput(const QStringList& arguments) const {
        ProgramSurroundings plain;
        plain.environment.insert("LC_ALL", "C");
        const ProgramResult expected = runProgram(arguments, plain);
        const ProgramResult result = runProgram(arguments, _surroundings);
        EXPECT_EQ(expected.exitCode, 0) << expected.errors.toStdString();
        EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
        EXPECT_FALSE(expected.output.isEmpty());
        EXPECT_TRUE(result.output == expected.output) << arguments.first().toStdString();
    }

    TemporaryFolder _folder;
    ProgramSurroundings _surroundings;
};

} // namespace

TEST_F(LocaleTest, DumpsDoNotChange) {
    expectTheSameOutput({"dump", samplePath("vase")});
}

TEST_F(LocaleTest, PicturesDoNotChange) {
    expectTheSameOutput({"render", samplePath("gear"), "-o", "-", "--resolution", "40,30", "--camera-azimuth",
                         "12.5", "--camera-zoom", "1.25", "--background", "0.1,0.25,0.5"});
}

TEST_F(LocaleTest, SummariesHaveDecimalPoints) {
    const QByteArray text = runProgram({"info", samplePath("oddities")}, _surroundings).output;
    EXPECT_THAT(text.toStdString(), testing::HasSubstr("bounds       -1 -1 -1 to 1 2.2 1\n"));
    EXPECT_THAT(text.toStdString(), testing::ContainsRegex("loaded in    [0-9]+\\.[0-9][0-9] ms"));
}

} // namespace Atelier::Vel::Testing
