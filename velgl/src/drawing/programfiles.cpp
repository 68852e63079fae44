#include <velgl/program.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <velgl/instancedataregistry.h>
#include <velgl/shaderinterface.h>

#include "drawing/shadertext.h"
#include "objects/programaccess.h"

namespace Atelier::Vel {

namespace {

// Longer files are no shaders, and drivers need many times their size.
constexpr qint64 kMaxShaderBytes = 16 << 20;

QString planError(const QString& name) {
    if (name.isEmpty() || InstanceDataRegistry::Instance().plan(name))
        return {};
    return QStringLiteral("The plan '%1' is not registered; is the library that registers it linked?")
        .arg(name);
}

// Returns: the cause if the file cannot be read; null otherwise.
QString readError(QFile& file, QByteArray& content) {
    const QFileInfo info(file.fileName());
    if (info.exists() && !info.isFile())
        return QStringLiteral("Is not a regular file");
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    if (file.size() > kMaxShaderBytes)
        return QStringLiteral("Is longer than 16 MiB");
    content = file.readAll();
    return file.error() == QFileDevice::NoError ? QString() : file.errorString();
}

// Reads the file that `text` is named after, and completes it.
bool readShader(const QString& path, ShaderStage stage, const ShaderPlans& plans, ShaderText& text,
                QString& error) {
    QFile file(path);
    QByteArray source;
    QString cause = readError(file, source);
    if (cause.isNull()) {
        text.source = withDeclarations(source, shaderInterface(stage, plans));
        if (!text.source.isEmpty())
            return true;
        cause = QStringLiteral("Has no #version line before its code");
    }
    error = QStringLiteral("%1: %2").arg(text.name, cause);
    return false;
}

} // namespace

std::unique_ptr<Program> Program::fromFiles(const QString& vertexFile, const QString& fragmentFile,
                                            const ShaderPlans& plans, QString& error) {
    return fromFiles(vertexFile, fragmentFile, plans, {}, error);
}

std::unique_ptr<Program> Program::fromFiles(const QString& vertexFile, const QString& fragmentFile,
                                            const ShaderPlans& plans, const ProgramOptions& options,
                                            QString& error) {
    for (const QString& plan : {plans.materials, plans.instances}) {
        const QString cause = planError(plan);
        if (!cause.isNull()) {
            error = cause;
            return nullptr;
        }
    }
    ShaderText vertex{QStringLiteral("Vertex shader '%1'").arg(vertexFile), {}};
    ShaderText fragment{QStringLiteral("Fragment shader '%1'").arg(fragmentFile), {}};
    if (!readShader(vertexFile, ShaderStage::Vertex, plans, vertex, error) ||
        !readShader(fragmentFile, ShaderStage::Fragment, plans, fragment, error))
        return nullptr;
    return ProgramAccess::make(vertex, fragment, options, error);
}

} // namespace Atelier::Vel
