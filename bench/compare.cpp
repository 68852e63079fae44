// Measures whole loads with VelModel and with other pipelines. Checks every result before it prints a figure.
//
// The contestants alternate: each round measures every contestant once, in a fresh child process of a parent
// that has loaded only a tiny file. See docs/performance.md.

#include <chrono>
#include <cstdio>
#include <vector>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>

#include "contestants.h"
#include "inputs.h"
#include "measure.h"
#include "meshes.h"
#include "reference.h"

namespace Atelier::Vel::Bench {

namespace {

constexpr int kRounds = 7;
constexpr int kQuickRounds = 5;
// The first load of a process, which gets memory from the system, is not compared. A small file is loaded
// more often, so that the clock measures the later loads accurately.
constexpr int kLoadsOfFile = 2;
constexpr int kLoadsOfSmallFile = 21;
constexpr qint64 kMinLargeFileBytes = qint64(2) << 20;
constexpr double kMegabyte = 1e6;

struct Options {
    bool quick = false;
    bool records = true;
    int rounds = kRounds;
    double scale = 1.0;
    QStringList kinds;
    QStringList contestants;
    QString directory;
};

/// The goals: the minimum ratios of the time of a pipeline to the time of VelModel.
struct Goal {
    QString kind;
    double tinyobj;
    double assimp;
};

double goalOf(const QString& kind, const QString& contestant) {
    static const std::vector<Goal> goals{
        {"A", 8, 18},  {"B", 8, 18}, {"C", 7, 30}, {"D", 4, 9},
        {"E", 2.5, 5}, {"F", 8, 18}, {"G", 8, 16}, {"H", 4, 7},
    };
    for (const auto& goal : goals)
        if (goal.kind == kind)
            return contestant == QLatin1String("assimp") ? goal.assimp : goal.tinyobj;
    return 0;
}

/// A contestant with its measurements for one file.
struct Row {
    std::unique_ptr<Contestant> contestant;
    std::vector<Sample> samples;
    QString fault;

    bool isOurs() const { return contestant->name().startsWith(QLatin1String("velmodel")); }
    bool isAssimp() const { return contestant->name() == QLatin1String("assimp"); }
    Spread spread(double Sample::*figure) const {
        std::vector<double> figures;
        for (const auto& sample : samples)
            figures.push_back(sample.*figure);
        return spreadOf(figures);
    }
    double median() const { return spread(&Sample::milliseconds).median; }
};

std::vector<Row> makeRows(const QStringList& wanted, bool withPeers) {
    std::vector<std::unique_ptr<Contestant>> contestants;
    contestants.push_back(makeVelModel());
    contestants.push_back(makeVelModelWithGL());
    if (withPeers) {
        contestants.push_back(makeTinyobj());
        contestants.push_back(makeAssimp());
    }
    std::vector<Row> rows;
    for (auto& contestant : contestants)
        if (wanted.isEmpty() || wanted.contains(contestant->name()))
            rows.push_back({std::move(contestant), {}, {}});
    return rows;
}

/// Describes what is wrong with the counts; empty if they are right. Assimp merges each mesh by itself and
/// within a tolerance, so its vertex count is only checked against bounds.
QString faultOf(const Row& row, const Sample& sample, const Expectation& expected) {
    if (sample.triangles != expected.triangles)
        return QStringLiteral("%1 triangles, not %2").arg(sample.triangles).arg(expected.triangles);
    const bool verticesFit =
        row.isAssimp() ? sample.vertices >= expected.vertices / 2 && sample.vertices <= expected.corners
                       : sample.vertices == expected.vertices;
    if (!verticesFit)
        return QStringLiteral("%1 vertices, not %2").arg(sample.vertices).arg(expected.vertices);
    return {};
}

QString checkOurBuffers(const QString& path, const Expectation& expected) {
    const auto checked = measureInChild(*makeCheckedVelModel(), path, 1);
    if (!checked)
        return QStringLiteral("the checked load failed");
    if (checked->checksum != expected.checksum)
        return QStringLiteral("the buffers' checksum is wrong");
    return {};
}

/// The number of the contestant at a place of a round. The contestant after the one that frees the most
/// memory has a disadvantage. So the order is a Latin square after E. J. Williams (1949): in `count` rounds,
/// if that is even, each contestant follows each other one once.
std::size_t contestantAt(std::size_t place, std::size_t round, std::size_t count) {
    const std::size_t zigzag = place % 2 == 0 ? count - place / 2 : (place + 1) / 2;
    return (round + zigzag) % count;
}

void measureRound(std::vector<Row>& rows, std::size_t round, const QString& path, int loads,
                  const Expectation& expected) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Row& row = rows[contestantAt(i, round, rows.size())];
        if (!row.fault.isEmpty())
            continue;
        const auto sample = measureInChild(*row.contestant, path, loads);
        row.fault = sample ? faultOf(row, *sample, expected) : QStringLiteral("the load failed");
        if (row.fault.isEmpty())
            row.samples.push_back(*sample);
    }
}

void printHeader() {
    std::printf("%-9s %-16s %9s %9s %9s %9s %9s %8s %8s %8s %6s %8s %8s %8s\n", "input", "contestant",
                "min ms", "median", "max", "cpu ms", "first ms", "ns/corn", "MB/s", "peak MB", "xfile",
                "x ours", "cpu x", "wanted");
}

void printRow(const QString& label, const Row& row, const Row* ours, const Expectation& expected,
              qint64 fileSize, double goal) {
    std::printf("%-9s %-16s ", qPrintable(label), qPrintable(row.contestant->name()));
    if (!row.fault.isEmpty()) {
        std::printf("FAULT: %s\n", qPrintable(row.fault));
        return;
    }
    const Spread time = row.spread(&Sample::milliseconds);
    const double processor = row.spread(&Sample::processorMilliseconds).median;
    const double peak = double(row.samples.front().peakBytes);
    std::printf("%9.2f %9.2f %9.2f %9.2f %9.2f %8.1f %8.0f %8.1f %6.2f", time.minimum, time.median,
                time.maximum, processor, row.spread(&Sample::firstMilliseconds).median,
                time.median * 1e6 / double(expected.corners),
                double(fileSize) / kMegabyte / (time.median / 1000.0), peak / kMegabyte,
                peak / double(fileSize));
    if (ours && ours != &row && !ours->samples.empty()) {
        std::printf(" %8.1f %8.1f", time.median / ours->median(),
                    processor / ours->spread(&Sample::processorMilliseconds).median);
        if (goal > 0)
            std::printf(" %8.1f%s", goal, time.median / ours->median() < goal ? "  MISSED" : "");
    }
    std::printf("\n");
}

/// Runs in a child, so that this process, from which others are forked later, stays small.
Expectation prepareInput(const InputKind& kind, const QString& directory, int size) {
    Expectation expected;
    const auto prepare = [&](void* result) {
        new (result) Expectation(expectationOf(generateInput(kind, size, directory)));
    };
    if (!runInChild(prepare, &expected, sizeof expected))
        qFatal("cannot prepare the input %s", qPrintable(kind.name));
    return expected;
}

bool measureKind(const InputKind& kind, const Options& options, bool withPeers) {
    const int size = int(double(options.quick ? kind.quickSize : kind.size) * options.scale);
    const Expectation expected = prepareInput(kind, options.directory, size);
    const QString path = generateInput(kind, size, options.directory);
    const qint64 fileSize = QFileInfo(path).size();
    auto rows = makeRows(options.contestants, withPeers);
    const QString checkFault = checkOurBuffers(path, expected);
    for (auto& row : rows)
        if (row.isOurs())
            row.fault = checkFault;
    for (int round = 0; round < options.rounds; ++round)
        measureRound(rows, static_cast<std::size_t>(round), path,
                     fileSize < kMinLargeFileBytes ? kLoadsOfSmallFile : kLoadsOfFile, expected);

    std::printf("\n%s: %s; %.1f MB, %llu corners, %llu vertices, %llu triangles\n", qPrintable(kind.name),
                qPrintable(kind.description), double(fileSize) / kMegabyte,
                static_cast<unsigned long long>(expected.corners),
                static_cast<unsigned long long>(expected.vertices),
                static_cast<unsigned long long>(expected.triangles));
    bool faultless = true;
    for (const auto& row : rows) {
        const double goal = row.isOurs() || options.quick ? 0 : goalOf(kind.name, row.contestant->name());
        printRow(kind.name, row, &rows.front(), expected, fileSize, goal);
        faultless = faultless && row.fault.isEmpty();
    }
    std::fflush(stdout);
    return faultless;
}

/// Measures the velmodel program from its start to its end.
void measureProgram(const Options& options, const QString& program) {
    const auto& kinds = comparedKinds();
    const QString path = generateInput(kinds[3], kinds[3].size, options.directory);
    std::vector<double> times;
    for (int round = 0; round < kLoadsOfSmallFile; ++round) {
        QProcess process;
        const auto start = std::chrono::steady_clock::now();
        process.start(program, {QStringLiteral("info"), path});
        if (!process.waitForFinished() || process.exitCode() != 0) {
            std::printf("\nvelmodel info: does not run here\n");
            return;
        }
        times.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    const Spread spread = spreadOf(times);
    std::printf("\nvelmodel info on D, start to end: %.1f / %.1f / %.1f ms (min / median / max)\n",
                spread.minimum, spread.median, spread.maximum);
}

/// Loads a tiny file with every library, so that symbols are resolved and tables are built before the first
/// fork.
void warmUp(const QString& directory) {
    const QString path = directory + QStringLiteral("/tiny.obj");
    writeGrid(path, 8, {});
    for (auto& row : makeRows({"velmodel", "tinyobj+meshopt", "assimp"}, true)) {
        row.contestant->prepare();
        row.contestant->load(path);
    }
}

Options parsedOptions(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{"quick", "a tenth of the size, and five rounds"},
                       {"no-records", "only the inputs that are compared"},
                       {"rounds", "rounds to measure", "n", QString::number(kRounds)},
                       {"scale", "factor on every size", "x", "1"},
                       {"kinds", "inputs to measure, separated by commas", "list"},
                       {"contestants", "contestants to measure, separated by commas", "list"},
                       {"directory", "where the inputs are put", "path", "bench-inputs"}});
    if (!parser.parse(arguments) || parser.isSet("help")) {
        std::printf("%s\n%s", qPrintable(parser.errorText()), qPrintable(parser.helpText()));
        std::exit(parser.isSet("help") ? 0 : 2);
    }
    Options options;
    options.quick = parser.isSet("quick");
    options.records = !parser.isSet("no-records");
    options.rounds = options.quick && !parser.isSet("rounds") ? kQuickRounds : parser.value("rounds").toInt();
    options.scale = parser.value("scale").toDouble();
    options.kinds = parser.value("kinds").split(',', Qt::SkipEmptyParts);
    options.contestants = parser.value("contestants").split(',', Qt::SkipEmptyParts);
    options.directory = QDir(parser.value("directory")).absolutePath();
    return options;
}

int compare(const Options& options, const QString& program) {
    QDir().mkpath(options.directory);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    warmUp(options.directory);
    printHeader();
    bool faultless = true;
    const auto wanted = [&options](const InputKind& kind) {
        return options.kinds.isEmpty() || options.kinds.contains(kind.name);
    };
    for (const auto& kind : comparedKinds())
        if (wanted(kind))
            faultless = measureKind(kind, options, true) && faultless;
    for (const auto& kind : recordedKinds())
        if (wanted(kind) && options.records)
            faultless = measureKind(kind, options, false) && faultless;
    if (options.records && options.kinds.isEmpty())
        measureProgram(options, program);
    return faultless ? 0 : 1;
}

} // namespace

} // namespace Atelier::Vel::Bench

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/velmodel");
    return Atelier::Vel::Bench::compare(Atelier::Vel::Bench::parsedOptions(QCoreApplication::arguments()),
                                        program);
}
