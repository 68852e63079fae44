#include "surfacemarker.h"

#include <velgl/drawoptions.h>
#include <velgl/gpumodel.h>
#include <velgl/program.h>
#include <velgl/renderstate.h>
#include <velgl/shaderinterface.h>

#include "linegeometry.h"

namespace Atelier::Vel::Viewer {

namespace {

const char* const kVertexBody = R"(
in vec3 va_Vertex;
uniform vec4 framing; // the centre, and the factor to the camera's cube
uniform mat4 view;
uniform mat4 projection;
void main() {
    vec4 placed = velglInstance(velglCommand()).ModelMatrix * vec4(va_Vertex, 1.0);
    gl_Position = projection * (view * vec4((placed.xyz - framing.xyz) * framing.w, 1.0));
    gl_Position.z -= 5e-5 * gl_Position.w; // in front of the surface itself
}
)";

const char* const kFragmentShader = R"(#version 430 core
uniform vec4 light;
layout(location = 0) out vec4 pixel;
void main() {
    pixel = light;
}
)";

} // namespace

SurfaceMarker::~SurfaceMarker() = default;

std::unique_ptr<SurfaceMarker> SurfaceMarker::create(QString& error) {
    std::unique_ptr<SurfaceMarker> marker(new SurfaceMarker);
    const ShaderPlans plans{QString(), QStringLiteral("InstanceInfo")};
    marker->_program =
        Program::fromSource("#version 430 core\n" + shaderInterface(ShaderStage::Vertex, plans) + kVertexBody,
                            kFragmentShader, error);
    return marker->_program ? std::move(marker) : nullptr;
}

void SurfaceMarker::draw(GPUModel& model, const DrawFilter& filter, Style style, const QColor& colour,
                         const Tool::Camera& camera, const QMatrix4x4& projection) {
    PointList light;
    light.addLine({}, {}, colour);
    const float* const channels = light.points().front().colour;
    _program->setUniform("light", QVector4D(channels[0], channels[1], channels[2], channels[3]));
    _program->setUniform("framing", QVector4D(camera.centre, camera.scale));
    _program->setUniform("view", camera.view);
    _program->setUniform("projection", projection);
    RenderState state;
    state.fill = style == Style::Edges ? RenderState::Fill::Lines : RenderState::Fill::Solid;
    state.writesDepth = false;
    state.blends = {{RenderState::Factor::One, RenderState::Factor::OneMinusSourceAlpha}};
    const ScopedRenderState scope(state);
    DrawOptions options;
    options.program = _program.get();
    options.filter = filter;
    model.draw(options);
}

} // namespace Atelier::Vel::Viewer
