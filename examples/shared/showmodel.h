#pragma once

// What the examples with a window share: shaders, a view of the whole model, and the format of Qt's contexts.
#include <algorithm>

#include <QtCore/QByteArray>
#include <QtGui/QMatrix4x4>
#include <QtGui/QSurfaceFormat>

#include <velgl/gpumodel.h>
#include <velgl/shaderinterface.h>

constexpr char kVertexShader[] = R"(
in vec3 va_Vertex;
in vec3 va_Normal;
in vec2 va_TexCoord;
uniform mat4 viewProjection;
out vec3 normal;
out vec2 texCoord;
flat out int command;
void main() {
    normal = va_Normal;
    texCoord = va_TexCoord;
    command = velglCommand();
    gl_Position = viewProjection * vec4(va_Vertex, 1.0);
})";

// Normals made by the library point inwards, those of files outwards: both sides are lit.
constexpr char kFragmentShader[] = R"(
in vec3 normal;
in vec2 texCoord;
flat in int command;
out vec4 colour;
void main() {
    vec4 texel = velglHas_map_Kd() ? texture(velgl_map_Kd, texCoord) : vec4(1.0);
    if (texel.a < 0.5)
        discard;
    float light = 0.2 + 0.8 * abs(dot(normalize(normal), normalize(vec3(1.0, 2.0, 3.0))));
    colour = vec4(velglMaterial(command).Kd * texel.rgb * light, 1.0);
})";

inline QByteArray shader(Atelier::Vel::ShaderStage stage, const char* body) {
    return "#version 430 core\n" + Atelier::Vel::shaderInterface(stage, {"OBJMaterial", "InstanceInfo"}) +
           body;
}

/// Lets the windows of Qt have OpenGL 4.3. Must be called before the application is made.
inline void useOpenGL43() {
    QSurfaceFormat format;
    format.setVersion(4, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    QSurfaceFormat::setDefaultFormat(format);
}

/// From a distance that shows all of the model, turned by `angle` degrees.
inline QMatrix4x4 viewOf(const Atelier::Vel::GPUModel::Bounds& bounds, float aspect, float angle) {
    const QVector3D centre = (bounds.minimum + bounds.maximum) / 2;
    const float radius = std::max((bounds.maximum - bounds.minimum).length() / 2, 1e-6F);
    QMatrix4x4 view;
    view.perspective(40, aspect, radius, 5 * radius);
    view.translate(0, 0, -3 * radius);
    view.rotate(25, 1, 0, 0);
    view.rotate(angle, 0, 1, 0);
    view.translate(-centre);
    return view;
}
