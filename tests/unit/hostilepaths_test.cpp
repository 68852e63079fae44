// Any hostile path gives a defined error at once.

#include "support/hostilepaths.h"

#include <algorithm>
#include <memory>

#include <sys/stat.h>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include <velgl/gpumodel.h>
#include <velmodel/modelfiles.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "support/hangguard.h"
#include "support/messagelog.h"
#include "support/recordingcontext.h"
#include "support/withoutrootsrights.h"

namespace Atelier::Vel {

namespace {

using Testing::HangGuard;
using Testing::HostilePath;
using Testing::HostilePaths;
using testing::IsEmpty;
using Testing::MessageLog;
using Testing::RecordingContext;
using Testing::WithoutRootsRights;

// Far more than the 100 ms allowed for an error, because the machine may be busy.
constexpr unsigned int kPatienceSeconds = 5;

class HostilePathsTest : public testing::Test {
protected:
    HostilePathsTest() {
        EXPECT_EQ(chmod(qPrintable(_folder.path()), 0777), 0) << "for the user that replaces root";
    }

    /// Calls `use` with every path, as a user other than root.
    template<typename Use>
    void forEveryPath(Use use) {
        qint64 slowest = 0;
        for (const HostilePath& hostile : _hostile.paths()) {
            SCOPED_TRACE(hostile.kind);
            const WithoutRootsRights asAnybody;
            const HangGuard guard(kPatienceSeconds);
            const MessageLog log;
            QElapsedTimer timer;
            timer.start();
            use(hostile.path);
            slowest = std::max(slowest, timer.nsecsElapsed() / 1000);
            EXPECT_THAT(log.messages(), IsEmpty());
        }
        RecordProperty("SlowestMicroseconds", static_cast<int>(slowest));
    }

    QString path(const QString& name) const { return _folder.filePath(name); }
    QString write(const QString& name, const QByteArray& text) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        return file.fileName();
    }

private:
    HostilePaths _hostile;
    QTemporaryDir _folder;
};

QString loadError(const QString& path) {
    const RecordingContext context;
    QString error;
    const std::unique_ptr<GPUModel> model(loadModelFromOBJFile(path, error));
    EXPECT_EQ(model == nullptr, !error.isNull());
    EXPECT_TRUE(model != nullptr || context.calls().isEmpty());
    return error;
}

// A name that OBJ and MTL text can hold: names end at white space there.
bool isOneToken(const QString& path) {
    return std::none_of(path.cbegin(), path.cend(), [](QChar character) { return character.isSpace(); });
}

} // namespace

TEST_F(HostilePathsTest, AsModelsFailWithThePathAsGiven) {
    forEveryPath([](const QString& hostile) {
        EXPECT_EQ(loadError(hostile), QString("Failed to load OBJ file '%1'").arg(hostile));
    });
}

TEST_F(HostilePathsTest, AsLibrariesFailWithTheResolvedPath) {
    forEveryPath([this](const QString& hostile) {
        if (!isOneToken(hostile))
            return;
        const QString model = write("model.obj", "mtllib " + hostile.toUtf8() + '\n');
        const QString meant = QDir::isRelativePath(hostile) ? path(hostile) : hostile;
        EXPECT_EQ(loadError(model), QString("Failed to load MTL file '%1'").arg(meant));
    });
}

TEST_F(HostilePathsTest, AsMapsAreKeptAndAreNoImages) {
    const QString good = path("good.png");
    ASSERT_TRUE(QImage(2, 3, QImage::Format_ARGB32).save(good));
    EXPECT_EQ(readTextureSize(ModelFiles(), good), QSize(2, 3));
    forEveryPath([this](const QString& hostile) {
        EXPECT_FALSE(readTextureSize(ModelFiles(), hostile).isValid());
        if (!isOneToken(hostile))
            return;
        write("map.mtl", "newmtl red\nmap_Kd " + hostile.toUtf8() + '\n');
        EXPECT_EQ(loadError(write("model.obj", "mtllib map.mtl\n")), QString());
    });
}

TEST_F(HostilePathsTest, AreRejectedInsideAFolderToo) {
    forEveryPath([this](const QString& hostile) {
        EXPECT_EQ(ModelFiles("/").open(hostile), nullptr);
        EXPECT_EQ(ModelFiles(path(QString())).open(hostile), nullptr);
    });
}

} // namespace Atelier::Vel
