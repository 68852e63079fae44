#include <QtCore/QRegExp>

#include <gmock/gmock.h>

#include "staticobjects.h"

using Atelier::Vel::Testing::original;
using Atelier::Vel::Testing::staticEvents;

// The library sees this function, although the project hides its symbols, in place of Qt's.
// NOLINTBEGIN: its symbol
#pragma GCC visibility push(default)
extern "C" {
void _ZN7QRegExpC1ERK7QStringN2Qt15CaseSensitivityENS_13PatternSyntaxE(void* expression,
                                                                       const QString& pattern,
                                                                       Qt::CaseSensitivity sensitivity,
                                                                       QRegExp::PatternSyntax syntax) {
    const bool isUsual = sensitivity == Qt::CaseSensitive && syntax == QRegExp::RegExp;
    staticEvents() << (isUsual ? pattern : QStringLiteral("other kind of expression"));
    original<void(void*, const QString&, Qt::CaseSensitivity, QRegExp::PatternSyntax)>(
        "_ZN7QRegExpC1ERK7QStringN2Qt15CaseSensitivityENS_13PatternSyntaxE")(expression, pattern, sensitivity,
                                                                             syntax);
}
}
#pragma GCC visibility pop
// NOLINTEND

namespace Atelier::Vel {
namespace {

using Testing::loadLibrary;

// Builder unit, OBJ-import unit, text unit: the order of the sources in the library's CMakeLists.txt.
TEST(TextExpressionsTest, AreMadeOnceAfterTheStaticsOfTheOtherUnits) {
    staticEvents().clear();
    void* const library = loadLibrary();
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(staticEvents().join(' ').toStdString(), "token InstanceInfo token OBJMaterial \\S \\S \\s+");
    staticEvents().clear();
    EXPECT_EQ(dlclose(library), 0);
    EXPECT_TRUE(staticEvents().isEmpty()) << "unloading registers nothing";
}

} // namespace
} // namespace Atelier::Vel
