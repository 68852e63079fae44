#include "textureswatches.h"

#include <QtGui/QImageReader>

#include "texturefiles.h"

namespace Atelier::Vel::Viewer {

namespace {

constexpr int kLookMilliseconds = 50;

// Some formats can be decoded at a smaller size, which takes less time.
QImage swatchOf(const QString& path) {
    constexpr QSize kSize(TextureSwatches::kSide, TextureSwatches::kSide);
    QImageReader reader(Tool::textureFile(path));
    reader.setScaledSize(kSize);
    return reader.read();
}

} // namespace

TextureSwatches::TextureSwatches(QObject* parent) : QObject(parent) {
    _timer.setInterval(kLookMilliseconds);
    connect(&_timer, &QTimer::timeout, this, &TextureSwatches::look);
}

void TextureSwatches::make(const QStringList& paths) {
    _timer.stop();
    _work.reset();
    _pictures.clear();
    if (paths.isEmpty())
        return;
    _work = std::make_unique<BackgroundWork<Pictures>>(
        [paths](const BackgroundWork<Pictures>::IsWanted& isWanted) {
            Pictures pictures;
            for (const QString& path : paths)
                if (isWanted())
                    pictures.insert(path, swatchOf(path));
            return pictures;
        });
    _timer.start();
}

void TextureSwatches::look() {
    if (!_work->isFinished())
        return;
    _timer.stop();
    _pictures = _work->take();
    _work.reset();
    Q_EMIT made();
}

} // namespace Atelier::Vel::Viewer
