#include "geometry/triangulation/polygondump.h"

#include <QtCore/QFile>
#include <QtCore/QTextStream>
#include <QtCore/QtDebug>

namespace Atelier::Vel {

namespace {

bool openForDump(QFile& file) {
    if (file.open(QIODevice::WriteOnly))
        return true;
    QMessageLogger().warning("Couldn't write obj file %s", file.fileName().toLocal8Bit().constData());
    return false;
}

void writePoints(QTextStream& stream, int count, const float* points) {
    for (int k = 0; k < count; ++k, points += 2)
        stream << "v " << points[0] << " " << points[1] << "\n";
}

} // namespace

void DumpPolygonOBJ(const QString& fileName, int count, const float* points) {
    QFile file(fileName);
    if (!openForDump(file))
        return;
    QTextStream stream(&file);
    writePoints(stream, count, points);
    stream << "f "; // Two spaces before the first number are intentional.
    for (int k = 1; k <= count; ++k)
        stream << " " << k;
    stream << "\n";
}

void DumpTrianglesOBJ(const QString& fileName, int count, const float* points,
                      const QVector<unsigned int>& triangles) {
    QFile file(fileName);
    if (!openForDump(file))
        return;
    QTextStream stream(&file);
    writePoints(stream, count, points);
    for (int i = 0; i + 2 < triangles.size(); i += 3)
        stream << "f " << int(triangles[i] + 1) << " " << int(triangles[i + 1] + 1) << " "
               << int(triangles[i + 2] + 1) << "\n";
}

} // namespace Atelier::Vel
