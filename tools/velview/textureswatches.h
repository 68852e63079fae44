#pragma once

#include <memory>

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QTimer>
#include <QtGui/QImage>

#include "backgroundwork.h"

namespace Atelier::Vel::Viewer {

/// Small pictures of textures, which are made in the background.
class TextureSwatches : public QObject {
    Q_OBJECT
public:
    /// The side of a picture in pixels: that of the largest one that is shown, on a screen of twice the
    /// resolution.
    static constexpr int kSide = 64;

    explicit TextureSwatches(QObject* parent = nullptr);

    /// Makes the pictures of these files, in place of those that are there.
    void make(const QStringList& paths);
    /// A null image if there is none, or none yet.
    QImage at(const QString& path) const { return _pictures.value(path); }

Q_SIGNALS:
    /// All pictures that could be made are there.
    void made();

private:
    using Pictures = QHash<QString, QImage>;

    void look();

    Pictures _pictures;
    std::unique_ptr<BackgroundWork<Pictures>> _work;
    QTimer _timer;
};

} // namespace Atelier::Vel::Viewer
