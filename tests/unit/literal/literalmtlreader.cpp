#include "literal/literalmtlreader.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegExp>
#include <QtCore/QTextStream>

namespace Atelier::Vel::Testing {

namespace {

/// One line without its comment and the white space around it; null when nothing is left.
QString contentOf(const QString& line) {
    const QRegExp visible(QStringLiteral("\\S"));
    const int start = visible.indexIn(line);
    const int hash = line.indexOf(QLatin1Char('#'), 0, Qt::CaseSensitive);
    const int end = hash < 0 ? line.size() : hash;
    return start < 0 || start >= end ? QString() : line.mid(start, end - start).trimmed();
}

void readValues(QTextStream& operands, const QString& name, int count, InstanceData& material) {
    float values[3] = {};
    for (int i = 0; i < count; ++i)
        operands >> values[i];
    if (operands.status() == QTextStream::Ok)
        material.set(name, values, static_cast<unsigned long long>(count) * sizeof(float));
}

void readMap(QTextStream& operands, const QString& name, const QDir& directory, InstanceData& material) {
    QString path;
    operands >> path;
    if (operands.status() == QTextStream::Ok)
        material.setTexture(name, QDir::isRelativePath(path) ? directory.absoluteFilePath(path) : path);
}

} // namespace

bool literalLoadMaterialLibrary(const QString& path, ModelBuilder& builder) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    QTextStream stream(&file);
    const QDir directory(QFileInfo(path).dir().absolutePath());
    QString name;
    InstanceData material(QStringLiteral("OBJMaterial"));
    const auto finish = [&] {
        if (!name.isNull() && !builder.hasMaterialGroup(name))
            builder.createMaterialGroup(name, material, -1, 0);
    };
    while (!stream.atEnd()) {
        QString content = contentOf(stream.readLine());
        if (content.isNull())
            continue;
        QTextStream operands(&content, QIODevice::ReadOnly);
        QString keyword;
        operands >> keyword;
        if (keyword == QLatin1String("newmtl")) {
            QString word;
            operands >> word;
            if (operands.status() != QTextStream::Ok)
                continue;
            finish();
            material.clear();
            const float opaque = 1.0F;
            material.set(QStringLiteral("d"), &opaque, sizeof opaque);
            name = word;
        } else if (keyword == QLatin1String("Ka") || keyword == QLatin1String("Kd") ||
                   keyword == QLatin1String("Ks")) {
            readValues(operands, keyword, 3, material);
        } else if (keyword == QLatin1String("Ns") || keyword == QLatin1String("d")) {
            readValues(operands, keyword, 1, material);
        } else if (keyword == QLatin1String("map_Kd") || keyword == QLatin1String("map_Ks") ||
                   keyword == QLatin1String("map_Ka") || keyword == QLatin1String("map_Ns")) {
            readMap(operands, keyword, directory, material);
        }
    }
    finish();
    return true;
}

} // namespace Atelier::Vel::Testing
