#include "linegeometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Atelier::Vel::Viewer {

namespace {

constexpr quint32 kFloat = 0x1406;
constexpr float kNormalLength = 0.02F; // of the largest side of the box
constexpr int kMaxGridLines = 41;      // in each direction

float linear(qreal encoded) {
    return float(encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4));
}

float largestSide(const ModelBox& box) {
    const QVector3D size = sizeOf(box);
    return std::max({size.x(), size.y(), size.z()});
}

// The three floats of a vertex.
class Vectors {
public:
    Vectors(const DrawData& data, const char* name) {
        for (const DrawData::Attribute& attribute : data.attributes())
            if (attribute.name == QLatin1String(name) && attribute.components == 3 &&
                attribute.type == kFloat) {
                _floats = static_cast<const float*>(attribute.data);
                _count = attribute.vertexCount;
            }
    }
    quint64 count() const { return _floats != nullptr ? _count : 0; }
    QVector3D at(quint64 vertex) const {
        return {_floats[3 * vertex], _floats[3 * vertex + 1], _floats[3 * vertex + 2]};
    }

private:
    const float* _floats = nullptr;
    quint64 _count = 0;
};

bool isFinite(const QVector3D& v) {
    return std::isfinite(v.x()) && std::isfinite(v.y()) && std::isfinite(v.z());
}

QColor faded(QColor colour, qreal opacity) {
    colour.setAlphaF(colour.alphaF() * opacity);
    return colour;
}

// The axis that a unit vector is closest to.
int axisOf(const QVector3D& direction) {
    int axis = 0;
    for (const int other : {1, 2})
        if (std::abs(direction[other]) > std::abs(direction[axis]))
            axis = other;
    return axis;
}

} // namespace

void PointList::add(const QVector3D& position, const QColor& colour) {
    const auto alpha = float(colour.alphaF());
    _points.push_back({{position.x(), position.y(), position.z()},
                       {linear(colour.redF()) * alpha, linear(colour.greenF()) * alpha,
                        linear(colour.blueF()) * alpha, alpha}});
}

void PointList::addLine(const QVector3D& from, const QVector3D& to, const QColor& colour) {
    add(from, colour);
    add(to, colour);
}

void PointList::addTriangle(const QVector3D& a, const QVector3D& b, const QVector3D& c,
                            const QColor& colour) {
    add(a, colour);
    add(b, colour);
    add(c, colour);
}

float gridStep(float size) {
    constexpr double kLinesAcross = 10;
    if (!(size > 0) || !std::isfinite(size))
        return 1;
    const double wanted = double(size) / kLinesAcross;
    const double power = std::pow(10, std::floor(std::log10(wanted)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= wanted)
            return float(factor * power);
    return float(10 * power);
}

PointList gridLines(const ModelBox& box, const QVector3D& up, const QColor& colour) {
    PointList lines;
    const int upAxis = axisOf(up);
    const int first = (upAxis + 1) % 3;
    const int second = (upAxis + 2) % 3;
    const QVector3D size = sizeOf(box);
    const float step = gridStep(std::max({size[first], size[second], size[upAxis] / 4}));
    const QVector3D centre = centreOf(box);
    const float floor = up[upAxis] > 0 ? box.minimum[upAxis] : box.maximum[upAxis];
    // The grid reaches beyond the box on each side. Its lines are at multiples of the step.
    const auto halfCount = [&](int axis) {
        return std::min(int(std::ceil(size[axis] / step / 2)) + 3, kMaxGridLines / 2);
    };
    for (const int axis : {first, second}) {
        const int other = first + second - axis;
        const float middle = std::round(centre[axis] / step);
        const float reach = float(halfCount(other)) * step;
        const float otherMiddle = std::round(centre[other] / step) * step;
        for (int line = -halfCount(axis); line <= halfCount(axis); ++line) {
            QVector3D from;
            from[upAxis] = floor;
            from[axis] = (middle + float(line)) * step;
            QVector3D to = from;
            from[other] = otherMiddle - reach;
            to[other] = otherMiddle + reach;
            const bool isStrong = std::fmod(middle + float(line), 5.0F) == 0;
            lines.addLine(from, to, faded(colour, isStrong ? 0.55 : 0.25));
        }
    }
    return lines;
}

PointList boxLines(const ModelBox& box, const QColor& colour) {
    PointList lines;
    const auto corner = [&](int bits) {
        return QVector3D((bits & 1) != 0 ? box.maximum.x() : box.minimum.x(),
                         (bits & 2) != 0 ? box.maximum.y() : box.minimum.y(),
                         (bits & 4) != 0 ? box.maximum.z() : box.minimum.z());
    };
    for (int bits = 0; bits < 8; ++bits)
        for (const int bit : {1, 2, 4})
            if ((bits & bit) == 0)
                lines.addLine(corner(bits), corner(bits | bit), colour);
    return lines;
}

PointList normalLines(const DrawData& data, const ModelBox& box, const QColor& colour) {
    PointList lines;
    const Vectors positions(data, "va_Vertex");
    const Vectors normals(data, "va_Normal");
    const quint64 count = std::min(positions.count(), normals.count());
    const quint64 stride = 1 + count / kMaxNormals;
    const float length = kNormalLength * largestSide(box);
    for (quint64 vertex = 0; vertex < count; vertex += stride) {
        const QVector3D from = positions.at(vertex);
        const QVector3D normal = normals.at(vertex);
        if (isFinite(from) && isFinite(normal) && !normal.isNull())
            lines.addLine(from, from + normal.normalized() * length, colour);
    }
    return lines;
}

} // namespace Atelier::Vel::Viewer
