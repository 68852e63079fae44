// Measures picking: the time to build the tree of boxes, its memory, and the rays per second. Each picked hit
// of a sample is compared with a search through all triangles before anything is timed. Usage:
// velmodel_picking DIRECTORY [--quick]     DIRECTORY is where the inputs are.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <vector>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QStringList>

#include <velmodel/objloader.h>
#include <velmodel/picking.h>

#include "inputs.h"
#include "random.h"

namespace Atelier::Vel::Bench {

namespace {

constexpr int kRays = 100'000;
constexpr int kCheckedRays = 200;
constexpr int kRounds = 5;
constexpr int kPictureSide = 512; // of the camera's rays

[[noreturn]] void fail(const char* text) {
    std::fprintf(stderr, "%s\n", text);
    std::exit(1);
}

DrawData readInput(const InputKind& kind, int size, const QString& directory) {
    QString error;
    QDir().mkpath(directory);
    DrawData data = readDrawDataFromOBJFile(generateInput(kind, size, directory), error);
    if (data.isEmpty())
        fail(qPrintable(error));
    return data;
}

const float* positionsOf(const DrawData& data) {
    for (const DrawData::Attribute& attribute : data.attributes())
        if (attribute.name == QLatin1String("va_Vertex"))
            return static_cast<const float*>(attribute.data);
    fail("no positions");
}

QVector3D randomPoint(Random& random) {
    constexpr int kSteps = 1'000'000;
    const auto number = [&] { return float(random.between(-kSteps, kSteps)) / kSteps; };
    const float x = number();
    const float y = number();
    return {x, y, number()};
}

// Lines between random points of a box that is one and a half times that of the model.
std::vector<PickRay> randomRays(const DrawData::Box& box) {
    Random random(7);
    const QVector3D centre = (box.minimum + box.maximum) / 2;
    const QVector3D half = 0.75F * (box.maximum - box.minimum);
    std::vector<PickRay> rays(kRays);
    for (PickRay& ray : rays) {
        ray.origin = centre + half * randomPoint(random);
        ray.direction = centre + half * randomPoint(random) - ray.origin;
    }
    return rays;
}

// Neighbouring pixels of a camera that sees the whole model, row by row.
std::vector<PickRay> cameraRays(const DrawData::Box& box) {
    const float radius = (box.maximum - box.minimum).length() / 2;
    QMatrix4x4 view;
    view.perspective(40, 1, radius, 5 * radius);
    view.lookAt((box.minimum + box.maximum) / 2 + QVector3D(1, 1, 2) * radius,
                (box.minimum + box.maximum) / 2, QVector3D(0, 0, 1));
    std::vector<PickRay> rays;
    for (int pixel = 0; pixel < kRays; ++pixel)
        rays.push_back(PickRay::through({pixel % kPictureSide + 0.5, pixel / kPictureSide * 2 + 0.5},
                                        {kPictureSide, kPictureSide}, view));
    return rays;
}

struct Vector {
    double x, y, z;

    static Vector of(const QVector3D& v) { return {double(v.x()), double(v.y()), double(v.z())}; }
    friend Vector operator-(const Vector& a, const Vector& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
};

double dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// The distance to a triangle by Moeller and Trumbore's method; infinity without a hit.
double distanceTo(const PickRay& ray, const Vector (&corners)[3]) {
    constexpr double kNone = std::numeric_limits<double>::infinity();
    const Vector direction = Vector::of(ray.direction);
    const Vector a = corners[1] - corners[0];
    const Vector b = corners[2] - corners[0];
    const Vector p = cross(direction, b);
    const double determinant = dot(a, p);
    const Vector t = Vector::of(ray.origin) - corners[0];
    const Vector q = cross(t, a);
    const double u = dot(t, p) / determinant;
    const double v = dot(direction, q) / determinant;
    const double distance = dot(b, q) / determinant * std::sqrt(dot(direction, direction));
    return determinant != 0 && u >= 0 && v >= 0 && u + v <= 1 && distance >= 0 ? distance : kNone;
}

double nearestOfAll(const DrawData& data, const PickRay& ray) {
    const float* const positions = positionsOf(data);
    const DrawData::Indices indices = data.indices();
    double nearest = std::numeric_limits<double>::infinity();
    for (quint64 i = 0; i + 2 < indices.count; i += 3) {
        Vector corners[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const float* const at = positions + 3 * quint64(indices.data[i + k]);
            corners[k] = {double(at[0]), double(at[1]), double(at[2])};
        }
        nearest = std::min(nearest, distanceTo(ray, corners));
    }
    return nearest;
}

// Both methods round differently, so distances differ in their last digits.
void check(const DrawData& data, const ModelPicker& picker, const std::vector<PickRay>& rays) {
    constexpr double kTolerance = 1e-9;
    int hits = 0;
    for (int i = 0; i < kCheckedRays; ++i) {
        const PickRay& ray = rays[std::size_t(i) * (kRays / kCheckedRays)];
        const double expected = nearestOfAll(data, ray);
        const auto hit = picker.pick(ray);
        hits += hit ? 1 : 0;
        if (hit.has_value() != std::isfinite(expected) ||
            (hit && std::fabs(hit->distance - expected) > kTolerance * (1 + expected)))
            fail("a picked hit differs from that of all triangles");
    }
    if (hits < kCheckedRays / 20)
        fail("hardly a ray hits");
}

// Processor time of this thread: the machine may run other programs, too.
double secondsNow() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

template<typename Work>
double fastestSeconds(const Work& work) {
    double fastest = std::numeric_limits<double>::infinity();
    for (int round = 0; round < kRounds; ++round) {
        const double start = secondsNow();
        work();
        fastest = std::min(fastest, secondsNow() - start);
    }
    return fastest;
}

struct RayFigures {
    double microseconds;
    double hits; // part of the rays
};

RayFigures measuredRays(const ModelPicker& picker, const std::vector<PickRay>& rays) {
    int hits = 0;
    const double seconds = fastestSeconds([&] {
        hits = 0;
        for (const PickRay& ray : rays)
            hits += picker.pick(ray) ? 1 : 0;
    });
    return {seconds / kRays * 1e6, double(hits) / kRays};
}

// A tree belongs to its draw data, so each round reads the data again.
double buildSeconds(const InputKind& kind, int size, const QString& directory) {
    double fastest = std::numeric_limits<double>::infinity();
    for (int round = 0; round < kRounds; ++round) {
        const DrawData data = readInput(kind, size, directory);
        const double start = secondsNow();
        const ModelPicker picker(data);
        fastest = std::min(fastest, secondsNow() - start);
    }
    return fastest;
}

void measure(const InputKind& kind, int size, const QString& directory) {
    const DrawData data = readInput(kind, size, directory);
    const ModelPicker picker(data);
    const DrawData::Box box = data.commandBox(0, 0);
    const auto random = randomRays(box);
    const auto camera = cameraRays(box);
    check(data, picker, random);
    check(data, picker, camera);
    const RayFigures randomFigures = measuredRays(picker, random);
    const RayFigures cameraFigures = measuredRays(picker, camera);
    const double triangles = double(data.indices().count) / 3;
    std::printf("%-44s %9.0f %9.0f %9.1f %9.2f %4.0f%% %9.2f %4.0f%%\n",
                qPrintable(kind.name + ": " + kind.description), triangles,
                buildSeconds(kind, size, directory) * 1e3, double(picker.byteCount()) / triangles,
                randomFigures.microseconds, randomFigures.hits * 100, cameraFigures.microseconds,
                cameraFigures.hits * 100);
    std::fflush(stdout);
}

} // namespace

} // namespace Atelier::Vel::Bench

int main(int count, char** arguments) {
    using namespace Atelier::Vel::Bench;
    const QCoreApplication application(count, arguments);
    QStringList words = QCoreApplication::arguments().mid(1);
    const bool isQuick = words.removeOne(QStringLiteral("--quick"));
    if (words.size() != 1)
        fail("usage: velmodel_picking DIRECTORY [--quick]");
    std::printf("%-44s %9s %9s %9s %15s %15s\n", "input", "triangles", "build ms", "bytes/tri",
                "random: us, hits", "camera: us, hits");
    for (const InputKind& kind : comparedKinds())
        if (kind.name == QLatin1String("A") || kind.name == QLatin1String("G") ||
            kind.name == QLatin1String("H"))
            measure(kind, isQuick ? kind.quickSize : kind.size, words.first());
    return 0;
}
