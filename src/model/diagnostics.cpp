#include "diagnostics.h"

#include <QtCore/QMessageLogger>

namespace Atelier::Vel {

void reportAssertion(const QString& condition, const QString& detail, int line) {
    const QString escaped = QString(condition).replace(QLatin1Char('%'), QLatin1String("\\%"));
    const QByteArray text =
        QStringLiteral("[ !! ] Assertion '%1' failed: %2").arg(escaped, detail).toLocal8Bit();
    QMessageLogger().critical("[%s:%d] %s", "modelbuilder", line, text.constData());
}

void reportMissingStream(const QString& purpose) {
    QMessageLogger().warning("Unable to upload: no stream could be made for %s", qPrintable(purpose));
}

void reportMissingObject(const QString& purpose) {
    QMessageLogger().warning("Unable to upload: the context made no object for %s", qPrintable(purpose));
}

void reportRefusedData(const QString& purpose) {
    QMessageLogger().warning("Data for %s refused: a stream holds at most 2147483647 bytes",
                             qPrintable(purpose));
}

void reportUntriangulated(quint64 corners) {
    if (corners < 3)
        QMessageLogger().warning("Cannot triangulate a polygon with fewer than 3 vertices");
    else
        QMessageLogger().warning("Unable to triangulate polygon.");
}

void reportOutsideFile(const QString& path, const QString& folder) {
    QMessageLogger().warning("'%s' is not read: it lies outside of the model's folder '%s'", qPrintable(path),
                             qPrintable(folder));
}

} // namespace Atelier::Vel
