#include "texturefixture.h"

#include <QtCore/QFile>

#include <velgl/autobinder.h>
#include <velmodel/objloader.h>

#include "support/modelprogram.h"

namespace Atelier::Vel {

namespace {

using Testing::Framebuffer;

constexpr char kVertexShader[] = R"(
in vec3 va_Vertex;
void main() {
    gl_Position = vec4(va_Vertex, 1.0);
})";

constexpr char kFragmentShader[] = R"(
out vec4 colour;
void main() {
    colour = texture(velgl_map_Kd, vec2(0.5));
})";

void write(const QString& path, const QByteArray& text) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
}

} // namespace

QImage numbered(int width, int height, QImage::Format format) {
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixelColor(x, y, QColor(x * 12, y * 12, 200 - x - y));
    return image.convertToFormat(format);
}

QString TextureFixture::save(const QImage& image, const QString& name) const {
    EXPECT_TRUE(image.save(path(name)));
    return path(name);
}

QString TextureFixture::saveColor(const QColor& color, const QString& name) const {
    QImage image(2, 2, QImage::Format_ARGB32);
    image.fill(color);
    return save(image, name);
}

std::unique_ptr<GPUModel> TextureFixture::loadTriangle(const QByteArray& map) const {
    write(path("m.mtl"), "newmtl m\nmap_Kd " + map + '\n');
    write(path("m.obj"), "mtllib m.mtl\nusemtl m\nv -1 -1 0\nv 3 -1 0\nv -1 3 0\nf 1 2 3\n");
    QString error;
    std::unique_ptr<GPUModel> model(loadModelFromOBJFile(path("m.obj"), error));
    EXPECT_TRUE(model) << error.toStdString();
    return model;
}

QColor TextureFixture::drawn(GPUModel& model) {
    const std::unique_ptr<Program> program = Testing::makeModelProgram(kVertexShader, kFragmentShader);
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const AutoBinder binder(program.get());
    model.draw();
    return picture.pixels().pixelColor(2, 2);
}

} // namespace Atelier::Vel
