#pragma once

#include <memory>

#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <gmock/gmock.h>

#include "modelview.h"
#include "support/eventloop.h"
#include "support/messagelog.h"
#include "vieweractions.h"
#include "viewerwindow.h"

namespace Atelier::Vel::Viewer::Testing {

using Vel::Testing::waitUntil;

/// The part of the pixels that differ by more than `tolerance` in a channel, from 0 to 1; 1 for pictures of
/// different sizes.
double difference(const QImage& one, const QImage& other, int tolerance = 8);

/// Two pictures of the same view may differ in this part of their pixels.
constexpr double kSame = 0.001;

/// Tests with windows on an X server. Settings are those of a temporary folder. Warnings fail a test unless
/// it takes them.
class ViewerTest : public ::testing::Test {
protected:
    ViewerTest();
    ~ViewerTest() override;

    void TearDown() override;

    /// A window of 900 x 650 pixels, which has drawn a frame.
    ViewerWindow& makeWindow(const ViewerOptions& options = forgiving());
    /// A window that shows a file, with all textures.
    ViewerWindow& makeWindow(const QString& file);

    /// The options of the program without options.
    static ViewerOptions forgiving();
    /// A file of the samples, such as "gear/gear.obj".
    static QString sample(const QString& name);
    /// Writes a file of the test's folder. Returns: its path.
    QString write(const QString& name, const QByteArray& text) const;
    QString path(const QString& name) const { return _folder.filePath(name); }
    /// A square of the side 2 around the origin, of that colour, that faces +Z.
    static QByteArray squareObj(const QByteArray& colour);

    static void open(ViewerWindow& window, const QString& file);
    static void waitForLoad(ViewerWindow& window);
    /// Waits for a complete frame.
    static void waitForFrame(ViewerWindow& window);
    /// The next frame.
    static QImage picture(ViewerWindow& window);
    /// Presses a key in the view.
    static void press(ViewerWindow& window, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// Keeps a picture of the whole window in the folder that VELVIEW_PICTURES names, for people to look at.
    static void keep(ViewerWindow& window, const QString& name);

    /// Returns the warnings since the last call; they no longer fail the test.
    std::vector<QString> takeWarnings();

private:
    QTemporaryDir _folder;
    Atelier::Vel::Testing::MessageLog _log;
    std::vector<std::unique_ptr<ViewerWindow>> _windows;
};

} // namespace Atelier::Vel::Viewer::Testing
