#include "pictureoutput.h"

#include <algorithm>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtGui/QImageWriter>

#include "console.h"

namespace Atelier::Vel::Tool {

namespace {

bool isStandardOutput(const QString& path) {
    return path == QLatin1String("-");
}

QByteArray format(const QString& path) {
    return isStandardOutput(path) ? QByteArrayLiteral("png") : QFileInfo(path).suffix().toLower().toLatin1();
}

QString encode(const QImage& picture, const QByteArray& format, QByteArray& bytes) {
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, format);
    return writer.write(picture) ? QString() : writer.errorString();
}

QString writeToFile(const QByteArray& bytes, const QString& path) {
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        // Replacing a device or a pipe by a file would destroy it.
        QFile device(path);
        return device.open(QIODevice::WriteOnly) && writeAll(device, bytes) ? QString()
                                                                            : device.errorString();
    }
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && writeAll(file, bytes) && file.commit() ? QString()
                                                                                     : file.errorString();
}

} // namespace

bool canWritePicture(const QString& path) {
    return QImageWriter::supportedImageFormats().contains(format(path));
}

QString writePicture(const QImage& picture, const QString& path) {
    QByteArray bytes;
    QString failure = encode(picture, format(path), bytes);
    if (!failure.isNull())
        return failure;
    return isStandardOutput(path) ? writeToStandardOutput(bytes) : writeToFile(bytes, path);
}

QString framePath(const QString& path, int frame, int frameCount) {
    const int digits = std::max(3, int(QString::number(frameCount - 1).size()));
    const QString number = QString::number(frame).rightJustified(digits, QLatin1Char('0'));
    const int ending = QFileInfo(path).suffix().size() + 1;
    return path.chopped(ending) + QLatin1Char('-') + number + path.right(ending);
}

} // namespace Atelier::Vel::Tool
