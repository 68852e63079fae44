// A load whose records are observed: the observer sees every line, and the load is that without an observer.

#include "import/observedload.h"

#include <memory>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

#include <velmodel/objloader.h>

#include "import/obj/objreader.h"
#include "import/recordobserver.h"

namespace Atelier::Vel {

namespace {

class RecordingObserver : public RecordObserver {
public:
    RecordingObserver() { _run->takesColours = true; }

    ObjRun& run() override {
        EXPECT_EQ(_run->records(), 0U);
        return *_run;
    }
    void takeRun(const ObjReader& /*reader*/) override {
        inRuns += _run->records();
        positionSum += sumOf(_run->positions.items, _run->positions.size);
        corners += _run->positionIndices.size;
    }
    void takeRecord(const ObjReader& reader, bool isRead) override {
        ++records;
        EXPECT_EQ(isRead, reader.kind() != ObjReader::Kind::Other && reader.kind() != ObjReader::Kind::End);
        if (reader.kind() == ObjReader::Kind::Position)
            positionSum += sumOf(reader.values(), 3);
        if (reader.kind() == ObjReader::Kind::Face)
            corners += static_cast<quint64>(reader.cornerCount());
        others += reader.kind() == ObjReader::Kind::Other ? 1 : 0;
    }
    void finish() override { ++ends; }

    quint64 inRuns = 0;
    quint64 records = 0; ///< that came one by one
    quint64 others = 0;
    double positionSum = 0;
    quint64 corners = 0;
    int ends = 0;

private:
    static double sumOf(const float* values, size_t count) {
        double sum = 0;
        for (size_t i = 0; i < count; ++i)
            sum += double(values[i]);
        return sum;
    }

    std::unique_ptr<ObjRun> _run = std::make_unique<ObjRun>();
};

template<typename T>
void append(QByteArray& bytes, const T* items, quint64 count) {
    bytes.append(reinterpret_cast<const char*>(items), static_cast<int>(count * sizeof(T)));
}

QByteArray bytesOf(const DrawData& data) {
    QByteArray bytes;
    append(bytes, data.indices().data, data.indices().count);
    for (const DrawData::Attribute& attribute : data.attributes()) {
        bytes += attribute.name.toUtf8();
        append(bytes, static_cast<const char*>(attribute.data), attribute.bytes);
    }
    for (int drawable = 0; drawable < data.drawableCount(); ++drawable)
        for (int command = 0; command < data.commandCount(drawable); ++command) {
            append(bytes, &data.command(drawable, command), 1);
            bytes += data.group(drawable, command).name.toUtf8();
        }
    return bytes;
}

class ObservedLoadTest : public testing::Test {
protected:
    /// Loads a text with and without the observer. Returns: the draw data of both.
    std::pair<QByteArray, QByteArray> load(const QByteArray& text, const LoadOptions& options) {
        const QString path = _folder.filePath("m.obj");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        QString error;
        LoadReport report;
        const DrawData plain = readDrawDataFromOBJFile(path, error, {}, &report, options);
        LoadReport observedReport;
        const DrawData observed = readObservedDrawData(path, error, {}, observedReport, options, _observer);
        EXPECT_TRUE(error.isNull()) << error.toStdString();
        EXPECT_EQ(observedReport.faces, report.faces);
        EXPECT_EQ(observedReport.droppedFaces, report.droppedFaces);
        return {bytesOf(plain), bytesOf(observed)};
    }

    RecordingObserver _observer;

private:
    QTemporaryDir _folder;
};

// More lines than a run holds, of all kinds, plain ones and others.
QByteArray mixedText() {
    QByteArray text = "# a comment\n\nl 1 2\ns off\n";
    for (int i = 0; i < 3000; ++i) {
        const QByteArray number = QByteArray::number(i);
        text +=
            "v " + number + " 0 1\n" + (i % 7 == 0 ? "v " + number + "\t1e0 0\n" : "v 0 1 " + number + "\n");
        text += "v 1 1 1 0.5 0.5 0.5\n";
        text += i % 2 == 0 ? "vn 0 0 1\nvt 0 " + number + "\n" : "vt 0.5 0.25\n";
        text += i % 5 == 0 ? "f -1/-1/-1 -2 -3/-1\n" : "f -1/-1/-1 -2/-1/-1 -3/-1/-1\n";
        text += i % 500 == 0 ? "usemtl other\ng part\n" : "";
    }
    return text;
}

} // namespace

TEST_F(ObservedLoadTest, ObserverSeesEveryLineOnce) {
    load(mixedText(), LoadOptions::forgiving());
    EXPECT_EQ(_observer.ends, 1);
    EXPECT_EQ(_observer.others, 2U + 6U) << "lines of no keyword that the load knows";
    EXPECT_EQ(_observer.inRuns + _observer.records, 3000U * 5 + 1500U + 6U + _observer.others);
    EXPECT_GT(_observer.inRuns, _observer.records) << "most lines are plain";
    EXPECT_EQ(_observer.corners, 9000U);
    double expected = 0;
    for (int i = 0; i < 3000; ++i)
        expected += i + 1 + i + 1 + 3;
    EXPECT_DOUBLE_EQ(_observer.positionSum, expected);
}

TEST_F(ObservedLoadTest, LoadIsThatWithoutObserver) {
    LoadOptions coloured = LoadOptions::forgiving();
    coloured.vertexColours = true;
    coloured.splitObjects = true;
    for (const LoadOptions& options : {LoadOptions(), LoadOptions::forgiving(), coloured}) {
        const auto [plain, observed] = load(mixedText(), options);
        EXPECT_GT(plain.size(), 100'000);
        EXPECT_EQ(observed, plain);
    }
}

TEST_F(ObservedLoadTest, RunsThatDoNotFitBesideEarlierOnesAreKept) {
    // 400 triangles three times are too many faces, 700 faces of five corners are too many corners.
    QByteArray text = "v 0 0 1\nvn 0 0 1\nvt 0 1\n";
    for (const char* line : {"v 1 2 3\n", "vn 0 1 0\n", "vt 0.5 1\n", "f 1/2/3 2/3/4 3/4/5\n",
                             "f 1/2/3 2/3/4 3/4/5 4/5/6 5/6/7\n"})
        for (int part = 0; part < 5; ++part)
            text += QByteArray(line).repeated(part < 3 ? 400 : 700) + "# no plain line\n";
    const auto [plain, observed] = load(text, LoadOptions());
    EXPECT_GT(plain.size(), 10'000);
    EXPECT_EQ(observed, plain);
}

} // namespace Atelier::Vel
