#include "summedload.h"

#include <memory>

#include <velgl/drawbuffers.h>
#include <velgl/gpumodel.h>

#include "acceptingcontext.h"

namespace Atelier::Vel::Testing {

SummedLoad summedLoad(const QString& path, const std::function<GPUModel*(const QString&, QString&)>& load) {
    Bench::UploadLog log;
    OpenGLDeviceContext::setCurrent(Bench::makeAcceptingContext(&log));
    SummedLoad result;
    const std::unique_ptr<GPUModel> model(load(path, result.error));
    OpenGLDeviceContext::setCurrent({});
    result.isLoaded = model != nullptr;
    result.streams = log.streams;
    result.indices = log.indices;
    for (int i = 0; model != nullptr && i < model->drawableCount(); ++i)
        result.commands += model->drawable(i)->drawElementsIndirectCommands().size();
    return result;
}

} // namespace Atelier::Vel::Testing
