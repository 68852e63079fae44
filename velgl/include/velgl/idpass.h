#pragma once

#include <memory>

#include <QtCore/QPoint>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QMatrix4x4>

#include <velgl/drawfilter.h>
#include <velgl/renderstate.h>

namespace Atelier::Vel {

class GPUModel;

/// Finds what a pixel of a picture shows: it draws the numbers of drawables, commands and instances into a
/// few pixels around the cursor, and reads them back. So it finds whatever is drawn: lines, points, shapes
/// that a mesh on the CPU does not have. It does not look at materials: transparent texels are hit as well,
/// and a filter leaves out what the user should not hit.
///
/// It belongs to the contexts that share with the one in which it was made, as Program does.
/// Threads: on the thread of the current context; the destructor may run on any.
class VELGL_EXPORT IdPass {
public:
    struct Options {
        /// Plan and Mat4 member by which instances are placed, see GPUModel::add(); those of VelModel by
        /// default. Positions are taken as they are if `instances` is empty.
        QString instances = QStringLiteral("InstanceInfo");
        QString placement = QStringLiteral("ModelMatrix");
        QString positions = QStringLiteral("va_Vertex"); ///< the stream of positions
        int radius = 2; ///< pixels around the cursor that are hit as well, 0 to kMaxRadius
        RenderState::Sides sides = RenderState::Sides::Both; ///< the sides of triangles that are hit
    };
    static constexpr int kMaxRadius = 64;

    /// How the model is seen. `matrix` takes placed positions to clip coordinates: projection times view.
    struct View {
        QMatrix4x4 matrix;
        QSize size; ///< of the viewport, in pixels
    };

    struct Hit {
        int drawable = -1; ///< -1 if nothing was hit
        int command = -1;  ///< of the drawable
        int instance = -1; ///< of the command, from 0
        QPoint pixel;      ///< the pixel that shows it, from the upper left of the viewport
        float depth = 1;   ///< there, from 0 at the near plane to 1 at the far plane

        bool isValid() const { return drawable >= 0; }
    };

    /// Makes a pass in the current context.
    /// Returns: null when there is no context, when the plan is not registered or has no such member, and
    /// when OpenGL refuses. `error` then names the cause; else it is unchanged.
    /// Cost: compiles a program.
    static std::unique_ptr<IdPass> create(const Options& options, QString& error);
    ~IdPass();
    IdPass(const IdPass&) = delete;
    IdPass& operator=(const IdPass&) = delete;

    /// Finds what is drawn nearest to the pixel `cursor`, counted from the upper left of the viewport, at
    /// most the radius away: among pixels at the same distance, what is nearest to the eye. Pixels outside of
    /// the viewport show nothing. The state of the client is unchanged.
    /// Returns: an invalid hit when nothing is there, and when the current context does not know the pass;
    /// only then it writes `error`.
    /// Cost: one GPUModel::draw() with the filter into a few pixels, so mostly the vertices; about 100
    /// queries; and a wait until the GPU has drawn. That is for a click, or once in a frame for a cursor that
    /// moves. A filter that stays the same costs nothing more.
    Hit pick(GPUModel& model, const View& view, QPoint cursor, QString& error, const DrawFilter& filter = {});

private:
    IdPass();
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
