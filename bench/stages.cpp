// Measures the stages of a load one by one. Linked with the object files of the library, whose stages are not
// exported. The input is input A of the comparison, at a tenth of its size.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>
#include <QtGui/QImage>

#include <benchmark/benchmark.h>

#include <velgl/gpumodel.h>
#include <velgl/instancedata.h>
#include <velgl/opengldevicecontext.h>
#include <velmodel/modelbuilder.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

#include "acceptingcontext.h"
#include "geometry/merging/vertexmerging.h"
#include "geometry/normals.h"
#include "geometry/triangulation/polygontriangulator.h"
#include "import/obj/plainlines.h"
#include "import/text/linesource.h"
#include "import/text/numbers.h"
#include "inputs.h"

namespace Atelier::Vel::Bench {

namespace {

QString inputDirectory;

/// The input of the stages.
struct Input {
    QString path;
    QByteArray text; ///< with padding before and after it
    qint64 textBytes = 0;
    std::vector<float> positions;
    std::vector<float> normals;
    std::vector<float> texCoords;
    std::vector<quint32> positionIndices;
    std::vector<quint32> normalIndices;
    std::vector<quint32> texCoordIndices;

    const char* begin() const { return text.constData() + LineSource::kPadding; }
    const char* end() const { return begin() + textBytes; }
};

template<typename T, size_t N>
void moveTo(std::vector<T>& all, FixedList<T, N>& some) {
    all.insert(all.end(), some.items, some.items + some.size);
    some.size = 0;
}

void takeRun(Input& input, ObjRun& run) {
    moveTo(input.positions, run.positions);
    moveTo(input.normals, run.normals);
    moveTo(input.texCoords, run.texCoords);
    moveTo(input.positionIndices, run.positionIndices);
    moveTo(input.normalIndices, run.normalIndices);
    moveTo(input.texCoordIndices, run.texCoordIndices);
    run.cornerCounts.size = 0;
}

const char* nextLine(const char* at, const char* end) {
    return std::find(at, end, '\n') + 1;
}

Input readInput() {
    const auto& kind = comparedKinds().first();
    Input input;
    QDir().mkpath(inputDirectory);
    input.path = generateInput(kind, kind.quickSize, inputDirectory);
    QFile file(input.path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(input.path));
    const QByteArray padding(int(LineSource::kPadding), '\n');
    input.textBytes = file.size();
    input.text = padding + file.readAll() + padding;

    // The parser declines the first line of each kind. With counts that start at one it accepts that line.
    ObjLineCounts counts;
    counts.positions = counts.normals = counts.texCoords = 1;
    const auto run = std::make_unique<ObjRun>();
    for (const char* at = input.begin(); at != input.end();) {
        const char* const taken = parsePlainLines(at, input.end(), counts, *run, findWideParser());
        at = taken == at ? nextLine(at, input.end()) : taken;
        takeRun(input, *run);
    }
    return input;
}

const Input& input() {
    static const Input theInput = readInput();
    return theInput;
}

qint64 cornerCount() {
    return qint64(input().positionIndices.size());
}

void reportBytes(benchmark::State& state, qint64 bytesPerRound) {
    state.SetBytesProcessed(int64_t(state.iterations()) * bytesPerRound);
}

void reportItems(benchmark::State& state, qint64 itemsPerRound) {
    state.SetItemsProcessed(int64_t(state.iterations()) * itemsPerRound);
}

void BM_Lines(benchmark::State& state) {
    for (auto round : state) {
        QFile file(input().path);
        file.open(QIODevice::ReadOnly | QIODevice::Text);
        QTextStream stream(&file);
        LineSource lines(&stream);
        qint64 count = 0;
        while (lines.next())
            ++count;
        benchmark::DoNotOptimize(count);
    }
    reportBytes(state, input().textBytes);
}
BENCHMARK(BM_Lines)->Unit(benchmark::kMillisecond);

void BM_Numbers(benchmark::State& state) {
    const std::vector<std::string> spellings{"0.123456", "-1.500000", "12.345678",    "-0.000001",
                                             "3",        "1e-3",      "123.456789012"};
    for (auto round : state)
        for (const auto& spelling : spellings) {
            float value = 0;
            parseFloat(spelling.data(), spelling.data() + spelling.size(), value);
            benchmark::DoNotOptimize(value);
        }
    reportItems(state, qint64(spellings.size()));
}
BENCHMARK(BM_Numbers);

void parseAll(WideParser* wideParser, ObjRun& run) {
    ObjLineCounts counts;
    counts.positions = counts.normals = counts.texCoords = 1;
    for (const char* at = input().begin(); at != input().end();) {
        const char* const taken = parsePlainLines(at, input().end(), counts, run, wideParser);
        at = taken == at ? nextLine(at, input().end()) : taken;
        benchmark::DoNotOptimize(run.positions.items[0]);
        run.positions.size = run.normals.size = run.texCoords.size = run.cornerCounts.size = 0;
        run.positionIndices.size = run.normalIndices.size = run.texCoordIndices.size = 0;
    }
}

void BM_Records(benchmark::State& state, WideParser* parser) {
    const auto run = std::make_unique<ObjRun>();
    for (auto round : state)
        parseAll(parser, *run);
    reportBytes(state, input().textBytes);
}
// If the processor lacks the instructions of a parser, the portable parser is measured instead.
BENCHMARK_CAPTURE(BM_Records, Avx512, findAvx512Parser())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Records, Sse41, findSse41Parser())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Records, Portable, nullptr)->Unit(benchmark::kMillisecond);

CornerAttribute attributeOf(const std::vector<float>& values, const std::vector<quint32>& indices,
                            quint64 components) {
    CornerAttribute attribute;
    attribute.indices = indices.data();
    attribute.indexCount = indices.size();
    attribute.values = reinterpret_cast<const unsigned char*>(values.data());
    attribute.valueCount = values.size() / components;
    attribute.stride = components * sizeof(float);
    return attribute;
}

VertexMerging merged(std::vector<quint32>& vertexOfCorner) {
    vertexOfCorner.resize(input().positionIndices.size());
    return VertexMerging({attributeOf(input().normals, input().normalIndices, 3),
                          attributeOf(input().texCoords, input().texCoordIndices, 2),
                          attributeOf(input().positions, input().positionIndices, 3)},
                         quint32(vertexOfCorner.size()), vertexOfCorner.data(), {0x5EED, {}, {}});
}

void BM_Merging(benchmark::State& state) {
    std::vector<quint32> vertexOfCorner;
    for (auto round : state)
        benchmark::DoNotOptimize(merged(vertexOfCorner).vertexCount());
    reportItems(state, cornerCount());
}
BENCHMARK(BM_Merging)->Unit(benchmark::kMillisecond);

void BM_Triangles(benchmark::State& state) {
    PolygonTriangulator triangulator;
    const auto* const corners = reinterpret_cast<const int*>(input().positionIndices.data());
    const float* const positions = input().positions.data();
    for (auto round : state) {
        for (qint64 corner = 0; corner < cornerCount(); corner += 3) {
            unsigned int triangle[3];
            triangulator.triangulate(3, corners + corner, positions, triangle);
            benchmark::DoNotOptimize(triangle);
        }
    }
    reportItems(state, cornerCount() / 3);
}
BENCHMARK(BM_Triangles)->Unit(benchmark::kMillisecond);

void BM_Normals(benchmark::State& state) {
    const auto& positions = input().positions;
    std::vector<float> normals(positions.size());
    for (auto round : state)
        generateVertexNormals(positions.data(), positions.size(), input().positionIndices.data(),
                              input().positionIndices.size(), quint32(positions.size() / 3), normals.data());
    reportItems(state, cornerCount() / 3);
}
BENCHMARK(BM_Normals)->Unit(benchmark::kMillisecond);

void BM_Upload(benchmark::State& state) {
    OpenGLDeviceContext::setCurrent(makeAcceptingContext());
    ModelBuilder builder;
    builder.createMaterialGroup("group", makeDefaultMaterial(), -1, 0);
    builder.createVertexAttribute("va_Vertex", 3, 0x1406, 0, 0);
    builder.addValuesToVertexAttribute("va_Vertex", input().positions.size(), input().positions.data(),
                                       0x1406);
    builder.addIndicesToVertexAttribute("va_Vertex", input().positionIndices.size(),
                                        input().positionIndices.data());
    const std::vector<unsigned int> counts(input().positionIndices.size() / 3, 3);
    std::vector<unsigned int> faces(counts.size());
    for (unsigned int face = 0; face < faces.size(); ++face)
        faces[face] = face;
    builder.addVertexCountsToFaces(counts.size(), counts.data());
    builder.addFacesToMaterialGroup("group", faces.size(), faces.data(), QString());
    // Only the first upload prepares the data.
    for (auto round : state) {
        GPUModel model;
        builder.upload(&model, InstanceData("InstanceInfo"), "va_Vertex", QString(), 0x88E4, 4);
        benchmark::DoNotOptimize(model.drawableCount());
    }
    OpenGLDeviceContext::setCurrent({});
    reportItems(state, cornerCount());
}
BENCHMARK(BM_Upload)->Unit(benchmark::kMicrosecond);

/// Looks up a texture that was loaded before.
void BM_TextureAgain(benchmark::State& state) {
    QString error;
    const auto context = OpenGLDeviceContext::createHeadless({}, error);
    if (!context || !context->makeCurrent()) {
        state.SkipWithError("no OpenGL");
        return;
    }
    const QTemporaryDir directory;
    const QString path = directory.filePath("texture.png");
    QImage image(64, 64, QImage::Format_RGB32);
    image.fill(Qt::red);
    image.save(path);
    if (LoadTexture(path) == nullptr)
        state.SkipWithError("no texture");
    for (auto round : state)
        benchmark::DoNotOptimize(LoadTexture(path));
    reportItems(state, 1);
    OpenGLDeviceContext::setCurrent({});
}
BENCHMARK(BM_TextureAgain);

} // namespace

} // namespace Atelier::Vel::Bench

int main(int argc, char** argv) {
    using namespace Atelier::Vel;
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    Bench::inputDirectory =
        QDir(qEnvironmentVariable("VELMODEL_BENCH_INPUTS", "bench-inputs")).absolutePath();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
