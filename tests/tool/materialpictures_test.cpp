// Materials as `velmodel render` shows them: emission, normal maps, and parts in any order.

#include <algorithm>
#include <cmath>
#include <random>

#include <QtGui/QImage>
#include <QtGui/QVector3D>

#include <gmock/gmock.h>

#include "picturecomparison.h"
#include "program.h"
#include "support/messagelog.h"
#include "temporarymodel.h"

namespace Atelier::Vel::Testing {

namespace {

constexpr int kSide = 48;

class MaterialPicturesTest : public testing::Test {
protected:
    QImage picture(const QString& model, const QStringList& options = {}) const {
        const QString size = QStringLiteral("%1x%1").arg(kSide);
        const ProgramResult result =
            runProgram(QStringList{"render", model, "-o", "-", "--resolution", size} + options);
        EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
        return QImage::fromData(result.output, "PNG");
    }
    QRgb middle(const QString& model) const {
        return picture(model, {"--view", "front", "--orthographic"}).pixel(kSide / 2, kSide / 2);
    }
    void writeTexture(const QString& name, const QColor& colour) const {
        QImage texture(4, 4, QImage::Format_RGB32);
        texture.fill(colour);
        EXPECT_TRUE(texture.save(_folder.path(name)));
    }
    /// A square that faces the front. `corners` are its texture coordinates, from the lower left on.
    QString square(const QByteArray& material, const QByteArray& normal, const QByteArray& corners) const {
        _folder.write("m.mtl", "newmtl m\nKd 0.6 0.6 0.6\n" + material);
        return _folder.write("m.obj", "mtllib m.mtl\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n" + corners +
                                          "vn " + normal + "\nusemtl m\nf 1/1/1 2/2/1 3/3/1 4/4/1\n");
    }

    TemporaryFolder _folder;
};

const QByteArray kUpright = "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n";

struct Turn {
    const char* name;
    QByteArray corners;
    QVector3D normal; ///< that of a map with the normal (0.48, 0.36, 0.8)
};

} // namespace

TEST_F(MaterialPicturesTest, NormalMapsFollowTheTextureCoordinates) {
    writeTexture("n.png", QColor(189, 173, 230));
    const Turn turns[] = {
        {"upright", kUpright, {0.48F, 0.36F, 0.8F}},
        {"enlarged", "vt 0 0\nvt 0.1 0\nvt 0.1 0.1\nvt 0 0.1\n", {0.48F, 0.36F, 0.8F}},
        {"quarter turn", "vt 0 0\nvt 0 1\nvt -1 1\nvt -1 0\n", {0.36F, -0.48F, 0.8F}},
        {"half turn", "vt 1 1\nvt 0 1\nvt 0 0\nvt 1 0\n", {-0.48F, -0.36F, 0.8F}},
        {"mirrored", "vt 1 0\nvt 0 0\nvt 0 1\nvt 1 1\n", {-0.48F, 0.36F, 0.8F}},
    };
    for (const Turn& turn : turns)
        for (const char* normal : {"0 0 1", "0 0 -1"}) {
            const QRgb mapped = middle(square("norm n.png\n", normal, turn.corners));
            const QString expected =
                QStringLiteral("%1 %2 %3").arg(turn.normal.x()).arg(turn.normal.y()).arg(turn.normal.z());
            const QRgb plain = middle(square("", expected.toLatin1(), kUpright));
            EXPECT_LE(largestStep(mapped, plain), 2) << turn.name;
        }
}

TEST_F(MaterialPicturesTest, NormalMapsNeedTextureCoordinatesAndAnImage) {
    const QRgb plain = middle(square("", "0 0 1", kUpright));
    writeTexture("flat.png", QColor(128, 128, 255));
    writeTexture("bent.png", QColor(255, 128, 128));
    EXPECT_LE(largestStep(middle(square("norm flat.png\n", "0 0 1", kUpright)), plain), 1);
    EXPECT_GT(largestStep(middle(square("norm bent.png\n", "0 0 1", kUpright)), plain), 20);
    EXPECT_EQ(middle(square("norm missing.png\n", "0 0 1", kUpright)), plain);
    EXPECT_EQ(middle(square("norm bent.png\n", "0 0 1", "vt 0 0\nvt 0 0\nvt 0 0\nvt 0 0\n")), plain);
}

TEST_F(MaterialPicturesTest, EmissionShines) {
    const QRgb plain = middle(square("", "0 0 1", kUpright));
    const QRgb red = middle(square("Ke 0.8 0 0\n", "0 0 1", kUpright));
    EXPECT_GT(qRed(red), qRed(plain) + 50);
    EXPECT_EQ(qBlue(red), qBlue(plain));
    writeTexture("glow.png", QColor(0, 0, 204));
    const QRgb blue = middle(square("map_Ke glow.png\n", "0 0 1", kUpright));
    EXPECT_GT(qBlue(blue), qBlue(plain) + 50);
    EXPECT_EQ(qRed(blue), qRed(plain));
}

namespace {

/// Parts that no other one coincides with: triangles in all directions, each with its own material.
class ScatteredParts {
public:
    explicit ScatteredParts(bool areOpaque) : _random(7), _areOpaque(areOpaque) {
        for (int part = 0; part < kParts; ++part)
            _order.push_back(part);
        for (int part = 0; part < kParts; ++part) {
            _materials += "newmtl m" + QByteArray::number(part) + "\nKd" + numbers(0, 1) + "\nd " +
                          QByteArray::number(opacity(part)) + '\n';
            for (int corner = 0; corner < 3; ++corner)
                _positions += 'v' + numbers(-1, 1) + '\n';
        }
    }
    void shuffle() { std::shuffle(_order.begin(), _order.end(), _random); }
    QByteArray materials() const { return _materials; }
    QByteArray text() const {
        QByteArray text = "mtllib m.mtl\n" + _positions;
        for (const int part : _order) {
            text += "usemtl m" + QByteArray::number(part) + "\nf";
            for (int corner = 1; corner <= 3; ++corner)
                text += ' ' + QByteArray::number(3 * part + corner);
            text += '\n';
        }
        return text;
    }

private:
    static constexpr int kParts = 14;

    double opacity(int part) const { return _areOpaque || part % 3 == 0 ? 1 : 0.15 + 0.05 * part; }
    QByteArray numbers(double low, double high) {
        std::uniform_real_distribution<double> number(low, high);
        QByteArray text;
        for (int n = 0; n < 3; ++n)
            text += ' ' + QByteArray::number(number(_random), 'f', 4);
        return text;
    }

    std::mt19937 _random;
    bool _areOpaque;
    std::vector<int> _order;
    QByteArray _materials;
    QByteArray _positions;
};

int largestStepOf(const QImage& a, const QImage& b) {
    int largest = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            largest = std::max(largest, largestStep(a.pixel(x, y), b.pixel(x, y)));
    return largest;
}

} // namespace

TEST_F(MaterialPicturesTest, OrderOfOpaquePartsChangesNoByte) {
    ScatteredParts parts(true);
    _folder.write("m.mtl", parts.materials());
    const QImage first = picture(_folder.write("m.obj", parts.text()));
    for (int order = 0; order < 6; ++order) {
        parts.shuffle();
        EXPECT_EQ(picture(_folder.write("m.obj", parts.text())), first) << order;
    }
}

TEST_F(MaterialPicturesTest, OrderOfTransparentPartsChangesNothingVisible) {
    ScatteredParts parts(false);
    _folder.write("m.mtl", parts.materials());
    const QImage first = picture(_folder.write("m.obj", parts.text()));
    for (int order = 0; order < 6; ++order) {
        parts.shuffle();
        const QImage other = picture(_folder.write("m.obj", parts.text()));
        EXPECT_LE(largestStepOf(other, first), 1) << "sums of half-precision floats are rounded";
    }
}

} // namespace Atelier::Vel::Testing
