#include "literal/literalobjloader.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTextStream>
#include <QtGui/QMatrix4x4>

#include <velmodel/modelbuilder.h>
#include <velmodel/objloader.h>

#include "literal/literalmtlreader.h"
#include "literal/literalobjreader.h"

namespace Atelier::Vel::Testing {

namespace {

using Kind = ObjReader::Kind;

const QString kNames[] = {QStringLiteral("va_Vertex"), QStringLiteral("va_Normal"),
                          QStringLiteral("va_TexCoord")};
constexpr unsigned int kFloat = 0x1406;

void addVertex(ModelBuilder& builder, const QString& name, int components, const float* values) {
    if (!builder.hasVertexAttribute(name))
        builder.createVertexAttribute(name, components, kFloat, 0, 0);
    builder.addValuesToVertexAttribute(name, static_cast<quint64>(components), values, kFloat);
}

void addFace(ModelBuilder& builder, const LiteralObjReader& reader) {
    const auto count = static_cast<unsigned int>(reader.cornerCount());
    builder.addVertexCountsToFaces(1, &count);
    for (int i = 0; i < reader.cornerCount(); ++i) {
        const ObjCorner corner = reader.corner(i);
        const unsigned int indices[] = {corner.position, corner.normal, corner.texCoord};
        for (int attribute = 0; attribute < 3; ++attribute)
            if (builder.hasVertexAttribute(kNames[attribute]))
                builder.addIndicesToVertexAttribute(kNames[attribute], 1, &indices[attribute]);
    }
}

InstanceData identityInstance() {
    const QMatrix4x4 identity;
    InstanceData instance(QStringLiteral("InstanceInfo"));
    for (const char* name : {"ModelMatrix", "PreviousModelMatrix", "ModelNormalMatrix"})
        instance.set(QString::fromLatin1(name), identity.constData(), 16 * sizeof(float));
    return instance;
}

/// One load, record by record.
struct LiteralLoad {
    ModelBuilder& builder;
    LiteralObjReader& reader;
    QString& error;
    QString group = QStringLiteral("<default>");
    unsigned int face = 0;

    bool takeRecord() {
        switch (reader.kind()) {
        case Kind::Position:
            addVertex(builder, kNames[0], 3, reader.values());
            return true;
        case Kind::Normal:
            addVertex(builder, kNames[1], 3, reader.values());
            return true;
        case Kind::TexCoord:
            addVertex(builder, kNames[2], 2, reader.values());
            return true;
        case Kind::Face:
            addFace(builder, reader);
            builder.addFacesToMaterialGroup(group, 1, &face, QString());
            ++face;
            return true;
        case Kind::MaterialLibrary:
            if (literalLoadMaterialLibrary(reader.text(), builder))
                return true;
            error = QStringLiteral("Failed to load MTL file '%1'").arg(reader.text());
            return false;
        default:
            group = reader.text();
            return true;
        }
    }
};

bool readText(QFile& file, const QString& path, ModelBuilder& builder, QString& error) {
    QTextStream stream(&file);
    LiteralObjReader reader(&stream);
    reader.setDirectory(QFileInfo(path).dir().absolutePath());
    LiteralLoad load{builder, reader, error};
    for (; reader.hasNext(); reader.next())
        if (reader.read() && !load.takeRecord())
            return false;
    return true;
}

} // namespace

GPUModel* literalLoadModel(const QString& path, QString& error) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        error = QStringLiteral("Failed to load OBJ file '%1'").arg(path);
        return nullptr;
    }
    ModelBuilder builder({}, 0);
    builder.createMaterialGroup(QStringLiteral("<default>"), makeDefaultMaterial(), -1, 0);
    if (!readText(file, path, builder, error))
        return nullptr;
    if (!builder.hasVertexAttribute(kNames[1]))
        builder.generateNormals(kNames[1]);
    auto* model = new GPUModel;
    builder.upload(model, identityInstance(), kNames[0], QString(), 0x88E4, 4);
    return model;
}

} // namespace Atelier::Vel::Testing
