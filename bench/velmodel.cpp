#include "contestants.h"

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velmodel/objloader.h>

#include "acceptingcontext.h"
#include "checksum.h"

namespace Atelier::Vel::Bench {

namespace {

struct VelModelResult : Loaded {
    std::unique_ptr<GPUModel> model;
};

std::unique_ptr<VelModelResult> loadWithVelModel(const QString& path) {
    QString error;
    auto result = std::make_unique<VelModelResult>();
    result->model.reset(loadModelFromOBJFile(path, error));
    if (!result->model)
        return nullptr;
    for (int index = 0; index < result->model->drawableCount(); ++index) {
        const DrawBuffers* drawable = result->model->drawable(index);
        result->vertices = drawable->vertexCount();
        for (const auto& command : drawable->drawElementsIndirectCommands())
            result->triangles += command.count / 3;
    }
    return result;
}

class VelModel : public Contestant {
public:
    QString name() const override { return QStringLiteral("velmodel"); }
    void prepare() override { OpenGLDeviceContext::setCurrent(makeAcceptingContext()); }
    std::unique_ptr<Loaded> load(const QString& path) override { return loadWithVelModel(path); }
};

class CheckedVelModel : public Contestant {
public:
    QString name() const override { return QStringLiteral("velmodel, checked"); }
    void prepare() override { OpenGLDeviceContext::setCurrent(makeAcceptingContext(&_log)); }
    std::unique_ptr<Loaded> load(const QString& path) override {
        auto result = loadWithVelModel(path);
        if (result)
            result->checksum = checksumOf(*result->model);
        return result;
    }

private:
    std::uint64_t checksumOf(const GPUModel& model) const {
        Checksum sum;
        sum.add(_log.indices);
        for (auto stream = _log.streams.begin(); stream != _log.streams.end(); ++stream) {
            sum.add(stream.key());
            sum.add(stream.value());
        }
        for (int drawable = 0; drawable < model.drawableCount(); ++drawable) {
            const auto commands = model.drawable(drawable)->drawElementsIndirectCommands();
            for (int command = 0; command < commands.size(); ++command) {
                sum.add(model.materialName(drawable, command));
                sum.add(&commands[command], sizeof(DrawElementsIndirectCommand));
            }
        }
        return sum.value();
    }

    UploadLog _log;
};

class VelModelWithGL : public Contestant {
public:
    QString name() const override { return QStringLiteral("velmodel, GL"); }
    void prepare() override {
        QString error;
        _context = OpenGLDeviceContext::createHeadless({}, error);
        if (!_context || !_context->makeCurrent())
            qWarning("no OpenGL: %s", qPrintable(error));
    }
    std::unique_ptr<Loaded> load(const QString& path) override { return loadWithVelModel(path); }

private:
    QSharedPointer<OpenGLDeviceContext> _context;
};

} // namespace

std::unique_ptr<Contestant> makeVelModel() {
    return std::make_unique<VelModel>();
}

std::unique_ptr<Contestant> makeCheckedVelModel() {
    return std::make_unique<CheckedVelModel>();
}

std::unique_ptr<Contestant> makeVelModelWithGL() {
    return std::make_unique<VelModelWithGL>();
}

} // namespace Atelier::Vel::Bench
