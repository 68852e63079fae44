// The models in samples/ equal the output of scripts/make-samples.

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "support/messagelog.h"

namespace Atelier::Vel::Testing {

namespace {

QString committed(const QString& file) {
    return QStringLiteral(VELMODEL_SOURCE_DIR "/samples/") + file;
}

bool makeSamples(const QString& folder) {
    return QProcess::execute(VELMODEL_PYTHON, {VELMODEL_SOURCE_DIR "/scripts/make-samples", folder}) == 0;
}

// The files of the models; the text about them is written by hand.
QStringList filesIn(const QString& folder) {
    QStringList files;
    QDirIterator iterator(folder, {"*.obj", "*.mtl", "*.png"}, QDir::Files, QDirIterator::Subdirectories);
    while (iterator.hasNext())
        files.append(QDir(folder).relativeFilePath(iterator.next()));
    files.sort();
    return files;
}

QByteArray content(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

TEST(SamplesTest, AreReproducedByTheScript) {
    const QTemporaryDir folder;
    const QTemporaryDir again;
    ASSERT_TRUE(makeSamples(folder.path()) && makeSamples(again.path()));
    const QStringList files = filesIn(folder.path());
    EXPECT_EQ(files, filesIn(committed("")));
    EXPECT_EQ(files, filesIn(again.path()));
    for (const QString& file : files) {
        const QString made = folder.filePath(file);
        EXPECT_TRUE(content(made) == content(again.filePath(file))) << file.toStdString();
        // Another version of zlib may compress the same pixels to other bytes.
        if (file.endsWith(".png"))
            EXPECT_EQ(QImage(made), QImage(committed(file))) << file.toStdString();
        else
            EXPECT_TRUE(content(made) == content(committed(file))) << file.toStdString();
    }
}

TEST(SamplesTest, StaySmall) {
    const QStringList files = filesIn(committed(""));
    EXPECT_FALSE(files.isEmpty());
    for (const QString& file : files)
        EXPECT_LT(QFile(committed(file)).size(), 2000000) << file.toStdString();
}

} // namespace

} // namespace Atelier::Vel::Testing
