#pragma once

#include <memory>

#include <QtCore/QRect>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QMatrix4x4>

namespace Atelier::Vel::Tool {

/// Ambient occlusion: the share of the light from all around that reaches a pixel, because nothing near it is
/// in the way. It is computed from depths, for one tile of a picture at a time. The depths around the tile
/// are needed as well, so the result does not depend on how the picture is divided into tiles.
///
/// For each tile: begin(), drawDepths() and takeDepths() for each part of the surroundings, then compute().
/// Rectangles are in pixels of the picture, from the lower left.
class Occlusion {
public:
    /// `tile` is the largest size of a tile.
    /// Requires: a current context.
    /// Returns: null, and the cause in `error`, if there is not enough memory.
    static std::unique_ptr<Occlusion> create(QSize picture, QSize tile, QString& error);
    ~Occlusion();
    Occlusion(const Occlusion&) = delete;
    Occlusion& operator=(const Occlusion&) = delete;

    QSize pictureSize() const;
    QSize tileSize() const;
    /// The pixels of the picture whose depths a tile needs.
    QRect surroundings(QRect tile) const;

    void begin(QRect tile);
    /// Begins to draw the depths of `wanted`, a part of a cell of the picture. The viewport is that of the
    /// cell. The fragment shader writes the distance from the plane of the camera to location 0.
    void drawDepths(QRect cell, QRect wanted);
    /// Ends what drawDepths() has begun.
    void takeDepths(QRect cell, QRect wanted);
    /// Computes the light of the tile. `projection` is that of the whole picture.
    /// Returns: false, and the cause in `error`, when OpenGL cannot.
    bool compute(const QMatrix4x4& projection, QString& error);
    /// The OpenGL name of the texture with the light, whose first pixel is that of the tile.
    unsigned int texture() const;

private:
    Occlusion();
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel::Tool
