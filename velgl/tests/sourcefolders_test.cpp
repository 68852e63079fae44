#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

// The folders of the sources, and which of them may include which.
namespace Atelier::Vel::Testing {

namespace {

/// The folders in order: each may include itself and those before it.
const QStringList kFolders{"context", "state", "objects", "instances", "drawing"};

/// Returns: the paths in quotes that the file includes, such as "context/log.h".
QStringList includesOf(const QString& path) {
    static const QRegularExpression include("^#include \"([^\"]+)\"$", QRegularExpression::MultilineOption);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text)) << path.toStdString();
    QStringList paths;
    QRegularExpressionMatchIterator matches = include.globalMatch(QString::fromUtf8(file.readAll()));
    while (matches.hasNext())
        paths << matches.next().captured(1);
    return paths;
}

/// Returns: the includes of all files in a folder.
QStringList includesOfFolder(const QString& folder) {
    const QDir directory(QStringLiteral(VELGL_SOURCES "/") + folder);
    QStringList paths;
    for (const QString& file : directory.entryList(QDir::Files))
        paths << includesOf(directory.filePath(file));
    return paths;
}

} // namespace

TEST(SourceFoldersTest, SourcesStandInTheKnownFolders) {
    const QDir sources(QStringLiteral(VELGL_SOURCES));
    const QStringList found = sources.entryList(QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    QStringList known = kFolders;
    known.sort();
    EXPECT_EQ(found, known);
}

TEST(SourceFoldersTest, IncludesPointToEarlierFoldersOnly) {
    for (int folder = 0; folder < kFolders.size(); ++folder) {
        const QStringList includes = includesOfFolder(kFolders[folder]);
        EXPECT_FALSE(includes.isEmpty()) << kFolders[folder].toStdString();
        for (const QString& include : includes) {
            const int target = kFolders.indexOf(include.section('/', 0, 0));
            EXPECT_TRUE(target >= 0 && target <= folder)
                << kFolders[folder].toStdString() << " includes " << include.toStdString();
        }
    }
}

} // namespace Atelier::Vel::Testing
