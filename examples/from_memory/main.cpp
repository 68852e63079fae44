// Loads a model, its material library and its texture from memory, and prints what was loaded. No files are
// read.
#include <memory>

#include <QtCore/QBuffer>
#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>
#include <QtCore/QHash>
#include <QtGui/QImage>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/texture.h>
#include <velmodel/modelsource.h>
#include <velmodel/objloader.h>
#include <velmodel/textureloader.h>

using namespace Atelier::Vel;

namespace {

/// Files in memory, by their names. They are not changed any more, so that any thread may read them.
class MemorySource : public ModelSource {
public:
    explicit MemorySource(QHash<QString, QByteArray> files) : _files(std::move(files)) {}

    std::unique_ptr<QIODevice> open(const QString& name) override {
        if (!_files.contains(name))
            return nullptr;
        auto device = std::make_unique<QBuffer>();
        device->setData(_files.value(name));
        device->open(QIODevice::ReadOnly);
        return device;
    }
    // There are no folders: a name means the same in all files.
    QString resolve(const QString& /*base*/, const QString& name) override { return name; }

private:
    QHash<QString, QByteArray> _files;
};

QByteArray makePicture() {
    QImage image(4, 2, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

std::shared_ptr<ModelSource> makeSource() {
    const QByteArray model = "mtllib colours.mtl\n"
                             "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                             "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                             "usemtl leaf\nf 1/1 2/2 3/3 4/4\n";
    const QByteArray library = "newmtl leaf\nmap_Kd leaf.png\n";
    return std::make_shared<MemorySource>(QHash<QString, QByteArray>{
        {"square.obj", model}, {"colours.mtl", library}, {"leaf.png", makePicture()}});
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QString error;
    const auto context = OpenGLDeviceContext::createHeadless({}, error);
    if (!context || !context->makeCurrent()) {
        qCritical() << error;
        return 1;
    }
    const std::shared_ptr<ModelSource> source = makeSource();
    const std::unique_ptr<GPUModel> model = loadModelFromOBJ(source, "square.obj", error);
    if (!model) {
        qCritical() << error;
        return 1;
    }
    // A draw loads the textures of the model in this way.
    const QString name = model->materials(0)->items().at(0).texturePath("map_Kd");
    const std::shared_ptr<Texture> texture = makeTextureLoader(source)(name);
    if (!texture)
        return 1;
    qInfo("%d triangles with '%s', %d x %d pixels", model->drawable(0)->indexCount() / 3, qPrintable(name),
          texture->width(), texture->height());
}
