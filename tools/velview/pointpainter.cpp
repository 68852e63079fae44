#include <epoxy/gl.h>

#include "pointpainter.h"

#include <algorithm>

#include <velgl/autobinder.h>
#include <velgl/bufferobject.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/program.h>
#include <velgl/renderstate.h>
#include <velgl/vertexarrayobject.h>

namespace Atelier::Vel::Viewer {

namespace {

const char* const kVertexShader = R"(#version 430 core
in vec3 position;
in vec4 colour;
uniform vec4 framing; // the centre, and the factor to the camera's cube
uniform mat4 viewProjection;
out vec4 light;
void main() {
    light = colour;
    gl_Position = viewProjection * vec4((position - framing.xyz) * framing.w, 1.0);
    gl_Position.z -= 1e-4 * gl_Position.w; // in front of the surface that it lies on
}
)";

const char* const kFragmentShader = R"(#version 430 core
in vec4 light;
layout(location = 0) out vec4 pixel;
void main() {
    pixel = light;
}
)";

// Not every driver of a core profile has lines of more than one pixel.
void setLineWidth(float wanted) {
    GLfloat range[2] = {1, 1};
    glGetFloatv(GL_ALIASED_LINE_WIDTH_RANGE, range);
    glLineWidth(std::clamp(wanted, 1.0F, std::max(range[1], 1.0F)));
}

} // namespace

void PointBuffer::setPoints(const PointList& list) {
    const auto context = OpenGLDeviceContext::current();
    if (!context)
        return;
    if (!_array) {
        _positions = context->createBufferObject();
        _colours = context->createBufferObject();
        _array = context->createVertexArrayObject();
        _array->registerBO(QStringLiteral("position"), _positions, 3, GL_FLOAT);
        _array->registerBO(QStringLiteral("colour"), _colours, 4, GL_FLOAT);
    }
    std::vector<float> positions;
    std::vector<float> colours;
    for (const PointList::Point& point : list.points()) {
        positions.insert(positions.end(), std::begin(point.position), std::end(point.position));
        colours.insert(colours.end(), std::begin(point.colour), std::end(point.colour));
    }
    _count = int(list.points().size());
    _positions->uploadArbitraryData(positions.data(), int(positions.size()), GL_STATIC_DRAW, sizeof(float));
    _colours->uploadArbitraryData(colours.data(), int(colours.size()), GL_STATIC_DRAW, sizeof(float));
}

PointPainter::~PointPainter() = default;

std::unique_ptr<PointPainter> PointPainter::create(QString& error) {
    std::unique_ptr<PointPainter> painter(new PointPainter);
    painter->_program = Program::fromSource(kVertexShader, kFragmentShader, error);
    return painter->_program ? std::move(painter) : nullptr;
}

void PointPainter::draw(const PointBuffer& points, Shape shape, Depth depth, const Tool::Camera& camera,
                        const QMatrix4x4& projection, float pixelSize) {
    if (points._count == 0)
        return;
    _program->setUniform("framing", QVector4D(camera.centre, camera.scale));
    _program->setUniform("viewProjection", projection * camera.view);
    RenderState state;
    state.depthTest =
        depth == Depth::Tested ? RenderState::DepthTest::LessOrEqual : RenderState::DepthTest::Off;
    state.writesDepth = false;
    state.blends = {{RenderState::Factor::One, RenderState::Factor::OneMinusSourceAlpha}};
    const ScopedRenderState scope(state);
    const AutoBinder program(_program.get());
    const AutoBinder array(points._array.data());
    setLineWidth(pixelSize);
    glDrawArrays(shape == Shape::Lines ? GL_LINES : GL_TRIANGLES, 0, points._count);
    glLineWidth(1);
}

} // namespace Atelier::Vel::Viewer
