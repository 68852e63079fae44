#include <velmodel/objloader.h>

#include <new>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include "faultyallocator.h"
#include "nastytext.h"
#include "summedload.h"

namespace Atelier::Vel {

namespace {

using Testing::AllocationFault;
using Testing::FaultKind;
using Testing::memoryInUse;
using Testing::SummedLoad;
using Testing::summedLoad;

constexpr std::size_t kNever = ~std::size_t{0};
// A load makes hundreds of requests. If a sanitizer hides those of the heap, tens remain.
constexpr std::size_t kFewRequests = 20;

int openFiles() {
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size();
}

/// Discards messages: a log would have to allocate.
class Silence {
public:
    Silence()
        : _previous(qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {})) {}
    ~Silence() { qInstallMessageHandler(_previous); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    QtMessageHandler _previous;
};

/// The result of a load that was denied memory.
struct DeniedLoad {
    bool isBadAlloc = false;
    bool isAsExpected = false; ///< loaded, with all bytes correct
    std::size_t requests = 0;  ///< the total number that the load made
};

DeniedLoad loadDenied(const QString& path, const SummedLoad& expected, std::size_t first, FaultKind kind) {
    DeniedLoad result;
    const SummedLoad load = summedLoad(path, [&](const QString& name, QString& error) -> GPUModel* {
        try {
            const AllocationFault fault(first, kind);
            return loadModelFromOBJFile(name, error);
        } catch (const std::bad_alloc&) {
            result.isBadAlloc = true;
            return nullptr;
        }
    });
    result.isAsExpected = load == expected;
    result.requests = AllocationFault::requests();
    return result;
}

QString sample(const QString& name) {
    return QStringLiteral(VELMODEL_SOURCE_DIR "/samples/%1/%1.obj").arg(name);
}

class AllocationFaultsTest : public testing::TestWithParam<const char*> {
protected:
    QString model() const {
        const QString name = QString::fromLatin1(GetParam());
        if (name != QLatin1String("nasty"))
            return sample(name);
        Testing::NastyText nasty(3);
        write(QStringLiteral("lib.mtl"), nasty.mtl(40));
        const QByteArray polygon = QByteArray("v 1 2 3\nv 4 5 9\nv 0 -1 2\n").repeated(40) + "f " +
                                   QByteArray("-1 -2 -3 ").repeated(40) + '\n';
        write(QStringLiteral("nasty.obj"),
              "mtllib lib.mtl\n" + nasty.plain(60) + polygon + nasty.obj(60).replace("mtllib", "# mtllib"));
        return _folder.filePath(QStringLiteral("nasty.obj"));
    }

    /// Denies each request in turn. Expects that the load reports it, and that the next load gives the
    /// correct bytes and leaks no memory.
    void denyEach(FaultKind kind) const {
        const Silence silence;
        const QString path = model();
        const QString other = sample(QStringLiteral("oddities"));
        const SummedLoad expected = summedLoad(path);
        ASSERT_TRUE(expected.isLoaded);
        // The first exception of a process allocates memory that stays allocated.
        EXPECT_TRUE(loadDenied(path, expected, 0, kind).isBadAlloc);
        const DeniedLoad granted = loadDenied(path, expected, kNever, kind);
        EXPECT_TRUE(granted.isAsExpected);
        const std::size_t requests = granted.requests;
        ASSERT_GT(requests, kFewRequests);
        const SummedLoad expectedOther = summedLoad(other);
        const std::size_t inUse = memoryInUse();
        const int files = openFiles();
        std::size_t failures = 0;
        for (std::size_t first = 0; first < requests; ++first) {
            failures += isFailure(loadDenied(path, expected, first, kind)) ? 1 : 0;
            ASSERT_TRUE(summedLoad(other) == expectedOther) << first;
            ASSERT_EQ(memoryInUse(), inUse) << first;
        }
        EXPECT_GT(failures, requests / 2);
        EXPECT_EQ(openFiles(), files);
        EXPECT_TRUE(summedLoad(path) == expected);
    }

private:
    /// A load that does not fail gives the correct bytes: a stream that gets no spare capacity works with
    /// less.
    static bool isFailure(const DeniedLoad& denied) {
        EXPECT_TRUE(denied.isBadAlloc || denied.isAsExpected);
        return denied.isBadAlloc;
    }

    void write(const QString& name, const QByteArray& content) const {
        QFile file(_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    QTemporaryDir _folder;
};

} // namespace

TEST_P(AllocationFaultsTest, OneDeniedRequestIsAnErrorWithoutALeak) {
    denyEach(FaultKind::One);
}

TEST_P(AllocationFaultsTest, ExhaustedMemoryIsAnErrorWithoutALeak) {
    denyEach(FaultKind::All);
}

INSTANTIATE_TEST_SUITE_P(Models, AllocationFaultsTest,
                         testing::Values("gear", "mosaic", "oddities", "showpiece", "nasty"));

} // namespace Atelier::Vel
