#include <velmodel/objloader.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <random>

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>

#include "literal/literalobjloader.h"
#include "modeldescription.h"
#include "soundmodel.h"
#include "support/hangguard.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"
#include "support/scale.h"

namespace Atelier::Vel {

namespace {

using Testing::HangGuard;
using Testing::MessageLog;
using Testing::RecordingContext;
using Testing::scaled;
using Testing::unsoundness;

// Far longer than any load of a small file, even on the slowest machine and under a sanitizer.
constexpr unsigned int kPatienceSeconds = 60;
constexpr qint64 kMaxBytesForAllPrefixes = qint64(64) * 1024;

QByteArray contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

QString sharedModels() {
    const QByteArray named = qgetenv("VELMODEL_SHARED_MODELS");
    return named.isEmpty() ? QStringLiteral(VELMODEL_SOURCE_DIR "/../shared/models")
                           : QFile::decodeName(named);
}

/// All OBJ files below a folder, up to a size, sorted.
QStringList objFiles(const QString& folder, qint64 maxBytes) {
    QStringList files;
    for (QDirIterator entries(folder, {QStringLiteral("*.obj")}, QDir::Files, QDirIterator::Subdirectories);
         entries.hasNext();)
        if (const QString file = entries.next(); QFileInfo(file).size() <= maxBytes)
            files << file;
    files.sort();
    return files;
}

/// A copy of a model and of the libraries beside it, for damaging.
class ModelCopy {
public:
    explicit ModelCopy(const QString& path) : _name(QFileInfo(path).fileName()), _text(contentOf(path)) {
        const QFileInfoList neighbours =
            QFileInfo(path).dir().entryInfoList({QStringLiteral("*.mtl")}, QDir::Files);
        for (const QFileInfo& library : neighbours)
            write(library.fileName(), contentOf(library.filePath()));
    }

    const QByteArray& text() const { return _text; }
    QString path(const QString& name) const { return _folder.filePath(name); }
    QString path() const { return path(_name); }
    void write(const QString& name, const QByteArray& content) const {
        // Closing a file that was truncated to zero may flush it to the disk; a new file is faster.
        QFile::remove(path(name));
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }
    void write(const QByteArray& content) const { write(_name, content); }

private:
    QString _name;
    QByteArray _text;
    QTemporaryDir _folder;
};

/// Everything that a load returned.
struct Loaded {
    QString error;
    QStringList facts;
    std::vector<QByteArray> uploads;
    QString unsoundness;

    friend bool operator==(const Loaded& a, const Loaded& b) {
        return a.error == b.error && a.facts == b.facts && a.uploads == b.uploads;
    }
};

template<typename Loader>
Loaded load(const QString& path, Loader loader) {
    const RecordingContext context;
    Loaded loaded;
    const std::unique_ptr<GPUModel> model(loader(path, loaded.error));
    for (const auto& upload : context.recording().uploads)
        loaded.uploads.push_back(upload.bytes);
    if (model != nullptr) {
        loaded.facts = Testing::describe(*model);
        loaded.unsoundness = unsoundness(*model, context.recording());
    }
    return loaded;
}

Loaded load(const QString& path) {
    return load(path, [](const QString& file, QString& error) { return loadModelFromOBJFile(file, error); });
}

Loaded loadLiterally(const QString& path) {
    return load(path,
                [](const QString& file, QString& error) { return Testing::literalLoadModel(file, error); });
}

/// Loads prefixes of a model, from the longest to the shortest, each `step` bytes shorter.
void expectPrefixesLoad(const QString& path, int step) {
    const MessageLog log; // many corners without a value
    const ModelCopy copy(path);
    copy.write(copy.text());
    for (qint64 length = copy.text().size(); length >= 0; length -= step) {
        ASSERT_TRUE(QFile::resize(copy.path(), length));
        const Loaded loaded = load(copy.path());
        ASSERT_EQ(loaded.unsoundness, QString()) << path.toStdString() << " truncated to " << length;
        ASSERT_TRUE(loaded == loadLiterally(copy.path())) << path.toStdString() << " truncated to " << length;
    }
}

/// Only runs with VELMODEL_TEST_SCALE load every prefix and every copy.
bool isLongRun() {
    return scaled(1) > 1;
}

/// Gives about `count` prefixes. The step is odd, so that prefixes end at all places in a token.
int stepFor(const QString& path, qint64 count) {
    return static_cast<int>(QFileInfo(path).size() / count) | 1;
}

/// Makes copies of a model with a few flipped bits, in the model file or in a library.
class BitFlipper {
public:
    BitFlipper(const ModelCopy& copy, unsigned int seed) : _copy(copy), _random(seed) {}

    void write() {
        for (const QString& name :
             QDir(_copy.path(QString())).entryList({QStringLiteral("*.mtl")}, QDir::Files))
            if (!_libraries.contains(name))
                _libraries[name] = contentOf(_copy.path(name));
        for (auto library = _libraries.begin(); library != _libraries.end(); ++library)
            _copy.write(library.key(), below(2) == 0 ? flipped(library.value()) : library.value());
        _copy.write(below(4) != 0 ? flipped(_copy.text()) : _copy.text());
    }

private:
    unsigned int below(unsigned int bound) { return static_cast<unsigned int>(_random() % bound); }
    QByteArray flipped(QByteArray bytes) {
        for (unsigned int count = 1 + below(8); count > 0 && !bytes.isEmpty(); --count) {
            char& byte = bytes.data()[below(static_cast<unsigned int>(bytes.size()))];
            byte = static_cast<char>(static_cast<unsigned char>(byte) ^ (1U << below(8)));
        }
        return bytes;
    }

    const ModelCopy& _copy;
    std::mt19937 _random;
    QMap<QString, QByteArray> _libraries;
};

class DamagedSampleTest : public testing::TestWithParam<const char*> {
protected:
    static QString sample() {
        return QStringLiteral(VELMODEL_SOURCE_DIR "/samples/%1/%1.obj").arg(QString::fromLatin1(GetParam()));
    }
};

} // namespace

TEST_P(DamagedSampleTest, PrefixesLoadAsLiterally) {
    const bool isLarge = QFileInfo(sample()).size() > kMaxBytesForAllPrefixes;
    const int step = isLarge ? stepFor(sample(), 12) : isLongRun() ? 1 : stepFor(sample(), 300);
    ASSERT_NO_FATAL_FAILURE(expectPrefixesLoad(sample(), step));
}

TEST_P(DamagedSampleTest, CopiesWithFlippedBitsLoadAsValidModels) {
    const MessageLog log;
    const ModelCopy copy(sample());
    BitFlipper flipper(copy, 1906);
    qint64 longest = 0;
    for (int i = isLongRun() ? 10'000 : copy.text().size() > kMaxBytesForAllPrefixes ? 20 : 200; i > 0; --i) {
        flipper.write();
        const HangGuard guard(kPatienceSeconds);
        const std::clock_t start = std::clock();
        const Loaded loaded = load(copy.path());
        longest = std::max<qint64>(longest, (std::clock() - start) * 1000 / CLOCKS_PER_SEC);
        ASSERT_EQ(loaded.unsoundness, QString()) << "copy " << i;
        ASSERT_TRUE(loaded.error.isNull() ||
                    loaded.error.startsWith(QLatin1String("Failed to load MTL file")));
    }
    RecordProperty("longest_load_ms", static_cast<int>(longest));
}

INSTANTIATE_TEST_SUITE_P(Samples, DamagedSampleTest,
                         testing::Values("gear", "mosaic", "oddities", "showpiece", "stairs", "vase"));

TEST(DamagedSharedModelTest, PrefixesLoadAsLiterally) {
    const QStringList files = objFiles(sharedModels(), kMaxBytesForAllPrefixes);
    if (files.isEmpty())
        GTEST_SKIP() << "no models at " << sharedModels().toStdString();
    for (const QString& file : files)
        ASSERT_NO_FATAL_FAILURE(expectPrefixesLoad(file, isLongRun() ? 1 : stepFor(file, 20)));
}

} // namespace Atelier::Vel
