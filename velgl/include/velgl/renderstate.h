#pragma once

#include <memory>

#include <QtCore/QVector>

#include <velgl/velgl_export.h>

namespace Atelier::Vel {

/// How OpenGL tests, blends and writes what is drawn. The default draws solid opaque surfaces that hide one
/// another, from both sides.
/// Threads: a plain value.
struct RenderState {
    /// Which depths pass, compared with what the depth buffer holds. Off: all pass, and none is written.
    enum class DepthTest { Off, Less, LessOrEqual, Equal, GreaterOrEqual, Greater };
    /// The sides of triangles that are drawn; the front side is the one whose corners run counter-clockwise.
    enum class Sides { Both, Front, Back };
    enum class Fill { Solid, Lines, Points };
    enum class Factor { Zero, One, SourceColor, OneMinusSourceColor, SourceAlpha, OneMinusSourceAlpha };
    /// A pixel becomes `source` times the new colour plus `target` times the colour that is there.
    struct Blend {
        Factor source = Factor::One;
        Factor target = Factor::Zero;
    };
    /// The outputs of a fragment shader that can be blended.
    static constexpr int kMaxBlends = 8;

    DepthTest depthTest = DepthTest::LessOrEqual;
    bool writesDepth = true; ///< false: the depth test hides, and does not change the depth buffer
    Sides sides = Sides::Both;
    Fill fill = Fill::Solid;
    /// Entry i blends output i of the fragment shader; outputs without an entry replace what is there. At
    /// most kMaxBlends; further ones have no effect.
    QVector<Blend> blends;
};

/// Applies a RenderState within a scope, and restores the client's state on destruction. Scopes nest. Within
/// the scope, besides what RenderState says, multisampling is enabled, all channels are written, and the
/// stencil test, the scissor test, logical operations and the discarding of all primitives are off. The
/// winding of front sides, the depth range and everything else is the client's.
///
/// Makes no call without a current context. While another context is current, or none, the destructor
/// restores nothing.
/// Cost: 27 queries, and six for each blended output; set it once for a pass, not for each draw.
/// Threads: on the thread of the current context.
class VELGL_EXPORT ScopedRenderState {
public:
    explicit ScopedRenderState(const RenderState& state = {});
    ~ScopedRenderState();
    ScopedRenderState(const ScopedRenderState&) = delete;
    ScopedRenderState& operator=(const ScopedRenderState&) = delete;

private:
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
