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

// Works with QFile and QSaveFile alike; `finish` makes sure that all has arrived.
template<typename File, typename Finish>
QString writeTo(File& file, const QByteArray& bytes, const Finish& finish) {
    const bool written = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && finish(file);
    return written ? QString() : file.errorString();
}

QString writeToFile(const QByteArray& bytes, const QString& path) {
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        // Replacing a device or a pipe by a file would destroy it.
        QFile device(path);
        return writeTo(device, bytes, [](QFile& file) { return file.flush(); });
    }
    QSaveFile file(path);
    return writeTo(file, bytes, [](QSaveFile& written) { return written.commit(); });
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
